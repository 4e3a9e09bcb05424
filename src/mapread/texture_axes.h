// Texture axes of plain mapping: chosen by the face's normal, then turned and scaled.
#pragma once

#include <array>
#include <cstdint>

#include "levelfile/level_records.h"

namespace k2k {

// Plain mapping as a map gives it; element 0 is for S, 1 for T.
struct PlainMapping {
    std::array<float, 2> shift{};
    std::array<float, 2> scale{};
    int32_t rotation = 0;  // degrees
};

// Sets the texinfo's two vectors and shifts. A normal of length 0 gives the axes of a floor.
void SetTextureAxes(Texinfo& texinfo, const Vec3& normal, const PlainMapping& mapping);

}  // namespace k2k
