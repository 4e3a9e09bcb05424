// Which region of the level a point lies in.
#pragma once

#include <cstdint>

#include "levelfile/level_records.h"

namespace k2k {

// The row of the leaf at the point; 0, the solid region, on a level without nodes.
int32_t RegionAt(const Vec3& point);

}  // namespace k2k
