// The ray services that both roads share: over the BSP, or over the triangles of a mesh level.
#pragma once

#include <cstdint>

#include "levelfile/level_records.h"

namespace k2k {

class CTraceTree;

constexpr float RayBlocked = -1.0F;
constexpr int32_t NoSurface = -1;

// Builds what rays need from the level in work; frees it. Queries in between only read, on any number of threads.
void PrepareRays();
void ReleaseRays();

// Keeps the ray structures for its lifetime.
class RayStructures {
  public:
    RayStructures() { PrepareRays(); }
    ~RayStructures() { ReleaseRays(); }
    RayStructures(const RayStructures&) = delete;
    RayStructures& operator=(const RayStructures&) = delete;
};

// The length of the segment when it is clear, or RayBlocked; hit receives the stopping point. A segment that stops
// within 0.01 of its own end counts as clear. The triangles of excludeSurface do not block; mesh levels only.
float TraceShadow(const Vec3& start, const Vec3& end, Vec3& hit, int32_t excludeSurface);

// The same answer for callers that have the length already.
bool IsShadowed(const Vec3& start, const Vec3& end, int32_t excludeSurface = NoSurface);

// The same for a ray that nothing is excluded from; leaf is the solid leaf of the trace tree that stopped it, or -1.
bool IsShadowedBy(const Vec3& start, const Vec3& end, int32_t& leaf);

// The tree that rays walk; null on mesh levels.
const CTraceTree* RayTree();

bool PointInSolid(const Vec3& point);

// Rays that the calling thread cast since it last asked.
int64_t TakeRayCount();

}  // namespace k2k
