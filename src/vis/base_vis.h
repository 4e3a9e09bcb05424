// The cheap upper bound of what each portal can see.
#pragma once

#include "vis/vis_graph.h"

namespace k2k {

// Fills mightSee and mightSeeCount of every portal: the regions that a flood from the portal reaches through portals
// that lie, at least in part, in front of it and have it, at least in part, behind them.
void BasePortalVis(VisGraph& graph, float eps);

}  // namespace k2k
