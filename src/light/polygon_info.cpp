#include "light/polygon_info.h"

#include <algorithm>
#include <optional>

#include "light/near_equal.h"
#include "light/phong_table.h"
#include "light/polygon_test.h"
#include "light/surface_geometry.h"

namespace k2k {
namespace {

// Normals with a smaller dot product meet in a hard crease.
constexpr double CreaseCosine = 0.2;

// Enters one smooth surface into the lists of the edges that it shares with the polygon.
void JoinSurface(PolygonInfo& polygon, int32_t other, const std::vector<Vec3>& otherPoints) {
    const size_t count = polygon.points.size();
    std::optional<size_t> first;  // a shared point that waits for its partner
    for (size_t i = 0; i < count; i++) {
        const bool shared = SharesPoint(otherPoints, polygon.points[i]);
        if (!shared) {
            if (first) polygon.edgeNeighbours[*first].push_back(other);
        } else if (!first) {
            first = i;
        } else {
            if ((*first + 1) % count == i) {
                polygon.edgeNeighbours[*first][0] = other;
            } else if ((i + 1) % count == *first) {
                polygon.edgeNeighbours[i][0] = other;
            }
            polygon.edgeNeighbours[*first].push_back(other);
            polygon.edgeNeighbours[i].push_back(other);
            first.reset();
        }
    }
}

// Sorts the list behind its head; the head itself stands there as NoNeighbour.
void TidyNeighbours(std::vector<int32_t>& list) {
    const int32_t head = list.front();
    std::replace(list.begin(), list.end(), head, NoNeighbour);
    std::sort(list.begin(), list.end());
    list.erase(std::unique(list.begin(), list.end()), list.end());
    list.insert(list.begin(), head);
}

}  // namespace

PolygonInfo MakePolygonInfo(uint32_t surfaceIndex) {
    PolygonInfo polygon;
    polygon.surfaceIndex = surfaceIndex;
    polygon.surface = &SurfaceRow(surfaceIndex);
    const OrientedPlane plane = SurfacePlane(*polygon.surface);
    polygon.normal = plane.normal;
    polygon.dist = plane.dist;
    polygon.points = ConvexOutline(SurfaceEdgeEnds(*polygon.surface), plane.normal);
    return polygon;
}

PolygonInfo MakePolygonInfo(uint32_t surfaceIndex, const CPhongTable& smooth) {
    PolygonInfo polygon = MakePolygonInfo(surfaceIndex);
    polygon.edgeNeighbours.assign(polygon.points.size(), {NoNeighbour});
    for (const uint32_t row : smooth.RowsSharingPoints(polygon.points)) {
        const uint32_t other = smooth.PhongSurfaces()[row];
        if (other == surfaceIndex) continue;
        if (!(Dot(polygon.normal, SurfaceNormal(SurfaceRow(other))) > CreaseCosine)) continue;
        JoinSurface(polygon, static_cast<int32_t>(other), smooth.Outline(row));
    }
    for (auto& list : polygon.edgeNeighbours) TidyNeighbours(list);
    return polygon;
}

bool PointInSurface(const Vec3& point, uint32_t surfaceIndex) {
    const PolygonInfo polygon = MakePolygonInfo(surfaceIndex);
    return IsInsideOutline(point, polygon.points, polygon.normal);
}

}  // namespace k2k
