// A second form of the tree for machines with AVX2: eight children a node, four triangles a leaf. It only proposes
// triangles, in the order of the binary tree; whether one is hit is decided by the binary tree's boxes and the triangle
// test. After Wald, Benthin, Boulos, "Getting Rid of Packets: Efficient SIMD Single-Ray Traversal using Multi-Branching
// BVHs" (2008).
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "raytree/ray_tree.h"

namespace k2k::Opcode {

// Child words are those of AABBNoLeafNode, with a packet in place of a triangle. Children stand in the order of the
// walk; the boxes of those that are missing meet nothing.
struct alignas(64) WideNode {
    static constexpr size_t Width = 8;
    using Lanes = std::array<float, Width>;

    std::array<Lanes, 3> center{}, extents{};
    std::array<uint32_t, Width> children{};
};

// Up to four neighbours in the order of the walk. Lanes without a triangle have edges of no length, which nothing hits.
struct alignas(64) TrianglePacket {
    static constexpr size_t Width = 4;
    using Lanes = std::array<float, Width>;

    std::array<Lanes, 3> v0{}, e1{}, e2{};  // first corner, and the edges from it to the two others
    std::array<uint32_t, Width> triangle{};
    std::array<uint32_t, Width> parent{};  // the binary node that holds the triangle
};

class WideTree {
  public:
    WideTree() = default;
    // A wide form of a tree of at least one node. The mesh is only read here.
    WideTree(const MeshInterface& mesh, const AABBNoLeafTree& tree);

    bool empty() const { return nodes_.empty(); }
    const WideNode* nodes() const { return nodes_.data(); }
    const TrianglePacket* packets() const { return packets_.data(); }
    uint32_t stackSize() const { return stackSize_; }  // what a walk can leave for later at most

  private:
    friend class WideTreeBuilder;
    std::vector<WideNode> nodes_;  // node 0 is the root
    std::vector<TrianglePacket> packets_;
    uint32_t stackSize_ = 0;
};

}  // namespace k2k::Opcode
