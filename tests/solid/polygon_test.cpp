#include "solid/polygon.h"

#include <cmath>

#include "solid_support.h"

namespace k2k {
namespace {

using test::FloorSquare;
using test::PlaneOf;
using test::Points;

constexpr double Eps = 0.05;

class PolygonTest : public test::SolidTest {};

PolygonRef RegularPolygon(int count, double radius) {
    std::vector<Vec3d> points;
    for (int i = 0; i < count; ++i) {
        const double angle = -2 * M_PI * i / count;
        points.push_back({radius * std::cos(angle), radius * std::sin(angle), 0});
    }
    return MakePolygon(std::move(points));
}

TEST_F(PolygonTest, ClipPolygonReturnsAPolygonWhollyBehindThePlane) {
    const PolygonRef square = FloorSquare(10);
    const PolygonRef behind = ClipPolygon(square, PlaneOf({1, 0, 0}, 20), false, Eps);
    EXPECT_EQ(behind, square);
    EXPECT_EQ(square.use_count(), 2);
}

TEST_F(PolygonTest, ClipPolygonSharesAPolygonInFrontOrOnThePlane) {
    const PolygonRef square = FloorSquare(10);
    const PolygonRef front = ClipPolygon(square, PlaneOf({1, 0, 0}, -20), false, Eps);
    EXPECT_EQ(front, square);
    EXPECT_EQ(square.use_count(), 2);
    EXPECT_EQ(ClipPolygon(square, PlaneOf({0, 0, 1}, 0), true, Eps), square);
    EXPECT_EQ(ClipPolygon(square, PlaneOf({0, 0, 1}, 0), false, Eps), square);
}

TEST_F(PolygonTest, ClipPolygonKeepsTheFrontInOrder) {
    const PolygonRef clipped = ClipPolygon(FloorSquare(10), PlaneOf({1, 0, 0}, 4), false, Eps);
    EXPECT_EQ(clipped->points, Points({{4, 10, 0}, {10, 10, 0}, {10, -10, 0}, {4, -10, 0}}));
}

TEST_F(PolygonTest, TakesAPointAtTheEpsilonAsOnThePlane) {
    // The corner at exactly -eps stays, and no cut is made beside it.
    const double eps = Options().eps;
    const PolygonRef triangle = MakePolygon({{eps, 0, 0}, {5, 5, 0}, {5, -5, 0}});
    EXPECT_EQ(ClipPolygonFree(triangle, PlaneOf({1, 0, 0}, 0), false, eps), triangle);
    const PolygonRef behind = MakePolygon({{-eps, 0, 0}, {5, 5, 0}, {5, -5, 0}});
    EXPECT_EQ(ClipPolygonFree(behind, PlaneOf({1, 0, 0}, 0), false, eps), behind);
    const PolygonRef beyond = MakePolygon({{-eps - 1e-9, 0, 0}, {5, 5, 0}, {5, -5, 0}});
    EXPECT_EQ(ClipPolygonFree(beyond, PlaneOf({1, 0, 0}, 0), false, eps)->numpoints(), 4);
}

TEST_F(PolygonTest, PutsCutsByAnAxialPlaneExactlyOnIt) {
    const PolygonRef polygon = MakePolygon({{-1.0 / 3, 0, 0}, {1e6 / 7, 3, 0}, {1e6 / 7, -3, 0}});
    EXPECT_EQ(ClipPolygon(polygon, PlaneOf({1, 0, 0}, 0.1F), false, 0.001)->points[0][0], 0.1F);
    EXPECT_EQ(ClipPolygon(polygon, PlaneOf({-1, 0, 0}, -0.1F), false, 0.001)->points[1][0], 0.1F);
}

TEST_F(PolygonTest, ClipPolygonFreeDropsAPolygonBehindThePlane) {
    EXPECT_EQ(ClipPolygonFree(FloorSquare(10), PlaneOf({1, 0, 0}, 20), false, Eps), nullptr);
    EXPECT_EQ(ClipPolygonFree(FloorSquare(10), PlaneOf({0, 0, 1}, 0), false, Eps), nullptr);
}

TEST_F(PolygonTest, ClipPolygonFreeKeepsItWithKeepOn) {
    const PolygonRef square = FloorSquare(10);
    EXPECT_EQ(ClipPolygonFree(square, PlaneOf({1, 0, 0}, 20), true, Eps), square);
}

TEST_F(PolygonTest, ChecksWhatItClips) {
    const PolygonRef empty = MakePolygon({});
    const CPlane plane = PlaneOf({1, 0, 0}, 0);
    test::ExpectFatal([&] { ClipPolygon(nullptr, plane, false, Eps); }, "\nInvalid extent!");
    test::ExpectFatal([&] { ClipPolygon(empty, plane, false, Eps); }, "\nInvalid extent!");
    test::ExpectFatal([&] { ClipPolygonFree(empty, plane, false, Eps); }, "\nInvalid extent!");
}

TEST_F(PolygonTest, RefusesMoreThan64Points) {
    EXPECT_EQ(RegularPolygon(64, 100)->numpoints(), 64);
    test::ExpectFatal([] { RegularPolygon(65, 100); }, "Too many intersection points requested !");
}

TEST_F(PolygonTest, RefusesToCutAPolygonOfMoreThan60Points) {
    const CPlane plane = PlaneOf({1, 0, 0}, 0.5F);
    EXPECT_EQ(ClipPolygon(RegularPolygon(60, 100), plane, false, Eps)->numpoints(), 31);
    const PolygonRef large = RegularPolygon(61, 100);
    test::ExpectFatal([&] { ClipPolygon(large, plane, false, Eps); }, "Too many intersection points requested !");
    test::ExpectFatal([&] { SplitPolygon(large, plane, 0); }, "Too many intersection points requested !");
    EXPECT_EQ(ClipPolygon(large, PlaneOf({1, 0, 0}, -200), false, Eps), large) << "nothing to cut";
}

TEST_F(PolygonTest, FailsWhenAPieceHasMoreThanFourExtraPoints) {
    // A comb: each of its teeth is cut twice.
    std::vector<Vec3d> comb;
    for (int i = 0; i < 10; ++i) {
        comb.push_back({2.0 * i, 1, 0});
        comb.push_back({2.0 * i + 0.9, -1, 0});
        comb.push_back({2.0 * i + 1, -1, 0});
    }
    const PolygonRef polygon = MakePolygon(comb);
    test::ExpectFatal([&] { SplitPolygon(polygon, PlaneOf({0, 1, 0}, 0), 0); }, "E052");
    const CPlane flipped = PlaneOf({0, -1, 0}, 0);
    EXPECT_EQ(ClipPolygon(polygon, PlaneOf({0, 1, 0}, 0), false, Eps)->numpoints(), 30);
    test::ExpectFatal([&] { ClipPolygon(polygon, flipped, false, Eps); }, "E052");
}

TEST_F(PolygonTest, SplitPolygonGivesAnUncutPolygonAsItIs) {
    const PolygonRef square = FloorSquare(10);
    PolygonPieces pieces = SplitPolygon(square, PlaneOf({1, 0, 0}, 20), 0);
    EXPECT_EQ(pieces.front, nullptr);
    EXPECT_EQ(pieces.back, square);
    pieces = SplitPolygon(square, PlaneOf({1, 0, 0}, -20), 0);
    EXPECT_EQ(pieces.front, square);
    EXPECT_EQ(pieces.back, nullptr);
    pieces = SplitPolygon(square, PlaneOf({0, 0, 1}, 0), 0);
    EXPECT_EQ(pieces.front, nullptr) << "a polygon on the plane is behind it";
    EXPECT_EQ(pieces.back, square);
}

TEST_F(PolygonTest, SplitPolygonGivesBothSidesTheCut) {
    const PolygonPieces pieces = SplitPolygon(FloorSquare(10), PlaneOf({1, 0, 0}, 4), 0);
    EXPECT_EQ(pieces.front->points, Points({{4, 10, 0}, {10, 10, 0}, {10, -10, 0}, {4, -10, 0}}));
    EXPECT_EQ(pieces.back->points, Points({{-10, 10, 0}, {4, 10, 0}, {4, -10, 0}, {-10, -10, 0}}));
}

TEST_F(PolygonTest, SplitPolygonGivesPointsOnThePlaneToBothSides) {
    const PolygonRef diamond = MakePolygon({{0, 5, 0}, {5, 0, 0}, {0, -5, 0}, {-5, 0, 0}});
    const PolygonPieces pieces = SplitPolygon(diamond, PlaneOf({1, 0, 0}, 0), 0);
    EXPECT_EQ(pieces.front->points, Points({{0, 5, 0}, {5, 0, 0}, {0, -5, 0}}));
    EXPECT_EQ(pieces.back->points, Points({{0, 5, 0}, {0, -5, 0}, {-5, 0, 0}}));
}

TEST_F(PolygonTest, AGapOfHalfAUnitLeavesThePiecesOneApart) {
    for (const auto split : {SplitPolygon, SplitPolygonFiltered}) {
        const PolygonPieces pieces = split(FloorSquare(10), PlaneOf({1, 0, 0}, 4), 0.5);
        EXPECT_EQ(pieces.front->points, Points({{4.5, 10, 0}, {10, 10, 0}, {10, -10, 0}, {4.5, -10, 0}}));
        EXPECT_EQ(pieces.back->points, Points({{-10, 10, 0}, {3.5, 10, 0}, {3.5, -10, 0}, {-10, -10, 0}}));
    }
}

TEST_F(PolygonTest, SplitPolygonUsesTheEpsOption) {
    const CPlane plane = PlaneOf({1, 0, 0}, 9.9F);
    EXPECT_NE(SplitPolygon(FloorSquare(10), plane, 0).front, nullptr);
    Options().eps = 0.2F;
    EXPECT_EQ(SplitPolygon(FloorSquare(10), plane, 0).front, nullptr);
    EXPECT_NE(SplitPolygonEps(FloorSquare(10), plane, 0, 0.01).front, nullptr);
}

TEST_F(PolygonTest, BasePolygonIsAClockwiseSquareOfTheBound) {
    Options().bound = 100;
    EXPECT_EQ(BasePolygonForPlane({0, 0, 1}, 7)->points,
              Points({{100, 100, 7}, {100, -100, 7}, {-100, -100, 7}, {-100, 100, 7}}));
    EXPECT_EQ(BasePolygonForPlane({1, 0, 0}, 7)->points,
              Points({{7, -100, 100}, {7, 100, 100}, {7, 100, -100}, {7, -100, -100}}));
    EXPECT_EQ(BasePolygonForPlane({0, -1, 0}, 7)->points,
              Points({{-100, -7, 100}, {100, -7, 100}, {100, -7, -100}, {-100, -7, -100}}));
}

TEST_F(PolygonTest, BasePolygonTakesZForUpUntilZDominates) {
    Options().bound = 100;
    // x and z equal: the scan replaces only on a strict increase, so x stays.
    const Vec3 diagonal{0.70710677F, 0, 0.70710677F};
    EXPECT_GT(BasePolygonForPlane(diagonal, 0)->points[0][2], 70.0);
}

TEST_F(PolygonTest, BasePolygonNeedsANormal) {
    test::ExpectFatal([] { BasePolygonForPlane({NAN, NAN, NAN}, 0); }, "E051");
}

TEST_F(PolygonTest, PlaneComesFromTheFirstThreePoints) {
    const CPlane plane = PolygonPlane(*FloorSquare(10, 5));
    EXPECT_EQ(plane.normal, (Vec3{0, 0, 1}));
    EXPECT_EQ(plane.dist, 5.0F);
    EXPECT_EQ(plane.type, 2);
    const PolygonRef reversed = MakePolygon({{0, 0, 5}, {1, 0, 5}, {1, 1, 5}});
    EXPECT_EQ(PolygonPlane(*reversed).type, -1);
    EXPECT_EQ(PolygonPlane(*reversed).dist, -5.0F);
    const PolygonRef line = MakePolygon({{0, 0, 5}, {1, 0, 5}});
    test::ExpectFatal([&] { PolygonPlane(*line); }, "\nInvalid extent!");
}

TEST_F(PolygonTest, MeasuresAreaCenterAndBounds) {
    const PolygonRef polygon = MakePolygon({{0, 0, 2}, {0, 4, 2}, {6, 4, 2}, {6, 0, 2}});
    EXPECT_EQ(PolygonArea(*polygon), 24.0F);
    EXPECT_EQ(PolygonCenter(*polygon), (Vec3{3, 2, 2}));
    Vec3d mins, maxs;
    PolygonBounds(*polygon, mins, maxs);
    EXPECT_EQ(mins, (Vec3d{0, 0, 2}));
    EXPECT_EQ(maxs, (Vec3d{6, 4, 2}));
}

TEST_F(PolygonTest, CenterIsTheMeanOfThePointsNotOfTheArea) {
    const PolygonRef polygon = MakePolygon({{0, 0, 0}, {0, 0, 0}, {0, 4, 0}, {4, 0, 0}});
    EXPECT_EQ(PolygonCenter(*polygon), (Vec3{1, 1, 0}));
}

TEST_F(PolygonTest, RemoveColinearDropsPointsOnStraightRuns) {
    EXPECT_EQ(PolygonRemoveColinear(Points({{0, 0, 0}, {0, 2, 0}, {0, 4, 0}, {4, 4, 0}, {4, 0, 0}})),
              Points({{0, 0, 0}, {0, 4, 0}, {4, 4, 0}, {4, 0, 0}}));
}

TEST_F(PolygonTest, RemoveColinearKeepsABendOfMoreThanAFewDegrees) {
    // The cosine of the bend is compared with 0.999, about 2.6 degrees.
    const auto bent = [](double height) {
        return PolygonRemoveColinear(Points({{-100, 0, 0}, {0, height, 0}, {100, 0, 0}, {0, -50, 0}})).size();
    };
    EXPECT_EQ(bent(2.1), 3U);
    EXPECT_EQ(bent(2.4), 4U);
}

TEST_F(PolygonTest, ContainsPointAsksForOneSideOfAllEdges) {
    const PolygonRef square = FloorSquare(10);
    EXPECT_TRUE(PolygonContainsPoint(*square, {0, 0, 0}));
    EXPECT_TRUE(PolygonContainsPoint(*square, {9.9, -9.9, 0}));
    EXPECT_TRUE(PolygonContainsPoint(*square, {10, 3, 0})) << "on an edge";
    EXPECT_FALSE(PolygonContainsPoint(*square, {11, 0, 0}));
    EXPECT_FALSE(PolygonContainsPoint(*square, {0, -11, 0}));
    EXPECT_FALSE(PolygonContainsPoint(CPolygon{}, {0, 0, 0}));
}

// Random convex polygons, cut by random planes.
class RandomCuts : public test::SolidTest {
  protected:
    PolygonRef RandomPolygon() {
        const int count = random_.Whole(3, 12);
        Vec3d across = Widen(random_.UnitVector());
        Vec3d along = Cross(across, Widen(random_.UnitVector()));
        NormalizeD(along);
        const Vec3d center{random_.Real(-500, 500), random_.Real(-500, 500), random_.Real(-500, 500)};
        std::vector<Vec3d> points;
        for (int i = 0; i < count; ++i) {
            const double angle = 2 * M_PI * (i + random_.Real(0, 0.6)) / count;
            const double u = 200 * std::cos(angle), v = 200 * std::sin(angle);
            points.push_back({center[0] + across[0] * u + along[0] * v, center[1] + across[1] * u + along[1] * v,
                              center[2] + across[2] * u + along[2] * v});
        }
        return MakePolygon(points);
    }
    CPlane RandomPlaneNear(const CPolygon& polygon) {
        Vec3 normal = random_.UnitVector();
        if (random_.Whole(0, 2) == 0) normal = random_.Whole(0, 1) == 0 ? Vec3{1, 0, 0} : Vec3{0, -1, 0};
        const Vec3d& point = polygon.points[static_cast<size_t>(random_.Whole(0, polygon.numpoints() - 1))];
        return PlaneOf(normal, static_cast<float>(Dot(normal, point) + random_.Whole(0, 3) * random_.Real(-50, 50)));
    }

    test::Random random_{7};
};

double Farthest(const CPolygon& polygon, const CPlane& plane, double sign) {
    double farthest = -1e9;
    for (const Vec3d& point : polygon.points) {
        farthest = std::max(farthest, sign * (Dot(plane.normal, point) - plane.dist));
    }
    return farthest;
}

TEST_F(RandomCuts, KeepTheAreaAndPutEachPieceOnItsSide) {
    for (int i = 0; i < 5000; ++i) {
        const PolygonRef polygon = RandomPolygon();
        const CPlane plane = RandomPlaneNear(*polygon);
        const PolygonPieces pieces = SplitPolygon(polygon, plane, 0);
        double area = 0;
        if (pieces.front != nullptr) {
            area += PolygonArea(*pieces.front);
            EXPECT_LE(Farthest(*pieces.front, plane, -1), Options().eps);
        }
        if (pieces.back != nullptr) {
            area += PolygonArea(*pieces.back);
            EXPECT_LE(Farthest(*pieces.back, plane, 1), Options().eps);
        }
        ASSERT_NEAR(area, PolygonArea(*polygon), 1e-5 * PolygonArea(*polygon)) << i;
    }
}

TEST_F(RandomCuts, GiveClippersAndSplitterTheSameFront) {
    for (int i = 0; i < 2000; ++i) {
        const PolygonRef polygon = RandomPolygon();
        const CPlane plane = RandomPlaneNear(*polygon);
        const PolygonRef front = SplitPolygon(polygon, plane, 0).front;
        const PolygonRef clipped = ClipPolygonFree(polygon, plane, false, Options().eps);
        ASSERT_EQ(front == nullptr, clipped == nullptr);
        if (front == nullptr) continue;
        EXPECT_EQ(front->points, clipped->points);
        EXPECT_EQ(ClipPolygon(polygon, plane, false, Options().eps)->points, clipped->points);
    }
}

}  // namespace
}  // namespace k2k
