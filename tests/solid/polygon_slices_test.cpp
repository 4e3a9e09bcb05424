#include <algorithm>

#include "solid_support.h"

namespace k2k {
namespace {

class PolygonSlicesTest : public test::SolidTest {
  protected:
    static std::pair<double, double> Range(const CPolygon& polygon, size_t axis) {
        Vec3d mins, maxs;
        PolygonBounds(polygon, mins, maxs);
        return {mins[axis], maxs[axis]};
    }
};

TEST_F(PolygonSlicesTest, CutsAtWholeMultiplesInOrderOfCutting) {
    const PolygonRef floor = MakePolygon({{-10, 20, 0}, {20, 20, 0}, {20, 5, 0}, {-10, 5, 0}});
    const auto pieces = PolygonSlices(floor, {1, 0, 0}, {0, 1, 0}, 16);
    ASSERT_EQ(pieces.size(), 6U);
    using Pair = std::pair<double, double>;
    EXPECT_EQ(Range(*pieces[0], 0), Pair(-10, 0));
    EXPECT_EQ(Range(*pieces[0], 1), Pair(5, 16));
    EXPECT_EQ(Range(*pieces[1], 0), Pair(-10, 0));
    EXPECT_EQ(Range(*pieces[1], 1), Pair(16, 20));
    EXPECT_EQ(Range(*pieces[2], 0), Pair(0, 16));
    EXPECT_EQ(Range(*pieces[5], 0), Pair(16, 20));
    EXPECT_EQ(Range(*pieces[5], 1), Pair(16, 20));
}

TEST_F(PolygonSlicesTest, DividesTheSpacingByTheLengthOfTheDirection) {
    const PolygonRef floor = MakePolygon({{0, 16, 0}, {16, 16, 0}, {16, 0, 0}, {0, 0, 0}});
    EXPECT_EQ(PolygonSlices(floor, {1, 0, 0}, {0, 1, 0}, 16).size(), 1U);
    EXPECT_EQ(PolygonSlices(floor, {2, 0, 0}, {0, 1, 0}, 16).size(), 2U);
    EXPECT_EQ(PolygonSlices(floor, {2, 0, 0}, {0, -4, 0}, 16).size(), 8U);
}

TEST_F(PolygonSlicesTest, DoesNotCutAtTheEndsOfTheRange) {
    const PolygonRef floor = MakePolygon({{0, 32, 0}, {32, 32, 0}, {32, 0, 0}, {0, 0, 0}});
    EXPECT_EQ(PolygonSlices(floor, {1, 0, 0}, {0, 1, 0}, 16).size(), 4U);
    EXPECT_EQ(PolygonSlices(floor, {1, 0, 0}, {0, 1, 0}, 32).size(), 1U);
}

TEST_F(PolygonSlicesTest, TakesColinearPointsOutOfThePieces) {
    const PolygonRef floor = MakePolygon({{0, 16, 0}, {8, 16, 0}, {16, 16, 0}, {16, 0, 0}, {0, 0, 0}});
    const auto pieces = PolygonSlices(floor, {1, 0, 0}, {0, 1, 0}, 64);
    ASSERT_EQ(pieces.size(), 1U);
    EXPECT_EQ(pieces[0]->numpoints(), 4);
}

TEST_F(PolygonSlicesTest, GivesNothingForLinesAndSlivers) {
    EXPECT_TRUE(PolygonSlices(MakePolygon({{0, 0, 0}, {9, 0, 0}}), {1, 0, 0}, {0, 1, 0}, 4).empty());
    const PolygonRef sliver = MakePolygon({{0, 0, 0}, {5, 0.001, 0}, {10, 0, 0}});
    EXPECT_TRUE(PolygonSlices(sliver, {1, 0, 0}, {0, 1, 0}, 64).empty()) << "its middle point goes";
}

TEST_F(PolygonSlicesTest, CutsNothingAlongAVanishingDirection) {
    const PolygonRef floor = MakePolygon({{0, 32, 0}, {32, 32, 0}, {32, 0, 0}, {0, 0, 0}});
    EXPECT_EQ(PolygonSlices(floor, {0, 0, 0}, {0, 1, 0}, 16).size(), 2U);
}

TEST_F(PolygonSlicesTest, StopsAtAGridThatIsFarTooFine) {
    const PolygonRef floor = MakePolygon({{0, 1024, 0}, {1024, 1024, 0}, {1024, 0, 0}, {0, 0, 0}});
    const auto refuses = [&](const Vec3& u, const Vec3& v) {
        test::ExpectFatal([&] { PolygonSlices(floor, u, v, 16); }, "E017: Map size - too many surfaces");
    };
    for (const float length : {1e9F, 1e30F}) refuses({length, 0, 0}, {0, 1, 0});
    refuses({64, 0, 0}, {0, 64, 0});  // 4,096 slices of as many pieces
    EXPECT_EQ(PolygonSlices(floor, {64, 0, 0}, {0, 0.03125F, 0}, 16).size(), 8192U);
}

TEST_F(PolygonSlicesTest, KeepsTheArea) {
    test::Random random(3);
    for (int i = 0; i < 300; ++i) {
        std::vector<Vec3d> points;
        for (int corner = 0; corner < 7; ++corner) {
            const double angle = 2 * M_PI * (corner + random.Real(0, 0.5)) / 7;
            points.push_back({300 * std::cos(angle) + 40, 300 * std::sin(angle) - 70, 0});
        }
        const PolygonRef polygon = MakePolygon(points);
        const Vec3 u = Narrow({random.Real(0.2, 3), random.Real(-1, 1), 0});
        double area = 0;
        for (const PolygonRef& piece : PolygonSlices(polygon, u, {-u[1], u[0], 0}, 64)) area += PolygonArea(*piece);
        EXPECT_NEAR(area, PolygonArea(*polygon), 1e-3 * PolygonArea(*polygon));
    }
}

}  // namespace
}  // namespace k2k
