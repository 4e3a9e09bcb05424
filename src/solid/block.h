// Convex blocks of one hull, made from the blocks of a map.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "driver/intrusive_list.h"
#include "solid/block_face.h"
#include "solid/map_block.h"

namespace k2k {

struct CBlock {
    CBlock* next = nullptr;
    Vec3 mins{}, maxs{};  // of the block's vertices in this hull
    FaceList faces;
    int32_t contents = 0;
    int32_t blockNumber = 0;  // map block number, 1-based
};

struct CBlockSet {
    Vec3 mins{9999999.0F, 9999999.0F, 9999999.0F}, maxs{-9999999.0F, -9999999.0F, -9999999.0F};
    IntrusiveList<CBlock> blocks;
    int32_t count = 0;  // map blocks offered, not blocks kept
};

struct HullBox {
    Vec3 mins{}, maxs{};
};
// The boxes of hull 0 (visible), 1 (narrow), 2 (fat).
std::array<HullBox, 3>& HullBoxes();
// Sets the boxes from -narrow, -fat, -nh and -sethulls.
void ComputeHullBoxes();
// The box of a hull argument; no box for arguments other than 0 to 2.
HullBox HullBoxOf(int32_t hull);

// The blocks of one hull: non-solid blocks in map order, then solid blocks in reverse map order. hull is a -sethulls
// value. Announces progress, one unit a map block.
CBlockSet BuildBlockSet(const IntrusiveList<MapBlock>& entityBlocks, int32_t hull);

// For tests: hull boxes, once flags and marks as at program start.
void ResetBlocksForTest();

// Approximate convex hull in two dimensions (Bentley, Faust, Preparata 1982, with this program's own bin comparison).
struct Point2D {
    float x = 0, y = 0;
    int32_t index = 0;  // of the point that was projected
};
std::vector<Point2D> NearHull2D(const std::vector<Point2D>& points, int32_t bins);

}  // namespace k2k
