// Clipping and separators of the flow against the plain forms.
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <random>

#include "solid/vectors.h"
#include "support/build_state.h"
#include "vis/flow_polygon.h"
#include "vis/separators.h"

namespace k2k::test {
namespace {

constexpr float Eps = 0.05F;

class FlowGeometryTest : public BuildState {
  protected:
    double Between(double low, double high) { return std::uniform_real_distribution<double>(low, high)(random); }
    int UpTo(int most) { return std::uniform_int_distribution<int>(0, most)(random); }

    // Points on a circle in a random plane; with grid, axial and on whole numbers.
    PolygonRef RandomPolygon(bool grid) {
        const int axis = UpTo(2);
        const auto corner = [&] { return Vec3d{Whole(-64, 64), Whole(-64, 64), Whole(-64, 64)}; };
        if (grid) {
            const Vec3d low = corner();
            const double width = 8.0 * (1 + UpTo(8));
            const double height = 8.0 * (1 + UpTo(8));
            const auto at = [&](double u, double v) {
                Vec3d point = low;
                point[static_cast<size_t>((axis + 1) % 3)] += u;
                point[static_cast<size_t>((axis + 2) % 3)] += v;
                return point;
            };
            return MakePolygon({at(0, 0), at(width, 0), at(width, height), at(0, height)});
        }
        const Vec3d u{Between(-1, 1), Between(-1, 1), Between(-1, 1)};
        const Vec3d v{Between(-1, 1), Between(-1, 1), Between(-1, 1)};
        const Vec3d middle = corner();
        const int count = 3 + UpTo(7);
        std::vector<Vec3d> points;
        for (int i = 0; i < count; ++i) {
            const double angle = 6.283185307 * i / count;
            Vec3d& point = points.emplace_back(middle);
            for (size_t c = 0; c < 3; ++c) point[c] += 40 * (u[c] * std::cos(angle) + v[c] * std::sin(angle));
        }
        return MakePolygon(points);
    }
    double Whole(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); }

    CPlane RandomPlane(bool axial) {
        CPlane plane;
        if (axial) {
            plane.normal[static_cast<size_t>(UpTo(2))] = UpTo(1) == 0 ? 1.0F : -1.0F;
        } else {
            plane.normal = {static_cast<float>(Between(-1, 1)), static_cast<float>(Between(-1, 1)),
                            static_cast<float>(Between(-1, 1))};
            Normalize(plane.normal);
        }
        plane.dist = static_cast<float>(Whole(-64, 64));
        return plane;
    }

    std::mt19937 random{7};
};

std::vector<Vec3d> ToVector(FlowPoints points) {
    return {points.begin(), points.end()};
}

TEST_F(FlowGeometryTest, ClipsLikeClipPolygonFree) {
    for (int i = 0; i < 4000; ++i) {
        const PolygonRef polygon = RandomPolygon(i % 2 == 0);
        const CPlane plane = RandomPlane(i % 3 == 0);
        const PolygonRef expected = ClipPolygonFree(polygon, plane, false, Eps);
        PointBuffer out;
        const FlowPoints clipped = ClipFlowPolygon(polygon->points, WidenPlane(plane), Eps, out);
        ASSERT_EQ(ToVector(clipped), expected ? expected->points : std::vector<Vec3d>());
    }
}

TEST_F(FlowGeometryTest, APointAtTheToleranceIsOnThePlane) {
    const FlowPlane plane{{1, 0, 0}, 0};
    PointBuffer out;
    const std::vector<Vec3d> at{{0.25, 0, 0}, {0.25, 1, 0}, {-0.25, 1, 0}};
    EXPECT_TRUE(ClipFlowPolygon(at, plane, 0.25, out).empty());
    const std::vector<Vec3d> front{{0.2500001, 0, 0}, {0.25, 1, 0}, {-0.25, 1, 0}};
    EXPECT_EQ(ClipFlowPolygon(front, plane, 0.25, out).data(), front.data());
}

TEST_F(FlowGeometryTest, AWholePolygonIsNotCopied) {
    const PolygonRef polygon = RandomPolygon(true);
    ClippedPolygon clipped;
    clipped.Start(polygon->points);
    ASSERT_TRUE(clipped.Clip({{0, 0, 1}, -1000}, Eps));
    EXPECT_TRUE(clipped.isWhole());
    EXPECT_EQ(clipped.points().data(), polygon->points.data());
    EXPECT_FALSE(clipped.Clip({{0, 0, 1}, 1000}, Eps));
}

TEST_F(FlowGeometryTest, AZigZagWithTooManyCutsIsFatal) {
    std::vector<Vec3d> points;
    for (int i = 0; i < 12; ++i) points.push_back({i % 2 == 0 ? 1.0 : -1.0, static_cast<double>(i), 0});
    PointBuffer out;
    ExpectFatal([&] { ClipFlowPolygon(points, {{1, 0, 0}, 0}, Eps, out); }, "E052");
}

// The separator of an edge and a point, straight from the rule.
std::optional<CPlane> PlainSeparator(const CPolygon& source, const CPolygon& pass, size_t i, size_t j) {
    const size_t l = (i + 1) % source.points.size();
    CPlane plane;
    plane.normal =
        Cross(Narrow(Sub(source.points[l], source.points[i])), Narrow(Sub(pass.points[j], source.points[i])));
    if (Normalize(plane.normal) <= Eps) return {};
    plane.dist = static_cast<float>(Dot(plane.normal, pass.points[j]));
    const auto distance = [&](const Vec3d& point) {
        return static_cast<float>(Dot(plane.normal, point) - static_cast<double>(plane.dist));
    };
    int side = 0;
    for (size_t k = 0; k < source.points.size() && side == 0; ++k) {
        if (k == i || k == l) continue;
        const float d = distance(source.points[k]);
        side = d < -Eps ? -1 : d > Eps ? 1 : 0;
    }
    if (side == 0) return {};
    if (side > 0) plane = {Negate(plane.normal), -plane.dist, 0};
    int inFront = 0;
    for (size_t k = 0; k < pass.points.size(); ++k) {
        if (k == j) continue;
        if (distance(pass.points[k]) < -Eps) return {};
        if (distance(pass.points[k]) > Eps) ++inFront;
    }
    if (inFront == 0) return {};
    return plane;
}

std::vector<std::array<double, 4>> PlainSeparators(const CPolygon& source, const CPolygon& pass) {
    std::vector<std::array<double, 4>> planes;
    for (size_t i = 0; i < source.points.size(); ++i) {
        for (size_t j = 0; j < pass.points.size(); ++j) {
            const std::optional<CPlane> plane = PlainSeparator(source, pass, i, j);
            if (plane) planes.push_back({plane->normal[0], plane->normal[1], plane->normal[2], plane->dist});
        }
    }
    return planes;
}

std::vector<std::array<double, 4>> FastSeparators(const CPolygon& source, const CPolygon& pass, bool flip,
                                                  bool skipRepeats = false) {
    std::vector<FlowPlane> planes;
    AddSeparators(source.points, pass.points, flip, {Eps, skipRepeats}, planes);
    std::vector<std::array<double, 4>> numbers;
    for (const FlowPlane& plane : planes) {
        numbers.push_back({plane.normal[0], plane.normal[1], plane.normal[2], plane.dist});
    }
    return numbers;
}

TEST_F(FlowGeometryTest, FindsTheSeparatorsOfThePlainRule) {
    size_t found = 0;
    for (int i = 0; i < 4000; ++i) {
        const PolygonRef source = RandomPolygon(i % 3 != 0);
        const PolygonRef pass = RandomPolygon(i % 3 != 1);
        const auto expected = PlainSeparators(*source, *pass);
        ASSERT_EQ(FastSeparators(*source, *pass, false), expected) << "pair " << i;
        found += expected.size();
    }
    EXPECT_GT(found, 10000U);
}

TEST_F(FlowGeometryTest, FlippedSeparatorsLookTheOtherWay) {
    const PolygonRef source = MakePolygon({{0, 0, 0}, {0, 64, 0}, {0, 64, 64}, {0, 0, 64}});
    const PolygonRef pass = MakePolygon({{64, 0, 0}, {64, 64, 0}, {64, 64, 64}, {64, 0, 64}});
    auto flipped = FastSeparators(*source, *pass, true);
    for (auto& plane : flipped) {
        for (double& number : plane) number = -number;
    }
    EXPECT_EQ(flipped, FastSeparators(*source, *pass, false));
    EXPECT_EQ(flipped.size(), 8U) << "each edge with the two points of the far edge";
}

TEST_F(FlowGeometryTest, LeavesOutPlanesThatRepeatTheOneInFront) {
    const auto withoutRepeats = [](std::vector<std::array<double, 4>> planes) {
        planes.erase(std::unique(planes.begin(), planes.end()), planes.end());
        return planes;
    };
    size_t leftOut = 0;
    for (int i = 0; i < 2000; ++i) {
        const PolygonRef source = RandomPolygon(i % 4 != 0);
        const PolygonRef pass = RandomPolygon(i % 4 != 1);
        const auto all = FastSeparators(*source, *pass, false);
        const auto some = FastSeparators(*source, *pass, false, true);
        ASSERT_EQ(withoutRepeats(some), withoutRepeats(all)) << "pair " << i;
        leftOut += all.size() - some.size();
    }
    EXPECT_GT(leftOut, 1000U);
}

TEST_F(FlowGeometryTest, RepeatsMatterForLargeCoordinatesOrASmallTolerance) {
    EXPECT_TRUE(MaySkipRepeats(168000, 0.05F));
    EXPECT_FALSE(MaySkipRepeats(500000, 0.05F));
    EXPECT_FALSE(MaySkipRepeats(100, 0));
    EXPECT_FALSE(MaySkipRepeats(100, -1));
}

TEST_F(FlowGeometryTest, NarrowPolygonsNearEachOtherSeparateLikeThePlainRule) {
    // Sizes around the tolerance, where roundings decide.
    for (int i = 0; i < 4000; ++i) {
        std::vector<Vec3d> a, b;
        const double size = std::pow(10.0, Between(-2, 1));
        const Vec3d far{Whole(-30000, 30000), Whole(-30000, 30000), Whole(-30000, 30000)};
        for (int k = 0; k < 4; ++k) {
            const double u = (k == 1 || k == 2) ? size : 0;
            const double v = k >= 2 ? size : 0;
            a.push_back({far[0] + Between(-0.01, 0.01), far[1] + u, far[2] + v});
            b.push_back({far[0] + size, far[1] + u * 0.9 + Between(-0.06, 0.06), far[2] + v});
        }
        ASSERT_EQ(FastSeparators({a}, {b}, false), PlainSeparators({a}, {b})) << "pair " << i;
    }
}

}  // namespace
}  // namespace k2k::test
