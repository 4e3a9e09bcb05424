// The end of both lighting roads: blocks are packed into pages, converted to bytes, and their places entered in the
// surfaces.
#pragma once

#include <cstdint>
#include <vector>

#include "levelfile/level_records.h"
#include "light/light_block.h"
#include "light/page_tree.h"

namespace k2k {

using PixelPages = std::vector<std::vector<uint8_t>>;

class TLightFinishing {
  public:
    virtual ~TLightFinishing() = default;

    // Selects the blocks that have light and packs them. The list must live until Finish.
    void AddBlocks(const LightBlockList& blockList);
    // Starts the list of pixel pages with the blank one, and gives all surfaces the blank state.
    void AllocatePages(PixelPages& pixelPages, std::vector<SurfaceRecord>& surfaces, int32_t format);
    // Appends the pages' pixels and places the surfaces.
    void Finish(PixelPages& pixelPages, std::vector<SurfaceRecord>& surfaces, int32_t version, int32_t format);

    std::vector<LightPage> pages;
    std::vector<PageNode> nodes;  // of the blocks first, then those of the trees
    uint32_t maxLevel = 0;        // the largest page level in use: all pages leave with its size
};

// Packs and finishes the blocks of the level in work into its pages; the block list is empty afterwards.
void FinishLightmaps(int32_t version);

}  // namespace k2k
