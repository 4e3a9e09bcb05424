// Planes that separate two polygons, each through an edge of the one and a point of the other.
#pragma once

#include <vector>

#include "vis/flow_polygon.h"

namespace k2k {

// Appends the planes through an edge of source and a point of pass that have source behind them and pass in front; with
// flip, their reverse. Whatever is seen through source and then pass lies in front of all of them.
void AddSeparators(FlowPoints source, FlowPoints pass, bool flip, float eps, std::vector<FlowPlane>& planes);

}  // namespace k2k
