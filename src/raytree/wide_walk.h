// A walk through the wide tree.
#pragma once

#include <cstdint>
#include <span>

#include "raytree/segment_test.h"
#include "raytree/wide_tree.h"

namespace k2k::Opcode {

// Whether this machine can walk a wide tree.
bool CanWalkWideTrees();

// Whether the segment meets all boxes of the nodes, as MeetsBox tells. Only where wide trees can be walked.
bool MeetsAllLanes(const Segment& segment, std::span<const WideNode> nodes);

class WideWalk {
  public:
    // The stack has room for what the tree says. All arguments must outlive the walk.
    WideWalk(const WideTree& tree, const Ray& ray, const Segment& segment, bool culling, uint32_t* stack)
        : tree_(tree), ray_(ray), segment_(segment), culling_(culling), stack_(stack), top_(stack) {
        *top_++ = 0;
    }

    struct Proposal {
        uint32_t triangle;
        uint32_t parent;  // the binary node that holds it
    };
    // The next triangle, in the order of the binary tree, that the tests of several lanes accept; false at the end.
    // These tests do the operations of the single ones in the same order and precision, but skip some of the boxes on
    // the way down, and the ray's end.
    bool Next(Proposal& proposal);

  private:
    template <bool Culling>
    void FindPacket();

    const WideTree& tree_;
    const Ray& ray_;
    const Segment& segment_;
    const bool culling_;
    const TrianglePacket* packet_ = nullptr;
    uint32_t lanes_ = 0;  // of the packet, still to propose
    uint32_t* const stack_;
    uint32_t* top_;
};

}  // namespace k2k::Opcode
