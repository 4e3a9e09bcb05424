// From the blocks of a map to the block set of one hull.
#include "driver/build_log.h"
#include "driver/build_options.h"
#include "levelfile/texture_data.h"
#include "solid/block.h"
#include "solid/block_faces.h"
#include "solid/block_warnings.h"
#include "solid/concave_block.h"
#include "solid/expand_block.h"

namespace k2k {

namespace {

bool IsVisualHull(int32_t hull) {
    return hull == Options().sethulls[0];
}

uint32_t FirstSideTextureFlags(const MapBlock& block) {
    return block.faces.empty() ? 0 : Textures().GetTexinfo(block.faces.front().texinfo).flags;
}

// The contents word from the flags of the block and of its first side's texture.
int32_t ContentsOf(const MapBlock& block) {
    const uint32_t texture = FirstSideTextureFlags(block);
    const bool isOpenSky = (texture & TextureSky) != 0 && !Options().solidsky;
    int32_t contents = ContentsSolid;
    if ((block.flags & (BlockMarked | BlockMarkedToo)) != 0) contents |= ContentsMarked;
    if ((block.flags & BlockPassable) != 0 || (texture & TexturePassable) != 0 || isOpenSky) contents |= ContentsOpen;
    if ((block.flags & BlockInvisible) != 0 || (texture & TextureClipOnly) != 0) contents |= ContentsClipOnly;
    if ((block.flags & BlockDetail) != 0 || (texture & TextureDetail) != 0) contents |= ContentsDetail;
    return contents;
}

std::vector<BlockSide> SidesOf(const MapBlock& block, bool isTextured) {
    std::vector<BlockSide> sides;
    sides.reserve(block.faces.size());
    for (const MapFace& face : block.faces) {
        sides.push_back({{face.normal, face.dist, face.planeType}, isTextured ? face.texinfo : 0, &face});
    }
    return sides;
}

BlockFaces BuildConvex(const MapBlock& block, std::vector<BlockSide>& sides, int32_t hull) {
    BlockFaces built = BuildBlockFaces(block, sides, hull);
    if (built.faces.empty() || hull == 0) return built;
    ExpandBlock(hull, sides, built);
    built = BlockFaces();
    return BuildBlockFaces(block, sides, hull);
}

BlockFaces BuildConcave(const MapBlock& block, const std::vector<BlockSide>& sides, int32_t hull) {
    return hull < 1 ? BuildConcaveFaces(block, sides) : BuildConcaveBox(block, sides, hull);
}

void WarnNotCreated(const MapBlock& block, int32_t hull) {
    if (!WarnsInHull(BlockWarning::NotCreated, hull)) return;
    BuildLog(" \nWARNING W013: Can't create block %d\n", block.number - 1);
}

// Null for a block that does not take part in this hull.
std::unique_ptr<CBlock> BuildBlock(const MapBlock& mapBlock, int32_t hull) {
    int32_t contents = ContentsOf(mapBlock);
    if (IsVisualHull(hull) && (contents & ContentsClipOnly) != 0) return nullptr;
    const bool isConcave = (mapBlock.flags & BlockMesh) != 0;
    if (isConcave && !Options().mesh) {
        BuildLog(" \nWARNING: block %d is concave. Enable -mesh option to allow concave blocks.\n",
                 mapBlock.number - 1);
        return nullptr;
    }
    if (!IsVisualHull(hull)) contents &= ~ContentsDetail;
    if (isConcave) contents |= ContentsDetail;

    std::vector<BlockSide> sides = SidesOf(mapBlock, IsVisualHull(hull));
    BlockFaces built = isConcave ? BuildConcave(mapBlock, sides, hull) : BuildConvex(mapBlock, sides, hull);
    if (built.faces.empty()) {
        WarnNotCreated(mapBlock, hull);
        return nullptr;
    }

    auto block = std::make_unique<CBlock>();
    block->mins = built.bounds.mins;
    block->maxs = built.bounds.maxs;
    block->faces = std::move(built.faces);
    // Collision tells blocks apart by fewer bits; 8 stands for no kind of its own.
    constexpr int32_t VisualOnly = ContentsMarked | ContentsClipOnly | 8;
    block->contents = hull == 0 ? contents : contents & ~VisualOnly;
    block->blockNumber = mapBlock.number;
    return block;
}

void ExtendBounds(CBlockSet& set, const CBlock& block) {
    for (size_t axis = 0; axis < 3; ++axis) {
        if (block.mins[axis] < set.mins[axis]) set.mins[axis] = block.mins[axis];
        if (block.maxs[axis] > set.maxs[axis]) set.maxs[axis] = block.maxs[axis];
    }
}

}  // namespace

CBlockSet BuildBlockSet(const IntrusiveList<MapBlock>& entityBlocks, int32_t hull) {
    CBlockSet set;
    set.count = static_cast<int32_t>(entityBlocks.size());
    StartProgress(set.count);
    IntrusiveList<CBlock> others;
    for (const MapBlock& mapBlock : entityBlocks) {
        ++ProgressDone;
        std::unique_ptr<CBlock> block = BuildBlock(mapBlock, hull);
        if (block == nullptr) continue;
        ExtendBounds(set, *block);
        (IsSolid(block->contents) ? set.blocks : others).push_front(std::move(block));
    }
    while (!others.empty()) set.blocks.push_front(others.pop_front());
    return set;
}

}  // namespace k2k
