// Moves samples that lie in solid or behind walls to a good position nearby.
#pragma once

#include <cstdint>
#include <vector>

#include "light/sample_placement.h"

namespace k2k {

// For each sample that is not valid, row by row, a search spreads over the grid from it, nearer to the centre first, to
// the first valid sample; that one replaces it unless it sees it. A repaired sample counts as valid in later searches.
// Under -preview no search runs.
void RepairSamples(std::vector<LightSample>& samples, int32_t width, int32_t height, const Vec3& centre);

}  // namespace k2k
