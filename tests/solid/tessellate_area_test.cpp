// Triangles of concave faces cover exactly their polygon.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "solid/block_face.h"
#include "solid/vectors.h"

namespace k2k {
namespace {

using Outline = std::vector<std::array<double, 2>>;

CBlockFace FaceOf(const Outline& outline) {
    CBlockFace face;
    for (const auto& [x, y] : outline) face.points.push_back(Narrow({x, y, 0}));
    return face;
}

// Twice the area of a ring in the plane z = 0, positive counter-clockwise.
double DoubleArea(const std::vector<Vec3>& ring) {
    double area = 0;
    for (size_t i = 0; i < ring.size(); i++) {
        const Vec3 &a = ring[i], &b = ring[(i + 1) % ring.size()];
        area += static_cast<double>(a[0]) * b[1] - static_cast<double>(b[0]) * a[1];
    }
    return area;
}

// All triangles turn the way the polygon does, and their areas add up to its area: there is no gap and no overlap.
void ExpectExactCover(const Outline& outline, double tolerance = 0) {
    const CBlockFace face = FaceOf(outline);
    const double expected = DoubleArea(face.points);
    const FaceList triangles = TessellateFace(face);
    double area = 0;
    size_t count = 0;
    for (const CBlockFace& triangle : triangles) {
        const double part = DoubleArea(triangle.points);
        EXPECT_GE(part * expected, 0);
        area += part;
        count++;
    }
    EXPECT_LE(count, outline.size() - 2);
    EXPECT_NEAR(std::fabs(area), std::fabs(expected), tolerance);
}

// Teeth of equal height around a wheel.
Outline Gear(int corners) {
    Outline outline;
    for (int i = 0; i < corners; i++) {
        const double angle = 2 * std::numbers::pi * i / corners, reach = i % 2 == 0 ? 80 : 56;
        outline.push_back({reach * std::cos(angle), reach * std::sin(angle)});
    }
    return outline;
}

TEST(TessellatedAreas, OfAnL) {
    ExpectExactCover({{0, 0}, {64, 0}, {64, 32}, {32, 32}, {32, 96}, {0, 96}});
}

TEST(TessellatedAreas, OfAComb) {
    Outline comb{{0, 0}};
    for (int i = 0; i < 9; i++) {
        const double x = 16.0 * i;
        comb.insert(comb.end(), {{x, 64}, {x + 8, 64}, {x + 8, 16}, {x + 16, 16}});
    }
    comb.push_back({144, 0});
    ExpectExactCover(comb);
}

TEST(TessellatedAreas, OfAWheelWith40Corners) {
    ExpectExactCover(Gear(40), 0.01);
}

TEST(TessellatedAreas, OfAnArch) {
    Outline arch{{128, 0}, {128, 192}, {-128, 192}, {-128, 0}, {-96, 0}};
    for (int i = 0; i <= 12; i++) {
        const double angle = std::numbers::pi * (1 - i / 12.0);
        arch.push_back({96 * std::cos(angle), 96 + 96 * std::sin(angle)});
    }
    arch.push_back({96, 0});
    ExpectExactCover(arch, 0.01);
}

}  // namespace
}  // namespace k2k
