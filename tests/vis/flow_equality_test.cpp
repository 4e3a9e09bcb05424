// The fast visibility against its plain form, on random grids of rooms.
#include <gtest/gtest.h>

#include "support/build_state.h"
#include "vis/base_vis.h"
#include "vis/graph_text.h"
#include "vis/portal_vis.h"
#include "vis/reference_vis.h"
#include "vis/room_grid.h"

namespace k2k::test {
namespace {

constexpr float Eps = 0.05F;

std::vector<BitRow> RowsOnWorkers(const RoomGridOptions& grid, FlowSettings settings, int32_t workers) {
    VisGraph graph = ReadGrid(grid);
    BasePortalVis(graph, Eps);
    CalculatePortalVis(graph, settings, workers);
    return VisRows(graph);
}

void ExpectLikeReference(const RoomGridOptions& grid, int32_t level) {
    VisGraph graph = ReadGrid(grid);
    const ReferenceResult expected = ReferenceVisibility(graph, level, Eps);
    BasePortalVis(graph, Eps);
    ASSERT_EQ(MightSeeRows(graph), expected.mightSee);
    FlowSettings settings;
    settings.level = level;
    const FlowCounts counts = CalculatePortalVis(graph, settings, 1);
    EXPECT_EQ(VisRows(graph), expected.visBits);
    EXPECT_EQ(counts.regionFlowCalls, expected.regionFlowCalls);
}

struct GridKind {
    const char* name;
    bool tilted;
    int32_t maxCorners;
};

class RandomGridTest : public BuildState, public testing::WithParamInterface<GridKind> {
  protected:
    static RoomGridOptions Grid(uint32_t seed) {
        RoomGridOptions options;
        options.tilted = GetParam().tilted;
        options.maxCorners = GetParam().maxCorners;
        options.seed = seed;
        return options;
    }
};

INSTANTIATE_TEST_SUITE_P(Kinds, RandomGridTest,
                         testing::Values(GridKind{"AxialRectangles", false, 4}, GridKind{"AxialPolygons", false, 9},
                                         GridKind{"TiltedRectangles", true, 4}, GridKind{"TiltedPolygons", true, 9}),
                         [](const auto& kind) { return kind.param.name; });

TEST_P(RandomGridTest, FlowEqualsThePlainFormAtEveryLevel) {
    for (uint32_t seed = 1; seed <= 4; ++seed) {
        for (int32_t level = 0; level <= 4; ++level) {
            SCOPED_TRACE(testing::Message() << "seed " << seed << ", level " << level);
            ExpectLikeReference(Grid(seed), level);
        }
    }
}

TEST_P(RandomGridTest, RowsAreTheSameOnAnyNumberOfThreads) {
    for (uint32_t seed = 1; seed <= 3; ++seed) {
        RoomGridOptions grid = Grid(seed);
        grid.size = {5, 4, 2};
        const std::vector<BitRow> expected = RowsOnWorkers(grid, {}, 1);
        for (const int32_t workers : {2, 4, 8}) {
            SCOPED_TRACE(testing::Message() << "seed " << seed << ", threads " << workers);
            EXPECT_EQ(RowsOnWorkers(grid, {}, workers), expected);
        }
    }
}

TEST_P(RandomGridTest, RowsAreTheSameWithoutRoomForWaitingBranches) {
    FlowSettings settings;
    settings.waitingLimit = 0;
    for (uint32_t seed = 1; seed <= 3; ++seed) {
        RoomGridOptions grid = Grid(seed);
        grid.size = {5, 4, 2};
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        EXPECT_EQ(RowsOnWorkers(grid, settings, 8), RowsOnWorkers(grid, settings, 1));
    }
}

}  // namespace
}  // namespace k2k::test
