// What the workers' scheduler tells of the time that is left.
#include "vis/flow_scheduler.h"

#include <gtest/gtest.h>

#include "driver/build_log.h"
#include "driver/remaining_time.h"
#include "support/build_state.h"
#include "support/recording_display.h"
#include "vis/base_vis.h"
#include "vis/graph_text.h"
#include "vis/portal_vis.h"

namespace k2k::test {
namespace {

using std::chrono::seconds;
using std::chrono::steady_clock;

constexpr float Eps = 0.05F;

VisGraph PreparedGrid() {
    RoomGridOptions options;
    options.size = {4, 4, 2};
    VisGraph graph = ReadGrid(options);
    BasePortalVis(graph, Eps);
    return graph;
}

class FlowSchedulerTest : public BuildState {};

TEST_F(FlowSchedulerTest, AFinishedPortalCountsByWhatItCost) {
    VisGraph graph = PreparedGrid();
    const std::vector<int32_t> order = PortalOrder(graph);
    FlowScheduler scheduler(graph, order, 1);
    FlowForecast forecast(graph, order);
    StartWork(steady_clock::now() - seconds(1000000));
    for (size_t rank = 0; rank < order.size() / 2; ++rank) {
        auto job = scheduler.Take();
        job->started = true;
        job->regionFlowCalls = 10 + static_cast<int64_t>(rank * rank);
        forecast.Done(job->base, job->regionFlowCalls);
        RemainingTime();
        scheduler.Return(std::move(job), 0);
    }
    const FlowForecast::Work work = forecast.Foretell();
    const double expected = 1000000 * work.left / work.done;
    const auto told = RemainingTime();
    ASSERT_TRUE(told.has_value());
    EXPECT_NEAR(static_cast<double>(told->count()), expected, expected / 100);
}

TEST_F(FlowSchedulerTest, TellsOfTheWorkOnlyWhenAsked) {
    VisGraph graph = PreparedGrid();
    const std::vector<int32_t> order = PortalOrder(graph);
    FlowScheduler scheduler(graph, order, 1);
    StartWork();
    const auto finishAll = [&](size_t count) {
        for (; count > 0; --count) {
            auto job = scheduler.Take();
            job->started = true;
            job->regionFlowCalls = 100;
            scheduler.Return(std::move(job), 0);
        }
    };
    finishAll(order.size() - 1);
    EXPECT_EQ(RemainingTime(), std::nullopt);
    EXPECT_TRUE(IsWorkAsked());
    finishAll(1);
    EXPECT_FALSE(IsWorkAsked());
    EXPECT_EQ(RemainingTime(), seconds(0));
}

TEST_F(FlowSchedulerTest, APortalThatIsPutAsideIsNotDone) {
    VisGraph graph = PreparedGrid();
    const std::vector<int32_t> order = PortalOrder(graph);
    FlowScheduler scheduler(graph, order, 1);
    StartWork();
    RemainingTime();
    auto job = scheduler.Take();
    job->started = true;
    job->regionFlowCalls = 100;
    job->missed.push_back(order[1]);
    scheduler.Return(std::move(job), 0);
    EXPECT_TRUE(IsWorkAsked()) << "not told yet";
}

TEST_F(FlowSchedulerTest, AJobKnowsWhatWasSpentOnIt) {
    VisGraph graph = PreparedGrid();
    graph.AllocateVisBits();
    const std::vector<int32_t> sameRank(graph.portals.size(), 0);
    FlowThread thread(graph, sameRank, {});
    FlowJob first(0), second(1);
    for (FlowJob* job : {&first, &second}) {
        StoreStatus(graph.portal(job->base), PortalStatus::Working);
        thread.PortalFlow(*job);
    }
    EXPECT_GT(first.regionFlowCalls, 0);
    EXPECT_GT(second.regionFlowCalls, 0);
    EXPECT_EQ(first.regionFlowCalls + second.regionFlowCalls, thread.regionFlowCalls());
}

// Asks at every piece of text how long the rest takes.
class AskingDisplay : public RecordingDisplay {
  public:
    void Text(std::string_view) override { told.push_back(RemainingTime()); }

    std::vector<std::optional<seconds>> told;
};

TEST_F(FlowSchedulerTest, TheStepTellsOfItsTimeUntilItsEnd) {
    VisGraph graph = PreparedGrid();
    AskingDisplay display;
    SetLogView(&display);
    CalculatePortalVis(graph, {}, 1);
    SetLogView(nullptr);
    // Headline, a dot at each 60th portal as it is taken, end. The first dot asks, the second one is told.
    ASSERT_GE(display.told.size(), 4U);
    EXPECT_EQ(display.told.front(), std::nullopt);
    EXPECT_TRUE(display.told[2].has_value());
    EXPECT_EQ(display.told.back(), std::nullopt);
}

}  // namespace
}  // namespace k2k::test
