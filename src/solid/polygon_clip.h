// The steps that all polygon clippers share: classify the points, cut the edges.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "solid/polygon.h"
#include "solid/vectors.h"

namespace k2k {

enum class PointSide : uint8_t { Front, Back, On };

// Distances and sides of a polygon's points; the first point is repeated at the end, so that edges need no wrap test.
struct PointSides {
    std::array<double, MaxPolygonPoints + 1> distance;
    std::array<PointSide, MaxPolygonPoints + 1> side;
    int front = 0, back = 0;

    // At most MaxPolygonPoints points: fatal beyond.
    PointSides(std::span<const Vec3d> points, const CPlane& plane, double epsilon);
    // Whether the edge that begins at this point goes from one side to the other.
    bool IsCutAfter(size_t point) const {
        return side[point] != PointSide::On && side[point + 1] != PointSide::On && side[point] != side[point + 1];
    }
};

// Where the edge from p1 to p2 meets the plane; t is the fraction of the way. Axial planes are met exactly.
inline Vec3d CutPoint(const Vec3d& p1, const Vec3d& p2, double t, const CPlane& plane) {
    Vec3d cut;
    for (size_t axis = 0; axis < 3; ++axis) {
        if (plane.normal[axis] == 1.0F) {
            cut[axis] = plane.dist;
        } else if (plane.normal[axis] == -1.0F) {
            cut[axis] = -plane.dist;
        } else {
            cut[axis] = p1[axis] + t * (p2[axis] - p1[axis]);
        }
    }
    return cut;
}

// How many points a piece of a polygon may have; fatal when that is more than a polygon can hold.
size_t PieceCapacity(size_t pointCount);

// The part in front of the plane, for a polygon with points on both sides. out is overwritten.
void KeepFront(std::span<const Vec3d> points, const CPlane& plane, const PointSides& sides, std::vector<Vec3d>& out);

}  // namespace k2k
