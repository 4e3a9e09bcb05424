// What transfers ask of the level: whether two points see each other.
#pragma once

#include <cstdint>

#include "levelfile/level_records.h"
#include "radiosity/shadow_volume.h"

namespace k2k {

// The number of something that stops rays, or NoBlocker.
using Blocker = int32_t;
constexpr Blocker NoBlocker = -1;

// All of it for any number of threads.
class ShadowRays {
  public:
    virtual ~ShadowRays() = default;
    // Names what stopped the ray, when that is something that can stop others in the same way.
    virtual bool IsBlocked(const Vec3& start, const Vec3& end, Blocker& blocker) const = 0;
    // Whether shadows can tell anything about rays with this end: rays that stop right at their end count as clear.
    virtual bool IsOpen(const Vec3& end) const = 0;
    // A space such that IsBlocked is surely true for every start in it and this open end. False when there is none.
    virtual bool CastShadow(Blocker blocker, const Vec3& end, ShadowVolume& shadow) const = 0;
};

}  // namespace k2k
