// Blocks that are not convex (-mesh): faces as given in the map, or a box for collision.
#pragma once

#include <optional>

#include "solid/block_faces.h"

namespace k2k {

// The sides' own vertex lists as faces; sides that are not convex become triangles.
BlockFaces BuildConcaveFaces(const MapBlock& block, const std::vector<BlockSide>& sides);

// The box around all side vertices, enlarged by the hull's box. No faces when no side has vertices.
BlockFaces BuildConcaveBox(const MapBlock& block, const std::vector<BlockSide>& sides, int32_t hull);

// Whether all vertices stand on the (approximate) convex hull of the face.
bool IsConvexFace(const CBlockFace& face);

// The points along the axis that their plane faces most; none when they are not in one plane, or on one line.
std::optional<std::vector<Point2D>> ProjectTo2D(const std::vector<Vec3>& points);

// The plane of the three points that span the largest area. The type is not set.
CPlane BestFitPlane(const CBlockFace& face);

}  // namespace k2k
