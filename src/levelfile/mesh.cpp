#include "levelfile/mesh.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "driver/build_log.h"
#include "driver/build_options.h"
#include "driver/text.h"
#include "levelfile/entity_keys.h"
#include "levelfile/file_klv.h"
#include "levelfile/geometry_data.h"
#include "levelfile/texture_data.h"

namespace k2k {

namespace {

constexpr double BucketDepth = 100.0;  // units of distance from the world's origin that share a bucket
constexpr int32_t PageSizeOfCode0 = 256;

bool operator==(const MeshVertex& a, const MeshVertex& b) {
    return a.position == b.position && a.u == b.u && a.v == b.v && a.s == b.s && a.t == b.t;
}

// By the position alone. A position that is no number equals none, so its bucket is of no account.
int32_t BucketOf(const Vec3& p) {
    const double squares =
        static_cast<double>(p[0]) * p[0] + static_cast<double>(p[1]) * p[1] + static_cast<double>(p[2]) * p[2];
    const double bucket = std::sqrt(squares) / BucketDepth;
    constexpr int32_t last = std::numeric_limits<int32_t>::max();
    return bucket < last ? static_cast<int32_t>(bucket) : last;
}

int32_t AppendVertex(CMesh& mesh, const MeshVertex& vertex) {
    if (mesh.vertices.size() >= MaxMeshVertices) FatalError("E015: Map size - too many vertices");
    mesh.vertices.push_back(vertex);
    mesh.vertexLinks.push_back(-1);
    return static_cast<int32_t>(mesh.vertices.size()) - 1;
}

// Row access for numbers that may come from a file.
template <typename T>
const T& Row(const std::vector<T>& table, size_t number) {
    if (number >= table.size()) InvalidLevelFile();
    return table[number];
}

double Dot(const Vec3& a, const Vec3& b) {
    return static_cast<double>(a[0]) * b[0] + static_cast<double>(a[1]) * b[1] + static_cast<double>(a[2]) * b[2];
}

// Where a ring enters (at) or leaves an edge; a negative number walks the edge backwards.
uint32_t EdgeStart(int32_t signedEdge) {
    const auto& edges = Geometry().edges;
    return signedEdge > 0 ? Row(edges, static_cast<size_t>(signedEdge)).first
                          : Row(edges, static_cast<size_t>(-static_cast<int64_t>(signedEdge))).second;
}
uint32_t EdgeEnd(int32_t signedEdge) {
    const auto& edges = Geometry().edges;
    return signedEdge > 0 ? Row(edges, static_cast<size_t>(signedEdge)).second
                          : Row(edges, static_cast<size_t>(-static_cast<int64_t>(signedEdge))).first;
}

// The corners of a surface in the order of its edges, each once.
std::vector<Vec3> CornersOf(const SurfaceRecord& surface) {
    std::vector<Vec3> corners;
    const auto& geometry = Geometry();
    for (int32_t i = 0; i < surface.edgeCount; ++i) {
        const int32_t edge = Row(geometry.surfaceEdges, size_t{surface.firstEdge} + static_cast<size_t>(i));
        // The last edge ends where the first one starts, so the ends of all edges but the last complete the ring.
        if (i == 0) corners.push_back(Row(geometry.vertices, EdgeStart(edge)));
        if (i + 1 < surface.edgeCount) corners.push_back(Row(geometry.vertices, EdgeEnd(edge)));
    }
    return corners;
}

bool HasMaterialName(const Texinfo& texinfo) {
    const auto end = std::find(texinfo.material.begin(), texinfo.material.end(), '\0');
    const std::string_view name(texinfo.material.data(), static_cast<size_t>(end - texinfo.material.begin()));
    return !name.empty() && !EqualNoCase(name, NotDefined);
}

MeshMaterial MaterialOf(const SurfaceRecord& surface, const Texinfo& texinfo) {
    MeshMaterial material;
    material.texture = static_cast<uint16_t>(texinfo.texture & 0xFFFFU);
    material.lightPage = surface.lightPage;
    material.texinfo = HasMaterialName(texinfo) ? surface.texInfoId : 0;
    material.ambient = static_cast<int8_t>(texinfo.ambient);
    material.albedo = static_cast<int8_t>(texinfo.albedo);
    material.flags = texinfo.flags;
    return material;
}

// One axis of a planar mapping.
struct MappingAxis {
    Vec3 axis{};
    float offset = 0;
    double At(const Vec3& point) const { return Dot(axis, point) + offset; }
};

// One axis of a surface's place on its lightmap page, in the units of that axis.
struct LightmapAxis {
    MappingAxis mapping;
    double floor = 0;   // the axis at the first texel
    double origin = 0;  // the first texel's place on the page

    double PageCoordinate(const Vec3& point, double inverse, double halfTexel) const {
        return ((1 - inverse) * ((mapping.At(point) - floor) + origin) + halfTexel) * inverse;
    }
};

// Turns corners of one surface into mesh vertices.
class SurfaceMapper {
  public:
    SurfaceMapper(const SurfaceRecord& surface, const Texinfo& texinfo, const std::vector<Vec3>& corners);

    MeshVertex MakeMeshVertex(const Vec3& point) const;

  private:
    void SetLightmapMapping(const SurfaceRecord& surface);

    MappingAxis textureS_, textureT_;
    double width_ = 1, height_ = 1;
    LightmapAxis lightS_, lightT_;
    uint32_t shift_ = 0;
    bool flat_ = false;
    double pageSize_ = PageSizeOfCode0;
    double inverse_ = 1;
};

// A shift count counts modulo 32.
uint32_t ShiftedOne(uint32_t shift) {
    return uint32_t{1} << (shift % 32);
}

// The axis at the start of the first texel that the corners touch. The smallest value is narrowed first, as it was when
// the lightmap was sized, so that both agree on the texel.
double FirstTexel(const MappingAxis& mapping, const std::vector<Vec3>& corners, double step) {
    float smallest = 999999.0F;
    for (const Vec3& corner : corners) smallest = std::min(smallest, static_cast<float>(mapping.At(corner)));
    return std::floor(smallest / step) * step;
}

SurfaceMapper::SurfaceMapper(const SurfaceRecord& surface, const Texinfo& texinfo, const std::vector<Vec3>& corners)
    : textureS_{texinfo.vecS, texinfo.shiftS}, textureT_{texinfo.vecT, texinfo.shiftT}, shift_(surface.lightShift) {
    const std::array<uint32_t, 2> size = Textures().ImageSize(texinfo.texture);
    width_ = size[0];
    height_ = size[1];
    SetLightmapMapping(surface);
    const double step = ShiftedOne(shift_);
    pageSize_ = static_cast<double>(PageSizeOfCode0) * ShiftedOne(static_cast<uint32_t>(Textures().lightmapSizeCode));
    inverse_ = 1 / (pageSize_ * step);
    lightS_.origin = surface.meshX() * step;
    lightT_.origin = surface.meshY() * step;
    lightS_.floor = FirstTexel(lightS_.mapping, corners, step);
    lightT_.floor = FirstTexel(lightT_.mapping, corners, step);
}

void SurfaceMapper::SetLightmapMapping(const SurfaceRecord& surface) {
    lightS_.mapping = textureS_;
    lightT_.mapping = textureT_;
    flat_ = surface.lightOffset == 0 && surface.lightPage == 0;
    if (!Options().mesh) return;
    const FinalPlaneRecord& plane = Row(Geometry().planes, surface.planeNumber);
    Vec3 normal = plane.normal;
    if (surface.side != 0) normal = {-normal[0], -normal[1], -normal[2]};
    lightS_.mapping.offset = lightT_.mapping.offset = 0;
    if (!LightmapAxes(plane.type, normal, lightS_.mapping.axis, lightT_.mapping.axis)) flat_ = true;
}

MeshVertex SurfaceMapper::MakeMeshVertex(const Vec3& point) const {
    MeshVertex vertex;
    vertex.position = point;
    vertex.u = static_cast<float>(textureS_.At(point) / width_);
    vertex.v = static_cast<float>(textureT_.At(point) / height_);
    if (shift_ < 1) return vertex;
    if (flat_) {
        vertex.s = vertex.t = static_cast<float>(1.5 / pageSize_);
        return vertex;
    }
    const double halfTexel = ShiftedOne(shift_ - 1);
    vertex.s = static_cast<float>(lightS_.PageCoordinate(point, inverse_, halfTexel));
    vertex.t = static_cast<float>(lightT_.PageCoordinate(point, inverse_, halfTexel));
    return vertex;
}

void AddSurfaceToMesh(CMesh& mesh, int32_t number) {
    const SurfaceRecord& surface = Row(Geometry().surfaces, static_cast<size_t>(number));
    const Texinfo& texinfo = Textures().GetTexinfo(surface.texInfoId);
    const int32_t material = AddMeshMaterial(mesh, MaterialOf(surface, texinfo));
    const std::vector<Vec3> corners = CornersOf(surface);
    const SurfaceMapper mapper(surface, texinfo, corners);
    const auto vertexNumber = [&](size_t corner) {
        return static_cast<int16_t>(AddMeshVertex(mesh, mapper.MakeMeshVertex(corners[corner])));
    };
    for (size_t i = 2; i < corners.size(); ++i) {
        MeshTriangle triangle;
        triangle.vertices = {vertexNumber(0), vertexNumber(i - 1), vertexNumber(i)};
        triangle.material = static_cast<int16_t>(material);
        triangle.surface = number;
        mesh.triangles.push_back(triangle);
    }
}

}  // namespace

void AddMeshSurface(CMesh& mesh, int32_t surface) {
    mesh.surfaces.insert(surface);
}

int32_t AddMeshVertex(CMesh& mesh, const MeshVertex& vertex) {
    const auto [bucket, fresh] = mesh.vertexBuckets.try_emplace(BucketOf(vertex.position), -1);
    if (fresh) return bucket->second = AppendVertex(mesh, vertex);
    int32_t last = bucket->second;
    while (true) {
        const auto row = static_cast<size_t>(last);
        if (mesh.vertices[row] == vertex) return last;
        if (mesh.vertexLinks[row] < 0) break;
        last = mesh.vertexLinks[row];
    }
    const int32_t number = AppendVertex(mesh, vertex);
    return mesh.vertexLinks[static_cast<size_t>(last)] = number;
}

int32_t AddMeshMaterial(CMesh& mesh, const MeshMaterial& material) {
    const auto found = std::find(mesh.materials.begin(), mesh.materials.end(), material);
    if (found != mesh.materials.end()) return static_cast<int32_t>(found - mesh.materials.begin());
    if (mesh.materials.size() >= MaxMeshMaterials) FatalError("E020: Texture size overrun");
    mesh.materials.push_back(material);
    return static_cast<int32_t>(mesh.materials.size()) - 1;
}

void PrepareMesh(CMesh& mesh) {
    if (mesh.prepared) return;
    mesh.vertices.clear();
    mesh.vertexLinks.clear();
    mesh.vertexBuckets.clear();
    mesh.triangles.clear();
    mesh.materials.clear();
    for (const int32_t surface : mesh.surfaces) AddSurfaceToMesh(mesh, surface);
    mesh.prepared = true;
}

}  // namespace k2k
