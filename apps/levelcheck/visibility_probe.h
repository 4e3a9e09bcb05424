// Is visibility sound? Shoots random segments through the open space of a level.
#pragma once

#include <cstdint>
#include <string>

#include "levelcheck/level_view.h"

namespace levelcheck {

struct ProbeResult {
    uint64_t clear = 0;   // segments that met nothing solid and nothing of other contents
    uint64_t tried = 0;   // all segments shot
    uint64_t misses = 0;  // clear ones whose end regions do not see each other, one way or the other
    std::string firstMiss;
};

// Shoots until `wanted` segments were clear, or a hundred times as many were tried. A segment counts as clear when
// every leaf within 0.25 units of it has the contents of its end points (the detail bit aside). The tables must be
// sound.
ProbeResult ProbeVisibility(const LevelView& level, uint64_t wanted, uint64_t seed);

}  // namespace levelcheck
