// The exact step: what each portal really sees.
#pragma once

#include "vis/flow_thread.h"

namespace k2k {

struct FlowCounts {
    int64_t regionFlowCalls = 0;
    int64_t repeats = 0;   // views that were left out since they repeated another
    int64_t putAside = 0;  // jobs that had to wait for another portal
};

// Without flow: each portal sees all that it might see.
void FastPortalVis(VisGraph& graph);

// Flows all portals on workers threads (at least one) and finishes every visBits. The rows are the same for any number.
FlowCounts CalculatePortalVis(VisGraph& graph, const FlowSettings& settings, int32_t workers);

}  // namespace k2k
