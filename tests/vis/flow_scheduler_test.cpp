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

TEST_F(FlowSchedulerTest, AFinishedPortalCountsByWhatItMightSee) {
    VisGraph graph = PreparedGrid();
    const std::vector<int32_t> order = PortalOrder(graph);
    FlowScheduler scheduler(graph, order, 1);
    const steady_clock::time_point start = steady_clock::now();
    const int64_t first = graph.portal(order[0]).mightSeeCount;
    StartWork(3 * first, start);
    auto job = scheduler.Take();
    EXPECT_EQ(RemainingTime(start + seconds(100)), std::nullopt);
    job->started = true;
    scheduler.Return(std::move(job), 0);
    EXPECT_EQ(RemainingTime(start + seconds(100)), seconds(200));
}

TEST_F(FlowSchedulerTest, APortalThatIsPutAsideIsNotDone) {
    VisGraph graph = PreparedGrid();
    const std::vector<int32_t> order = PortalOrder(graph);
    FlowScheduler scheduler(graph, order, 1);
    StartWork(graph.portal(order[0]).mightSeeCount);
    auto job = scheduler.Take();
    job->started = true;
    job->missed.push_back(order[1]);
    scheduler.Return(std::move(job), 0);
    EXPECT_EQ(RemainingTime(), std::nullopt);
}

// Asks at every piece of text how far the work has come: how long the rest takes when so far it took 1000 s.
class AskingDisplay : public RecordingDisplay {
  public:
    void Text(std::string_view) override { told.push_back(RemainingTime(steady_clock::now() + seconds(1000))); }

    std::vector<std::optional<seconds>> told;
};

TEST_F(FlowSchedulerTest, TheStepTellsOfItsTimeUntilItsEnd) {
    VisGraph graph = PreparedGrid();
    AskingDisplay display;
    SetLogView(&display);
    CalculatePortalVis(graph, {}, 1);
    SetLogView(nullptr);
    // Headline, a dot at each 60th portal as it is taken, end.
    ASSERT_GE(display.told.size(), 4U);
    EXPECT_EQ(display.told.front(), std::nullopt);
    const std::vector<int32_t> order = PortalOrder(graph);
    int64_t done = 0, rest = 0;
    for (size_t rank = 0; rank < order.size(); ++rank)
        (rank < 59 ? done : rest) += graph.portal(order[rank]).mightSeeCount;
    ASSERT_TRUE(display.told[1].has_value());
    const double expected = 1000.0 * static_cast<double>(rest) / static_cast<double>(done);
    EXPECT_NEAR(static_cast<double>(display.told[1]->count()), expected, expected / 100);
    EXPECT_EQ(display.told.back(), std::nullopt);
}

}  // namespace
}  // namespace k2k::test
