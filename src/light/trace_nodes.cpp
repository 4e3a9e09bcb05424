// Plane distances are double, from 32-bit points and planes; for an axial plane the coordinate minus dist is the same
// number. Points on the segment are narrowed to 32 bits at each cut.
#include "light/trace_nodes.h"

#include <algorithm>

#include "driver/build_log.h"
#include "driver/build_options.h"
#include "levelfile/geometry_data.h"
#include "levelfile/portal_data.h"
#include "light/near_equal.h"
#include "light/polygon_test.h"
#include "light/surface_geometry.h"

namespace k2k {
namespace {

constexpr size_t UsualDepth = 64;  // deeper trees walk with a stack from the heap

[[noreturn]] void BadNode() {
    FatalError("Invalid node structure ! Misplaced detail brush ?");
}

double PlaneDistance(const TraceNode& node, const Vec3& point) {
    if (node.type >= 0 && node.type < 3) return static_cast<double>(point[static_cast<size_t>(node.type)]) - node.dist;
    return Dot(point, node.normal) - node.dist;
}

bool IsDetailLeaf(int32_t child) {
    return child < 0 && (child & ContentsDetail) != 0;
}

// Sky that bounds the world lets light in: an outside leaf behind a node with a sky surface is not solid to rays.
bool HasSkySurface(const CRegionNode& node) {
    const uint64_t end = uint64_t{node.firstSurface} + node.surfaceCount;
    if (end > Geometry().surfaces.size()) BadNode();
    for (uint32_t i = node.firstSurface; i < end; i++) {
        if ((SurfaceFlags(SurfaceRow(i)) & TextureSky) != 0) return true;
    }
    return false;
}

}  // namespace

// A child that is still to be built.
struct CTraceTree::Pending {
    int32_t child = 0;    // as the node table gives it
    int32_t parent = -1;  // a trace node
    uint32_t side = 0;
    size_t depth = 0;
};

// A half of the segment that the walk comes back to.
struct CTraceTree::StackEntry {
    Vec3 back;
    uint32_t side;
    int32_t node;
};

CTraceTree::CTraceTree() : eps_(Options().eps) {
    nodes_.reserve(Portals().nodes.size());
    // Last in, first out with the front child on top: pre-order, without recursion into deep trees.
    std::vector<Pending> todo{Pending{}};
    while (!todo.empty()) {
        const Pending pending = todo.back();
        todo.pop_back();
        if (pending.child >= 0) {
            AddNode(pending, todo);
        } else {
            AddLeaf(pending);
        }
    }
}

void CTraceTree::AddNode(const Pending& pending, std::vector<Pending>& todo) {
    const auto& rows = Portals().nodes;
    const auto& planes = Geometry().planes;
    const auto row = static_cast<size_t>(pending.child);
    if (row >= rows.size() || rows[row].plane >= planes.size() || nodes_.size() == rows.size()) BadNode();
    const FinalPlaneRecord& plane = planes[rows[row].plane];
    const auto number = static_cast<int32_t>(nodes_.size());
    if (pending.parent >= 0) nodes_[static_cast<size_t>(pending.parent)].child[pending.side] = number;
    nodes_.push_back({plane.normal, plane.dist, plane.type, {}, pending.child});
    faces_.emplace_back();
    depth_ = std::max(depth_, pending.depth + 1);
    for (const uint32_t side : {1U, 0U}) todo.push_back({rows[row].children[side], number, side, pending.depth + 1});
}

void CTraceTree::AddLeaf(const Pending& pending) {
    const int32_t number = ~pending.child;
    const auto leaf = static_cast<size_t>(number);
    if (leaf >= Portals().regions.size()) BadNode();
    const CRegion& region = Portals().regions[leaf];
    TraceNode& parent = nodes_[static_cast<size_t>(pending.parent)];
    int32_t contents = region.contents;
    if ((contents & ContentsDetail) != 0) {
        useSeeThrough_ = true;
        TraceFaces& range = faces_[static_cast<size_t>(pending.parent)];
        range.firstFace[pending.side] = static_cast<uint32_t>(seeThroughFaces_.size());
        AppendLeafFaces(region);
        range.endFace[pending.side] = static_cast<uint32_t>(seeThroughFaces_.size());
    }
    if (Options().solidsky && leaf == 0 && HasSkySurface(Portals().nodes[static_cast<size_t>(parent.node)])) {
        contents |= ContentsMarked;
    }
    if (contents >= 0) BadNode();
    parent.child[pending.side] = contents;
}

void CTraceTree::AppendLeafFaces(const CRegion& region) {
    const auto& list = Portals().regionSurfaces;
    const uint64_t end = uint64_t{region.firstSurface} + region.surfaceCount;
    if (end > list.size()) BadNode();
    for (uint32_t i = region.firstSurface; i < end; i++) {
        if (list[i] >= Geometry().surfaces.size()) BadNode();
        const SurfaceRecord& surface = SurfaceRow(list[i]);
        if ((SurfaceFlags(surface) & TextureDetail) == 0) continue;
        seeThroughFaces_.push_back(list[i]);
        outlines_.push_back(ConvexOutline(SurfaceEdgeEnds(surface), SurfaceNormal(surface)));
    }
}

bool CTraceTree::TraceLine(const Vec3& start, const Vec3& end, Vec3& hit) const {
    int32_t leaf = -1;
    return TraceLine(start, end, hit, leaf);
}

bool CTraceTree::TraceLine(const Vec3& start, const Vec3& end, Vec3& hit, int32_t& leaf) const {
    leaf = -1;
    return useSeeThrough_ ? WalkWithStack<true>(start, end, hit, leaf) : WalkWithStack<false>(start, end, hit, leaf);
}

template <bool seeThrough>
bool CTraceTree::WalkWithStack(const Vec3& start, const Vec3& end, Vec3& hit, int32_t& leaf) const {
    if (depth_ <= UsualDepth) {
        std::array<StackEntry, UsualDepth> stack;
        return Walk<seeThrough>(start, end, hit, leaf, stack.data());
    }
    const auto stack = std::make_unique_for_overwrite<StackEntry[]>(depth_);
    return Walk<seeThrough>(start, end, hit, leaf, stack.get());
}

// The stack holds the nodes above the current one at which the segment was cut: never more than the tree is deep.
template <bool seeThrough>
bool CTraceTree::Walk(const Vec3& start, const Vec3& end, Vec3& hit, int32_t& leaf, StackEntry* stack) const {
    Vec3 front = start;
    Vec3 back = end;
    int32_t n = 0;
    int32_t slot = -1;  // where n stands: its parent * 2 + its side there
    const StackEntry* const bottom = stack;
    StackEntry* top = stack;
    // Takes a child; false when a surface of a detail leaf stops the segment there.
    const auto descend = [&](int32_t node, uint32_t side) {
        n = nodes_[static_cast<size_t>(node)].child[side];
        slot = 2 * node + static_cast<int32_t>(side);
        if constexpr (seeThrough) {
            if (IsDetailLeaf(n) && TestSeeThroughFaces(node, side, start, end, hit)) return false;
        }
        return true;
    };
    for (;;) {
        while (n < 0 && n != ContentsSolid) {
            if (top == bottom) return true;
            --top;
            front = back;
            back = top->back;
            if (!descend(top->node, top->side ^ 1U)) return false;
        }
        if (n == ContentsSolid) {
            hit = front;
            leaf = slot;
            return false;
        }
        const TraceNode& node = nodes_[static_cast<size_t>(n)];
        const double d1 = PlaneDistance(node, front);
        const double d2 = PlaneDistance(node, back);
        uint32_t side = 0;
        if (d1 > -eps_ && d2 > -eps_) {
            side = 0;
        } else if (d1 < eps_ && d2 < eps_) {
            side = 1;
        } else {
            side = d1 < 0 ? 1 : 0;
            *top++ = {back, side, n};
            back = PointBetween(front, back, d1 / (d1 - d2));
        }
        if (!descend(n, side)) return false;
    }
}

bool CTraceTree::TestSeeThroughFaces(int32_t node, uint32_t side, const Vec3& start, const Vec3& stop,
                                     Vec3& hit) const {
    const TraceFaces& range = faces_[static_cast<size_t>(node)];
    const Vec3 dir = Sub(stop, start);
    bool touched = false;
    for (uint32_t i = range.firstFace[side]; i < range.endFace[side]; i++) {
        const SurfaceRecord& surface = SurfaceRow(seeThroughFaces_[i]);
        const FinalPlaneRecord& plane = Geometry().planes[surface.planeNumber];
        const double across = Dot(dir, plane.normal);
        if (across == 0) continue;
        const double t = (plane.dist - Dot(start, plane.normal)) / across;
        if (!(t > 0 && t < 1)) continue;
        const Vec3 q = PointAlong(start, dir, t);
        if (!IsInsideOutline(q, outlines_[i], SurfaceNormal(surface))) continue;
        hit = q;
        if (!NearlyEqual(q, start, SpotSize) && !NearlyEqual(q, stop, SpotSize)) return true;
        touched = true;
    }
    return touched;
}

bool CTraceTree::PointInSolid(const Vec3& point) const {
    int32_t n = 0;
    while (n >= 0) {
        const TraceNode& node = nodes_[static_cast<size_t>(n)];
        n = node.child[PlaneDistance(node, point) > -eps_ ? 0 : 1];
    }
    return n == ContentsSolid;
}

}  // namespace k2k
