// Finds blocks that enclose the same volume, by their planes.
#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "solid/map_block.h"

namespace k2k {

// Whether each face of one block has a partner of its own in the other with exactly the same plane.
bool HaveSamePlanes(const MapBlock& a, const MapBlock& b);

// Blocks by a hash of their planes, so that a block is held against its likes only. Keeps pointers to the blocks.
class DuplicateIndex {
  public:
    // The first of the blocks added that has the same planes, or null.
    const MapBlock* Find(const MapBlock& block) const;
    void Add(const MapBlock& block);
    void Clear() { blocks_.clear(); }

  private:
    std::unordered_map<uint64_t, std::vector<const MapBlock*>> blocks_;
};

}  // namespace k2k
