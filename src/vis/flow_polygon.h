// Polygons of the portal flow: points that lie in somebody's memory, clipped without allocating any.
#pragma once

#include <array>
#include <span>

#include "solid/polygon.h"

namespace k2k {

// No point: nothing is left.
using FlowPoints = std::span<const Vec3d>;

// A 32-bit plane, widened once for all the points that are held against it.
struct FlowPlane {
    Vec3d normal{};
    double dist = 0;
};
FlowPlane WidenPlane(const CPlane& plane);
FlowPlane WidenFlipped(const CPlane& plane);

inline double Distance(const FlowPlane& plane, const Vec3d& point) {
    return plane.normal[0] * point[0] + plane.normal[1] * point[1] + plane.normal[2] * point[2] - plane.dist;
}

using PointBuffer = std::array<Vec3d, MaxPolygonPoints>;

// The distances of a polygon's points to a plane, and one bit a point for those in front of it and behind it; the
// others are on it.
struct PointPlaces {
    std::array<double, MaxPolygonPoints> dists;
    uint64_t front = 0, back = 0;

    PointPlaces(FlowPoints points, const FlowPlane& plane, double epsilon) {
        for (size_t i = 0; i < points.size(); ++i) {
            dists[i] = Distance(plane, points[i]);
            front |= static_cast<uint64_t>(dists[i] > epsilon) << i;
            back |= static_cast<uint64_t>(dists[i] < -epsilon) << i;
        }
        back &= ~front;  // both hold of points near the plane when the tolerance is negative
    }
};

// The part in front of the plane of a polygon with points on both sides; out must not hold the polygon.
FlowPoints CutPolygon(FlowPoints points, const FlowPlane& plane, const PointPlaces& places, PointBuffer& out);

// What lies in front of the plane: the input itself when none of it lies behind, nothing when no point lies in front,
// otherwise points in out. The results of ClipPolygonFree, to the bit.
inline FlowPoints ClipFlowPolygon(FlowPoints points, const FlowPlane& plane, double epsilon, PointBuffer& out) {
    const PointPlaces places(points, plane, epsilon);
    if (places.front == 0) return {};
    if (places.back == 0) return points;
    return CutPolygon(points, plane, places, out);
}

// A polygon that is clipped again and again. It refers to the points that it began with until a cut changes them.
class ClippedPolygon {
  public:
    void Start(FlowPoints points) {
        start_ = points;
        points_ = points;
    }
    // Whether anything is left.
    bool Clip(const FlowPlane& plane, double epsilon) {
        PointBuffer& out = buffers_[points_.data() == buffers_[0].data() ? 1 : 0];
        points_ = ClipFlowPolygon(points_, plane, epsilon, out);
        return !points_.empty();
    }
    bool Clip(std::span<const FlowPlane> planes, double epsilon) {
        for (const FlowPlane& plane : planes) {
            if (!Clip(plane, epsilon)) return false;
        }
        return true;
    }
    FlowPoints points() const { return points_; }
    bool isWhole() const { return points_.data() == start_.data(); }

  private:
    FlowPoints start_, points_;
    std::array<PointBuffer, 2> buffers_;
};

}  // namespace k2k
