// Hands the portals out to the workers, and the jobs that had to wait.
#pragma once

#include <condition_variable>
#include <exception>
#include <memory>
#include <mutex>
#include <vector>

#include "vis/flow_forecast.h"
#include "vis/flow_job.h"

namespace k2k {

// All operations may be called from any worker. Text is printed under the scheduler's lock, so that it is not mixed.
class FlowScheduler {
  public:
    // order: the portals, first to last.
    FlowScheduler(VisGraph& graph, const std::vector<int32_t>& order, int32_t workers);

    // The next job for a worker, which now owns it; waits for one when need be. Null: there is nothing left to do, or a
    // worker has failed.
    std::unique_ptr<FlowJob> Take();

    // Takes a job back, finished or not, and warns when its views came back to a region that they had come through.
    // Tells of the work that is left to whom asks.
    void Return(std::unique_ptr<FlowJob> job, int64_t recursions);

    // Ends the work of all.
    void Fail(std::exception_ptr failure);
    std::exception_ptr failure() const { return failure_; }

    // How often a job was returned unfinished.
    int64_t putAside() const { return putAside_; }

  private:
    std::unique_ptr<FlowJob> TakeWaiting();
    std::unique_ptr<FlowJob> TakeNew();
    bool CanGoOn(const FlowJob& job) const;
    void Finish(const FlowJob& job);
    bool IsDone(int32_t portal) const { return LoadStatus(graph_.portal(portal)) == PortalStatus::Done; }

    VisGraph& graph_;
    const std::vector<int32_t>& order_;
    const size_t waitingLimit_;  // jobs

    std::mutex lock_;
    std::condition_variable changed_;
    FlowForecast forecast_;
    size_t next_ = 0;                                // in order_
    std::vector<std::unique_ptr<FlowJob>> waiting_;  // jobs put aside, in the order of their return
    int64_t putAside_ = 0;
    std::exception_ptr failure_;
};

}  // namespace k2k
