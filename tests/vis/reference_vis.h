// Visibility in its plainest form, to hold the fast one against: real recursion, polygons on the heap, one bit at a
// time, no row, clip or plane kept for later.
#pragma once

#include <cstdint>
#include <vector>

#include "vis/vis_graph.h"
#include "vis/vis_rows.h"

namespace k2k::test {

struct ReferenceResult {
    std::vector<BitRow> mightSee;  // by portal
    std::vector<BitRow> visBits;   // by portal
    int64_t regionFlowCalls = 0;
    int64_t recursions = 0;
};

// Takes from the graph only planes, regions and polygons.
ReferenceResult ReferenceVisibility(const VisGraph& graph, int32_t level, float eps);

}  // namespace k2k::test
