// The solid leaves of a BSP as convex cells, and the shadows that they surely cast.
//
// A ray's walk through the tree cuts the segment at planes, rounds every cut, and lets it dip behind a plane by -eps. A
// point that lies in a leaf deeper than all of that certainly makes the walk come to the leaf, if nothing stopped it
// before. So the cells here are the leaves without their outermost layer, and what a cell hides from a point is hidden
// without a walk.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

#include "light/trace_nodes.h"
#include "radiosity/shadow_volume.h"

namespace k2k {

class CBlockerCells {
  public:
    // For rays whose ends lie in the box. The tree must live as long as the cells.
    CBlockerCells(const CTraceTree& tree, const Vec3& mins, const Vec3& maxs);

    // The starts from which rays to this end are surely stopped, well before it, by the leaf or something before it.
    // False when that cannot be told. The leaf is one that a walk was stopped by. For any number of threads.
    bool CastShadow(int32_t leaf, const Vec3& end, ShadowVolume& shadow) const;

  private:
    // An edge of a face, and the face on its other side.
    struct FaceEdge {
        Vec3d from, to;
        uint32_t across = 0;
    };
    struct Face {
        HalfSpace space;
        std::vector<FaceEdge> edges;
    };
    // Closed and convex; without faces when the leaf is too thin.
    struct Cell {
        std::vector<Face> faces;
        Vec3d centre{};
    };
    class Builder;

    const Cell& CellOf(int32_t leaf) const;
    Cell BuildCell(int32_t leaf) const;

    const CTraceTree& tree_;
    const Vec3 mins_, maxs_;
    std::vector<int32_t> parents_;  // per node its parent's number * 2 + its side there; -1 at the root
    std::unique_ptr<std::once_flag[]> built_;
    mutable std::vector<Cell> cells_;  // by leaf; built when first asked for
};

}  // namespace k2k
