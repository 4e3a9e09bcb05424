// Chooses the surface whose plane splits a node.
#pragma once

#include "solid/tree.h"

namespace k2k {

// Null when no surface is left that may split: the node is a leaf. Surfaces of detail textures alone do not count as
// candidates, but can be chosen once two candidates exist.
CSplitSurface* SelectPartition(const SurfaceList& surfaces, bool midSplit);

// The axial plane that halves the box best, a later one on a tie; the first free surface when no plane is axial.
CSplitSurface* ChooseMidPlane(const SurfaceList& surfaces, const Vec3& mins, const Vec3& maxs);

// The plane that splits the fewest faces, among equals the axial one with the best balance. Without allowFloors planes
// that look straight up are passed over. May be null.
CSplitSurface* ChooseSplitPlane(const SurfaceList& surfaces, const Vec3& mins, const Vec3& maxs, bool allowFloors);

// The sum of squares of the child boxes' sizes, for an axial plane; small for a balanced cut.
float SplitterCost(const CPlane& plane, const Vec3& mins, const Vec3& maxs);

}  // namespace k2k
