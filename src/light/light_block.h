// Rectangles of float colours, one for each surface that gets a lightmap.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

#include "levelfile/level_records.h"

namespace k2k {

constexpr size_t MaxBlockStyles = 32;

struct LightBlock {
    uint32_t group = 0;  // the surface's blockId: blocks of one group want to be on one page
    uint32_t surfaceIndex = 0;
    uint8_t lightShift = 0;    // log2 of the texel step
    std::vector<Vec3> texels;  // width * height * vectorCount * styleCount, row by row
    uint32_t width = 0, height = 0;
    uint32_t styleCount = 1;
    uint32_t vectorCount = 1;
    std::array<int32_t, MaxBlockStyles> styles{};
};

// Blocks in the order in which they are to be packed. A reference to one stays good while others are added.
using LightBlockList = std::deque<LightBlock>;

// The blocks of the level in work; emptied when they are finished.
LightBlockList& LightBlocks();

// A block with zero-filled texels that is in no list.
LightBlock MakeLightBlock(uint32_t styleCount, uint32_t width, uint32_t height, uint32_t vectorCount);

// The same, appended to the list under the thread lock.
LightBlock& NewLightBlock(uint32_t styleCount, uint32_t width, uint32_t height, uint32_t vectorCount);

// Appends a block that was filled elsewhere, under the thread lock. It is dropped, and its surface stays blank, under
// -nod3dlmaps, and under -litmapsonly when it has no light.
void AddFinishedBlock(LightBlock block);

}  // namespace k2k
