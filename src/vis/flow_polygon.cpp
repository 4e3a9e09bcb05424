// Polygons of the portal flow: points that lie in somebody's memory, clipped without allocating any.
#include "vis/flow_polygon.h"

#include "driver/build_log.h"

namespace k2k {
namespace {

constexpr size_t SpareClipPoints = 4;  // room that a clip has for points beyond those it was given

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

}  // namespace

FlowPlane WidenPlane(const CPlane& plane) {
    return {{plane.normal[0], plane.normal[1], plane.normal[2]}, plane.dist};
}

FlowPlane WidenFlipped(const CPlane& plane) {
    return {{-plane.normal[0], -plane.normal[1], -plane.normal[2]}, -plane.dist};
}

FlowPoints CutPolygon(FlowPoints points, const FlowPlane& plane, const PointPlaces& places, PointBuffer& out) {
    const size_t capacity = points.size() + SpareClipPoints;
    if (capacity > out.size()) FatalError("Too many intersection points requested !");
    const auto isFront = [&](size_t point) { return (places.front >> point & 1U) != 0; };
    const auto isBack = [&](size_t point) { return (places.back >> point & 1U) != 0; };
    size_t count = 0;
    const auto append = [&](const Vec3d& point) {
        if (count == capacity) FatalError("E052");
        out[count++] = point;
    };
    for (size_t i = 0; i < points.size(); ++i) {
        const size_t next = i + 1 == points.size() ? 0 : i + 1;
        if (!isBack(i)) append(points[i]);
        if (!(isFront(i) && isBack(next)) && !(isBack(i) && isFront(next))) continue;
        append(CutEdge(points[i], points[next], places.dists[i] / (places.dists[i] - places.dists[next]), plane));
    }
    return {out.data(), count};
}

}  // namespace k2k
