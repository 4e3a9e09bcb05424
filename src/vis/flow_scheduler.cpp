// Hands the portals out to the workers, and the jobs that had to wait.
#include "vis/flow_scheduler.h"

#include <algorithm>
#include <utility>

#include "driver/build_log.h"
#include "driver/remaining_time.h"

namespace k2k {
namespace {

constexpr int32_t PortalsPerDot = 60;
constexpr int32_t WaitingJobsPerWorker = 4;

void WarnRecursions(int64_t count) {
    for (; count > 0; --count) {
        ++WarnCount;
        if (WarnOnce(WarnFamily::W030)) BuildLog(" \nWARNING W030: Region recursion!\n");
    }
}

}  // namespace

FlowScheduler::FlowScheduler(VisGraph& graph, const std::vector<int32_t>& order, int32_t workers)
    : graph_(graph),
      order_(order),
      waitingLimit_(static_cast<size_t>(workers) * WaitingJobsPerWorker),
      forecast_(graph, order) {}

// A job waits only for portals in front of its own, and a portal is taken only when all in front of it are. So the
// first of the waiting jobs waits for a worker that is busy or can go on itself: never do all workers wait for each
// other.
std::unique_ptr<FlowJob> FlowScheduler::Take() {
    std::unique_lock guard(lock_);
    for (;;) {
        if (failure_) return nullptr;
        if (auto job = TakeWaiting()) return job;
        if (waiting_.size() < waitingLimit_) {
            if (auto job = TakeNew()) return job;
        }
        if (waiting_.empty()) return nullptr;
        changed_.wait(guard);
    }
}

std::unique_ptr<FlowJob> FlowScheduler::TakeWaiting() {
    const auto found = std::find_if(waiting_.begin(), waiting_.end(), [&](const auto& job) { return CanGoOn(*job); });
    if (found == waiting_.end()) return nullptr;
    std::unique_ptr<FlowJob> job = std::move(*found);
    waiting_.erase(found);
    changed_.notify_one();  // there is room for another one
    return job;
}

std::unique_ptr<FlowJob> FlowScheduler::TakeNew() {
    if (next_ == order_.size()) return nullptr;
    const int32_t number = order_[next_++];
    StoreStatus(graph_.portal(number), PortalStatus::Working);
    if (++ProgressDone % PortalsPerDot == 0) BuildLog(".");
    return std::make_unique<FlowJob>(number);
}

bool FlowScheduler::CanGoOn(const FlowJob& job) const {
    if (job.waiting.empty())
        return std::all_of(job.missed.begin(), job.missed.end(), [&](int32_t p) { return IsDone(p); });
    return std::any_of(job.waiting.begin(), job.waiting.end(), [&](const auto& entry) { return IsDone(entry.first); });
}

void FlowScheduler::Return(std::unique_ptr<FlowJob> job, int64_t recursions) {
    const std::lock_guard guard(lock_);
    WarnRecursions(recursions);
    if (job->isFinished()) {
        Finish(*job);
    } else {
        ++putAside_;
        waiting_.push_back(std::move(job));
    }
}

void FlowScheduler::Finish(const FlowJob& job) {
    StoreStatus(graph_.portal(job.base), PortalStatus::Done);
    changed_.notify_all();
    forecast_.Done(job.base, job.regionFlowCalls);
    if (!IsWorkAsked()) return;
    const FlowForecast::Work work = forecast_.Foretell();
    TellWork(work.done, work.left);
}

void FlowScheduler::Fail(std::exception_ptr failure) {
    const std::lock_guard guard(lock_);
    if (!failure_) failure_ = std::move(failure);
    changed_.notify_all();
}

}  // namespace k2k
