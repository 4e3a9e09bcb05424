// The surfaces of the level in work as lighting looks at them.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "levelfile/level_records.h"

namespace k2k {

// A surface's plane as the surface sees it: both parts are negated when it lies on the back of its plane.
struct OrientedPlane {
    Vec3 normal{};
    float dist = 0;
};

// The row of a surface number that is known to be good.
SurfaceRecord& SurfaceRow(uint32_t surfaceIndex);
OrientedPlane SurfacePlane(const SurfaceRecord& surface);
Vec3 SurfaceNormal(const SurfaceRecord& surface);
const Texinfo& SurfaceTexinfo(const SurfaceRecord& surface);
inline uint32_t SurfaceFlags(const SurfaceRecord& surface) {
    return SurfaceTexinfo(surface).flags;
}

// The start vertex of every edge, in the order of the ring.
std::vector<Vec3> SurfaceVertices(const SurfaceRecord& surface);
// Both end points of every edge record, its first and then its second.
std::vector<Vec3> SurfaceEdgeEnds(const SurfaceRecord& surface);

// The convex outline of points in a plane: their approximate hull in the two axes along which the normal is smaller.
// Fewer than 3 points stay as they are.
std::vector<Vec3> ConvexOutline(const std::vector<Vec3>& points, const Vec3& normal);

// Not narrowed, so that what is computed from it is rounded once.
Vec3d MeanOf(const std::vector<Vec3>& points);

// The name for messages: from the name table when that is filled, else from the image itself.
std::string TextureTitle(const Texinfo& texinfo);

// Holds every index that lighting follows from a surface against its table; a bad one is fatal.
void CheckSurfaceTables();

}  // namespace k2k
