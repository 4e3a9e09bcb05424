// From the sides of one block to its faces.
#pragma once

#include <cstdint>
#include <vector>

#include "solid/block.h"
#include "solid/block_face.h"
#include "solid/map_block.h"

namespace k2k {

constexpr float UnboundedBlockMins = 999999.0F, UnboundedBlockMaxs = -999999.0F;

struct BlockBounds {
    Vec3 mins{UnboundedBlockMins, UnboundedBlockMins, UnboundedBlockMins};
    Vec3 maxs{UnboundedBlockMaxs, UnboundedBlockMaxs, UnboundedBlockMaxs};

    void Extend(const Vec3& point);
};

// A side of a block in work: its own, or one that bevels the expanded block.
struct BlockSide {
    CPlane plane;
    int32_t texinfo = 0;
    const MapFace* mapFace = nullptr;  // null for a bevel
};

struct BlockFaces {
    FaceList faces;  // the last side's face comes first
    BlockBounds bounds;
};

// Clips each side against the others. A side that the others leave nothing of keeps what it last was, and is warned of.
// Prints the progress mark at every 61st call.
BlockFaces BuildBlockFaces(const MapBlock& block, const std::vector<BlockSide>& sides, int32_t hull);

// Warns of a face that is not convex, not flat or has edges of no length; too large coordinates are fatal.
void CheckFace(const CBlockFace& face, int32_t hull);

}  // namespace k2k
