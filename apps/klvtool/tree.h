// Walks in the region tree that a damaged file cannot lead astray.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "levelcheck/level_view.h"

namespace klvtool {

// The region row at a point; 0 is solid, and stands for a tree that leads nowhere as well.
size_t RegionOf(const levelcheck::LevelView& level, const std::array<double, 3>& point);

// Whether a region is open: neither row 0 nor of solid contents.
bool IsOpen(const levelcheck::LevelView& level, size_t region);

// For each region row whether it is visible from a region. Without visibility data everything is.
std::vector<bool> VisibleFrom(const levelcheck::LevelView& level, size_t region);

// How many regions see how many: for `info`.
struct VisibilityCount {
    size_t rows = 0;     // regions with a row that can be read
    size_t visible = 0;  // sum over these rows
};
VisibilityCount CountVisible(const levelcheck::LevelView& level);

}  // namespace klvtool
