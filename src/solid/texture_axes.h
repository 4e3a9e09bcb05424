// Plain texture mapping: a projection along the axis that a plane faces most.
#pragma once

#include <array>

#include "levelfile/level_records.h"

namespace k2k {

// Sets the two texture vectors and their shifts in out, and nothing else. rotation is in degrees. A normal that faces
// no axis (the zero vector) is mapped like a floor.
void MakePlaneTextureAxes(const Vec3& normal, const std::array<float, 2>& shift, const std::array<float, 2>& scale,
                          float rotation, Texinfo& out);

}  // namespace k2k
