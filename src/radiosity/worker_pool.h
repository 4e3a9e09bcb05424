// A small pool of threads that take numbered work items from one counter, and the one lock of lighting.
#pragma once

#include <cstdint>
#include <functional>

namespace k2k {

// Runs function(i) for i from 0 to workCount - 1, each once, on -threads workers; returns when all are done. A fatal
// error on a worker is thrown again here.
void RunOnThreads(int32_t workCount, bool showProgress, const std::function<void(int32_t)>& function);

// Not recursive: taking it twice on one thread is fatal. Live only inside RunOnThreads.
void ThreadLock();
void ThreadUnlock();
// The next item, or -1.
int32_t GetThreadWork();

}  // namespace k2k
