#include "solid/block_index.h"

#include <algorithm>
#include <numeric>

namespace k2k {

namespace {

constexpr int32_t BlocksPerLeaf = 4;

// Boxes that only touch do meet.
template <typename Box>
bool Meets(const Box& box, const CBlock& block) {
    for (size_t axis = 0; axis < 3; ++axis) {
        if (box.maxs[axis] < block.mins[axis] || box.mins[axis] > block.maxs[axis]) return false;
    }
    return true;
}

template <typename Box>
size_t LongestAxis(const Box& box) {
    size_t longest = 0;
    for (size_t axis = 1; axis < 3; ++axis) {
        if (box.maxs[axis] - box.mins[axis] > box.maxs[longest] - box.mins[longest]) longest = axis;
    }
    return longest;
}

}  // namespace

BlockIndex::BlockIndex(const CBlockSet& set) {
    for (const CBlock& block : set.blocks) blocks_.push_back(&block);
    order_.resize(blocks_.size());
    std::iota(order_.begin(), order_.end(), 0);
    if (!blocks_.empty()) Build(0, static_cast<int32_t>(blocks_.size()));
}

BlockIndex::Node BlockIndex::Enclose(int32_t first, int32_t count) const {
    const CBlock& firstBlock = *blocks_[order_[first]];
    Node node{firstBlock.mins, firstBlock.maxs, first, count};
    for (int32_t i = first + 1; i < first + count; ++i) {
        const CBlock& block = *blocks_[order_[i]];
        for (size_t axis = 0; axis < 3; ++axis) {
            node.mins[axis] = std::min(node.mins[axis], block.mins[axis]);
            node.maxs[axis] = std::max(node.maxs[axis], block.maxs[axis]);
        }
    }
    return node;
}

int32_t BlockIndex::Build(int32_t first, int32_t count) {
    Node node = Enclose(first, count);
    if (count > BlocksPerLeaf) {
        const size_t axis = LongestAxis(node);
        const auto begin = order_.begin() + first;
        std::nth_element(begin, begin + count / 2, begin + count,
                         [&](int32_t a, int32_t b) { return blocks_[a]->mins[axis] < blocks_[b]->mins[axis]; });
        node.front = Build(first, count / 2);
        node.back = Build(first + count / 2, count - count / 2);
    }
    nodes_.push_back(node);
    return static_cast<int32_t>(nodes_.size() - 1);
}

const std::vector<int32_t>& BlockIndex::Meeting(const CBlock& block) {
    meeting_.clear();
    pending_.clear();
    if (!nodes_.empty()) pending_.push_back(static_cast<int32_t>(nodes_.size() - 1));
    while (!pending_.empty()) {
        const Node& node = nodes_[pending_.back()];
        pending_.pop_back();
        if (!Meets(node, block)) continue;
        if (node.front != None) {
            pending_.push_back(node.front);
            pending_.push_back(node.back);
            continue;
        }
        for (int32_t i = node.first; i < node.first + node.count; ++i) {
            if (Meets(*blocks_[order_[i]], block)) meeting_.push_back(order_[i]);
        }
    }
    std::sort(meeting_.begin(), meeting_.end());
    return meeting_;
}

}  // namespace k2k
