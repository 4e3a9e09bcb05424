#include "radiosity/worker_pool.h"

#include <pthread.h>

#include <atomic>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

#include "driver/build_log.h"
#include "driver/build_options.h"

namespace k2k {
namespace {

// One run of the pool. Only one exists at a time; all but `threaded` is guarded by `lock` while workers live.
struct WorkQueue {
    int32_t dispatch = 0;   // next item
    int32_t workCount = 0;  // items of this run
    const std::function<void(int32_t)>* workFunction = nullptr;
    bool pacifier = false;  // progress dots on
    int32_t dotEvery = 0;   // items between dots
    bool threaded = false;  // locking is live
    bool locked = false;    // the lock is held
    std::recursive_mutex lock;
};
WorkQueue Queue;

// Whether the calling thread is the one that holds the lock.
thread_local bool HoldsLock = false;

int32_t ProcessorCountForTest = 0;

int32_t DotEvery(int32_t workCount) {
    if (workCount < 8000) return 30;
    if (workCount < 25000) return 100;
    if (workCount < 50000) return 200;
    return 500;
}

// Takes the queue's remaining items away, so that the other workers end soon.
void DropRemainingWork() {
    const std::lock_guard guard(Queue.lock);
    Queue.dispatch = Queue.workCount;
}

void WorkLoop() {
    try {
        for (int32_t item = GetThreadWork(); item >= 0; item = GetThreadWork()) (*Queue.workFunction)(item);
    } catch (...) {
        if (HoldsLock) ThreadUnlock();
        DropRemainingWork();
        throw;
    }
}

// One thread of a run of workers: its number, its job and where its exception goes.
struct Worker {
    const std::function<void(int32_t)>* function = nullptr;
    int32_t number = 0;
    std::atomic_flag* failed = nullptr;
    std::exception_ptr* failure = nullptr;  // of the run; written by the first worker that fails
    pthread_t thread{};
    bool started = false;

    void Run() const {
        try {
            (*function)(number);
        } catch (...) {
            if (!failed->test_and_set()) *failure = std::current_exception();
        }
    }
};

void* WorkerEntry(void* argument) {
    static_cast<const Worker*>(argument)->Run();
    return nullptr;
}

bool StartWorker(Worker& worker) {
    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0) return false;
    pthread_attr_setstacksize(&attributes, WorkerStackSize);
    worker.started = pthread_create(&worker.thread, &attributes, WorkerEntry, &worker) == 0;
    pthread_attr_destroy(&attributes);
    return worker.started;
}

// Marks the queue as live for the length of a run.
class LiveQueue {
  public:
    LiveQueue(int32_t workCount, bool showProgress, const std::function<void(int32_t)>& function) {
        Queue.workFunction = &function;
        Queue.dispatch = 0;
        Queue.workCount = workCount;
        Queue.pacifier = showProgress;
        Queue.dotEvery = DotEvery(workCount);
        Queue.threaded = true;
    }
    ~LiveQueue() {
        Queue.threaded = false;
        Queue.workFunction = nullptr;
    }
    LiveQueue(const LiveQueue&) = delete;
    LiveQueue& operator=(const LiveQueue&) = delete;
};

}  // namespace

int32_t SettleThreadCount() {
    int32_t& threads = Options().threads;
    if (threads == -1) {
        threads = ProcessorCountForTest != 0 ? ProcessorCountForTest
                                             : static_cast<int32_t>(std::thread::hardware_concurrency());
        if (threads < 1 || threads > MaxThreads) threads = 1;
    }
    return threads < 1 ? 1 : threads;
}

void RunWorkers(int32_t workers, const std::function<void(int32_t)>& function) {
    if (workers <= 1) {
        function(0);
        return;
    }
    std::atomic_flag failed;
    std::exception_ptr failure;
    std::vector<Worker> crew(static_cast<size_t>(workers));
    for (int32_t i = 0; i < workers; i++) {
        Worker& worker = crew[static_cast<size_t>(i)];
        worker.function = &function;
        worker.number = i;
        worker.failed = &failed;
        worker.failure = &failure;
        // A system that is out of threads still gets the work done.
        if (!StartWorker(worker)) worker.Run();
    }
    for (Worker& worker : crew) {
        if (worker.started) pthread_join(worker.thread, nullptr);
    }
    if (failure) std::rethrow_exception(failure);
}

void RunOnThreads(int32_t workCount, bool showProgress, const std::function<void(int32_t)>& function) {
    const int32_t workers = SettleThreadCount();
    const LiveQueue live(workCount, showProgress, function);
    if (showProgress) StartProgress(workCount);
    RunWorkers(workers, [](int32_t) { WorkLoop(); });
}

int32_t GetThreadWork() {
    ThreadLock();
    if (Queue.dispatch == Queue.workCount) {
        ThreadUnlock();
        return -1;
    }
    if (Queue.pacifier) {
        if (ProgressDone % Queue.dotEvery == 0) BuildLog(".");
        ProgressDone += 1;
    }
    const int32_t item = Queue.dispatch++;
    ThreadUnlock();
    return item;
}

void ThreadLock() {
    if (!Queue.threaded) return;
    Queue.lock.lock();
    if (Queue.locked) {
        Queue.lock.unlock();
        FatalError("Recursive ThreadLock\n");
    }
    Queue.locked = true;
    HoldsLock = true;
}

void ThreadUnlock() {
    if (!Queue.threaded) return;
    if (!HoldsLock) FatalError("ThreadUnlock without lock\n");
    Queue.locked = false;
    HoldsLock = false;
    Queue.lock.unlock();
}

void SetProcessorCountForTest(int32_t processors) {
    ProcessorCountForTest = processors;
}

}  // namespace k2k
