// Smooth normals: between the vertices of a phong surface the normal is interpolated, and a sample that lies outside
// its surface is walked onto the neighbour that it belongs to.
#pragma once

#include <cstdint>

#include "light/polygon_cache.h"

namespace k2k {

// What a smooth normal is asked to do where the recursion ends on a back-side surface: its plane is negated in the
// plane table at each visit, and from there on results depend on the order of all visits.
enum class PlaneFlips {
    Refuse,  // throws PlaneFlipNeeded instead: nothing was changed, and the order of visits never mattered
    Apply
};

// The answer cannot be had without negating a plane or printing a warning in order.
struct PlaneFlipNeeded {};

// One worker's smooth normals.
class CSmoothNormals {
  public:
    CSmoothNormals(const CPhongTable& smooth, PlaneFlips flips) : cache_(smooth), flips_(flips) {}

    // The normal for a sample of a surface, and the point where its shadow rays end.
    void PhongNormal(uint32_t surfaceIndex, const Vec3& sample, Vec3& normalOut, Vec3& pointOut, int depth);
    PlaneFlips flips() const { return flips_; }

  private:
    void FlatNormal(uint32_t surfaceIndex, Vec3& normalOut);
    void InterpolateNormal(uint32_t surfaceIndex, const Vec3& sample, Vec3& normalOut, Vec3& pointOut, int depth);
    uint32_t WalkToSurface(const PolygonInfo& polygon, const Vec3& point, Vec3& pointOut, int32_t avoid);

    CPolygonCache cache_;
    PlaneFlips flips_;
    int walkSteps_ = 0;
};

}  // namespace k2k
