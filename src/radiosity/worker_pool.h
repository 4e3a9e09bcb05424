// A small pool of threads that take numbered work items from one counter, and the one lock of lighting.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

namespace k2k {

// Stack of every worker: the work functions walk trees and chains of surfaces.
constexpr size_t WorkerStackSize = 8388608;

// Runs function(i) for i from 0 to workCount - 1, each once, on -threads workers; returns when all are done. A fatal
// error on a worker is thrown again here, and the items that nobody took until then are left.
void RunOnThreads(int32_t workCount, bool showProgress, const std::function<void(int32_t)>& function);

// Not recursive: taking it twice on one thread is fatal. Live only inside RunOnThreads.
void ThreadLock();
void ThreadUnlock();
// The next item, or -1.
int32_t GetThreadWork();

// The number of workers that -threads asks for. -1 asks the system for its processors and keeps the answer in -threads.
int32_t SettleThreadCount();

// The plain mechanism below the pool: function(0) to function(workers - 1), each on a thread of its own; one worker
// runs on the calling thread. Returns when all have ended, and throws again what the first of them to fail has thrown.
void RunWorkers(int32_t workers, const std::function<void(int32_t)>& function);

// For tests: stands for the system's answer; 0 gives the question back to the system.
void SetProcessorCountForTest(int32_t processors);

}  // namespace k2k
