// What is at a point of a level?
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "levelcheck/level_view.h"

namespace levelcheck {

double Distance(const Plane& plane, const std::array<double, 3>& point);

// The region row at a point; row 0 is solid.
size_t RegionAt(const LevelView& level, const std::array<double, 3>& point);

// The contents word of a collision hull (1 or 2) at a point.
int32_t HullContentsAt(const LevelView& level, size_t hull, const std::array<double, 3>& point);

}  // namespace levelcheck
