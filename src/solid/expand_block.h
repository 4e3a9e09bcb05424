// Expanding a block by a hull box, so that a point moving through the result behaves as the box in the block itself.
#pragma once

#include "solid/block_faces.h"

namespace k2k {

constexpr size_t MaxHullPoints = 128;
constexpr size_t MaxHullEdges = 256;

// Moves the sides outwards and adds sides that bevel what sticks out. built is the unexpanded block. Returns whether a
// side was added. Too many points or edges are fatal.
bool ExpandBlock(int32_t hull, std::vector<BlockSide>& sides, const BlockFaces& built);

// Adds a side on the plane unless there is one; returns whether it was added.
bool AddPlane(const CPlane& plane, std::vector<BlockSide>& sides);

}  // namespace k2k
