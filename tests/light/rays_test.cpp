#include "light/rays.h"

#include <gtest/gtest.h>

#include <random>

#include "light/near_equal.h"
#include "light/trace_nodes.h"
#include "test_level.h"

namespace k2k::test {
namespace {

using Rays = LightTest;

constexpr Box Pillar{{-16, -16, 0}, {16, 16, 128}};

// The walk as a recursion, without any shortcut: the first solid leaf along the segment.
class PlainTrace {
  public:
    bool Clear(const Vec3& start, const Vec3& end, Vec3& hit) const { return Walk(0, start, end, hit); }

  private:
    bool Walk(int32_t child, const Vec3& front, const Vec3& back, Vec3& hit) const {
        if (child < 0) {
            if (Portals().regions[static_cast<size_t>(~child)].contents != ContentsSolid) return true;
            hit = front;
            return false;
        }
        const CRegionNode& node = Portals().nodes[static_cast<size_t>(child)];
        const FinalPlaneRecord& plane = Geometry().planes[node.plane];
        const double eps = Options().eps;
        const double d1 = Dot(front, plane.normal) - plane.dist;
        const double d2 = Dot(back, plane.normal) - plane.dist;
        if (d1 > -eps && d2 > -eps) return Walk(node.children[0], front, back, hit);
        if (d1 < eps && d2 < eps) return Walk(node.children[1], front, back, hit);
        const size_t side = d1 < 0 ? 1 : 0;
        const Vec3 middle = PointBetween(front, back, d1 / (d1 - d2));
        return Walk(node.children[side], front, middle, hit) && Walk(node.children[1 - side], middle, back, hit);
    }
};

TEST_F(Rays, ASegmentThroughOpenSpaceGivesItsLength) {
    TestLevel().RoomTree(SmallRoom);
    const RayStructures rays;
    Vec3 hit;
    EXPECT_EQ(TraceShadow({-100, 0, 10}, {-70, 0, 50}, hit, -1), 50);
}

TEST_F(Rays, AnObstacleBlocksAndTellsWhere) {
    TestLevel().RoomTree(SmallRoom, {Pillar});
    const RayStructures rays;
    Vec3 hit;
    EXPECT_EQ(TraceShadow({-100, 0, 64}, {100, 0, 64}, hit, -1), RayBlocked);
    EXPECT_EQ(hit, (Vec3{-16, 0, 64}));
    EXPECT_TRUE(IsShadowed({-100, 0, 64}, {100, 0, 64}));
    EXPECT_FALSE(IsShadowed({-100, 20, 64}, {100, 20, 64}));
}

TEST_F(Rays, ASegmentThatEndsExactlyOnSolidIsClear) {
    TestLevel().RoomTree(SmallRoom, {Pillar});
    const RayStructures rays;
    Vec3 hit;
    EXPECT_EQ(TraceShadow({-100, 0, 64}, {-16, 0, 64}, hit, -1), 84);
    // It stops this near to its own end ...
    EXPECT_EQ(TraceShadow({-100, 0, 64}, {-15.9921875F, 0, 64}, hit, -1), 84.0078125F);
    // ... and farther from it than 0.01, but for the tolerance of the plane test it would not even be inside.
    EXPECT_EQ(TraceShadow({-100, 0, 64}, {-15.9F, 0, 64}, hit, -1), RayBlocked);
}

TEST_F(Rays, ASegmentWithinTheToleranceOfAPlaneCountsAsInFrontOfIt) {
    TestLevel().RoomTree(SmallRoom, {Pillar});
    const RayStructures rays;
    // In front of the pillar's far side is outside, in front of its near side is inside.
    EXPECT_FALSE(IsShadowed({-100, 15.96F, 64}, {100, 15.96F, 64}));
    EXPECT_TRUE(IsShadowed({-100, 15.94F, 64}, {100, 15.94F, 64}));
    EXPECT_TRUE(IsShadowed({-100, -16.04F, 64}, {100, -16.04F, 64}));
    EXPECT_FALSE(IsShadowed({-100, -16.06F, 64}, {100, -16.06F, 64}));
}

TEST_F(Rays, ThePointTestTakesTheFrontWithinTheTolerance) {
    TestLevel().RoomTree(SmallRoom, {Pillar});
    const RayStructures rays;
    EXPECT_TRUE(PointInSolid({0, 0, 64}));
    EXPECT_FALSE(PointInSolid({40, 0, 64}));
    EXPECT_TRUE(PointInSolid({0, 0, 500}));
    // In front of the floor's plane as long as it is less than eps below it.
    EXPECT_FALSE(PointInSolid({40, 0, -0.04F}));
    EXPECT_TRUE(PointInSolid({40, 0, -0.06F}));
}

TEST_F(Rays, AgreeWithAPlainRecursionOnRandomTrees) {
    std::mt19937 random(11);
    std::uniform_real_distribution<float> coordinate(-150, 150);
    for (int round = 0; round < 20; round++) {
        TestLevel level;
        std::vector<Box> boxes;
        for (int i = 0; i < 3; i++) {
            Box box;
            for (size_t c = 0; c < 3; c++) {
                const float a = coordinate(random), b = coordinate(random);
                box.mins[c] = std::round(std::min(a, b));
                box.maxs[c] = std::round(std::max(a, b));
            }
            boxes.push_back(box);
        }
        level.RoomTree({{-140, -140, -140}, {140, 140, 140}}, boxes);
        // Some oblique cuts in front of everything, with the rest of the tree on both sides.
        for (int i = 0; i < 3; i++) {
            Vec3 normal{coordinate(random), coordinate(random), coordinate(random)};
            Normalize(normal);
            for (CRegionNode& node : Portals().nodes) {
                for (int32_t& child : node.children) child = child >= 0 ? child + 1 : child;
            }
            CRegionNode top;
            top.plane = level.Plane(normal, coordinate(random) / 2);
            top.children = {1, -1};
            Portals().nodes.insert(Portals().nodes.begin(), top);
        }
        const CTraceTree tree;
        for (int i = 0; i < 2000; i++) {
            Vec3 start, end;
            for (size_t c = 0; c < 3; c++) {
                start[c] = coordinate(random);
                end[c] = i % 3 == 0 ? std::round(coordinate(random)) : coordinate(random);
            }
            Vec3 hit{}, plainHit{};
            const bool clear = tree.TraceLine(start, end, hit);
            ASSERT_EQ(clear, PlainTrace().Clear(start, end, plainHit));
            if (!clear) {
                ASSERT_EQ(hit, plainHit);
            }
        }
    }
}

TEST_F(Rays, NodesAreNumberedInPreOrder) {
    TestLevel level;
    const int32_t open = level.Region(ContentsEmpty);
    // 0 has 3 in front and 1 behind; 3 has 2 in front.
    level.Node(level.Plane({1, 0, 0}, 0), 3, 1);
    level.Node(level.Plane({0, 1, 0}, 1), open, -1);
    level.Node(level.Plane({0, 1, 0}, 2), open, -1);
    level.Node(level.Plane({0, 1, 0}, 3), 2, open);
    const CTraceTree tree;
    ASSERT_EQ(tree.nodes().size(), 4U);
    EXPECT_EQ(tree.nodes()[0].child, (std::array<int32_t, 2>{1, 3}));
    EXPECT_EQ(tree.nodes()[1].child, (std::array<int32_t, 2>{2, ContentsEmpty}));
    EXPECT_EQ(tree.nodes()[2].child, (std::array<int32_t, 2>{ContentsEmpty, ContentsSolid}));
    EXPECT_EQ(tree.nodes()[1].dist, 3);
    EXPECT_EQ(tree.nodes()[3].node, 1);
}

TEST_F(Rays, ATreeDeeperThanTheUsualStackWorks) {
    TestLevel level;
    const int32_t open = level.Region(ContentsEmpty);
    // A comb of thin slabs: each node cuts off what lies beyond the next line.
    constexpr int32_t depth = 5000;
    for (int32_t i = 0; i < depth; i++) {
        level.Node(level.Plane({1, 0, 0}, static_cast<float>(depth - i)), open, i + 1 < depth ? i + 1 : open);
    }
    Portals().nodes[depth / 2].children[0] = -1;  // one slab is solid
    const RayStructures rays;
    EXPECT_FALSE(IsShadowed({-1, 0, 0}, {10, 0, 0}));
    EXPECT_TRUE(IsShadowed({-1, 0, 0}, {depth + 10, 0, 0}));
}

TEST_F(Rays, BrokenNodesAreFatal) {
    const std::string text = "Invalid node structure ! Misplaced detail brush ?";
    TestLevel().RoomTree(SmallRoom);
    const auto nodes = Portals().nodes;
    const auto breakNode = [&](auto change) {
        Portals().nodes = nodes;
        change(Portals().nodes[2]);
        ExpectFatal([] { PrepareRays(); }, text);
    };
    breakNode([](CRegionNode& node) { node.plane = 1000; });
    breakNode([](CRegionNode& node) { node.children[0] = 6; });
    breakNode([](CRegionNode& node) { node.children[0] = 0; });  // a ring
    breakNode([](CRegionNode& node) { node.children[0] = -7; });
    Portals().nodes = nodes;
    Portals().regions[1].contents = 16;
    ExpectFatal([] { PrepareRays(); }, text);
    Portals().regions[1].contents = ContentsEmpty | ContentsDetail;
    Portals().regions[1].surfaceCount = 1;
    ExpectFatal([] { PrepareRays(); }, text);
    Portals().regionSurfaces.push_back(77);
    ExpectFatal([] { PrepareRays(); }, text);
}

// A room with a curtain: a detail leaf that one see-through surface lies in.
class SeeThrough : public Rays {
  protected:
    void MakeCurtain(uint32_t flags = TextureDetail) {
        TestLevel level;
        level.RoomTree(SmallRoom);
        curtain_ = level.Quad(0, 0, true, {0, -32, 0}, {0, 32, 128}, flags);
        CRegion& region = Portals().regions[1];
        region.contents |= ContentsDetail;
        region.firstSurface = 0;
        region.surfaceCount = 1;
        Portals().regionSurfaces = {curtain_};
        level_ = level;
    }
    uint32_t curtain_ = 0;
    TestLevel level_;
};

TEST_F(SeeThrough, ASurfaceOfADetailLeafBlocks) {
    MakeCurtain();
    const RayStructures rays;
    Vec3 hit;
    EXPECT_EQ(TraceShadow({-50, 0, 64}, {50, 0, 64}, hit, -1), RayBlocked);
    EXPECT_EQ(hit, (Vec3{0, 0, 64}));
    EXPECT_FALSE(IsShadowed({-50, 60, 64}, {50, 60, 64}));
    EXPECT_FALSE(IsShadowed({-50, 0, 64}, {-1, 0, 64}));
}

TEST_F(SeeThrough, OnlySurfacesWithTheDetailFlagAreTested) {
    MakeCurtain(0);
    const RayStructures rays;
    EXPECT_FALSE(IsShadowed({-50, 0, 64}, {50, 0, 64}));
}

TEST_F(SeeThrough, ATouchAtTheEndIsReportedAfterAllOthers) {
    MakeCurtain();
    // A second curtain in front of the first, later in the leaf's list.
    const uint32_t second = level_.Quad(0, -20, true, {0, -32, 0}, {0, 32, 128}, TextureDetail);
    Portals().regionSurfaces.push_back(second);
    Portals().regions[1].surfaceCount = 2;
    const CTraceTree tree;
    Vec3 hit;
    // The end lies 0.005 behind the first curtain: that touch is remembered, the second one counts.
    EXPECT_FALSE(tree.TraceLine({-50, 0, 64}, {0.005F, 0, 64}, hit));
    EXPECT_EQ(hit[0], -20);
    // With the touch alone the hit is still reported; at the ray's own end it does not shadow.
    EXPECT_FALSE(tree.TraceLine({-10, 0, 64}, {0.005F, 0, 64}, hit));
    EXPECT_EQ(hit[0], 0);
    const RayStructures rays;
    EXPECT_FALSE(IsShadowed({-10, 0, 64}, {0.005F, 0, 64}));
    // Touched within 0.01 of its start it does.
    EXPECT_TRUE(IsShadowed({-0.005F, 0, 64}, {50, 0, 64}));
}

TEST_F(SeeThrough, AParallelSegmentPasses) {
    MakeCurtain();
    const RayStructures rays;
    EXPECT_FALSE(IsShadowed({0, -20, 64}, {0, 20, 64}));
}

TEST_F(SeeThrough, PlainLevelsRunWithoutTheTest) {
    TestLevel().RoomTree(SmallRoom);
    EXPECT_FALSE(CTraceTree().UseSeeThrough());
    MakeCurtain();
    EXPECT_TRUE(CTraceTree().UseSeeThrough());
}

TEST_F(Rays, SolidSkyOpensTheOutsideBehindSkySurfaces) {
    TestLevel level;
    level.RoomTree(SmallRoom);
    const uint32_t sky = level.Quad(2, 128, false, SmallRoom.mins, SmallRoom.maxs, TextureSky | TextureNoLightmap);
    // The node of the ceiling owns the sky surface.
    for (CRegionNode& node : Portals().nodes) {
        const FinalPlaneRecord& plane = Geometry().planes[node.plane];
        if (plane.type == 2 && plane.dist == 128) {
            node.firstSurface = sky;
            node.surfaceCount = 1;
        }
    }
    {
        const RayStructures rays;
        EXPECT_TRUE(IsShadowed({0, 0, 500}, {0, 0, 10}));
    }
    Options().solidsky = true;
    const RayStructures rays;
    EXPECT_FALSE(IsShadowed({0, 0, 500}, {0, 0, 10}));
    EXPECT_TRUE(IsShadowed({500, 0, 64}, {0, 0, 64}));
}

TEST_F(Rays, CountsTheRaysOfTheThread) {
    TestLevel().RoomTree(SmallRoom);
    const RayStructures rays;
    TakeRayCount();
    IsShadowed({0, 0, 1}, {0, 0, 2});
    IsShadowed({0, 0, 1}, {0, 0, 2});
    EXPECT_EQ(TakeRayCount(), 2);
    EXPECT_EQ(TakeRayCount(), 0);
}

}  // namespace
}  // namespace k2k::test
