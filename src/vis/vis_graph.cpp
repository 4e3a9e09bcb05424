// Regions and the portals between them, as visibility sees them.
#include "vis/vis_graph.h"

namespace k2k {

VisGraph::VisGraph(std::vector<VisPortal> records, const std::vector<std::vector<int32_t>>& lists)
    : portals(std::move(records)) {
    exits_.reserve(portals.size());
    firstExit_.reserve(lists.size() + 1);
    for (const std::vector<int32_t>& list : lists) {
        for (const int32_t number : list) exits_.push_back({number, portal(number).region});
        firstExit_.push_back(exits_.size());
    }
}

void VisGraph::AllocateMightSee() {
    mightSeeRows_.Reset(portals.size(), rowWords());
    for (size_t i = 0; i < portals.size(); ++i) portals[i].mightSee = mightSeeRows_.row(i);
}

void VisGraph::AllocateVisBits() {
    visRows_.Reset(portals.size(), rowWords());
    for (size_t i = 0; i < portals.size(); ++i) portals[i].visBits = visRows_.row(i);
}

}  // namespace k2k
