#include "surface/split_long_face.h"

#include <gtest/gtest.h>

#include <limits>

#include "surface_fixture.h"

namespace k2k {
namespace {

using test::Area;
using test::ExpectFatal;
using test::MakeFace;
using test::Points;

class SplitLongFaceTest : public test::SurfaceTest {
  protected:
    // A square of which the first side is divided by extra vertices.
    static Points SquareWith(int extra) {
        Points points{{0, 0, 0}};
        for (int i = 1; i <= extra; ++i) points.push_back({0, static_cast<float>(i), 0});
        const auto end = static_cast<float>(extra + 1);
        points.push_back({0, end, 0});
        points.push_back({end, end, 0});
        points.push_back({end, 0, 0});
        return points;
    }

    FaceList Split(Points points) {
        FaceList list;
        SplitLongFace(MakeFace(0, std::move(points)), list);
        return list;
    }
};

std::vector<Points> PointsOf(const FaceList& list) {
    std::vector<Points> points;
    for (const CBlockFace& face : list) points.push_back(face.points);
    return points;
}

TEST_F(SplitLongFaceTest, KeepsAFaceOf28) {
    const FaceList list = Split(SquareWith(24));
    EXPECT_EQ(PointsOf(list), (std::vector<Points>{SquareWith(24)}));
    EXPECT_EQ(list.front()->leafCopy, nullptr);
}

TEST_F(SplitLongFaceTest, KeepsTheChainOfAFaceThatIsNotSplit) {
    CBlockFace other;
    auto face = MakeFace(0, SquareWith(24));
    face->leafCopy = &other;
    FaceList list;
    SplitLongFace(std::move(face), list);
    EXPECT_EQ(list.front()->leafCopy, &other);
}

// 29 vertices: the first corner is vertex 26, so the ring turns until the corner is 25 sides away, and a piece of 27
// that reaches round the corner comes off.
TEST_F(SplitLongFaceTest, CutsRoundTheFirstCornerWhenTheRestIsShortEnough) {
    const Points ring = SquareWith(25);
    ASSERT_EQ(ring.size(), 29U);
    const FaceList list = Split(ring);
    const std::vector<Points> pieces = PointsOf(list);
    ASSERT_EQ(pieces.size(), 2U);
    EXPECT_EQ(pieces[1], Points(ring.begin() + 1, ring.begin() + 28));
    EXPECT_EQ(pieces[0], (Points{{0, 1, 0}, {26, 26, 0}, {26, 0, 0}, {0, 0, 0}}));
}

// The first corner is near, but the rest behind it is too long for one piece; the last corner is far.
TEST_F(SplitLongFaceTest, CutsAFullPieceWhenNoCornerFits) {
    Points ring{{0, 0, 0}, {0, 20, 0}};
    for (int i = 1; i < 40; ++i) ring.push_back({static_cast<float>(i), 20, 0});
    ring.push_back({40, 20, 0});
    ring.push_back({40, 0, 0});
    const std::vector<Points> pieces = PointsOf(Split(ring));
    ASSERT_EQ(pieces.size(), 2U);
    EXPECT_EQ(pieces[1], Points(ring.begin(), ring.begin() + 28));
    EXPECT_EQ(pieces[0].size(), ring.size() - 26);
}

// Up to the last corner the ring is short, and so is the run behind it.
TEST_F(SplitLongFaceTest, CutsPastTheLastCornerWhenThatFits) {
    Points ring{{0, 0, 0}};
    for (int i = 1; i <= 7; ++i) ring.push_back({0, static_cast<float>(i), 0});
    ring.push_back({10, 7, 0});
    ring.push_back({30, 0, 0});
    for (int i = 29; i >= 5; --i) ring.push_back({static_cast<float>(i), 0, 0});
    ASSERT_EQ(ring.size(), 35U);
    const std::vector<Points> pieces = PointsOf(Split(ring));
    // First corner 7 leaves 28 vertices: a piece of 9.
    EXPECT_EQ(pieces.back(), Points(ring.begin(), ring.begin() + 9));

    ring.insert(ring.begin() + 9, Vec3{20, 4, 0});
    const std::vector<Points> more = PointsOf(Split(ring));
    // First corner 7 leaves 29 now; last corner 10 leaves 26: a piece of 12.
    EXPECT_EQ(more.back(), Points(ring.begin(), ring.begin() + 12));
}

TEST_F(SplitLongFaceTest, CutsPastTheLastCornerWhenJust28VerticesFollow) {
    // Corners 3 and 10, and a last side of as many vertices as are asked for.
    const auto ringWith = [](int onLastSide) {
        Points ring;
        for (int i = 0; i < 3; ++i) ring.push_back({0, static_cast<float>(i), 0});
        for (int i = 0; i < 7; ++i) ring.push_back({static_cast<float>(i), 3, 0});
        for (int i = onLastSide; i > 0; --i) ring.push_back({static_cast<float>(i), 0, 0});
        return ring;
    };
    const Points ring = ringWith(28);
    EXPECT_EQ(PointsOf(Split(ring)).back(), Points(ring.begin(), ring.begin() + 12));
    const Points longer = ringWith(29);
    EXPECT_EQ(PointsOf(Split(longer)).back(), Points(longer.begin(), longer.begin() + 28));
}

TEST_F(SplitLongFaceTest, ChainsAllPiecesFromTheFace) {
    auto face = MakeFace(3, SquareWith(90), 5);
    face->texinfo = 9;
    const CBlockFace* original = face.get();
    FaceList list;
    SplitLongFace(std::move(face), list);
    EXPECT_EQ(list.front(), original);
    size_t length = 0;
    double area = 0;
    const CBlockFace* inList = list.front();
    for (const CBlockFace* piece = original; piece != nullptr; piece = piece->leafCopy) {
        EXPECT_EQ(piece, inList) << "the list is in the order of the chain";
        inList = inList->next;
        EXPECT_LE(piece->numpoints(), 28);
        EXPECT_GE(piece->numpoints(), 3);
        EXPECT_EQ(piece->texinfo, 9);
        EXPECT_EQ(piece->sourceBlock, 5);
        EXPECT_EQ(piece->planenum, 3);
        area += Area(piece->points);
        ++length;
    }
    EXPECT_EQ(length, list.size());
    EXPECT_GT(length, 3U);
    EXPECT_NEAR(area, 91.0 * 91.0, 0.01);
}

TEST_F(SplitLongFaceTest, RefusesAFragment) {
    CBlockFace other;
    auto face = MakeFace(0, SquareWith(25));
    face->leafCopy = &other;
    FaceList list;
    ExpectFatal([&] { SplitLongFace(std::move(face), list); }, "E104");
}

TEST_F(SplitLongFaceTest, StopsAtARingWithoutACorner) {
    const float none = std::numeric_limits<float>::quiet_NaN();
    FaceList list;
    ExpectFatal(
        [&] {
            SplitLongFace(MakeFace(0, Points(40, Vec3{none, none, none})), list);
        },
        "E103: Map size - too many edge vertices!");
}

// Bends add up along the run, so a round face has corners too.
TEST_F(SplitLongFaceTest, CutsARoundFace) {
    Points circle;
    for (int i = 0; i < 1000; ++i) {
        const double angle = i * 2 * 3.14159265358979 / 1000;
        circle.push_back({static_cast<float>(9000 * std::cos(angle)), static_cast<float>(9000 * std::sin(angle)), 0});
    }
    double area = 0;
    for (const Points& piece : PointsOf(Split(circle))) area += Area(piece);
    EXPECT_NEAR(area, Area(circle), 1);
}

}  // namespace
}  // namespace k2k
