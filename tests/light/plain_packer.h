// The packer in its plainest form: selection sorts, trees of pointers, a walk over all leaves for every insert and
// every area. What the real one gives must be equal.
#pragma once

#include <list>
#include <memory>
#include <utility>
#include <vector>

#include "driver/build_log.h"
#include "light/page_packer.h"
#include "light/page_tree.h"

namespace k2k::test {

template <typename T, typename Better>
void SelectionSort(std::vector<T>& items, Better better) {
    for (size_t i = 0; i < items.size(); i++) {
        size_t best = i;
        for (size_t j = i + 1; j < items.size(); j++) {
            if (better(items[j], items[best])) best = j;
        }
        std::swap(items[i], items[best]);
    }
}

struct PlainNode {
    uint32_t group = 0;
    int32_t block = -1;
    int32_t x0 = 0, y0 = 0, x1 = 0, y1 = 0;
    PlainNode* childA = nullptr;
    PlainNode* childB = nullptr;
    PlainNode* parent = nullptr;
    int32_t w() const { return x1 - x0 + 1; }
    int32_t h() const { return y1 - y0 + 1; }
    int64_t area() const { return int64_t{w()} * h(); }
    bool isFreeLeaf() const { return childA == nullptr && group == 0; }
};

struct PlainPage {
    uint32_t level = 0;
    PlainNode* root = nullptr;
};

class PlainPacker {
  public:
    // Blocks as {group, width, height} of the node.
    struct Block {
        uint32_t group;
        int32_t w, h;
    };

    PlainPacker(const std::vector<Block>& blocks, uint32_t maxPageLevel) : maxPageLevel_(maxPageLevel) {
        for (const Block& block : blocks) {
            PlainNode& node = nodes.emplace_back();
            node.group = block.group;
            node.block = static_cast<int32_t>(nodes.size()) - 1;
            node.x1 = block.w - 1;
            node.y1 = block.h - 1;
        }
        Pack();
    }

    std::list<PlainNode> nodes;  // of the blocks
    std::vector<PlainPage> pages;

  private:
    struct Group {
        std::vector<PlainNode*> members;
        int64_t totalArea = 0;
    };
    struct Candidate {
        size_t page;
        int64_t freeArea;
    };

    PlainNode* NewNode(int32_t x0, int32_t y0, int32_t x1, int32_t y1) {
        PlainNode& node = freeNodes_.emplace_back();
        node.x0 = x0;
        node.y0 = y0;
        node.x1 = x1;
        node.y1 = y1;
        return &node;
    }
    PlainNode* NewRoot(uint32_t level) { return NewNode(0, 0, PageSizeOf(level) - 1, PageSizeOf(level) - 1); }

    static void Put(PlainPage& page, PlainNode* where, PlainNode* node) {
        node->parent = where->parent;
        if (where->parent == nullptr) {
            page.root = node;
        } else if (where->parent->childA == where) {
            where->parent->childA = node;
        } else {
            where->parent->childB = node;
        }
    }

    bool InsertRect(PlainPage& page, PlainNode* node, PlainNode* block) {
        if (node == nullptr) return false;
        if (node->childA != nullptr) {
            return InsertRect(page, node->childA, block) || InsertRect(page, node->childB, block);
        }
        const int32_t w = block->w(), h = block->h(), nw = node->w(), nh = node->h();
        if (node->group != 0 || nw < w || nh < h) return false;
        if (nw == w && nh == h) {
            block->x0 = node->x0;
            block->y0 = node->y0;
            block->x1 = node->x1;
            block->y1 = node->y1;
            Put(page, node, block);
            return true;
        }
        PlainNode* a = nw != w && nh != h ? NewNode(0, 0, 0, 0) : block;
        PlainNode* b = NewNode(node->x0, node->y0, node->x1, node->y1);
        const int32_t x0 = node->x0, y0 = node->y0, x1 = node->x1, y1 = node->y1;
        if (nw - w <= nh - h) {
            a->x0 = x0, a->y0 = y0, a->x1 = x1, a->y1 = y0 + h - 1;
            b->y0 = y0 + h;
        } else {
            a->x0 = x0, a->y0 = y0, a->x1 = x0 + w - 1, a->y1 = y1;
            b->x0 = x0 + w;
        }
        node->childA = a;
        node->childB = b;
        a->parent = b->parent = node;
        return a == block || InsertRect(page, a, block);
    }

    void RemoveRect(PlainPage& page, PlainNode* block) {
        PlainNode* parent = block->parent;
        block->parent = nullptr;
        if (parent == nullptr) {
            page.root = nullptr;
            return;
        }
        PlainNode* sibling = parent->childA == block ? parent->childB : parent->childA;
        if (!sibling->isFreeLeaf()) {
            PlainNode* gap = NewNode(block->x0, block->y0, block->x1, block->y1);
            gap->parent = parent;
            (parent->childA == block ? parent->childA : parent->childB) = gap;
            return;
        }
        parent->childA = parent->childB = nullptr;
        for (PlainNode* p = parent->parent; p != nullptr; p = p->parent) {
            if (!p->childA->isFreeLeaf() || !p->childB->isFreeLeaf()) break;
            p->childA = p->childB = nullptr;
        }
    }

    bool InsertGroup(PlainPage& page, const Group& group) {
        for (size_t i = 0; i < group.members.size(); i++) {
            if (InsertRect(page, page.root, group.members[i])) continue;
            for (size_t j = 0; j < i; j++) RemoveRect(page, group.members[j]);
            return false;
        }
        return true;
    }

    static int64_t FreeArea(const PlainNode* node) {
        if (node == nullptr) return 0;
        if (node->childA != nullptr) return FreeArea(node->childA) + FreeArea(node->childB);
        return node->group == 0 ? node->area() : 0;
    }

    PlainPage Grow(PlainPage& page, uint32_t level) {
        PlainPage old = page;
        if (old.root != nullptr && old.root->isFreeLeaf()) old.root = NewRoot(old.level);  // what an undo puts back
        PlainNode* before = page.root;
        page = {level, NewRoot(level)};
        if (before != nullptr) InsertRect(page, page.root, before);
        return old;
    }

    static void Undo(PlainPage& page, const PlainPage& before) {
        page = before;
        if (page.root != nullptr) page.root->parent = nullptr;
    }

    bool InsertSingle(PlainPage& page, PlainNode* node, uint32_t level) {
        if (InsertRect(page, page.root, node)) return true;
        if (page.level >= level) return false;
        const PlainPage before = Grow(page, level);
        if (InsertRect(page, page.root, node)) return true;
        Undo(page, before);
        return false;
    }

    std::vector<Group> MakeGroups() {
        std::vector<PlainNode*> sorted;
        for (PlainNode& node : nodes) sorted.push_back(&node);
        SelectionSort(sorted, [](const PlainNode* a, const PlainNode* b) {
            return a->group < b->group || (a->group == b->group && a->area() > b->area());
        });
        std::vector<Group> groups;
        for (PlainNode* node : sorted) {
            if (groups.empty() || groups.back().members.front()->group != node->group) {
                groups.push_back({{node}, 0});
            } else {
                groups.back().members.push_back(node);
                groups.back().totalArea += node->area();
            }
        }
        SelectionSort(groups, [](const Group& a, const Group& b) { return a.totalArea > b.totalArea; });
        return groups;
    }

    void Pack() {
        for (const Group& group : MakeGroups()) PlaceGroup(group);
    }

    void PlaceGroup(const Group& group) {
        std::vector<Candidate> table;
        for (size_t page = 0; page < pages.size(); page++) {
            const int64_t area = FreeArea(pages[page].root);
            size_t place = 0;
            while (place < table.size() && table[place].freeArea <= area) place++;
            table.insert(table.begin() + static_cast<ptrdiff_t>(place), {page, area});
        }
        for (const Candidate& candidate : table) {
            if (candidate.freeArea >= group.totalArea && InsertGroup(pages[candidate.page], group)) return;
        }
        if (pages.size() < MaxLightPages) {
            for (uint32_t level = 0; level <= maxPageLevel_; level++) {
                if (int64_t{PageSizeOf(level)} * PageSizeOf(level) < group.totalArea) continue;
                PlainPage page{level, NewRoot(level)};
                if (!InsertGroup(page, group)) continue;
                pages.push_back(page);
                return;
            }
        } else {
            for (const Candidate& candidate : table) {
                PlainPage& page = pages[candidate.page];
                for (uint32_t level = page.level + 1; level <= maxPageLevel_; level++) {
                    const PlainPage before = Grow(page, level);
                    if (InsertGroup(page, group)) return;
                    Undo(page, before);
                }
            }
        }
        PlaceOneByOne(group, table);
    }

    void PlaceOneByOne(const Group& group, std::vector<Candidate>& table) {
        std::vector<bool> placed(group.members.size());
        for (;;) {
            size_t start = 0;
            bool failed = false;
            for (uint32_t level = 0; level <= maxPageLevel_; level++) {
                failed = false;
                for (size_t n = 0; n < group.members.size(); n++) {
                    if (placed[n]) continue;
                    PlainNode* node = group.members[n];
                    for (size_t k = 0; k < table.size() && !placed[n]; k++) {
                        const size_t i = start + k < table.size() ? start + k : start + k - table.size();
                        PlainPage& page = pages[table[i].page];
                        if (page.level > level || table[i].freeArea < node->area()) continue;
                        if (!InsertSingle(page, node, level)) continue;
                        table[i].freeArea -= node->area();
                        start = i;
                        placed[n] = true;
                    }
                    if (!placed[n]) failed = true;
                }
            }
            if (!failed) return;
            if (pages.size() >= MaxLightPages) {
                BuildLog("\nWARRNING: Dropped some lightmap patches\n");
                return;
            }
            pages.push_back({0, NewRoot(0)});
            table.push_back({pages.size() - 1, 65536});
        }
    }

    uint32_t maxPageLevel_;
    std::list<PlainNode> freeNodes_;
};

}  // namespace k2k::test
