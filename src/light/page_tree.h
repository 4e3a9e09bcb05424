// Lightmap pages as two-way rectangle trees, with their nodes in one array.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "light/light_block.h"

namespace k2k {

using PageNodeIndex = int32_t;
constexpr PageNodeIndex NoNode = -1;

struct PageNode {
    uint32_t group = 0;  // 0 on a free node; else the block's group + 1
    const LightBlock* block = nullptr;
    uint8_t lightShift = 0;
    int32_t x0 = 0, y0 = 0, x1 = 0, y1 = 0;          // inclusive
    PageNodeIndex childA = NoNode, childB = NoNode;  // both or none
    PageNodeIndex parent = NoNode;
    // The largest of all free leaves below, each for itself.
    int32_t freeWidth = 0, freeHeight = 0, freeLeaf = 0;

    int32_t width() const { return x1 - x0 + 1; }
    int32_t height() const { return y1 - y0 + 1; }
    int64_t area() const { return int64_t{width()} * height(); }
    bool IsLeaf() const { return childA == NoNode; }
    bool IsFreeLeaf() const { return IsLeaf() && group == 0; }
};

struct LightPage {
    uint32_t width = 0, height = 0;  // 256 << level
    uint32_t level = 0;
    PageNodeIndex root = NoNode;
    int64_t freeArea = 0;  // of all free leaves
};

constexpr int32_t PageSizeOf(uint32_t level) {
    return 256 << level;
}

// What a page was before it grew.
struct PageBefore {
    LightPage page;
    bool wasEmpty = false;  // one free leaf
};

// The nodes of all pages: those of the blocks first, then free nodes as the pages need them.
class CPageTrees {
  public:
    explicit CPageTrees(std::vector<PageNode>& nodes) : nodes_(nodes) {}

    PageNode& Node(PageNodeIndex index) { return nodes_[static_cast<size_t>(index)]; }
    const PageNode& Node(PageNodeIndex index) const { return nodes_[static_cast<size_t>(index)]; }

    // A page that is one free leaf.
    LightPage FreshPage(uint32_t level);
    // Frees the free nodes of a page; the nodes of blocks stay for other pages.
    void DropPage(LightPage& page);

    // Places the block's node in the first free leaf that can take it.
    bool InsertRect(LightPage& page, PageNodeIndex block);
    // Undoes an insert.
    void RemoveRect(LightPage& page, PageNodeIndex block);
    // All nodes of the group, or none.
    bool InsertGroup(LightPage& page, std::span<const PageNodeIndex> group);

    // The page becomes a corner of a larger one. Undo holds as long as nothing more than undone inserts came between.
    PageBefore Grow(LightPage& page, uint32_t level);
    void UndoGrow(LightPage& page, const PageBefore& before);

    // The area of the free leaves below a node.
    int64_t FreeArea(PageNodeIndex node) const;

  private:
    PageNodeIndex NewNode(int32_t x0, int32_t y0, int32_t x1, int32_t y1);
    void FreeNode(PageNodeIndex index) { unused_.push_back(index); }
    bool InsertBelow(LightPage& page, PageNodeIndex node, PageNodeIndex block);
    PageNodeIndex SplitLeaf(PageNodeIndex index, PageNodeIndex block);
    void TakePlaceOf(LightPage& page, PageNodeIndex node, PageNodeIndex block);
    void ReplaceChild(PageNodeIndex parent, PageNodeIndex child, PageNodeIndex by);
    bool MergeChildren(PageNodeIndex node);
    void RefreshFreeSize(PageNodeIndex node);
    void RefreshUpwards(PageNodeIndex node);

    std::vector<PageNode>& nodes_;
    std::vector<PageNodeIndex> unused_;  // nodes that were freed
};

}  // namespace k2k
