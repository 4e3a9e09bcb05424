// Polygons of the portal flow: points that lie in somebody's memory, clipped without allocating any.
#include "vis/flow_polygon.h"

#include "driver/build_log.h"

namespace k2k {
namespace {

constexpr size_t SpareClipPoints = 4;  // room that a clip has for points beyond those it was given

enum class Side : uint8_t { Front, Back, On };

struct Classified {
    std::array<double, MaxPolygonPoints> dists;
    std::array<Side, MaxPolygonPoints> sides;
};

Vec3d CutEdge(const Vec3d& from, const Vec3d& to, double fraction, const FlowPlane& plane) {
    Vec3d cut;
    for (size_t axis = 0; axis < 3; ++axis) {
        // An axial plane's cut lies exactly on it.
        if (plane.normal[axis] == 1) {
            cut[axis] = plane.dist;
        } else if (plane.normal[axis] == -1) {
            cut[axis] = -plane.dist;
        } else {
            cut[axis] = from[axis] + fraction * (to[axis] - from[axis]);
        }
    }
    return cut;
}

FlowPoints CutPolygon(FlowPoints points, const FlowPlane& plane, const Classified& at, PointBuffer& out) {
    const size_t capacity = points.size() + SpareClipPoints;
    if (capacity > out.size()) FatalError("Too many intersection points requested !");
    size_t count = 0;
    const auto append = [&](const Vec3d& point) {
        if (count == capacity) FatalError("E052");
        out[count++] = point;
    };
    for (size_t i = 0; i < points.size(); ++i) {
        if (at.sides[i] != Side::Back) append(points[i]);
        if (at.sides[i] == Side::On) continue;
        const size_t next = i + 1 == points.size() ? 0 : i + 1;
        if (at.sides[next] == Side::On || at.sides[next] == at.sides[i]) continue;
        append(CutEdge(points[i], points[next], at.dists[i] / (at.dists[i] - at.dists[next]), plane));
    }
    return {out.data(), count};
}

}  // namespace

FlowPlane WidenPlane(const CPlane& plane) {
    return {{plane.normal[0], plane.normal[1], plane.normal[2]}, plane.dist};
}

FlowPlane WidenFlipped(const CPlane& plane) {
    return {{-plane.normal[0], -plane.normal[1], -plane.normal[2]}, -plane.dist};
}

FlowPoints ClipFlowPolygon(FlowPoints points, const FlowPlane& plane, double epsilon, PointBuffer& out) {
    Classified at;
    bool anyFront = false;
    bool anyBack = false;
    for (size_t i = 0; i < points.size(); ++i) {
        const double dist = Distance(plane, points[i]);
        at.dists[i] = dist;
        at.sides[i] = dist > epsilon ? Side::Front : dist < -epsilon ? Side::Back : Side::On;
        anyFront |= at.sides[i] == Side::Front;
        anyBack |= at.sides[i] == Side::Back;
    }
    if (!anyFront) return {};
    if (!anyBack) return points;
    return CutPolygon(points, plane, at, out);
}

}  // namespace k2k
