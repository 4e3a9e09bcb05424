// The hash of a point by its place on a square grid over x and y.
#pragma once

#include <cstdint>

#include "levelfile/level_records.h"

namespace k2k {

// Which vertices and edges of a level are shared depends on these numbers, so every operation is 32-bit.
class GridHash {
  public:
    GridHash() = default;
    // About that many cells over the area.
    GridHash(const Vec3& mins, const Vec3& maxs, int cells);

    // Not reduced to the number of cells. Points outside the area have hashes of their own, z does not enter.
    uint32_t operator()(const Vec3& point) const;

  private:
    float minX_ = 0, minY_ = 0;
    float scaleX_ = 0, scaleY_ = 0;
    float rows_ = 0;
};

// Conversions with the results of the x86 instructions: a value out of the 64-bit (32-bit) range, or none at all, gives
// the lowest number of that range, so an unsigned 32-bit result is 0.
uint32_t TruncateToUnsigned(float value);
int32_t TruncateToInt(float value);

}  // namespace k2k
