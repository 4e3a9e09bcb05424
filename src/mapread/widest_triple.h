// The three corners of a face that its plane is taken from: those that span the largest area.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "levelfile/level_records.h"

namespace k2k {

// Positions in the list, the lowest first. Of triples that span the same area the first wins, in the order of their
// highest, then middle, then lowest position. At least 3 corners.
std::array<int32_t, 3> WidestTriple(std::span<const Vec3> corners);

// The same by trying every triple: the time grows with the cube of the number of corners.
std::array<int32_t, 3> WidestTripleByTrial(std::span<const Vec3> corners);
// The same by branch and bound, for any number of corners.
std::array<int32_t, 3> WidestTripleByBounds(std::span<const Vec3> corners);

}  // namespace k2k
