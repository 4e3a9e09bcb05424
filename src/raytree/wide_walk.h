// A walk through the wide tree.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "raytree/wide_tree.h"

namespace k2k::Opcode {

// Whether this machine can walk a wide tree.
bool CanWalkWideTrees();

// A ray on one axis. Boxes are grown by the margin: for the sides where the ray enters, the origin moves forward, and
// back for those where it leaves.
struct RaySlab {
    float enterOrigin, leaveOrigin;
    float inverse;                // of the direction
    size_t enterSide, leaveSide;  // of a WideNode
};

class WideWalk {
  public:
    // The margin is that of the tree for the ray; the stack has room for what the tree says. Tree and stack must
    // outlive the walk.
    WideWalk(const WideTree& tree, const Ray& ray, float length, float margin, bool culling, uint32_t* stack);

    struct Proposal {
        uint32_t triangle;
        uint32_t parent;  // the binary node that holds it
    };
    // The next triangle that the ray meets within its length, by the operations of the test of one triangle in the same
    // order and precision; false at the end. Whether it meets the boxes of the binary tree is left open.
    bool Next(Proposal& proposal);

  private:
    template <bool Culling>
    void FindPacket();

    const WideTree& tree_;
    const Ray ray_;
    const float length_;
    const bool culling_;
    std::array<RaySlab, 3> slabs_;
    float lengthGrown_;
    const TrianglePacket* packet_ = nullptr;
    uint32_t lanes_ = 0;  // of the packet, still to propose
    uint32_t* const stack_;
    uint32_t* top_;
};

}  // namespace k2k::Opcode
