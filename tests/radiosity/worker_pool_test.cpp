#include "radiosity/worker_pool.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "support/build_state.h"

namespace k2k::test {
namespace {

const ResetBeforeTests resetProcessors([] { SetProcessorCountForTest(0); });

class WorkerPool : public BuildState {};

std::string DotsOf(int32_t items) {
    RunOnThreads(items, true, [](int32_t) {});
    return TakeLoggedText();
}

TEST_F(WorkerPool, RunsEachItemOnceOnAnyNumberOfThreads) {
    for (const int32_t threads : {1, 2, 4, 8}) {
        Options().threads = threads;
        std::vector<std::atomic<int32_t>> runs(1000);
        RunOnThreads(1000, false, [&](int32_t item) { runs[static_cast<size_t>(item)]++; });
        for (const auto& count : runs) EXPECT_EQ(count, 1);
    }
}

TEST_F(WorkerPool, OneThreadRunsTheWorkInOrderOnTheCallingThreadAndItsLockWorks) {
    Options().threads = 1;
    std::vector<int32_t> order;
    RunOnThreads(5, false, [&](int32_t item) {
        ThreadLock();
        order.push_back(item);
        ThreadUnlock();
    });
    EXPECT_EQ(order, (std::vector<int32_t>{0, 1, 2, 3, 4}));

    const auto caller = std::this_thread::get_id();
    RunOnThreads(1, false, [&](int32_t) { EXPECT_EQ(std::this_thread::get_id(), caller); });
    ExpectFatal([] { RunOnThreads(1, false, [](int32_t) { ThreadUnlock(); }); }, "ThreadUnlock without lock\n");
}

TEST_F(WorkerPool, NoItemsEndAtOnce) {
    Options().threads = 4;
    RunOnThreads(0, true, [](int32_t) { FAIL(); });
    EXPECT_EQ(TakeLoggedText(), "");
    EXPECT_EQ(ProgressTotal, 0);
}

TEST_F(WorkerPool, AMachineWithMoreProcessorsThanAllowedGetsOneThread) {
    Options().threads = -1;
    SetProcessorCountForTest(64);
    EXPECT_EQ(SettleThreadCount(), 1);
    EXPECT_EQ(Options().threads, 1);
}

TEST_F(WorkerPool, MinusOneAsksTheSystemAndKeepsTheAnswer) {
    Options().threads = -1;
    SetProcessorCountForTest(12);
    RunOnThreads(1, false, [](int32_t) {});
    EXPECT_EQ(Options().threads, 12);
}

TEST_F(WorkerPool, FewerThanOneThreadCountsAsOne) {
    Options().threads = 0;
    int32_t runs = 0;
    RunOnThreads(3, false, [&](int32_t) { runs++; });
    EXPECT_EQ(runs, 3);
    EXPECT_EQ(Options().threads, 0);
}

TEST_F(WorkerPool, DotsComeEvery30ItemsBelow8000) {
    Options().threads = 1;
    EXPECT_EQ(DotsOf(30), ".");
    EXPECT_EQ(DotsOf(31), "..");
    EXPECT_EQ(DotsOf(7999).size(), 267U);
}

TEST_F(WorkerPool, DotsThinOutForLongRuns) {
    Options().threads = 2;
    EXPECT_EQ(DotsOf(8000).size(), 80U);
    EXPECT_EQ(DotsOf(24999).size(), 250U);
    EXPECT_EQ(DotsOf(25000).size(), 125U);
    EXPECT_EQ(DotsOf(49999).size(), 250U);
    EXPECT_EQ(DotsOf(50000).size(), 100U);
}

TEST_F(WorkerPool, ProgressCountsItemsOnlyWhenItIsShown) {
    Options().threads = 2;
    RunOnThreads(10, false, [](int32_t) {});
    EXPECT_EQ(ProgressDone, 0);
    RunOnThreads(10, true, [](int32_t) {});
    EXPECT_EQ(ProgressTotal, 10);
    EXPECT_EQ(ProgressDone, 10);
}

TEST_F(WorkerPool, ASecondLockOnOneThreadIsFatal) {
    for (const int32_t threads : {1, 3}) {
        Options().threads = threads;
        ExpectFatal(
            [] {
                RunOnThreads(1, false, [](int32_t) {
                    ThreadLock();
                    ThreadLock();
                });
            },
            "Recursive ThreadLock\n");
        // The lock that the failed item held is free again.
        int32_t runs = 0;
        RunOnThreads(2, false, [&](int32_t) {
            ThreadLock();
            runs++;
            ThreadUnlock();
        });
        EXPECT_EQ(runs, 2);
    }
}

TEST_F(WorkerPool, TheLockDoesNothingOutsideARun) {
    ThreadLock();
    ThreadLock();
    ThreadUnlock();
    ThreadUnlock();
    ThreadUnlock();
}

TEST_F(WorkerPool, TheLockKeepsWorkersApart) {
    Options().threads = 4;
    int32_t sum = 0;
    RunOnThreads(5000, false, [&](int32_t item) {
        ThreadLock();
        sum += item;
        ThreadUnlock();
    });
    EXPECT_EQ(sum, 4999 * 5000 / 2);
}

TEST_F(WorkerPool, AFatalErrorOnAWorkerReachesTheWaitingThread) {
    for (const int32_t threads : {1, 4}) {
        Options().threads = threads;
        ExpectFatal(
            [] {
                RunOnThreads(100, false, [](int32_t item) {
                    if (item == 7) FatalError("Bad item %d", item);
                });
            },
            "Bad item 7");
    }
}

TEST_F(WorkerPool, WorkersHaveStacksOf8MiB) {
    RunWorkers(2, [](int32_t) {
        pthread_attr_t attributes;
        ASSERT_EQ(pthread_getattr_np(pthread_self(), &attributes), 0);
        size_t size = 0;
        pthread_attr_getstacksize(&attributes, &size);
        pthread_attr_destroy(&attributes);
        EXPECT_GE(size, WorkerStackSize);
    });
}

TEST_F(WorkerPool, WorkersAreNumberedAndEachRunsOnItsOwnThread) {
    std::mutex guard;
    std::set<std::thread::id> threads;
    std::set<int32_t> numbers;
    RunWorkers(3, [&](int32_t number) {
        const std::lock_guard lock(guard);
        threads.insert(std::this_thread::get_id());
        numbers.insert(number);
    });
    EXPECT_EQ(numbers, (std::set<int32_t>{0, 1, 2}));
    EXPECT_FALSE(threads.contains(std::this_thread::get_id()));
}

}  // namespace
}  // namespace k2k::test
