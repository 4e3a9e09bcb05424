// A block's surfaces as an indexed triangle list, for rendering without per-surface work.
#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <unordered_map>
#include <vector>

#include "levelfile/level_records.h"

namespace k2k {

// Vertex and material numbers of a triangle have 16 bits with a sign.
constexpr size_t MaxMeshVertices = 32767;
constexpr size_t MaxMeshMaterials = 32767;

struct CMesh {
    std::set<int32_t> surfaces;  // surface numbers that make up the mesh
    Vec3 mins{}, maxs{};
    int32_t contents = 0;
    std::vector<MeshVertex> vertices;
    std::vector<int32_t> vertexLinks;                    // next vertex of the bucket, -1 at its end
    std::unordered_map<int32_t, int32_t> vertexBuckets;  // first vertex of a bucket
    std::vector<MeshTriangle> triangles;
    std::vector<MeshMaterial> materials;
    bool prepared = false;  // tables are up to date
};

void AddMeshSurface(CMesh& mesh, int32_t surface);

// Finds or appends a vertex, equal in all seven floats; returns its number. Past MaxMeshVertices: fatal.
int32_t AddMeshVertex(CMesh& mesh, const MeshVertex& vertex);

// Finds or appends a material, equal in all fields; returns its number. Past MaxMeshMaterials: fatal.
int32_t AddMeshMaterial(CMesh& mesh, const MeshMaterial& material);

// Makes the mesh's tables from its surfaces, the data sets and the lightmap fields; nothing when it is prepared.
void PrepareMesh(CMesh& mesh);

// The two lightmap axes of a mesh level's surface, from its plane's dominant axis and scaled by -litres; their offsets
// are 0. Takes the plane type (negative types count by their axis too) and the normal on the surface's side. The axes
// are set in every case; false when they lie in no usable relation to the normal, so that the surface can have no
// lightmap.
bool LightmapAxes(int32_t planeType, const Vec3& normal, Vec3& axisS, Vec3& axisT);

}  // namespace k2k
