// Each node knows the width of the widest, the height of the highest and the area of the largest free leaf below it, so
// that an insert passes by subtrees in which nothing can fit; it finds the same leaf as a walk over all of them.
#include "light/page_tree.h"

#include <algorithm>

namespace k2k {

PageNodeIndex CPageTrees::NewNode(int32_t x0, int32_t y0, int32_t x1, int32_t y1) {
    PageNodeIndex index = static_cast<PageNodeIndex>(nodes_.size());
    if (unused_.empty()) {
        nodes_.emplace_back();
    } else {
        index = unused_.back();
        unused_.pop_back();
    }
    PageNode& node = Node(index);
    node = PageNode();
    node.x0 = x0;
    node.y0 = y0;
    node.x1 = x1;
    node.y1 = y1;
    RefreshFreeSize(index);
    return index;
}

LightPage CPageTrees::FreshPage(uint32_t level) {
    LightPage page;
    page.level = level;
    page.width = page.height = static_cast<uint32_t>(PageSizeOf(level));
    page.root = NewNode(0, 0, PageSizeOf(level) - 1, PageSizeOf(level) - 1);
    page.freeArea = Node(page.root).area();
    return page;
}

void CPageTrees::DropPage(LightPage& page) {
    std::vector<PageNodeIndex> todo{page.root};
    while (!todo.empty()) {
        const PageNodeIndex index = todo.back();
        todo.pop_back();
        if (index == NoNode) continue;
        const PageNode& node = Node(index);
        if (node.block != nullptr) continue;
        todo.push_back(node.childA);
        todo.push_back(node.childB);
        FreeNode(index);
    }
    page.root = NoNode;
    page.freeArea = 0;
}

void CPageTrees::RefreshFreeSize(PageNodeIndex index) {
    PageNode& node = Node(index);
    if (!node.IsLeaf()) {
        const PageNode& a = Node(node.childA);
        const PageNode& b = Node(node.childB);
        node.freeWidth = std::max(a.freeWidth, b.freeWidth);
        node.freeHeight = std::max(a.freeHeight, b.freeHeight);
        node.freeLeaf = std::max(a.freeLeaf, b.freeLeaf);
    } else {
        const bool free = node.group == 0;
        node.freeWidth = free ? node.width() : 0;
        node.freeHeight = free ? node.height() : 0;
        node.freeLeaf = free ? static_cast<int32_t>(node.area()) : 0;
    }
}

void CPageTrees::RefreshUpwards(PageNodeIndex node) {
    for (; node != NoNode; node = Node(node).parent) RefreshFreeSize(node);
}

bool CPageTrees::InsertRect(LightPage& page, PageNodeIndex block) {
    if (page.root == NoNode || !InsertBelow(page, page.root, block)) return false;
    RefreshUpwards(Node(block).parent);
    page.freeArea -= Node(block).area();
    return true;
}

bool CPageTrees::InsertBelow(LightPage& page, PageNodeIndex index, PageNodeIndex block) {
    const PageNode& node = Node(index);
    const PageNode& wanted = Node(block);
    if (node.freeWidth < wanted.width() || node.freeHeight < wanted.height() || node.freeLeaf < wanted.area()) {
        return false;
    }
    if (!node.IsLeaf()) {
        const PageNodeIndex childB = node.childB;
        return InsertBelow(page, node.childA, block) || InsertBelow(page, childB, block);
    }
    if (node.width() == wanted.width() && node.height() == wanted.height()) {
        TakePlaceOf(page, index, block);
        return true;
    }
    const PageNodeIndex childA = SplitLeaf(index, block);
    return childA == block || InsertBelow(page, childA, block);
}

// Cuts a free leaf that is larger than the block into two, along the side that leaves less. Gives the first part: the
// block itself when it fills that.
PageNodeIndex CPageTrees::SplitLeaf(PageNodeIndex index, PageNodeIndex block) {
    const PageNode leaf = Node(index);
    const int32_t w = Node(block).width(), h = Node(block).height();
    const int32_t spareWidth = leaf.width() - w, spareHeight = leaf.height() - h;
    const PageNodeIndex childA = spareWidth != 0 && spareHeight != 0 ? NewNode(0, 0, 0, 0) : block;
    const PageNodeIndex childB = NewNode(leaf.x0, leaf.y0, leaf.x1, leaf.y1);
    PageNode& a = Node(childA);
    PageNode& b = Node(childB);
    a.x0 = leaf.x0;
    a.y0 = leaf.y0;
    a.x1 = leaf.x1;
    a.y1 = leaf.y1;
    if (spareWidth <= spareHeight) {
        a.y1 = leaf.y0 + h - 1;
        b.y0 = leaf.y0 + h;
    } else {
        a.x1 = leaf.x0 + w - 1;
        b.x0 = leaf.x0 + w;
    }
    a.parent = b.parent = index;
    Node(index).childA = childA;
    Node(index).childB = childB;
    RefreshFreeSize(childA);
    RefreshFreeSize(childB);
    return childA;
}

void CPageTrees::ReplaceChild(PageNodeIndex parent, PageNodeIndex child, PageNodeIndex by) {
    PageNode& node = Node(parent);
    (node.childA == child ? node.childA : node.childB) = by;
}

// An exact fit: the block stands where the free leaf stood.
void CPageTrees::TakePlaceOf(LightPage& page, PageNodeIndex index, PageNodeIndex block) {
    const PageNode node = Node(index);
    PageNode& taken = Node(block);
    taken.x0 = node.x0;
    taken.y0 = node.y0;
    taken.x1 = node.x1;
    taken.y1 = node.y1;
    taken.parent = node.parent;
    if (node.parent == NoNode) {
        page.root = block;
    } else {
        ReplaceChild(node.parent, index, block);
    }
    FreeNode(index);
}

// Two free leaves become one. False when the node has no two of them.
bool CPageTrees::MergeChildren(PageNodeIndex index) {
    PageNode& node = Node(index);
    if (!Node(node.childA).IsFreeLeaf() || !Node(node.childB).IsFreeLeaf()) return false;
    FreeNode(node.childA);
    FreeNode(node.childB);
    node.childA = node.childB = NoNode;
    RefreshFreeSize(index);
    return true;
}

void CPageTrees::RemoveRect(LightPage& page, PageNodeIndex block) {
    const PageNodeIndex parent = Node(block).parent;
    Node(block).parent = NoNode;
    if (parent == NoNode) {
        page.root = NoNode;
        page.freeArea = 0;
        return;
    }
    page.freeArea += Node(block).area();
    const PageNode removed = Node(block);
    const PageNodeIndex gap = NewNode(removed.x0, removed.y0, removed.x1, removed.y1);
    Node(gap).parent = parent;
    ReplaceChild(parent, block, gap);
    PageNodeIndex top = parent;
    while (top != NoNode && MergeChildren(top)) top = Node(top).parent;
    RefreshUpwards(top);
}

bool CPageTrees::InsertGroup(LightPage& page, std::span<const PageNodeIndex> group) {
    for (size_t i = 0; i < group.size(); i++) {
        if (InsertRect(page, group[i])) continue;
        for (const PageNodeIndex inserted : group.first(i)) RemoveRect(page, inserted);
        return false;
    }
    return true;
}

PageBefore CPageTrees::Grow(LightPage& page, uint32_t level) {
    const PageBefore before{page, page.root != NoNode && Node(page.root).IsFreeLeaf()};
    page = FreshPage(level);
    if (before.page.root == NoNode) return before;
    InsertBelow(page, page.root, before.page.root);
    RefreshFreeSize(before.page.root);
    RefreshUpwards(Node(before.page.root).parent);
    page.freeArea += before.page.freeArea - Node(before.page.root).area();
    return before;
}

void CPageTrees::UndoGrow(LightPage& page, const PageBefore& before) {
    if (before.wasEmpty) {
        // Undone inserts may have merged the old leaf into the larger page.
        DropPage(page);
        page = FreshPage(before.page.level);
        return;
    }
    const PageNodeIndex root = before.page.root;
    if (root != NoNode) {
        // A gap in its place keeps the old root out of what is freed.
        const PageNodeIndex gap = NewNode(0, 0, 0, 0);
        ReplaceChild(Node(root).parent, root, gap);
        Node(root).parent = NoNode;
    }
    DropPage(page);
    page = before.page;
}

int64_t CPageTrees::FreeArea(PageNodeIndex index) const {
    if (index == NoNode) return 0;
    const PageNode& node = Node(index);
    if (!node.IsLeaf()) return FreeArea(node.childA) + FreeArea(node.childB);
    return node.IsFreeLeaf() ? node.area() : 0;
}

}  // namespace k2k
