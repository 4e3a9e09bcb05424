// The space from which a point is surely in the shadow of one obstacle.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "levelfile/level_records.h"

namespace k2k {

// Points that lie on the plane or in front of it.
struct HalfSpace {
    Vec3d normal{};
    double dist = 0;

    bool Contains(const Vec3& point) const {
        return normal[0] * point[0] + normal[1] * point[1] + normal[2] * point[2] >= dist;
    }
    bool ContainsBox(const Vec3& mins, const Vec3& maxs) const {
        double nearest = 0;
        for (size_t c = 0; c < 3; c++) nearest += std::min(normal[c] * mins[c], normal[c] * maxs[c]);
        return nearest >= dist;
    }
};

constexpr size_t MaxShadowPlanes = 32;

// Convex, since what a convex obstacle hides from a point is. Everything in it is hidden from that point: no ray
// between the two is needed.
struct ShadowVolume {
    std::array<HalfSpace, MaxShadowPlanes> planes;
    size_t count = 0;

    bool Contains(const Vec3& point) const {
        for (size_t i = 0; i < count; i++) {
            if (!planes[i].Contains(point)) return false;
        }
        return count > 0;
    }
    bool ContainsBox(const Vec3& mins, const Vec3& maxs) const {
        for (size_t i = 0; i < count; i++) {
            if (!planes[i].ContainsBox(mins, maxs)) return false;
        }
        return count > 0;
    }
    // False when there is no more room.
    bool Add(const HalfSpace& plane) {
        if (count == MaxShadowPlanes) return false;
        planes[count++] = plane;
        return true;
    }
};

}  // namespace k2k
