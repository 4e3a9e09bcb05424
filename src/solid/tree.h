// The records of a BSP tree: surfaces on their way down, nodes and leaves.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "solid/block_face.h"

namespace k2k {

struct CPortal;

// The faces on one plane.
struct CSplitSurface {
    CSplitSurface* next = nullptr;
    int32_t planenum = 0;
    int32_t sourceBlock = 0;  // first face's block number
    Vec3 mins{}, maxs{};
    bool onNode = false;                // its plane was used as a splitter above
    std::array<int32_t, 2> contents{};  // of the first face
    FaceList faces;
};
using SurfaceList = IntrusiveList<CSplitSurface>;

constexpr int32_t LeafPlane = -1;

struct CBspNode {
    Vec3 mins{}, maxs{};
    int32_t planenum = 0;                               // LeafPlane for a leaf
    int32_t outputPlane = 0;                            // final plane number
    int32_t firstFace = 0, numFaces = 0;                // range in the surface table
    std::array<std::unique_ptr<CBspNode>, 2> children;  // front, back
    FaceList faces;                                     // stored on this node
    int32_t contents = 0;                               // 0 for a node
    std::vector<CBlockFace*> markFaces;                 // leaves: faces of nodes that bound it, in order
    CPortal* portals = nullptr;
    int32_t leafNumber = 0;
    int32_t fillStamp = 0;
    int32_t occupied = 0;  // number of the entity inside the leaf

    CBspNode() = default;
    ~CBspNode();  // frees the subtree without recursion or allocation
    CBspNode(const CBspNode&) = delete;
    CBspNode& operator=(const CBspNode&) = delete;

    bool IsLeaf() const { return contents != 0; }
};

// Bounds of the surface's faces; no faces, or a face with a contents value of 0 or more, is fatal.
void CalcSurfaceInfo(CSplitSurface& surface);

}  // namespace k2k
