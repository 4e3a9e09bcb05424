// Detail blocks: small solids that do not cut the tree. Their faces are surfaces of the leaves that they touch.
#pragma once

#include <cstdint>
#include <vector>

#include "solid/block.h"
#include "solid/tree.h"

namespace k2k {

// Moves the detail blocks into a set of their own, which has the bounds of the old one.
CBlockSet SplitDetailBlocks(CBlockSet& set);
// Moves all blocks into a new set, none of them detail any more.
CBlockSet TakeAllBlocks(CBlockSet& set);

// All faces of all surfaces, in order. The surfaces end here.
FaceList TakeDetailFaces(SurfaceList surfaces);
// Cuts the faces to texel sizes, for hull 0.
FaceList SubdivideDetailFaces(FaceList faces, int32_t hull);
// A surface row for each face. Counts progress.
void EmitDetailFaces(FaceList& faces);
// Enters each face at the leaves it touches. Leaves point to the faces from then on. A face in no open leaf goes to the
// root, whose contents tell that a detail block is misplaced.
void FilterDetailFaces(FaceList& faces, CBspNode& root);

// Lists the detail blocks that hold the middle of a surface of the level, but not all of that surface: such a block
// would have to cut it. True when the list is empty. Counts progress.
bool CheckDetailMidpoints(const CBlockSet& detail, std::vector<int32_t>& intersecting);

// Whether the point lies on one and the same side of all faces; faces nearer than 0.1 do not count.
bool PointInsideBlock(const Vec3& point, const CBlock& block);

}  // namespace k2k
