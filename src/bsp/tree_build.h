// Builds the tree of one hull from surfaces: each node splits on the plane of one surface, and the leaves are convex
// regions of one contents kind.
#pragma once

#include <cstdint>
#include <memory>

#include "solid/block.h"
#include "solid/tree.h"

namespace k2k {

// What one tree build counts and keeps.
struct TreeBuild {
    bool midSplit = false;  // halve the level along axial planes; otherwise choose by fewest splits
    int32_t hull = 0;       // a -sethulls value; only faces of hull 0 are cut to texel sizes
    int32_t nodes = 0, nodeFaces = 0;
    int32_t emptyLeaves = 0, solidLeaves = 0, openLeaves = 0;
    int32_t oversizedSurfaces = 0;  // the engine's shaded mode has a limit; nothing raises this since faces are cut
};

// The whole tree. Its bounds are those of the set and a margin around. Announces progress, one unit a node.
std::unique_ptr<CBspNode> SolidBsp(SurfaceList surfaces, bool midSplit, int32_t hull, const CBlockSet& set);

// Fills a node and everything below it. Trees may be of any depth.
void BuildTree(TreeBuild& build, SurfaceList surfaces, CBspNode& node);

struct SurfacePieces {
    std::unique_ptr<CSplitSurface> front, back;
};
// A surface on the plane itself is marked as onNode and divided by the side its faces look to; other surfaces are cut.
SurfacePieces DivideSurface(std::unique_ptr<CSplitSurface> surface, const CPlane& plane);

// Gives the children their bounds; only axial planes cut them.
void DivideNodeBounds(CBspNode& node, const CPlane& plane);

// The node's own copies of the splitter's faces, after these were cut to texel sizes. Each face is linked to its copy.
FaceList LinkNodeFaces(TreeBuild& build, CSplitSurface& splitter);

// Makes the node a leaf: its contents and its visible faces come from the surfaces, which end here.
void LinkLeafFaces(TreeBuild& build, SurfaceList surfaces, CBspNode& leaf);

// A point on a node's plane belongs to the back child.
CBspNode& PointInLeaf(CBspNode& root, const Vec3& point);

// The edge and region tables as they are before any tree is written.
void ResetTreeTables();

}  // namespace k2k
