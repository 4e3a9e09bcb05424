// The regions' visibility rows, packed for the level file.
#include "vis/region_rows.h"

#include "driver/build_log.h"
#include "levelfile/portal_data.h"

namespace k2k {
namespace {

constexpr uint8_t MaxZeroRun = 255;

void WarnMisplaced() {
    ++WarnCount;
    if (WarnOnce(WarnFamily::W110)) BuildLog(" \nWARNING W110: Misplaced portal!");
}

// What a region sees: all that its portals see, and itself.
void RegionVisRow(const VisGraph& graph, int32_t region, std::vector<Word>& row) {
    row.assign(graph.rowWords(), 0);
    for (const RegionExit& exit : graph.ExitsOf(region)) {
        const VisPortal& portal = graph.portal(exit.portal);
        if (portal.status != PortalStatus::Done) FatalError("E113");
        OrRow(row.data(), portal.visBits, row.size());
    }
    if (TestBit(row.data(), region)) WarnMisplaced();
    SetBit(row.data(), region);
}

}  // namespace

void PackRow(std::span<const uint8_t> row, std::vector<uint8_t>& packed) {
    for (size_t i = 0; i < row.size();) {
        packed.push_back(row[i]);
        if (row[i++] != 0) continue;
        uint8_t run = 1;
        while (i < row.size() && row[i] == 0 && run < MaxZeroRun) {
            ++i;
            ++run;
        }
        packed.push_back(run);
    }
}

void MakeRegionRows(const VisGraph& graph, std::span<CRegion> rows, std::vector<uint8_t>& visibility) {
    const size_t packedBytes = (static_cast<size_t>(graph.regionCount()) + 7) / 8;
    std::vector<Word> row;
    for (int32_t region = 0; region < graph.regionCount(); ++region) {
        RegionVisRow(graph, region, row);
        rows[static_cast<size_t>(region) + 1].visOffset = static_cast<int32_t>(visibility.size());
        PackRow({reinterpret_cast<const uint8_t*>(row.data()), packedBytes}, visibility);
        if (visibility.size() > static_cast<size_t>(MaxVisibilitySize)) {
            FatalError(" \nE111: Map size - Visibility list overrun");
        }
    }
}

}  // namespace k2k
