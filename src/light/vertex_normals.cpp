// Dot products and weights are double, from 32-bit vectors.
#include "light/vertex_normals.h"

#include <algorithm>
#include <cmath>

#include "driver/build_log.h"
#include "levelfile/geometry_data.h"
#include "light/near_equal.h"
#include "light/surface_geometry.h"

namespace k2k {
namespace {

constexpr double SmoothingCos = 0.70710677F;  // surfaces at a wider angle meet in a crease
constexpr size_t MaxNeighbours = 64;
constexpr double ShortestNormal = 1e-20;
constexpr double VanishingNormal = 0.0001;

bool IsZero(const Vec3& v) {
    return std::none_of(v.begin(), v.end(), [](float c) { return std::fabs(c) > VanishingNormal; });
}

// The number of the start vertex of every edge, in the order of the ring.
std::vector<uint32_t> VertexNumbers(const SurfaceRecord& surface) {
    const CGeometryData& geometry = Geometry();
    std::vector<uint32_t> numbers;
    numbers.reserve(static_cast<size_t>(surface.edgeCount));
    for (int32_t i = 0; i < surface.edgeCount; i++) {
        const int32_t entry = geometry.surfaceEdges[surface.firstEdge + static_cast<uint32_t>(i)];
        const CEdge& edge = geometry.edges[static_cast<size_t>(std::abs(entry))];
        numbers.push_back(entry < 0 ? edge.second : edge.first);
    }
    return numbers;
}

// Per vertex the lit surfaces that use it, each once, in rising order.
std::vector<std::vector<uint32_t>> SurfacesAtVertices() {
    const auto& surfaces = Geometry().surfaces;
    std::vector<std::vector<uint32_t>> lists(Geometry().vertices.size());
    for (uint32_t i = 0; i < surfaces.size(); i++) {
        if (!IsLitSurface(surfaces[i])) continue;
        for (const uint32_t vertex : VertexNumbers(surfaces[i])) {
            auto& list = lists[vertex];
            if (list.empty() || list.back() != i) list.push_back(i);
        }
    }
    return lists;
}

bool IsPhong(uint32_t surfaceIndex) {
    return (SurfaceFlags(SurfaceRow(surfaceIndex)) & TexturePhong) != 0;
}

void JoinNeighbour(std::vector<uint32_t>& neighbours, uint32_t surface) {
    if (std::find(neighbours.begin(), neighbours.end(), surface) != neighbours.end()) return;
    if (neighbours.size() == MaxNeighbours) FatalError("Face has too much neighbors\n");
    neighbours.push_back(surface);
}

// What a point is of the triangle of the middle and two vertices: middle + a * e1 + b * e2.
struct TriangleWeights {
    double a, b;
};
TriangleWeights WeightsOf(const Vec3& e1, const Vec3& e2, const Vec3& p) {
    const double d11 = Dot(e1, e1);
    const double d22 = Dot(e2, e2);
    const double d12 = Dot(e1, e2);
    const double e2p = Dot(e2, p);
    const double a = (Dot(e1, p) * d22 - e2p * d12) / (d11 * d22 - d12 * d12);
    return {a, (e2p - a * d12) / d22};
}

}  // namespace

bool IsLitSurface(const SurfaceRecord& surface) {
    return surface.texInfoId >= 0 && (SurfaceFlags(surface) & (TextureNoLightmap | TextureSky)) == 0;
}

CVertexNormals::CVertexNormals() {
    const auto& surfaces = Geometry().surfaces;
    faces_.resize(surfaces.size());
    vertices_.reserve(surfaces.size());
    for (uint32_t i = 0; i < surfaces.size(); i++) {
        vertices_.push_back(SurfaceVertices(surfaces[i]));
        if (IsLitSurface(surfaces[i])) faces_[i].faceNormal = SurfaceNormal(surfaces[i]);
    }
    const auto surfacesAtVertex = SurfacesAtVertices();
    for (uint32_t i = 0; i < surfaces.size(); i++) {
        if (surfaces[i].texInfoId >= 0) SumVertexNormals(i, surfacesAtVertex);
    }
}

void CVertexNormals::SumVertexNormals(uint32_t surfaceIndex,
                                      const std::vector<std::vector<uint32_t>>& surfacesAtVertex) {
    FaceNormals& face = faces_[surfaceIndex];
    const bool phong = IsPhong(surfaceIndex);
    for (const uint32_t vertex : VertexNumbers(SurfaceRow(surfaceIndex))) {
        Vec3 normal{};
        for (const uint32_t other : surfacesAtVertex[vertex]) {
            if (other == surfaceIndex) continue;
            const Vec3& otherNormal = faces_[other].faceNormal;
            const bool smooth = (phong && IsPhong(other)) || Dot(face.faceNormal, otherNormal) >= SmoothingCos;
            if (!smooth) continue;
            normal = Add(normal, otherNormal);
            JoinNeighbour(face.neighbours, other);
        }
        normal = Add(normal, face.faceNormal);
        Normalize(normal);
        face.vertexNormals.push_back(IsZero(normal) ? face.faceNormal : normal);
    }
}

Vec3 CVertexNormals::FaceNormalAt(uint32_t surfaceIndex, const Vec3& position) const {
    const FaceNormals& face = faces_[surfaceIndex];
    const std::vector<Vec3>& vertices = vertices_[surfaceIndex];
    const Vec3& centre = centres_[surfaceIndex];
    const Vec3 p = Sub(position, centre);
    for (size_t i = 0; i < face.vertexNormals.size(); i++) {
        const size_t next = i + 1 < vertices.size() ? i + 1 : 0;
        const auto [a, b] = WeightsOf(Sub(vertices[i], centre), Sub(vertices[next], centre), p);
        if (!(a >= 0 && b >= 0)) continue;
        Vec3 normal;
        for (size_t c = 0; c < 3; c++) {
            normal[c] = static_cast<float>(face.faceNormal[c] * (1 - a - b) + face.vertexNormals[i][c] * a +
                                           face.vertexNormals[next][c] * b);
        }
        if (!(std::sqrt(LengthSquared(normal)) > ShortestNormal)) return PlaneNormalOfDegenerate(surfaceIndex);
        Normalize(normal);
        return normal;
    }
    return SurfaceNormal(SurfaceRow(surfaceIndex));
}

Vec3 CVertexNormals::PlaneNormalOfDegenerate(uint32_t surfaceIndex) const {
    if (!warned_.exchange(true)) BuildLog("Warning: face %d is degenerated\n", static_cast<int32_t>(surfaceIndex));
    return SurfaceNormal(SurfaceRow(surfaceIndex));
}

}  // namespace k2k
