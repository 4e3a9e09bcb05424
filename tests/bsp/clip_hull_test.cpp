#include "bsp/clip_hull.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "bsp/pipeline.h"
#include "bsp/test_blocks.h"
#include "bsp/tree_build.h"

namespace k2k {
namespace {

using test::Square;
using test::SurfaceOf;
using testing::ElementsAre;

class ClipHull : public test::TreeTest {
  protected:
    ClipHull() { plain_ = test::AddTexture(TextureNoLightmap); }

    // A tree of walls at these x, each solid behind.
    std::unique_ptr<CBspNode> Walls(std::initializer_list<float> positions) const {
        SurfaceList list;
        for (const float x : positions) list.push_front(SurfaceOf(Square({1, 0, 0}, {x, 0, 0}, 8, plain_)));
        CBlockSet set;
        set.mins = {-100, -100, -100};
        set.maxs = {100, 100, 100};
        return SolidBsp(std::move(list), false, 1, set);
    }

    void Capture(int32_t hull, std::initializer_list<float> positions) const {
        auto root = Walls(positions);
        MapPlanes(*root);
        RecordHull(hull, WriteClipNodes(*root));
        CaptureHull(hull);
    }

    int32_t plain_ = 0;
};

TEST_F(ClipHull, NodesComeBeforeTheirFrontThenBackChildren) {
    CBspNode root;
    root.outputPlane = 7;
    for (auto& child : root.children) {
        child = std::make_unique<CBspNode>();
        child->outputPlane = 8;
        for (auto& leaf : child->children) {
            leaf = std::make_unique<CBspNode>();
            leaf->contents = ContentsEmpty;
        }
    }
    root.children[1]->outputPlane = 9;
    root.children[1]->children[1]->contents = ContentsSolid;
    Portals().hullNodes.resize(5);
    EXPECT_EQ(WriteClipNodes(root), 5);
    const auto& rows = Portals().hullNodes;
    ASSERT_EQ(rows.size(), 8U);
    EXPECT_EQ(rows[5].plane, 7U);
    EXPECT_THAT(rows[5].children, ElementsAre(6, 7));
    EXPECT_EQ(rows[6].plane, 8U);
    EXPECT_THAT(rows[6].children, ElementsAre(ContentsEmpty, ContentsEmpty));
    EXPECT_EQ(rows[7].plane, 9U);
    EXPECT_THAT(rows[7].children, ElementsAre(ContentsEmpty, ContentsSolid));
}

TEST_F(ClipHull, ARootThatIsALeafWritesNothing) {
    CBspNode leaf;
    leaf.contents = ContentsSolid;
    Portals().hullNodes.resize(3);
    EXPECT_EQ(WriteClipNodes(leaf), 3);
    EXPECT_EQ(Portals().hullNodes.size(), 3U);
}

TEST_F(ClipHull, TheBoxIsRecordedInWholeNumbers) {
    HullBoxes()[2].mins = {-31.5F, -32.6F, -0.5F};
    HullBoxes()[2].maxs = {15.5F, 15.4F, 0.49F};
    RecordHull(2, 11);
    EXPECT_EQ(Geometry().info.headNodes[2], 11);
    EXPECT_THAT(Geometry().info.hullMins[2], ElementsAre(-31, -33, 0));
    EXPECT_THAT(Geometry().info.hullMaxs[2], ElementsAre(16, 15, 0));
}

TEST_F(ClipHull, ABoxBeyondAllNumbersIsStillRecorded) {
    HullBoxes()[1].maxs = {1e30F, -1e30F, 100};
    RecordHull(1, 0);
    constexpr int32_t OutOfRange = std::numeric_limits<int32_t>::min();
    EXPECT_THAT(Geometry().info.hullMaxs[1], ElementsAre(OutOfRange, OutOfRange, 100));
}

TEST_F(ClipHull, ACaptureHoldsTheRowsOfEarlierHullsToo) {
    Capture(FatHull, {10, 50});
    Capture(NarrowHull, {0});
    EXPECT_EQ(Geometry().info.headNodes[1], 2);
    Portals().hullNodes.clear();
    JoinHull(NarrowHull);
    ASSERT_EQ(Portals().hullNodes.size(), 3U);
    EXPECT_EQ(Geometry().info.headNodes[1], 2);
    JoinHull(FatHull);
    ASSERT_EQ(Portals().hullNodes.size(), 5U);
    EXPECT_EQ(Geometry().info.headNodes[2], 3);
    // Links move with the rows, contents words stay as they are.
    const auto& rows = Portals().hullNodes;
    EXPECT_THAT(rows[2].children, ElementsAre(ContentsEmpty, ContentsSolid));
    for (size_t i = 0; i < 2; ++i) {
        for (size_t side = 0; side < 2; ++side) {
            const int32_t child = rows[i].children[side];
            EXPECT_EQ(rows[i + 3].children[side], child < 0 ? child : child + 3);
        }
    }
}

TEST_F(ClipHull, JoinedPlanesSurviveByValueAndAreFoundAgain) {
    Capture(NarrowHull, {10});
    Portals().hullNodes.clear();
    Geometry().planes.clear();
    Geometry().planes.push_back({{0, 0, 1}, 5, 2});
    Geometry().planes.push_back({{1, 0, 0}, 10, 0});
    JoinHull(NarrowHull);
    EXPECT_EQ(Portals().hullNodes[0].plane, 1U);
    EXPECT_EQ(Geometry().planes.size(), 2U);
    // Joined once, the capture is gone.
    JoinHull(NarrowHull);
    EXPECT_EQ(Portals().hullNodes.size(), 1U);
}

TEST_F(ClipHull, JoinedObliquePlanesTakeTheTypeOfTheirNormal) {
    Portals().hullNodes.emplace_back();
    Portals().hullNodes[0].children = {ContentsEmpty, ContentsSolid};
    Geometry().planes.push_back({{-1, 0, 0}, 10, 0});
    CaptureHull(NarrowHull);
    Geometry().planes.clear();
    JoinHull(NarrowHull);
    EXPECT_EQ(Geometry().planes[0].type, -3);
}

TEST_F(ClipHull, WithoutACaptureNothingIsJoined) {
    JoinHull(NarrowHull);
    EXPECT_TRUE(Portals().hullNodes.empty());
}

TEST_F(ClipHull, AHullWithoutBlocksKeepsTheRowsOfEarlierHulls) {
    Capture(FatHull, {10, 50});
    Geometry().info.headNodes[1] = 0;
    CaptureHull(NarrowHull);
    Portals().hullNodes.clear();
    JoinHull(NarrowHull);
    EXPECT_EQ(Portals().hullNodes.size(), 2U);
    EXPECT_EQ(Geometry().info.headNodes[1], 0);
}

}  // namespace
}  // namespace k2k
