// Branches that come to a portal too early are put aside and taken up again, without a change to the rows.
#include <gtest/gtest.h>

#include <memory>

#include "support/build_state.h"
#include "vis/base_vis.h"
#include "vis/graph_text.h"
#include "vis/portal_vis.h"
#include "vis/vis_rows.h"

namespace k2k::test {
namespace {

constexpr float Eps = 0.05F;

std::vector<int32_t> RanksOf(const std::vector<int32_t>& order) {
    std::vector<int32_t> ranks(order.size());
    for (size_t rank = 0; rank < order.size(); ++rank)
        ranks[static_cast<size_t>(order[rank])] = static_cast<int32_t>(rank);
    return ranks;
}

struct Outcome {
    std::vector<BitRow> rows;
    int32_t resumed = 0;
    size_t mostWaitingBytes = 0;
};

// Flows the portals last to first, so that every branch that can come too early does.
Outcome FlowInReverse(VisGraph& graph, const FlowSettings& settings) {
    graph.AllocateVisBits();
    const std::vector<int32_t> order = PortalOrder(graph);
    const std::vector<int32_t> ranks = RanksOf(order);
    FlowThread thread(graph, ranks, settings);
    Outcome outcome;
    std::vector<std::unique_ptr<FlowJob>> jobs;
    const auto flow = [&](FlowJob& job) {
        thread.PortalFlow(job);
        outcome.mostWaitingBytes = std::max(outcome.mostWaitingBytes, job.waitingBytes);
        if (job.isFinished()) StoreStatus(graph.portal(job.base), PortalStatus::Done);
        return job.isFinished();
    };
    for (auto number = order.rbegin(); number != order.rend(); ++number) {
        StoreStatus(graph.portal(*number), PortalStatus::Working);
        auto job = std::make_unique<FlowJob>(*number);
        if (!flow(*job)) jobs.push_back(std::move(job));
    }
    // The jobs lie from the last rank to the first; each can go on when all before it are done.
    for (; !jobs.empty(); jobs.pop_back()) {
        while (!flow(*jobs.back())) ++outcome.resumed;
    }
    outcome.rows = VisRows(graph);
    return outcome;
}

class WaitingBranchesTest : public BuildState {
  protected:
    static VisGraph Grid(uint32_t seed) {
        RoomGridOptions options;
        options.size = {4, 4, 2};
        options.seed = seed;
        options.tilted = seed % 2 == 0;
        options.allOpen = seed > 2;
        VisGraph graph = ReadGrid(options);
        BasePortalVis(graph, Eps);
        return graph;
    }
    static std::vector<BitRow> InOrder(uint32_t seed, const FlowSettings& settings) {
        VisGraph graph = Grid(seed);
        CalculatePortalVis(graph, settings, 1);
        return VisRows(graph);
    }
};

TEST_F(WaitingBranchesTest, RowsDoNotDependOnTheOrderOfTheFlows) {
    for (uint32_t seed = 1; seed <= 4; ++seed) {
        for (const int32_t level : {0, 2, 4}) {
            FlowSettings settings;
            settings.level = level;
            VisGraph graph = Grid(seed);
            const Outcome outcome = FlowInReverse(graph, settings);
            EXPECT_EQ(outcome.rows, InOrder(seed, settings)) << "seed " << seed << ", level " << level;
            EXPECT_GT(outcome.mostWaitingBytes, 0U);
        }
    }
}

TEST_F(WaitingBranchesTest, AFlowThatHadNoRoomForBranchesRunsAgain) {
    for (uint32_t seed = 1; seed <= 4; ++seed) {
        FlowSettings settings;
        settings.waitingLimit = 2000;
        VisGraph graph = Grid(seed);
        const Outcome outcome = FlowInReverse(graph, settings);
        EXPECT_EQ(outcome.rows, InOrder(seed, settings)) << "seed " << seed;
        EXPECT_LT(outcome.mostWaitingBytes, 4000U);
    }
}

// A finished row of a portal further back in the order prunes more than a single worker would have pruned.
TEST_F(WaitingBranchesTest, FinishedRowsOfPortalsBehindInTheOrderAreNotUsed) {
    VisGraph graph = ReadGraph(3, CorridorText(3));
    BasePortalVis(graph, Eps);
    graph.AllocateVisBits();
    // Portal 2 leads from 1 to 2. It is done, and sees nothing, but comes behind portal 0.
    const std::vector<int32_t> ranks{0, 1, 2, 3};
    graph.portal(2).status = PortalStatus::Done;
    graph.portal(0).status = PortalStatus::Working;
    FlowThread thread(graph, ranks, {});
    FlowJob job(0);
    thread.PortalFlow(job);
    EXPECT_EQ(RegionsIn(graph.portal(0).visBits, 3), (std::vector<int32_t>{1, 2}));
}

}  // namespace
}  // namespace k2k::test
