// Rows of portals and regions as lists of bits.
#pragma once

#include <vector>

#include "vis/vis_graph.h"

namespace k2k::test {

using BitRow = std::vector<bool>;  // by region

inline BitRow ToBits(const Word* row, int32_t regionCount) {
    BitRow bits;
    for (int32_t region = 0; region < regionCount; ++region) bits.push_back(TestBit(row, region));
    return bits;
}

// By portal.
inline std::vector<BitRow> VisRows(const VisGraph& graph) {
    std::vector<BitRow> rows;
    for (const VisPortal& portal : graph.portals) rows.push_back(ToBits(portal.visBits, graph.regionCount()));
    return rows;
}
inline std::vector<BitRow> MightSeeRows(const VisGraph& graph) {
    std::vector<BitRow> rows;
    for (const VisPortal& portal : graph.portals) rows.push_back(ToBits(portal.mightSee, graph.regionCount()));
    return rows;
}

// Numbers of the regions whose bits are set.
inline std::vector<int32_t> RegionsIn(const BitRow& row) {
    std::vector<int32_t> regions;
    for (size_t region = 0; region < row.size(); ++region) {
        if (row[region]) regions.push_back(static_cast<int32_t>(region));
    }
    return regions;
}
inline std::vector<int32_t> RegionsIn(const Word* row, int32_t regionCount) {
    return RegionsIn(ToBits(row, regionCount));
}

}  // namespace k2k::test
