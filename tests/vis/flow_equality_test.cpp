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

// Without memory each step of the plain form is taken, with any memory as many or fewer.
void ExpectLikeReference(const RoomGridOptions& grid, int32_t level, float eps = Eps) {
    const ReferenceResult expected = ReferenceVisibility(ReadGrid(grid), level, eps);
    for (const size_t memoryLimit : {size_t{0}, size_t{5000}, FlowSettings().memoryLimit}) {
        VisGraph graph = ReadGrid(grid);
        BasePortalVis(graph, eps);
        ASSERT_TRUE(MightSeeRows(graph) == expected.mightSee);
        FlowSettings settings;
        settings.level = level;
        settings.eps = eps;
        settings.memoryLimit = memoryLimit;
        WarnCount = 0;
        const FlowCounts counts = CalculatePortalVis(graph, settings, 1);
        EXPECT_TRUE(VisRows(graph) == expected.visBits);
        EXPECT_EQ(WarnCount, expected.recursions);
        if (memoryLimit == 0) {
            EXPECT_EQ(counts.regionFlowCalls, expected.regionFlowCalls);
        } else {
            EXPECT_LE(counts.regionFlowCalls + counts.repeats, expected.regionFlowCalls);
        }
    }
}

struct GridKind {
    const char* name;
    bool tilted;
    int32_t maxCorners;
    bool allOpen = false;
};

class FlowMemoryTest : public BuildState {};

class RandomGridTest : public BuildState, public testing::WithParamInterface<GridKind> {
  protected:
    static RoomGridOptions Grid(uint32_t seed) {
        RoomGridOptions options;
        options.tilted = GetParam().tilted;
        options.maxCorners = GetParam().maxCorners;
        options.allOpen = GetParam().allOpen;
        options.seed = seed;
        return options;
    }
};

INSTANTIATE_TEST_SUITE_P(Kinds, RandomGridTest,
                         testing::Values(GridKind{"AxialRectangles", false, 4}, GridKind{"AxialPolygons", false, 9},
                                         GridKind{"TiltedRectangles", true, 4}, GridKind{"TiltedPolygons", true, 9},
                                         GridKind{"AxialAir", false, 4, true}, GridKind{"TiltedAir", true, 4, true}),
                         [](const auto& kind) { return kind.param.name; });

TEST_P(RandomGridTest, FlowEqualsThePlainFormAtEveryLevel) {
    for (uint32_t seed = 1; seed <= 4; ++seed) {
        for (int32_t level = 0; level <= 4; ++level) {
            SCOPED_TRACE(testing::Message() << "seed " << seed << ", level " << level);
            ExpectLikeReference(Grid(seed), level);
        }
    }
}

TEST_P(RandomGridTest, FlowEqualsThePlainFormAtAnyTolerance) {
    for (const float eps : {-0.05F, 0.0F, 0.001F, 0.5F, 20.0F}) {
        SCOPED_TRACE(testing::Message() << "tolerance " << eps);
        ExpectLikeReference(Grid(5), 2, eps);
        ExpectLikeReference(Grid(6), 4, eps);
    }
}

// Where 32 bits are too few for the coordinates, roundings decide everywhere.
TEST_P(RandomGridTest, FlowEqualsThePlainFormAtAnyScale) {
    for (const double roomSize : {1e-2, 1.0, 1e5, 1e7, 1e12, 1e30}) {
        SCOPED_TRACE(testing::Message() << "rooms of " << roomSize);
        RoomGridOptions grid = Grid(7);
        grid.roomSize = roomSize;
        ExpectLikeReference(grid, 2);
        ExpectLikeReference(grid, 4);
    }
}

// In a cube of air, cut into cells, most views are not cut and come the same by many ways.
TEST_F(FlowMemoryTest, RepeatedViewsAreNotFollowedAgain) {
    RoomGridOptions grid;
    grid.size = {4, 4, 2};
    grid.allOpen = true;
    const auto countsWith = [&](size_t memoryLimit) {
        VisGraph graph = ReadGrid(grid);
        BasePortalVis(graph, Eps);
        FlowSettings settings;
        settings.memoryLimit = memoryLimit;
        return CalculatePortalVis(graph, settings, 1);
    };
    const FlowCounts forgetful = countsWith(0);
    const FlowCounts mindful = countsWith(size_t{1} << 20U);
    EXPECT_EQ(forgetful.repeats, 0);
    EXPECT_GT(mindful.repeats, 0);
    EXPECT_LT(mindful.regionFlowCalls + mindful.repeats, forgetful.regionFlowCalls);
}

TEST_P(RandomGridTest, RowsAreTheSameOnAnyNumberOfThreads) {
    for (uint32_t seed = 1; seed <= 3; ++seed) {
        RoomGridOptions grid = Grid(seed);
        grid.size = {5, 4, 2};
        const std::vector<BitRow> expected = RowsOnWorkers(grid, {}, 1);
        for (const int32_t workers : {2, 4, 8}) {
            SCOPED_TRACE(testing::Message() << "seed " << seed << ", threads " << workers);
            EXPECT_TRUE(RowsOnWorkers(grid, {}, workers) == expected);
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
        EXPECT_TRUE(RowsOnWorkers(grid, settings, 8) == RowsOnWorkers(grid, settings, 1));
    }
}

}  // namespace
}  // namespace k2k::test
