#include "light/rays.h"

#include <memory>
#include <utility>
#include <vector>

#include "driver/build_options.h"
#include "light/near_equal.h"
#include "light/trace_nodes.h"
#include "raytree/ray_scene.h"

namespace k2k {
namespace {

// Of the level in work; null outside the lighting step and on mesh levels.
std::unique_ptr<const CTraceTree> TraceTree;

thread_local int64_t RaysCast = 0;

bool IsBlockedByMesh(const Vec3& start, const Vec3& end, Vec3& hit, int32_t excludeSurface) {
    if (RaySceneEmpty()) return false;
    thread_local std::vector<CollisionFace> faces;
    faces.clear();
    if (!QueryRay(start, end, true, false, true, faces) || faces.empty()) return false;
    const CollisionFace& face = faces.front();
    if (TriangleSurface(face.faceId) == static_cast<uint32_t>(excludeSurface)) return false;
    Vec3 direction = Sub(end, start);
    Normalize(direction);
    hit = PointAlong(start, direction, face.distance);
    return true;
}

bool IsBlocked(const Vec3& start, const Vec3& end, Vec3& hit, int32_t excludeSurface) {
    RaysCast++;
    if (Options().mesh) return IsBlockedByMesh(start, end, hit, excludeSurface);
    return !TraceTree->TraceLine(start, end, hit) && !NearlyEqual(hit, end, SpotSize);
}

}  // namespace

void PrepareRays() {
    if (Options().mesh) {
        BuildRayScene();
    } else {
        TraceTree = std::make_unique<const CTraceTree>();
    }
}

void ReleaseRays() {
    if (Options().mesh) ReleaseRayScene();
    TraceTree.reset();
}

float TraceShadow(const Vec3& start, const Vec3& end, Vec3& hit, int32_t excludeSurface) {
    return IsBlocked(start, end, hit, excludeSurface) ? RayBlocked : Distance(start, end);
}

bool IsShadowed(const Vec3& start, const Vec3& end, int32_t excludeSurface) {
    if (Options().mesh) {
        RaysCast++;
        return IsRayBlocked(start, end, excludeSurface);
    }
    Vec3 hit;
    return IsBlocked(start, end, hit, excludeSurface);
}

bool IsShadowedBy(const Vec3& start, const Vec3& end, int32_t& leaf) {
    leaf = -1;
    if (TraceTree == nullptr) return IsShadowed(start, end);
    RaysCast++;
    Vec3 hit;
    return !TraceTree->TraceLine(start, end, hit, leaf) && !NearlyEqual(hit, end, SpotSize);
}

const CTraceTree* RayTree() {
    return TraceTree.get();
}

bool PointInSolid(const Vec3& point) {
    return Options().mesh ? PointInMeshes(point) : TraceTree->PointInSolid(point);
}

int64_t TakeRayCount() {
    return std::exchange(RaysCast, 0);
}

}  // namespace k2k
