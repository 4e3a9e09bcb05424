// Whether a point of a plane lies inside a convex outline.
#pragma once

#include <vector>

#include "levelfile/level_records.h"

namespace k2k {

// The point is inside when it lies on the same side of all edges; a point exactly on an edge counts as on the positive
// side of it. An outline of fewer than 3 points contains nothing.
bool IsInsideOutline(const Vec3& point, const std::vector<Vec3>& outline, const Vec3& normal);

}  // namespace k2k
