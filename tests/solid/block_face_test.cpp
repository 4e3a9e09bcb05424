#include "solid/block_face.h"

#include <cmath>

#include "solid_support.h"

namespace k2k {
namespace {

using test::MakeFloorFace;
using test::PlaneOf;

class BlockFaceTest : public test::SolidTest {
  protected:
    static std::unique_ptr<CBlockFace> Square(float size) {
        return MakeFloorFace({{-size, size, 0}, {size, size, 0}, {size, -size, 0}, {-size, -size, 0}});
    }
};

std::vector<Vec3> Ring(size_t count, double radius) {
    std::vector<Vec3> points;
    for (size_t i = 0; i < count; ++i) {
        const double angle = -2 * M_PI * static_cast<double>(i) / static_cast<double>(count);
        points.push_back(Narrow({radius * std::cos(angle), radius * std::sin(angle), 0}));
    }
    return points;
}

TEST_F(BlockFaceTest, HasMinusOnePointsOnceItIsMergedAway) {
    const auto face = Square(8);
    EXPECT_EQ(face->numpoints(), 4);
    face->mergedAway = true;
    EXPECT_EQ(face->numpoints(), -1);
}

TEST_F(BlockFaceTest, CopiesItsHeaderWithTheLinksOfTheTree) {
    const auto face = Square(8);
    CBlockFace other;
    face->leafCopy = &other;
    face->surfaceOut = &other;
    face->texinfo = 7;
    face->outputIndex = 9;
    face->next = &other;
    const auto header = face->CopyHeader();
    EXPECT_EQ(header->leafCopy, &other);
    EXPECT_EQ(header->surfaceOut, &other);
    EXPECT_EQ(header->texinfo, 7);
    EXPECT_EQ(header->outputIndex, 9);
    EXPECT_EQ(header->contents, face->contents);
    EXPECT_EQ(header->next, nullptr);
    EXPECT_TRUE(header->points.empty());
    EXPECT_EQ(face->Clone()->points, face->points);
    face->next = nullptr;
}

TEST_F(BlockFaceTest, SeesItsPlaneFromItsSide) {
    const auto face = Square(8);
    EXPECT_EQ(FaceNormal(*face), (Vec3{0, 0, 1}));
    face->planeside = 1;
    EXPECT_EQ(FaceNormal(*face)[2], -1.0F);
}

TEST_F(BlockFaceTest, SplitGivesBothSidesTheCut) {
    FacePieces pieces = SplitFace(Square(8), PlaneOf({1, 0, 0}, 2));
    EXPECT_EQ(pieces.front->points, (std::vector<Vec3>{{2, 8, 0}, {8, 8, 0}, {8, -8, 0}, {2, -8, 0}}));
    EXPECT_EQ(pieces.back->points, (std::vector<Vec3>{{-8, 8, 0}, {2, 8, 0}, {2, -8, 0}, {-8, -8, 0}}));
    EXPECT_EQ(pieces.back->planenum, pieces.front->planenum);
    EXPECT_EQ(pieces.back->sourceBlock, 1);
}

TEST_F(BlockFaceTest, SplitPutsAFaceOnThePlaneInFront) {
    FacePieces pieces = SplitFace(Square(8), PlaneOf({0, 0, 1}, 0));
    EXPECT_NE(pieces.front, nullptr);
    EXPECT_EQ(pieces.back, nullptr);
}

TEST_F(BlockFaceTest, SplitGivesAnUncutFaceAsItIs) {
    auto face = Square(8);
    const CBlockFace* record = face.get();
    FacePieces pieces = SplitFace(std::move(face), PlaneOf({1, 0, 0}, 20));
    EXPECT_EQ(pieces.front, nullptr);
    EXPECT_EQ(pieces.back.get(), record);
}

TEST_F(BlockFaceTest, SplitCutsAxialPlanesExactly) {
    auto face = MakeFloorFace({{-99.1F, 3, 0}, {7777.7F, 333, 0}, {7777.7F, -333, 0}});
    FacePieces pieces = SplitFace(std::move(face), PlaneOf({1, 0, 0}, 0.3F));
    EXPECT_EQ(pieces.front->points.front()[0], 0.3F);
    EXPECT_EQ(pieces.front->points.back()[0], 0.3F);
}

TEST_F(BlockFaceTest, SplitNarrowsTheCutOnce) {
    const Vec3 p1{-99.1F, 3.3F, 0.7F};
    const Vec3 p2{7777.7F, 333.9F, -0.1F};
    auto face = MakeFloorFace({p1, p2, {7777.7F, -333.3F, 0}});
    const float d1 = p1[0] - 100.0F;
    const float d2 = p2[0] - 100.0F;
    const double t = d1 / (static_cast<double>(d1) - d2);
    FacePieces pieces = SplitFace(std::move(face), PlaneOf({1, 0, 0}, 100));
    for (size_t i = 1; i < 3; ++i) {
        EXPECT_EQ(pieces.back->points[1][i], static_cast<float>(p1[i] + t * (static_cast<double>(p2[i]) - p1[i])));
    }
}

TEST_F(BlockFaceTest, SplitNarrowsCutPointsOnce) {
    test::Random random(3);
    const CPlane plane = PlaneOf({0.6F, 0.8F, 0}, 7.3F);
    for (int i = 0; i < 100; ++i) {
        const Vec3 p1 = Narrow({random.Real(50, 900), random.Real(50, 900), random.Real(-900, 900)});
        const Vec3 p2 = Narrow({random.Real(-900, -50), random.Real(-900, -50), random.Real(-900, 900)});
        const double d1 = static_cast<float>(Dot(plane.normal, p1) - plane.dist);
        const double d2 = static_cast<float>(Dot(plane.normal, p2) - plane.dist);
        Vec3 expected;
        for (size_t axis = 0; axis < 3; ++axis) {
            const double along = static_cast<double>(p2[axis]) - p1[axis];
            expected[axis] = static_cast<float>(p1[axis] + d1 / (d1 - d2) * along);
        }
        const FacePieces pieces = SplitFace(MakeFloorFace({p1, p2, {p2[0] - 99, p2[1], p2[2]}}), plane);
        EXPECT_EQ(pieces.front->points[1], expected);
        EXPECT_EQ(pieces.back->points[0], expected);
    }
}

TEST_F(BlockFaceTest, SplitDropsAPieceThatIsTooThin) {
    // The cut of the tip is 0.004 wide.
    auto face = MakeFloorFace({{0, 0, 0}, {100, 2, 0}, {100, -2, 0}});
    FacePieces pieces = SplitFace(std::move(face), PlaneOf({1, 0, 0}, 0.1F));
    EXPECT_EQ(pieces.back, nullptr);
    EXPECT_EQ(pieces.front->numpoints(), 3) << "and its two cut points are one";
    auto whole = MakeFloorFace({{0, 0, 0}, {0.005F, 0, 0}, {9, 0, 0}, {9, 0.005F, 0}});
    EXPECT_EQ(SplitFace(std::move(whole), PlaneOf({1, 0, 0}, -20)).front, nullptr);
}

TEST_F(BlockFaceTest, SplitRefusesAFaceThatWasMergedAway) {
    auto face = Square(8);
    face->mergedAway = true;
    test::ExpectFatal([&] { SplitFace(std::move(face), PlaneOf({1, 0, 0}, 0)); }, " \nE703");
}

TEST_F(BlockFaceTest, SplitFailsWhenAPieceGets41Points) {
    auto face = MakeFloorFace(Ring(40, 100));
    face->sourceBlock = 12;
    // Cutting one corner off a ring of 40 points leaves 41.
    const CPlane corner = PlaneOf({1, 0, 0}, 99.9F);
    test::ExpectFatal([&] { SplitFace(std::move(face), corner); }, "\nE09F - Block 11 has too many edges");
    FacePieces pieces = SplitFace(MakeFloorFace(Ring(39, 100)), corner);
    EXPECT_EQ(pieces.back->numpoints(), 40);
}

TEST_F(BlockFaceTest, SplitOfAFaceWithoutPointsGivesNothing) {
    FacePieces pieces = SplitFace(MakeFloorFace({}), PlaneOf({1, 0, 0}, 0));
    EXPECT_EQ(pieces.front, nullptr);
    EXPECT_EQ(pieces.back, nullptr);
}

TEST_F(BlockFaceTest, RemoveShortEdgesDropsAVertexThatEqualsItsSuccessor) {
    auto face = MakeFloorFace({{0, 0, 0}, {0.009F, 0.009F, 0}, {0, 9, 0}, {9, 9, 0}, {9, 0, 0}});
    EXPECT_TRUE(RemoveShortEdges(*face));
    EXPECT_EQ(face->points, (std::vector<Vec3>{{0.009F, 0.009F, 0}, {0, 9, 0}, {9, 9, 0}, {9, 0, 0}}));
}

TEST_F(BlockFaceTest, RemoveShortEdgesWrapsRound) {
    auto face = MakeFloorFace({{0, 0, 0}, {0, 9, 0}, {9, 9, 0}, {0.005F, 0, 0}});
    EXPECT_TRUE(RemoveShortEdges(*face));
    EXPECT_EQ(face->points, (std::vector<Vec3>{{0, 0, 0}, {0, 9, 0}, {9, 9, 0}}));
}

TEST_F(BlockFaceTest, RemoveShortEdgesTestsTheSameIndexAgain) {
    auto face = MakeFloorFace({{0, 0, 0}, {0.005F, 0, 0}, {0.012F, 0, 0}, {0, 9, 0}, {9, 9, 0}});
    EXPECT_TRUE(RemoveShortEdges(*face));
    EXPECT_EQ(face->points, (std::vector<Vec3>{{0.012F, 0, 0}, {0, 9, 0}, {9, 9, 0}}));
}

TEST_F(BlockFaceTest, RemoveShortEdgesStopsBelowThreeVertices) {
    auto face = MakeFloorFace({{0, 0, 0}, {0, 0, 0}, {0, 0, 0}, {0, 0, 0}});
    EXPECT_FALSE(RemoveShortEdges(*face));
    EXPECT_EQ(face->numpoints(), 2);
}

TEST_F(BlockFaceTest, FaceSideOfAFaceOnThePlaneIsBehind) {
    EXPECT_EQ(FaceSide(*Square(8), PlaneOf({0, 0, 1}, 0)), 1);
    EXPECT_EQ(FaceSide(*Square(8), PlaneOf({0, 0, -1}, 0)), 1);
}

TEST_F(BlockFaceTest, FaceSideTellsFrontBackAndBoth) {
    for (const CPlane& plane : {PlaneOf({1, 0, 0}, 0), PlaneOf({0.8F, 0.6F, 0}, 0)}) {
        CPlane moved = plane;
        moved.dist = -12;
        EXPECT_EQ(FaceSide(*Square(8), moved), 0);
        moved.dist = 12;
        EXPECT_EQ(FaceSide(*Square(8), moved), 1);
        moved.dist = 3;
        EXPECT_EQ(FaceSide(*Square(8), moved), 2);
    }
}

TEST_F(BlockFaceTest, FaceSideTakesPointsWithinEpsAsOnThePlane) {
    EXPECT_EQ(FaceSide(*Square(8), PlaneOf({1, 0, 0}, 7.96F)), 1);
    EXPECT_EQ(FaceSide(*Square(8), PlaneOf({1, 0, 0}, 7.94F)), 2);
    EXPECT_EQ(FaceSide(*Square(8), PlaneOf({-1, 0, 0}, -7.96F)), 0);
    EXPECT_EQ(FaceSide(*Square(8), PlaneOf({0, 1, 0}, -7.94F)), 2);
}

double AreaOf(const CBlockFace* face) {
    return face == nullptr ? 0 : PolygonArea(*PolygonOfFace(*face));
}

TEST_F(BlockFaceTest, RandomSplitsKeepTheAreaAndPutEachPieceOnItsSide) {
    test::Random random(5);
    for (int i = 0; i < 5000; ++i) {
        const auto count = static_cast<size_t>(random.Whole(3, 12));
        const auto face = MakeFloorFace(Ring(count, random.Real(20, 500)));
        const Vec3 normal = random.UnitVector();
        // As in the table, where only exact normals count as axial.
        const CPlane plane{normal, static_cast<float>(random.Real(-300, 300)), PlaneTypeFromNormal(normal)};
        const double area = AreaOf(face.get());
        const FacePieces pieces = SplitFace(face->Clone(), plane);
        EXPECT_NEAR(AreaOf(pieces.front.get()) + AreaOf(pieces.back.get()), area, 1e-4 * area + 1);
        if (pieces.front != nullptr && pieces.back != nullptr) {
            EXPECT_EQ(FaceSide(*pieces.front, plane), 0);
            EXPECT_EQ(FaceSide(*pieces.back, plane), 1);
            EXPECT_EQ(FaceSide(*face, plane), 2);
        }
    }
}

}  // namespace
}  // namespace k2k
