// The check for detail blocks that would have to cut a surface of the level.
#include <algorithm>
#include <cmath>

#include "bsp/detail.h"
#include "bsp/progress.h"
#include "levelfile/geometry_data.h"
#include "levelfile/texture_data.h"
#include "solid/plane.h"
#include "solid/vectors.h"

namespace k2k {
namespace {

constexpr int32_t BlocksPerMark = 30;
constexpr double OnPlane = 0.1;  // nearer to a face's plane a point is on it
// Textures whose surfaces are not looked at: not shaded, flat, sky, turbulent, clip only, and the unused bit 0x20.
constexpr uint32_t UncheckedTextures =
    TextureNoLightmap | TextureFlat | TextureSky | TextureTurbulent | 0x20U | TextureClipOnly;

// The start vertex of each of the surface's edges.
std::vector<Vec3> SurfaceVertices(const SurfaceRecord& surface) {
    const CGeometryData& geometry = Geometry();
    std::vector<Vec3> vertices;
    for (int32_t i = 0; i < surface.edgeCount; ++i) {
        const int32_t edge = geometry.surfaceEdges[surface.firstEdge + static_cast<uint32_t>(i)];
        const uint32_t vertex = edge < 0 ? geometry.edges[static_cast<size_t>(-edge)].second
                                         : geometry.edges[static_cast<size_t>(edge)].first;
        vertices.push_back(geometry.vertices[vertex]);
    }
    return vertices;
}

// The axis along which the normal is longest, the first of equals.
size_t DominantAxis(const Vec3& normal) {
    size_t axis = 0;
    for (size_t i = 1; i < 3; ++i) {
        if (std::fabs(normal[i]) > std::fabs(normal[axis])) axis = i;
    }
    return axis;
}

// The vertices that span the surface, without those that lie inside or along its outline.
std::vector<Point2D> SurfaceOutline(const std::vector<Vec3>& vertices, const Vec3& normal) {
    const size_t dropped = DominantAxis(normal);
    const size_t x = dropped == 0 ? 1 : 0;
    const size_t y = dropped == 2 ? 1 : 2;
    std::vector<Point2D> points;
    points.reserve(vertices.size());
    for (const Vec3& vertex : vertices) {
        points.push_back({vertex[x], vertex[y], static_cast<int32_t>(points.size())});
    }
    return NearHull2D(points, static_cast<int32_t>(points.size()));
}

// One unit in front of the middle of the surface's outline.
Vec3 SurfaceMidpoint(const SurfaceRecord& surface, const std::vector<Vec3>& vertices) {
    const Vec3& planeNormal = Geometry().planes[surface.planeNumber].normal;
    const std::vector<Point2D> outline = SurfaceOutline(vertices, planeNormal);
    Vec3 sum{};
    for (const Point2D& point : outline) sum = Add(sum, vertices[static_cast<size_t>(point.index)]);
    const auto count = static_cast<float>(outline.size());
    const Vec3 middle{sum[0] / count, sum[1] / count, sum[2] / count};
    return Add(middle, surface.side != 0 ? Negate(planeNormal) : planeNormal);
}

bool IsInBox(const Vec3& point, const CBlock& block) {
    for (size_t axis = 0; axis < 3; ++axis) {
        if (point[axis] < block.mins[axis] || point[axis] > block.maxs[axis]) return false;
    }
    return true;
}

// What the check needs of a surface, worked out once for all detail blocks.
struct CheckedSurface {
    std::vector<Vec3> vertices;
    Vec3 midpoint{};
};

std::vector<CheckedSurface> SurfacesToCheck() {
    std::vector<CheckedSurface> checked;
    for (const SurfaceRecord& surface : Geometry().surfaces) {
        if (surface.edgeCount < 1) continue;
        if ((Textures().GetTexinfo(surface.texInfoId).flags & UncheckedTextures) != 0) continue;
        std::vector<Vec3> vertices = SurfaceVertices(surface);
        const Vec3 midpoint = SurfaceMidpoint(surface, vertices);
        checked.push_back({std::move(vertices), midpoint});
    }
    return checked;
}

bool Cuts(const CBlock& block, const CheckedSurface& surface) {
    if (!IsInBox(surface.midpoint, block) || !PointInsideBlock(surface.midpoint, block)) return false;
    return std::any_of(surface.vertices.begin(), surface.vertices.end(),
                       [&](const Vec3& vertex) { return !PointInsideBlock(vertex, block); });
}

}  // namespace

bool PointInsideBlock(const Vec3& point, const CBlock& block) {
    double last = 0;
    for (const CBlockFace& face : block.faces) {
        const CPlane& plane = TablePlane(face.planenum);
        double distance = Dot(point, plane.normal) - plane.dist;
        if (face.planeside != 0) distance = -distance;
        if (std::fabs(distance) < OnPlane) continue;
        if (distance * last < 0) return false;
        last = distance;
    }
    return true;
}

bool CheckDetailMidpoints(const CBlockSet& detail, std::vector<int32_t>& intersecting) {
    if (!detail.blocks.empty()) {
        const std::vector<CheckedSurface> surfaces = SurfacesToCheck();
        for (const CBlock& block : detail.blocks) {
            CountProgress(BlocksPerMark);
            const bool cuts = std::any_of(surfaces.begin(), surfaces.end(),
                                          [&](const CheckedSurface& surface) { return Cuts(block, surface); });
            if (cuts) intersecting.push_back(block.blockNumber);
        }
    }
    return intersecting.empty();
}

}  // namespace k2k
