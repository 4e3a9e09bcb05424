// Constructive solid geometry: clips the faces of blocks against other blocks and joins coplanar pieces.
#pragma once

#include <memory>

#include "solid/block.h"
#include "solid/tree.h"

namespace k2k {

// The faces of all blocks that bound a change of contents, grouped by plane, from the highest plane number down.
SurfaceList CSGFaces(const CBlockSet& set, bool printOk);
// The same without any clipping.
SurfaceList CopyBlockFaces(const CBlockSet& set, bool printOk);
// Takes the faces back out of a tree, and frees the tree.
SurfaceList GatherTreeSurfaces(std::unique_ptr<CBspNode> root);
// Joins faces within each surface.
void MergeSurfaces(SurfaceList& surfaces);

// A new face that covers both, or null. Planes are not compared.
std::unique_ptr<CBlockFace> TryMerge(const CBlockFace& f1, const CBlockFace& f2);

}  // namespace k2k
