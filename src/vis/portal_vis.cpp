// The exact step: what each portal really sees, on several threads.
#include "vis/portal_vis.h"

#include <algorithm>
#include <atomic>
#include <system_error>
#include <thread>

#include "driver/build_log.h"
#include "driver/remaining_time.h"
#include "vis/flow_scheduler.h"

namespace k2k {
namespace {

// What all workers share.
struct Flow {
    VisGraph& graph;
    const FlowSettings& settings;
    const std::vector<int32_t>& rankOf;
    FlowScheduler& scheduler;
    std::atomic<int64_t> regionFlowCalls{0}, repeats{0};
};

void FlowPortals(Flow& flow) {
    FlowThread thread(flow.graph, flow.rankOf, flow.settings);
    int64_t recursions = 0;
    while (auto job = flow.scheduler.Take()) {
        thread.PortalFlow(*job);
        flow.scheduler.Return(std::move(job), thread.recursions() - recursions);
        recursions = thread.recursions();
    }
    flow.regionFlowCalls += thread.regionFlowCalls();
    flow.repeats += thread.repeats();
}

void Work(Flow& flow) {
    try {
        FlowPortals(flow);
    } catch (...) {
        flow.scheduler.Fail(std::current_exception());
    }
}

// The calling thread is one of the workers. Where the system has no more threads, those that there are do the work.
void RunWorkers(Flow& flow, int32_t workers) {
    std::vector<std::jthread> others;
    try {
        for (int32_t i = 1; i < workers; ++i) others.emplace_back([&flow] { Work(flow); });
    } catch (const std::system_error&) {
    }
    Work(flow);
}

std::vector<int32_t> RanksOf(const std::vector<int32_t>& order) {
    std::vector<int32_t> rankOf(order.size());
    for (size_t rank = 0; rank < order.size(); ++rank)
        rankOf[static_cast<size_t>(order[rank])] = static_cast<int32_t>(rank);
    return rankOf;
}

}  // namespace

void FastPortalVis(VisGraph& graph) {
    for (VisPortal& portal : graph.portals) {
        portal.visBits = portal.mightSee;
        portal.status = PortalStatus::Done;
    }
}

FlowCounts CalculatePortalVis(VisGraph& graph, const FlowSettings& settings, int32_t workers) {
    BuildLog(" \nCalculating visibility ...");
    StartProgress(static_cast<int32_t>(graph.portals.size()));
    graph.AllocateVisBits();
    const std::vector<int32_t> order = PortalOrder(graph);
    const std::vector<int32_t> rankOf = RanksOf(order);
    workers = std::max(workers, 1);
    FlowScheduler scheduler(graph, order, workers);
    Flow flow{graph, settings, rankOf, scheduler};
    StartWork();
    RunWorkers(flow, workers);
    EndWork();
    if (scheduler.failure()) std::rethrow_exception(scheduler.failure());
    BuildLog(" ok");
    return {flow.regionFlowCalls, flow.repeats, scheduler.putAside()};
}

}  // namespace k2k
