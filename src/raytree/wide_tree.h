// A second form of the tree for machines with AVX2: eight children a node, four triangles a leaf, split for the least
// work. It only proposes triangles; which of them the binary tree would give is decided by its boxes. After Wald, "On
// fast Construction of SAH-based Bounding Volume Hierarchies" (2007), and Wald, Benthin, Boulos, "Getting Rid of
// Packets: Efficient SIMD Single-Ray Traversal using Multi-Branching BVHs" (2008).
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "raytree/ray_tree.h"

namespace k2k::Opcode {

// Child words are those of AABBNoLeafNode, with a packet in place of a triangle. The boxes of children that are missing
// meet nothing.
struct alignas(64) WideNode {
    static constexpr size_t Width = 8;
    using Lanes = std::array<float, Width>;

    std::array<Lanes, 6> sides{};  // minimum on each axis, then maximum
    std::array<uint32_t, Width> children{};
};

// Up to four neighbours. Lanes without a triangle have edges of no length, which nothing hits.
struct alignas(64) TrianglePacket {
    static constexpr size_t Width = 4;
    using Lanes = std::array<float, Width>;

    std::array<Lanes, 3> v0{}, e1{}, e2{};  // first corner, and the edges from it to the two others
    std::array<uint32_t, Width> triangle{};
    std::array<uint32_t, Width> parent{};  // the binary node that holds the triangle
};

// The box of a triangle in the wide tree holds all places where a ray that the binary tree stops there can be, but for
// the margin below.
//
// In general that is the box of the binary node that holds the triangle. Rays have to meet it, and its test is off by
// the rounding of its sums alone. The triangle's own box will not do, as the triangle test says little of a ray along
// its plane, where the determinant is small beside its rounding.
//
// An axial triangle has equal coordinates on one axis, k. Both edges are exactly 0 there, so that the determinant and
// the numerators of u, v and distance all are products with direction[k] or with start[k], which is direction[k] times
// the distance, but for single roundings of relative size 2^-24. What is left of them after the division does not grow
// as direction[k] falls. With `reach` above all coordinates and the ray's length, the hit lies within
// (16 * stretch + 8) * 2^-24 * reach of the triangle, where `stretch` is the square of the longer edge over the
// parallelogram's area. So the own box serves unless the triangle is thin.
class WideTree {
  public:
    // A wide form of a tree of at least one node. The mesh is only read here.
    WideTree(const MeshInterface& mesh, const AABBNoLeafTree& tree);

    // How far rounding can move a ray against boxes: it cannot miss a box of the binary tree when it meets one within
    // that is smaller by this much on all sides, nor stop at a triangle whose box here is farther away than this.
    // Nothing for rays and scenes whose numbers are so large or so small that more than their last bits can be lost.
    std::optional<float> Margin(const Ray& ray, float length) const;

    const WideNode* nodes() const { return nodes_.data(); }
    const TrianglePacket* packets() const { return packets_.data(); }
    uint32_t stackSize() const { return stackSize_; }  // what a walk can leave for later at most

  private:
    friend class WideTreeBuilder;
    std::vector<WideNode> nodes_;  // node 0 is the root
    std::vector<TrianglePacket> packets_;
    uint32_t stackSize_ = 0;
    float reach_ = 0;  // of the tree's coordinates
};

}  // namespace k2k::Opcode
