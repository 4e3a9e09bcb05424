// The triangle that stopped a thread's last ray. Rays come in runs from neighbouring points to one light, so it often
// stops the next one as well. After Haines and Greenberg, "The Light Buffer: A Shadow-Testing Accelerator" (1986),
// whose idea is kept for a single triangle.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "raytree/wide_tree.h"

namespace k2k::Opcode {

class LastBlocker {
  public:
    // Whether there is one, of this model. Models are told apart by their serial numbers.
    bool IsOf(const Model& model) const { return serial_ == model.serial(); }
    uint32_t triangle() const { return triangle_; }
    // The boxes of all nodes that lead to the triangle, eight at a time. Lanes to spare repeat the root's. Gathered at
    // the first call, as many blockers stop one ray only.
    const std::vector<WideNode>& Boxes(const AABBNoLeafTree& tree);

    void Set(const Model& model, uint32_t triangle, uint32_t parent);

  private:
    uint64_t serial_ = 0;
    uint32_t triangle_ = 0;
    uint32_t parent_ = 0;  // the binary node that holds it
    std::vector<WideNode> boxes_;
};

}  // namespace k2k::Opcode
