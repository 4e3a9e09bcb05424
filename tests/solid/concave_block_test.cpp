#include "solid/concave_block.h"

#include <cmath>

#include "solid_support.h"

namespace k2k {
namespace {

using test::Logged;
using test::MapFaceOf;
using test::SetOf;

std::unique_ptr<CBlockFace> FaceOf(std::vector<Vec3> points) {
    auto face = std::make_unique<CBlockFace>();
    face->points = std::move(points);
    return face;
}

const std::vector<Vec3> Square{{-8, 8, 0}, {8, 8, 0}, {8, -8, 0}, {-8, -8, 0}};
const std::vector<Vec3> Corner{{0, 0, 0}, {0, 8, 0}, {4, 8, 0}, {4, 4, 0}, {8, 4, 0}, {8, 0, 0}};

TEST(IsConvexFace, AcceptsConvexOutlines) {
    EXPECT_TRUE(IsConvexFace(*FaceOf(Square)));
    EXPECT_TRUE(IsConvexFace(*FaceOf({{0, 0, 0}, {0, 8, 0}, {8, 0, 0}})));
    EXPECT_TRUE(IsConvexFace(*FaceOf({{5, 0, 0}, {5, 8, 0}, {5, 8, 8}, {5, 0, 8}})));
}

TEST(IsConvexFace, RefusesConcaveOutlines) {
    EXPECT_FALSE(IsConvexFace(*FaceOf(Corner)));
}

TEST(IsConvexFace, RefusesOutlinesWithStraightCorners) {
    EXPECT_FALSE(IsConvexFace(*FaceOf({{-8, 8, 0}, {0, 8, 0}, {8, 8, 0}, {8, -8, 0}, {-8, -8, 0}})));
}

TEST(IsConvexFace, RefusesOutlinesThatAreNotFlat) {
    EXPECT_FALSE(IsConvexFace(*FaceOf({{-8, 8, 0}, {8, 8, 0}, {8, -8, 0}, {-8, -8, 3}})));
    EXPECT_FALSE(IsConvexFace(*FaceOf({{0, 0, 0}, {8, 8, 0}})));
}

TEST(BestFitPlane, TakesTheLargestTriangle) {
    const CPlane plane = BestFitPlane(*FaceOf({{0, 0, 3}, {0, 1, 3}, {0, 100, 3}, {100, 0, 3}}));
    // Clockwise as seen from above; the plane faces down.
    EXPECT_EQ(plane.normal, (Vec3{0, 0, -1}));
    EXPECT_EQ(plane.dist, -3.0F);
}

TEST(BestFitPlane, NeedsAStrictlyLargerTriangleToChange) {
    // All four triangles are of one size; 0-1-2 comes first and faces down, 1-2-3 comes last and faces up.
    EXPECT_EQ(BestFitPlane(*FaceOf({{0, 0, 0}, {8, 8, 0}, {8, 0, 0}, {16, 8, 0}})).normal, (Vec3{0, 0, -1}));
}

TEST(BestFitPlane, TakesTheDistanceFromTheNormalBeforeItIsNarrowed) {
    const CPlane plane = BestFitPlane(*FaceOf({{568, 63, 207}, {813, 225, 75}, {-87, 408, 863}}));
    EXPECT_NE(plane.dist, static_cast<float>(Dot(plane.normal, Vec3{568, 63, 207})));
    EXPECT_EQ(plane.dist, 0x1.db00d8p+8F);
}

TEST(BestFitPlane, GivesNoPlaneForFewerThanThreePoints) {
    const CPlane plane = BestFitPlane(*FaceOf({{0, 0, 0}, {8, 8, 0}}));
    EXPECT_EQ(plane.normal, (Vec3{0, 0, 0}));
    EXPECT_EQ(plane.dist, -2212.0F);
}

class ConcaveBlockTest : public test::SolidTest {
  protected:
    ConcaveBlockTest() {
        ComputeHullBoxes();
        Options().mesh = true;
        test::AddTextureWithFlags(0);
    }

    static MapFace FaceWith(const Vec3& normal, float dist, std::vector<Vec3> polygon) {
        MapFace face = MapFaceOf(normal, dist, 1);
        face.polygon = std::move(polygon);
        return face;
    }
    static std::unique_ptr<MapBlock> BlockOf(std::vector<MapFace> faces) {
        auto block = std::make_unique<MapBlock>();
        block->flags = BlockMesh;
        block->number = 4;
        block->faces = std::move(faces);
        return block;
    }
};

TEST_F(ConcaveBlockTest, KeepsConvexSidesAsGiven) {
    const CBlockSet set = SetOf(BlockOf({FaceWith({0, 0, 1}, 0, Square)}));
    ASSERT_EQ(set.blocks.size(), 1U);
    const CBlock& block = *set.blocks.front();
    ASSERT_EQ(block.faces.size(), 1U);
    EXPECT_EQ(block.faces.front()->points, Square);
    EXPECT_EQ(block.faces.front()->texinfo, 1);
    EXPECT_EQ(block.faces.front()->sourceBlock, 4);
    EXPECT_EQ(block.mins, (Vec3{-8, -8, 0}));
    EXPECT_EQ(block.maxs, (Vec3{8, 8, 0}));
}

TEST_F(ConcaveBlockTest, IsDetailInEveryHull) {
    EXPECT_EQ(SetOf(BlockOf({FaceWith({0, 0, 1}, 0, Square)}), 0).blocks.front()->contents, -112);
    EXPECT_EQ(SetOf(BlockOf({FaceWith({0, 0, 1}, 0, Square)}), 1).blocks.front()->contents, -112);
}

TEST_F(ConcaveBlockTest, CutsConcaveSidesIntoTrianglesThatFaceInwards) {
    const CBlockSet set = SetOf(BlockOf({FaceWith({0, 0, 1}, 0, Corner), FaceWith({0, 0, 1}, 0, Square)}));
    const CBlock& block = *set.blocks.front();
    ASSERT_EQ(block.faces.size(), 5U);
    EXPECT_EQ(block.faces.front()->points, Square) << "the last side comes first";
    double area = 0;
    for (const CBlockFace& face : block.faces) {
        if (face.numpoints() != 3) continue;
        area += PolygonArea(*PolygonOfFace(face));
        const Vec3 outward = PolygonPlane(*PolygonOfFace(face)).normal;
        EXPECT_EQ(FaceNormal(face)[2], -outward[2]);
        EXPECT_EQ(face.sourceBlock, 4);
    }
    EXPECT_NEAR(area, 48, 1e-4);
}

TEST_F(ConcaveBlockTest, PutsTrianglesInFrontOfEarlierSides) {
    const CBlockSet set = SetOf(BlockOf({FaceWith({0, 0, 1}, 0, Square), FaceWith({0, 0, 1}, 0, Corner)}));
    const FaceList& faces = set.blocks.front()->faces;
    ASSERT_EQ(faces.size(), 5U);
    size_t place = 0;
    for (const CBlockFace& face : faces) EXPECT_EQ(face.points == Square, ++place == 5);
}

TEST_F(ConcaveBlockTest, NumbersPlanesOfTrianglesFromTheLastOneOn) {
    const CBlockSet set = SetOf(BlockOf({FaceWith({0, 0, 1}, 0, {{0, 0, 0}, {0, 8, 0}, {8, 8, 4}, {8, 0, 0}})}));
    const FaceList& faces = set.blocks.front()->faces;
    ASSERT_EQ(faces.size(), 2U) << "a side that is not flat";
    EXPECT_LT(faces.front()->planenum, faces.front()->next->planenum);
}

TEST_F(ConcaveBlockTest, DoesNotSnapVertices) {
    const CBlockSet set = SetOf(BlockOf({FaceWith({0, 0, 1}, 0, {{0, 0, 0}, {0, 7.9995F, 0}, {8, 0, 0}})}));
    EXPECT_EQ(set.blocks.front()->faces.front()->points[1][1], 7.9995F);
}

TEST_F(ConcaveBlockTest, ASideHasAtMost40Vertices) {
    std::vector<Vec3> ring;
    for (int i = 0; i < 41; ++i) {
        const double angle = -2 * M_PI * i / 41;
        ring.push_back(Narrow({100 * std::cos(angle), 100 * std::sin(angle), 0}));
    }
    auto block = BlockOf({FaceWith({0, 0, 1}, 0, ring)});
    test::ExpectFatal([&] { SetOf(std::move(block)); }, "E09E - block 3 has too many edges");
}

TEST_F(ConcaveBlockTest, WithoutAnyTriangleItIsNotCreated) {
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(SetOf(BlockOf({FaceWith({0, 0, 1}, 0, {{0, 0, 0}, {8, 8, 0}})})).blocks.empty());
    }
    EXPECT_EQ(Logged(), " \nWARNING W013: Can't create block 3\n");
    EXPECT_EQ(WarnCount, 0) << "this warning does not count";
    EXPECT_TRUE(SetOf(BlockOf({FaceWith({0, 0, 1}, 0, {})}), 1).blocks.empty());
    EXPECT_EQ(Logged(), " \nWARNING W013: Can't create block 3\n") << "once for each hull";
}

TEST_F(ConcaveBlockTest, ChecksConvexSides) {
    SetOf(BlockOf({FaceWith({0, 0, 1}, 5, Square)}));
    EXPECT_EQ(Logged(), " \nWARNING W010: block 4 - vertex out of plane!\n");
    EXPECT_EQ(WarnCount, 4);
}

TEST_F(ConcaveBlockTest, IsItsEnlargedBoxInCollisionHulls) {
    const CBlockSet set =
        SetOf(BlockOf({FaceWith({0, 0, 1}, 0, Square), FaceWith({0, 1, 0}, 0, {{0, 0, 0}, {0, 0, 40}})}), 2);
    const CBlock& block = *set.blocks.front();
    EXPECT_EQ(block.mins, (Vec3{-40, -40, -32}));
    EXPECT_EQ(block.maxs, (Vec3{40, 40, 56}));
    ASSERT_EQ(block.faces.size(), 6U);
    EXPECT_EQ(Logged(), "");
    EXPECT_EQ(WarnCount, 0);
}

TEST_F(ConcaveBlockTest, BoxWallsFaceInwardsFloorAndCeilingOutwards) {
    const CBlockSet set = SetOf(BlockOf({FaceWith({0, 0, 1}, 0, Square)}), 1);
    struct Expected {
        Vec3 normal;
        size_t axis;
        float at;
    };
    // The list runs from the last face of the table to the first.
    const std::vector<Expected> expected{{{1, 0, 0}, 0, -24},  {{-1, 0, 0}, 0, 24}, {{0, 0, 1}, 2, 16},
                                         {{0, 0, -1}, 2, -16}, {{0, 1, 0}, 1, -24}, {{0, -1, 0}, 1, 24}};
    auto face = set.blocks.front()->faces.begin();
    for (const Expected& side : expected) {
        for (size_t axis = 0; axis < 3; ++axis) EXPECT_EQ(FaceNormal(*face)[axis], side.normal[axis]);
        EXPECT_EQ(face->numpoints(), 4);
        for (const Vec3& point : face->points) EXPECT_EQ(point[side.axis], side.at);
        const Vec3 seen = PolygonPlane(*PolygonOfFace(*face)).normal;
        EXPECT_TRUE(VectorEqual(seen, side.normal, 0.001)) << "corners run clockwise against the normal";
        EXPECT_EQ(face->texinfo, 0);
        ++face;
    }
}

}  // namespace
}  // namespace k2k
