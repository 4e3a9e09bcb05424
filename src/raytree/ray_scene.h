// Rays against the triangles of a mesh level.
#pragma once

#include <cstdint>
#include <vector>

#include "levelfile/level_records.h"

namespace k2k {

struct CollisionFace {
    uint32_t faceId = 0;
    float distance = 0;
    float u = 0, v = 0;
};

// Builds the tree over the triangles of the level in work, without those of sky.
void BuildRayScene();
void ReleaseRayScene();
// Nothing to collide with.
bool RaySceneEmpty();

// The faces that the segment from start to end meets. False when the query was refused (no length).
bool QueryRay(const Vec3& start, const Vec3& end, bool culling, bool closestHit, bool firstContact,
              std::vector<CollisionFace>& faces);
// Whether a triangle stops the ray, seen from its front: what QueryRay gives with culling and firstContact, unless the
// first face belongs to excludeSurface (-1 for none). Quicker, as without one it need not know which face is first.
bool IsRayBlocked(const Vec3& start, const Vec3& end, int32_t excludeSurface);
// The surface that owns a triangle.
uint32_t TriangleSurface(uint32_t faceId);
// Whether the point lies inside a mesh.
bool PointInMeshes(const Vec3& point);

}  // namespace k2k
