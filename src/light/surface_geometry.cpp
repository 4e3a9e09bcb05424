#include "light/surface_geometry.h"

#include <cmath>
#include <cstring>

#include "driver/build_log.h"
#include "levelfile/geometry_data.h"
#include "levelfile/texture_data.h"
#include "solid/block.h"
#include "solid/vectors.h"

namespace k2k {
namespace {

const FinalPlaneRecord& PlaneRow(const SurfaceRecord& surface) {
    return Geometry().planes[surface.planeNumber];
}

std::span<const int32_t> EdgeEntries(const SurfaceRecord& surface) {
    return std::span(Geometry().surfaceEdges).subspan(surface.firstEdge, static_cast<size_t>(surface.edgeCount));
}

const Vec3& StartVertex(int32_t edgeEntry) {
    const CGeometryData& geometry = Geometry();
    return edgeEntry < 0 ? geometry.vertices[geometry.edges[static_cast<size_t>(-edgeEntry)].second]
                         : geometry.vertices[geometry.edges[static_cast<size_t>(edgeEntry)].first];
}

size_t DominantAxis(const Vec3& normal) {
    size_t axis = 0;
    if (std::fabs(normal[1]) > std::fabs(normal[axis])) axis = 1;
    if (std::fabs(normal[2]) > std::fabs(normal[axis])) axis = 2;
    return axis;
}

[[noreturn]] void BadLevel() {
    FatalError(" \nInvalid KLV file format");
}

void CheckEdgeEntry(int32_t entry) {
    const CGeometryData& geometry = Geometry();
    const auto number = static_cast<uint64_t>(std::llabs(entry));
    if (number >= geometry.edges.size()) BadLevel();
    const CEdge& edge = geometry.edges[number];
    if (edge.first >= geometry.vertices.size() || edge.second >= geometry.vertices.size()) BadLevel();
}

}  // namespace

SurfaceRecord& SurfaceRow(uint32_t surfaceIndex) {
    return Geometry().surfaces[surfaceIndex];
}

OrientedPlane SurfacePlane(const SurfaceRecord& surface) {
    const FinalPlaneRecord& plane = PlaneRow(surface);
    if (surface.side != 0) return {Negate(plane.normal), -plane.dist};
    return {plane.normal, plane.dist};
}

Vec3 SurfaceNormal(const SurfaceRecord& surface) {
    const Vec3& normal = PlaneRow(surface).normal;
    return surface.side != 0 ? Negate(normal) : normal;
}

const Texinfo& SurfaceTexinfo(const SurfaceRecord& surface) {
    return Textures().GetTexinfo(surface.texInfoId);
}

std::vector<Vec3> SurfaceVertices(const SurfaceRecord& surface) {
    std::vector<Vec3> vertices;
    vertices.reserve(static_cast<size_t>(surface.edgeCount));
    for (const int32_t entry : EdgeEntries(surface)) vertices.push_back(StartVertex(entry));
    return vertices;
}

std::vector<Vec3> SurfaceEdgeEnds(const SurfaceRecord& surface) {
    const CGeometryData& geometry = Geometry();
    std::vector<Vec3> ends;
    ends.reserve(2 * static_cast<size_t>(surface.edgeCount));
    for (const int32_t entry : EdgeEntries(surface)) {
        const CEdge& edge = geometry.edges[static_cast<size_t>(std::abs(entry))];
        ends.push_back(geometry.vertices[edge.first]);
        ends.push_back(geometry.vertices[edge.second]);
    }
    return ends;
}

std::vector<Vec3> ConvexOutline(const std::vector<Vec3>& points, const Vec3& normal) {
    if (points.size() < 3) return points;
    const size_t dropped = DominantAxis(normal);
    const size_t first = dropped == 0 ? 1 : 0;
    const size_t second = dropped == 2 ? 1 : 2;
    std::vector<Point2D> flat;
    flat.reserve(points.size());
    for (const Vec3& point : points) flat.push_back({point[first], point[second], static_cast<int32_t>(flat.size())});
    std::vector<Vec3> outline;
    for (const Point2D& corner : NearHull2D(flat, static_cast<int32_t>(flat.size()))) {
        outline.push_back(points[static_cast<size_t>(corner.index)]);
    }
    return outline;
}

Vec3d MeanOf(const std::vector<Vec3>& points) {
    Vec3d mean{};
    for (const Vec3& point : points) {
        for (size_t c = 0; c < 3; c++) mean[c] += point[c];
    }
    for (double& component : mean) component /= static_cast<double>(points.size());
    return mean;
}

std::string TextureTitle(const Texinfo& texinfo) {
    const CTextureData& textures = Textures();
    TextureName name{};
    if (texinfo.texture < textures.names.size()) {
        name = textures.names[texinfo.texture];
    } else if (texinfo.texture < textures.BlobTextureCount()) {
        // An image begins with its name.
        uint32_t offset = 0;
        std::memcpy(&offset, textures.blob.data() + 4 + 4 * static_cast<size_t>(texinfo.texture), sizeof offset);
        if (uint64_t{offset} + name.size() <= textures.blob.size()) {
            std::memcpy(name.data(), textures.blob.data() + offset, name.size());
        }
    }
    return std::string(name.data(), strnlen(name.data(), name.size()));
}

void CheckSurfaceTables() {
    const CGeometryData& geometry = Geometry();
    for (const SurfaceRecord& surface : geometry.surfaces) {
        if (surface.planeNumber >= geometry.planes.size() || surface.edgeCount < 0) BadLevel();
        const uint64_t endEdge = uint64_t{surface.firstEdge} + static_cast<uint64_t>(surface.edgeCount);
        if (endEdge > geometry.surfaceEdges.size()) BadLevel();
        for (const int32_t entry : EdgeEntries(surface)) CheckEdgeEntry(entry);
        SurfaceTexinfo(surface);
    }
}

}  // namespace k2k
