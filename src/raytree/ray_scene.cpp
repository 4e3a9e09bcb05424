#include "raytree/ray_scene.h"

#include <algorithm>
#include <numeric>

#include "driver/build_log.h"
#include "levelfile/geometry_data.h"
#include "raytree/last_blocker.h"
#include "raytree/ray_tree.h"
#include "solid/vectors.h"

namespace k2k {
namespace {

struct RayScene {
    std::vector<Vec3> vertices;  // of the meshes that give triangles
    std::vector<std::array<uint32_t, 3>> triangles;
    std::vector<uint32_t> triangleSurfaces;
    std::vector<uint32_t> bySurface;        // triangles, those of a surface in a row
    std::vector<int32_t> meshLastTriangle;  // index of the last triangle added when the mesh was done, -1 for none
    Opcode::MeshInterface mesh;
    Opcode::Model model;
    bool noTree = true;
};

RayScene& Scene() {
    static RayScene scene;
    return scene;
}

// A vertex or material number of a triangle, which the level file may hold anything in.
uint32_t CheckedRow(int32_t number, size_t rows) {
    if (number < 0 || static_cast<size_t>(number) >= rows) FatalError(" \nInvalid KLV file format");
    return static_cast<uint32_t>(number);
}

void AddMesh(RayScene& scene, const CMesh& mesh) {
    const auto base = static_cast<uint32_t>(scene.vertices.size());
    bool gaveTriangle = false;
    for (const MeshTriangle& triangle : mesh.triangles) {
        const uint32_t material = CheckedRow(triangle.material, mesh.materials.size());
        if ((mesh.materials[material].flags & TextureSky) != 0) continue;
        std::array<uint32_t, 3> corners{};
        for (size_t i = 0; i < 3; i++) corners[i] = base + CheckedRow(triangle.vertices[i], mesh.vertices.size());
        scene.triangles.push_back(corners);
        scene.triangleSurfaces.push_back(static_cast<uint32_t>(triangle.surface));
        gaveTriangle = true;
    }
    if (gaveTriangle) {
        for (const MeshVertex& vertex : mesh.vertices) scene.vertices.push_back(vertex.position);
    }
    scene.meshLastTriangle.push_back(static_cast<int32_t>(scene.triangles.size()) - 1);
}

void SortBySurface(RayScene& scene) {
    scene.bySurface.resize(scene.triangles.size());
    std::iota(scene.bySurface.begin(), scene.bySurface.end(), 0U);
    std::stable_sort(scene.bySurface.begin(), scene.bySurface.end(),
                     [&](uint32_t a, uint32_t b) { return scene.triangleSurfaces[a] < scene.triangleSurfaces[b]; });
}

// Whether the ray meets a triangle of the surface, in its boxes or not.
bool MeetsSurface(const RayScene& scene, const Opcode::RayCollider& collider, const Opcode::Ray& ray,
                  uint32_t surface) {
    const auto first =
        std::lower_bound(scene.bySurface.begin(), scene.bySurface.end(), surface,
                         [&](uint32_t triangle, uint32_t wanted) { return scene.triangleSurfaces[triangle] < wanted; });
    for (auto at = first; at != scene.bySurface.end() && scene.triangleSurfaces[*at] == surface; ++at) {
        if (collider.MeetsTriangle(ray, scene.model, *at)) return true;
    }
    return false;
}

bool BoxHolds(const CMesh& mesh, const Vec3& point) {
    for (size_t k = 0; k < 3; k++) {
        if (!(point[k] >= mesh.mins[k] && point[k] <= mesh.maxs[k])) return false;
    }
    return true;
}

// Crossings of a ray from the point out of the mesh's box. All meshes up to this one count, as their triangles stand
// in front in the numbering.
bool CrossesOddly(const RayScene& scene, size_t meshNumber, const CMesh& mesh, const Vec3& point,
                  std::vector<CollisionFace>& faces) {
    constexpr float OutsideBy = 2.0F;
    const Vec3 end{mesh.mins[0] - OutsideBy, mesh.mins[1] - OutsideBy, mesh.mins[2] - OutsideBy};
    QueryRay(point, end, false, false, false, faces);
    uint32_t count = 0;
    for (const CollisionFace& face : faces) {
        if (static_cast<int32_t>(face.faceId) <= scene.meshLastTriangle[meshNumber]) count++;
    }
    return count % 2 != 0;
}

}  // namespace

void BuildRayScene() {
    ReleaseRayScene();
    RayScene& scene = Scene();
    for (const CMesh& mesh : Geometry().meshes) AddMesh(scene, mesh);
    if (scene.vertices.empty() || scene.triangles.empty()) return;
    scene.noTree = false;
    SortBySurface(scene);
    scene.mesh = {scene.vertices, scene.triangles};
    if (!scene.model.Build({&scene.mesh, {}})) BuildLog("\nCould not build collision tree !\n");
}

void ReleaseRayScene() {
    Scene() = {};
}

bool RaySceneEmpty() {
    return Scene().noTree;
}

bool QueryRay(const Vec3& start, const Vec3& end, bool culling, bool closestHit, bool firstContact,
              std::vector<CollisionFace>& faces) {
    faces.clear();
    Opcode::Ray ray{start, Sub(end, start)};
    Opcode::RayCollider collider;
    collider.maxDistance = Normalize(ray.direction);
    collider.culling = culling;
    collider.closestHit = closestHit;
    collider.firstContact = firstContact;
    if (collider.ValidateSettings() != nullptr) return false;
    collider.Collide(ray, Scene().model, faces);
    return true;
}

bool IsRayBlocked(const Vec3& start, const Vec3& end, int32_t excludeSurface) {
    thread_local Opcode::LastBlocker last;
    const RayScene& scene = Scene();
    if (scene.noTree) return false;
    Opcode::Ray ray{start, Sub(end, start)};
    Opcode::RayCollider collider;
    collider.maxDistance = Normalize(ray.direction);
    if (collider.ValidateSettings() != nullptr || !collider.MeetsAny(ray, scene.model, last)) return false;
    if (excludeSurface < 0) return true;
    const auto excluded = static_cast<uint32_t>(excludeSurface);
    if (!MeetsSurface(scene, collider, ray, excluded)) return true;
    // Only the first triangle in the tree's order decides whether the excluded surface stopped the ray.
    thread_local std::vector<CollisionFace> faces;
    QueryRay(start, end, true, false, true, faces);
    return TriangleSurface(faces.front().faceId) != excluded;
}

uint32_t TriangleSurface(uint32_t faceId) {
    return Scene().triangleSurfaces[faceId];
}

bool PointInMeshes(const Vec3& point) {
    constexpr int32_t NoInside = 2;  // ContentsOpen: water and the like
    const RayScene& scene = Scene();
    std::vector<CollisionFace> faces;
    for (size_t i = 0; i < scene.meshLastTriangle.size(); i++) {
        const CMesh& mesh = Geometry().meshes[i];
        if ((mesh.contents & NoInside) != 0 || !BoxHolds(mesh, point)) continue;
        if (CrossesOddly(scene, i, mesh, point, faces)) return true;
    }
    return false;
}

}  // namespace k2k
