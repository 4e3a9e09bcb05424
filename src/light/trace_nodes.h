// The level's BSP in the form that rays walk: 32-byte nodes in one array, leaves as contents words.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "levelfile/level_records.h"

namespace k2k {

struct TraceNode {
    Vec3 normal{};
    float dist = 0;
    int32_t type = 0;                // 0, 1, 2: the normal is that axis
    std::array<int32_t, 2> child{};  // front and back: a TraceNode, or a leaf's contents word when negative
    int32_t node = 0;                // row of the node it was made from
};
static_assert(sizeof(TraceNode) == 32, "two nodes a cache line");

// Per node and side, the range of SeeThroughFaces of the leaf there. Beside the nodes, since most levels have none.
struct TraceFaces {
    std::array<uint32_t, 2> firstFace{}, endFace{};
};

class CTraceTree {
  public:
    // From the nodes, regions and surfaces of the level in work. A number out of range, a leaf without a contents word
    // and a node that is reached twice are fatal.
    CTraceTree();

    // Whether the segment meets no solid leaf; else hit is where it enters the first one. Detail leaves stop it at
    // their surfaces.
    bool TraceLine(const Vec3& start, const Vec3& end, Vec3& hit) const;
    // The same; leaf is the solid leaf that stopped the segment, as its node's number * 2 + its side there, or -1.
    bool TraceLine(const Vec3& start, const Vec3& end, Vec3& hit, int32_t& leaf) const;
    // Whether the point lies in a solid leaf.
    bool PointInSolid(const Vec3& point) const;

    const std::vector<TraceNode>& nodes() const { return nodes_; }
    const std::vector<TraceFaces>& faces() const { return faces_; }
    const std::vector<uint32_t>& SeeThroughFaces() const { return seeThroughFaces_; }
    bool UseSeeThrough() const { return useSeeThrough_; }

  private:
    struct Pending;
    struct StackEntry;

    void AddNode(const Pending& pending, std::vector<Pending>& todo);
    void AddLeaf(const Pending& pending);
    void AppendLeafFaces(const CRegion& region);
    template <bool seeThrough>
    bool WalkWithStack(const Vec3& start, const Vec3& end, Vec3& hit, int32_t& leaf) const;
    template <bool seeThrough>
    bool Walk(const Vec3& start, const Vec3& end, Vec3& hit, int32_t& leaf, StackEntry* stack) const;
    // Whether the segment meets a surface of the detail leaf on that side of the node.
    bool TestSeeThroughFaces(int32_t node, uint32_t side, const Vec3& start, const Vec3& stop, Vec3& hit) const;

    std::vector<TraceNode> nodes_;
    std::vector<TraceFaces> faces_;  // one a node
    std::vector<uint32_t> seeThroughFaces_;
    std::vector<std::vector<Vec3>> outlines_;  // one a see-through face
    bool useSeeThrough_ = false;               // a detail leaf was met
    size_t depth_ = 0;                         // of the deepest node, and so of the stack of a walk
    double eps_ = 0;
};

}  // namespace k2k
