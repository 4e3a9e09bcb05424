// Whether a segment meets a box, and what the tests of several lanes share with those of one.
#pragma once

#include <cmath>

#include "raytree/ray_tree.h"

namespace k2k::Opcode {

// Smaller determinants of the triangle test mean a ray along the triangle's plane.
constexpr double DeterminantEpsilon = 1e-06;

// The segment as the box test wants it, from the library's arithmetic in 32 bits.
struct Segment {
    Vec3 half{};  // half of the way along each axis
    Vec3 center{};
    Vec3 absHalf{};  // magnitudes of half

    Segment(const Ray& ray, float length) {
        for (size_t k = 0; k < 3; k++) {
            half[k] = ray.direction[k] * 0.5F * length;
            center[k] = ray.origin[k] + half[k];
            absHalf[k] = std::fabs(half[k]);
        }
    }
};

// Separating axes: the box's three, then the three crosses of the segment with them.
inline bool MeetsBox(const Segment& s, const AABBNoLeafNode& box) {
    const float dx = s.center[0] - box.center[0];
    if (std::fabs(dx) > box.extents[0] + s.absHalf[0]) return false;
    const float dy = s.center[1] - box.center[1];
    if (std::fabs(dy) > box.extents[1] + s.absHalf[1]) return false;
    const float dz = s.center[2] - box.center[2];
    if (std::fabs(dz) > box.extents[2] + s.absHalf[2]) return false;
    if (std::fabs(s.half[1] * dz - s.half[2] * dy) > box.extents[1] * s.absHalf[2] + box.extents[2] * s.absHalf[1])
        return false;
    if (std::fabs(s.half[2] * dx - s.half[0] * dz) > box.extents[0] * s.absHalf[2] + box.extents[2] * s.absHalf[0])
        return false;
    return !(std::fabs(s.half[0] * dy - s.half[1] * dx) >
             box.extents[0] * s.absHalf[1] + box.extents[1] * s.absHalf[0]);
}

}  // namespace k2k::Opcode
