// Which blocks of a set meet a box.
#pragma once

#include <cstdint>
#include <vector>

#include "solid/block.h"

namespace k2k {

// A binary tree of boxes over the blocks of a set. The set must outlive it unchanged.
class BlockIndex {
  public:
    explicit BlockIndex(const CBlockSet& set);

    // The blocks in set order; a block's place here is its number below.
    const std::vector<const CBlock*>& blocks() const { return blocks_; }

    // The numbers of all blocks whose box meets or touches that of the given one, itself included, in rising order.
    // The result is valid until the next call.
    const std::vector<int32_t>& Meeting(const CBlock& block);

  private:
    struct Node {
        Vec3 mins{}, maxs{};
        int32_t first = 0, count = 0;       // range of order_; a leaf's blocks
        int32_t front = None, back = None;  // children; none at a leaf
    };
    static constexpr int32_t None = -1;

    int32_t Build(int32_t first, int32_t count);
    Node Enclose(int32_t first, int32_t count) const;

    std::vector<const CBlock*> blocks_;
    std::vector<int32_t> order_;  // block numbers, grouped by leaf
    std::vector<Node> nodes_;     // the root is the last
    std::vector<int32_t> meeting_, pending_;
};

}  // namespace k2k
