#include "light/light_finishing.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <span>

#include "driver/build_options.h"
#include "levelfile/geometry_data.h"
#include "levelfile/texture_data.h"
#include "light/finish_steps.h"
#include "light/lighting_state.h"
#include "light/page_packer.h"

namespace k2k {
namespace {

constexpr uint32_t MaxLevelOfMeshes = 2;  // BSP levels have no pages above level 0
constexpr double VanishingLight = 0.0001;
constexpr uint32_t BlankBlockSize = 289;  // bytes; twice that under -nod3dlmaps

bool IsZero(const Vec3& colour) {
    return std::none_of(colour.begin(), colour.end(), [](float c) { return std::fabs(c) > VanishingLight; });
}

bool IsDark(const LightBlock& block) {
    const size_t texels = size_t{block.width} * block.height;
    return std::all_of(block.texels.begin(), block.texels.begin() + static_cast<ptrdiff_t>(texels), IsZero);
}

// A free-standing node of the block's size, with a border of one texel all round.
PageNode NodeOf(const LightBlock& block) {
    PageNode node;
    node.group = block.group + 1;
    node.block = &block;
    node.lightShift = block.lightShift;
    node.x1 = static_cast<int32_t>(block.width) + 1;
    node.y1 = static_cast<int32_t>(block.height) + 1;
    return node;
}

// One texel of a blank page.
std::vector<uint8_t> BlankTexel(int32_t format) {
    std::vector<uint8_t> texel(BytesPerTexel(format));
    switch (static_cast<LightFormat>(format)) {
        case LightFormat::Bytes3:
            std::fill(texel.begin(), texel.end(), Lighting().GammaTable[0]);
            break;
        case LightFormat::Bytes8:
            texel[6] = 1;
            break;
        case LightFormat::Bytes16: {
            const std::array<float, 4> blank{0, 0, 0, 1};
            std::memcpy(texel.data(), blank.data(), sizeof blank);
        }
    }
    return texel;
}

std::vector<uint8_t> BlankPage(size_t texels, int32_t format) {
    const std::vector<uint8_t> texel = BlankTexel(format);
    std::vector<uint8_t> page;
    page.reserve(texels * texel.size());
    for (size_t i = 0; i < texels; i++) page.insert(page.end(), texel.begin(), texel.end());
    return page;
}

uint32_t AllocBlankBlock() {
    const uint32_t size = Options().nod3dlmaps ? 2 * BlankBlockSize : BlankBlockSize;
    const uint32_t offset = AllocLightData(size);
    const std::span<uint8_t> bytes = Lighting().LightStore.At(offset, size);
    std::fill(bytes.begin(), bytes.end(), uint8_t{0});
    return offset;
}

void PlaceSurface(SurfaceRecord& surface, const PageNode& node, size_t page) {
    if (Options().mesh) {
        surface.lightX = surface.lightY = MeshPagePosition;
        surface.SetMeshPosition(static_cast<uint16_t>(node.x0 + 1), static_cast<uint16_t>(node.y0 + 1));
    } else {
        surface.lightX = static_cast<uint8_t>(node.x0 + 1);
        surface.lightY = static_cast<uint8_t>(node.y0 + 1);
    }
    surface.lightPage = static_cast<uint8_t>(page);
    surface.lightShift = node.lightShift;
}

// Calls visit for every block of the tree, first children first.
template <typename Visit>
void VisitBlocks(const std::vector<PageNode>& nodes, PageNodeIndex index, Visit visit) {
    const PageNode& node = nodes[static_cast<size_t>(index)];
    if (!node.IsLeaf()) {
        VisitBlocks(nodes, node.childA, visit);
        VisitBlocks(nodes, node.childB, visit);
    } else if (node.block != nullptr) {
        visit(node);
    }
}

}  // namespace

void TLightFinishing::AddBlocks(const LightBlockList& blockList) {
    pages.clear();
    nodes.clear();
    maxLevel = 0;
    for (const LightBlock& block : blockList) {
        if (!IsDark(block)) nodes.push_back(NodeOf(block));
    }
    if (nodes.empty()) return;
    CPageTrees trees(nodes);
    PackBlocks(trees, nodes.size(), Options().mesh ? MaxLevelOfMeshes : 0, pages);
    for (const LightPage& page : pages) maxLevel = std::max(maxLevel, page.level);
    for (LightPage& page : pages) {
        if (page.root != NoNode && page.level < maxLevel) trees.Grow(page, maxLevel);
    }
}

void TLightFinishing::AllocatePages(PixelPages& pixelPages, std::vector<SurfaceRecord>& surfaces, int32_t format) {
    pixelPages.clear();
    const auto side = static_cast<size_t>(PageSizeOf(maxLevel));
    pixelPages.push_back(BlankPage(side * side, format));
    const uint32_t blankBlock = Options().mesh ? 0 : AllocBlankBlock();
    const uint8_t position = Options().mesh ? MeshPagePosition : 0;
    for (SurfaceRecord& surface : surfaces) {
        surface.lightShift = NoLightmapShift;
        surface.lightPage = 0;
        surface.lightX = surface.lightY = position;
        surface.lightOffset = blankBlock;  // 0 as a position on mesh levels
    }
}

void TLightFinishing::Finish(PixelPages& pixelPages, std::vector<SurfaceRecord>& surfaces, int32_t version,
                             int32_t format) {
    const uint32_t bytesPerTexel = BytesPerTexel(format);
    const FinishStep step = FindFinishStep(version, format);
    for (const LightPage& page : pages) {
        if (page.root == NoNode) continue;
        std::vector<uint8_t> pixels(size_t{page.width} * page.height * bytesPerTexel);
        VisitBlocks(nodes, page.root, [&](const PageNode& node) {
            if (step(page, node, pixels)) PlaceSurface(surfaces[node.block->surfaceIndex], node, pixelPages.size());
        });
        pixelPages.push_back(std::move(pixels));
    }
}

void FinishLightmaps(int32_t version) {
    constexpr auto format = static_cast<int32_t>(LightFormat::Bytes3);
    CTextureData& textures = Textures();
    TLightFinishing finishing;
    finishing.AddBlocks(LightBlocks());
    textures.FreeLightmapPages();
    finishing.AllocatePages(textures.pages, Geometry().surfaces, format);
    finishing.Finish(textures.pages, Geometry().surfaces, version, format);
    textures.lightmapSizeCode = static_cast<int32_t>(finishing.maxLevel);
    LightBlocks().clear();
}

}  // namespace k2k
