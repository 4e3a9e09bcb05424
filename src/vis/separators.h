// Planes that separate two polygons, each through an edge of the one and a point of the other.
#pragma once

#include <vector>

#include "vis/flow_polygon.h"

namespace k2k {

struct SeparatorRules {
    float eps = 0.05F;
    // Leave out a plane that equals the one in front of it. Parallel edges, as axial levels have them, give each plane
    // twice.
    bool skipRepeats = false;
};

// Whether clipping by the same plane twice is the same as clipping once, for polygons with coordinates of this size
// (the largest sum of a point's coordinates): what a clip leaves may lie behind the plane only by less than the
// tolerance.
bool MaySkipRepeats(double size, float eps);

// Appends the planes through an edge of source and a point of pass that have source behind them and pass in front; with
// flip, their reverse. Whatever is seen through source and then pass lies in front of all of them.
void AddSeparators(FlowPoints source, FlowPoints pass, bool flip, const SeparatorRules& rules,
                   std::vector<FlowPlane>& planes);

}  // namespace k2k
