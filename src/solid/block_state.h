// The process-wide data of block building.
#pragma once

#include <array>
#include <cstdint>
#include <set>
#include <utility>

#include "solid/block.h"

namespace k2k {

struct BlockState {
    std::array<HullBox, 3> hullBoxes{};
    int32_t callsSinceMark = 0;  // of BuildBlockFaces, since it last printed its progress mark
    // Warnings given (kind, hull argument) for hull arguments other than 0 to 2, which -sethulls allows.
    std::set<std::pair<int32_t, int32_t>> warnedInOtherHulls;
};

BlockState& Blocks();

}  // namespace k2k
