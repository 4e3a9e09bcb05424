// Bringing a level back to its own size.
#include "vis/undo_zoom.h"

#include <gtest/gtest.h>

#include "levelfile/file_klv.h"
#include "levelfile/geometry_data.h"
#include "levelfile/portal_data.h"
#include "support/build_state.h"

namespace k2k::test {
namespace {

const ResetBeforeTests resetLevel([] {
    ClearDataSets();
    Geometry().info = {};
});

class UndoZoomTest : public BuildState {};

using Box = std::array<int16_t, 3>;

TEST_F(UndoZoomTest, DividesPlanesAndVertices) {
    Geometry().planes = {{{1, 0, 0}, 96, 0}};
    Geometry().vertices = {{3, -6, 9.5F}};
    UndoZoom(4);
    EXPECT_EQ(Geometry().planes[0].dist, 24);
    EXPECT_EQ(Geometry().planes[0].normal, (Vec3{1, 0, 0}));
    EXPECT_EQ(Geometry().vertices[0], (Vec3{0.75F, -1.5F, 2.375F}));
}

TEST_F(UndoZoomTest, TheFactorHas32Bits) {
    Geometry().planes = {{{1, 0, 0}, 100, 0}};
    UndoZoom(3);
    EXPECT_EQ(Geometry().planes[0].dist, 100 * (1.0F / 3.0F));
}

TEST_F(UndoZoomTest, BoundsAreTruncatedTowardsZero) {
    Portals().regions.resize(1);
    Portals().regions[0].mins = {-7, -8, 0};
    Portals().regions[0].maxs = {7, 29001, -29001};
    Portals().nodes.resize(1);
    Portals().nodes[0].mins = {-5, 5, 1};
    Portals().nodes[0].maxs = {3, -3, 2};
    UndoZoom(2);
    EXPECT_EQ(Portals().regions[0].mins, (Box{-3, -4, 0}));
    EXPECT_EQ(Portals().regions[0].maxs, (Box{3, 14500, -14500}));
    EXPECT_EQ(Portals().nodes[0].mins, (Box{-2, 2, 0}));
    EXPECT_EQ(Portals().nodes[0].maxs, (Box{1, -1, 1}));
}

// 50 times the 32-bit number next to 1 / 50 is a little less than 1, which 32 bits would round up to 1.
TEST_F(UndoZoomTest, WholeNumbersAreTruncatedFromTheUnroundedProduct) {
    Portals().regions.resize(1);
    Portals().regions[0].mins = {-50, 50, 100};
    Geometry().info.hullMaxs[0] = {-50, 50, 2147483647};
    UndoZoom(50);
    EXPECT_EQ(Portals().regions[0].mins, (Box{0, 0, 1}));
    EXPECT_EQ(Geometry().info.hullMaxs[0], (std::array<int32_t, 3>{0, 0, 42949671}));
}

TEST_F(UndoZoomTest, DividesBoundsOriginAndHullBoxesOfTheInfoBlock) {
    LevelInfo& info = Geometry().info;
    info.mins = {-512, 2, 3};
    info.maxs = {512, 6, 8};
    info.origin = {4, 0, -4};
    info.hullMins[1] = {-33, -32, -31};
    info.hullMaxs[3] = {33, 32, 31};
    info.visRegions = 40;
    UndoZoom(2);
    EXPECT_EQ(info.mins, (Vec3{-256, 1, 1.5F}));
    EXPECT_EQ(info.maxs, (Vec3{256, 3, 4}));
    EXPECT_EQ(info.origin, (Vec3{2, 0, -2}));
    EXPECT_EQ(info.hullMins[1], (std::array<int32_t, 3>{-16, -16, -15}));
    EXPECT_EQ(info.hullMaxs[3], (std::array<int32_t, 3>{16, 16, 15}));
    EXPECT_EQ(info.visRegions, 40);
}

TEST_F(UndoZoomTest, HasADefinedResultForBoundsThatLeaveTheirType) {
    Portals().regions.resize(1);
    Portals().regions[0].maxs = {29000, 1, 0};
    Geometry().info.hullMaxs[0] = {2000000000, 1, 0};
    UndoZoom(1e-30F);
    EXPECT_EQ(Portals().regions[0].maxs[2], 0);
    EXPECT_EQ(Geometry().info.hullMaxs[0][0], -2147483647 - 1);
}

}  // namespace
}  // namespace k2k::test
