// Distributes blocks over lightmap pages: groups stay together where they can.
#pragma once

#include <cstdint>
#include <vector>

#include "light/page_tree.h"

namespace k2k {

// A surface names its page in one byte, and page 0 is the blank one.
constexpr size_t MaxLightPages = 255;

// Packs the nodes of blocks (the first blockCount of trees) into pages of level 0 to maxPageLevel, which are appended
// to pages. When all pages are full, blocks are dropped with a message.
void PackBlocks(CPageTrees& trees, size_t blockCount, uint32_t maxPageLevel, std::vector<LightPage>& pages);

}  // namespace k2k
