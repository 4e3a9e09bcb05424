#include "light/page_packer.h"

#include <algorithm>
#include <numeric>
#include <tuple>

#include "driver/build_log.h"
#include "light/selection_order.h"

namespace k2k {
namespace {

// A run of equal groups in the sorted nodes. The first and largest node does not count in the area.
struct BlockGroup {
    std::span<const PageNodeIndex> members;
    int64_t totalArea = 0;
};

// A page that a group may go to, with the free area that is left of it by this group's count.
struct Candidate {
    size_t page = 0;
    int64_t freeArea = 0;
};

template <typename T>
std::vector<T> Rearranged(const std::vector<T>& items, const std::vector<size_t>& order) {
    std::vector<T> sorted;
    sorted.reserve(items.size());
    for (const size_t position : order) sorted.push_back(items[position]);
    return sorted;
}

// By group; within a group larger nodes first.
std::vector<PageNodeIndex> SortNodes(const CPageTrees& trees, size_t blockCount) {
    std::vector<PageNodeIndex> nodes(blockCount);
    std::iota(nodes.begin(), nodes.end(), 0);
    return Rearranged(nodes, SelectionOrder(nodes, [&](PageNodeIndex a, PageNodeIndex b) {
                          const PageNode& nodeA = trees.Node(a);
                          const PageNode& nodeB = trees.Node(b);
                          if (nodeA.group != nodeB.group) return nodeA.group < nodeB.group;
                          return nodeA.area() > nodeB.area();
                      }));
}

// Larger groups first.
std::vector<BlockGroup> MakeGroups(const CPageTrees& trees, std::span<const PageNodeIndex> nodes) {
    std::vector<BlockGroup> groups;
    for (size_t start = 0, end = 0; start < nodes.size(); start = end) {
        BlockGroup group;
        for (end = start + 1; end < nodes.size(); end++) {
            if (trees.Node(nodes[end]).group != trees.Node(nodes[start]).group) break;
            group.totalArea += trees.Node(nodes[end]).area();
        }
        group.members = nodes.subspan(start, end - start);
        groups.push_back(group);
    }
    return Rearranged(groups, SelectionOrder(groups, [](const BlockGroup& a, const BlockGroup& b) {
                          return a.totalArea > b.totalArea;
                      }));
}

class PagePacker {
  public:
    PagePacker(CPageTrees& trees, uint32_t maxPageLevel, std::vector<LightPage>& pages)
        : trees_(trees), maxPageLevel_(maxPageLevel), pages_(pages) {}

    void PlaceGroup(const BlockGroup& group) {
        MakeCandidates();
        if (PlaceOnCandidate(group)) return;
        if (!AllPagesUsed() && PlaceOnFreshPage(group)) return;
        if (AllPagesUsed() && PlaceOnGrownPage(group)) return;
        PlaceOneByOne(group);
    }

  private:
    bool AllPagesUsed() const { return pages_.size() >= MaxLightPages; }

    // All pages, the fullest first. The table keeps the areas of this moment.
    void MakeCandidates() {
        candidates_.clear();
        for (size_t page = 0; page < pages_.size(); page++) candidates_.push_back({page, pages_[page].freeArea});
        std::stable_sort(candidates_.begin(), candidates_.end(),
                         [](const Candidate& a, const Candidate& b) { return a.freeArea < b.freeArea; });
    }

    bool PlaceOnCandidate(const BlockGroup& group) {
        return std::any_of(candidates_.begin(), candidates_.end(), [&](const Candidate& candidate) {
            return candidate.freeArea >= group.totalArea && trees_.InsertGroup(pages_[candidate.page], group.members);
        });
    }

    bool PlaceOnFreshPage(const BlockGroup& group) {
        for (uint32_t level = 0; level <= maxPageLevel_; level++) {
            if (int64_t{PageSizeOf(level)} * PageSizeOf(level) < group.totalArea) continue;
            LightPage page = trees_.FreshPage(level);
            if (trees_.InsertGroup(page, group.members)) {
                pages_.push_back(page);
                return true;
            }
            trees_.DropPage(page);
        }
        return false;
    }

    bool PlaceOnGrownPage(const BlockGroup& group) {
        for (const Candidate& candidate : candidates_) {
            LightPage& page = pages_[candidate.page];
            for (uint32_t level = page.level + 1; level <= maxPageLevel_; level++) {
                const PageBefore before = trees_.Grow(page, level);
                if (trees_.InsertGroup(page, group.members)) return true;
                trees_.UndoGrow(page, before);
            }
        }
        return false;
    }

    void PlaceOneByOne(const BlockGroup& group) {
        std::vector<PageNodeIndex> unplaced(group.members.begin(), group.members.end());
        // What found no place among the candidates once never will: pages only fill up. So later rounds look at the
        // page that is new.
        size_t known = 0;
        for (;;) {
            PlaceRound(unplaced, known);
            if (unplaced.empty()) return;
            if (AllPagesUsed()) {
                BuildLog("\nWARRNING: Dropped some lightmap patches\n");
                return;
            }
            known = candidates_.size();
            pages_.push_back(trees_.FreshPage(0));
            candidates_.push_back({pages_.size() - 1, pages_.back().freeArea});
        }
    }

    // Tries every unplaced node on every candidate from `known` on, level by level. The search goes round, from the
    // candidate that took the last node.
    void PlaceRound(std::vector<PageNodeIndex>& unplaced, size_t known) {
        size_t start = known;
        for (uint32_t level = 0; level <= maxPageLevel_ && !unplaced.empty(); level++) {
            std::erase_if(unplaced, [&](PageNodeIndex node) {
                for (size_t i = start; i < candidates_.size(); i++) {
                    if (PlaceOn(i, node, level, start)) return true;
                }
                for (size_t i = known; i < start; i++) {
                    if (PlaceOn(i, node, level, start)) return true;
                }
                return false;
            });
        }
    }

    bool PlaceOn(size_t index, PageNodeIndex node, uint32_t level, size_t& start) {
        Candidate& candidate = candidates_[index];
        const int64_t area = trees_.Node(node).area();
        LightPage& page = pages_[candidate.page];
        if (page.level > level || candidate.freeArea < area || !InsertSingle(page, node, level)) return false;
        candidate.freeArea -= area;
        start = index;
        return true;
    }

    // On the page as it is, or else on the page grown to the level.
    bool InsertSingle(LightPage& page, PageNodeIndex node, uint32_t level) {
        if (trees_.InsertRect(page, node)) return true;
        if (page.level >= level) return false;
        const PageBefore before = trees_.Grow(page, level);
        if (trees_.InsertRect(page, node)) return true;
        trees_.UndoGrow(page, before);
        return false;
    }

    CPageTrees& trees_;
    const uint32_t maxPageLevel_;
    std::vector<LightPage>& pages_;
    std::vector<Candidate> candidates_;
};

}  // namespace

void PackBlocks(CPageTrees& trees, size_t blockCount, uint32_t maxPageLevel, std::vector<LightPage>& pages) {
    pages.reserve(MaxLightPages);
    const std::vector<PageNodeIndex> nodes = SortNodes(trees, blockCount);
    PagePacker packer(trees, maxPageLevel, pages);
    for (const BlockGroup& group : MakeGroups(trees, nodes)) packer.PlaceGroup(group);
}

}  // namespace k2k
