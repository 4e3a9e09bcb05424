// The regions' visibility rows, packed for the level file.
#include "vis/region_rows.h"

#include "driver/build_log.h"
#include "levelfile/portal_data.h"

namespace k2k {
namespace {

constexpr uint8_t MaxZeroRun = 255;
constexpr size_t ZeroRunBytes = 2;  // a run takes, packed

size_t PackedBytes(int32_t regionCount) {
    return (static_cast<size_t>(regionCount) + 7) / 8;
}

[[noreturn]] void FailOverrun() {
    FatalError(" \nE111: Map size - Visibility list overrun");
}

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

void RequireRowSpace(int32_t regionCount) {
    const size_t rowBytes = PackedBytes(regionCount) * ZeroRunBytes / MaxZeroRun;
    if (static_cast<size_t>(regionCount) * rowBytes > static_cast<size_t>(MaxVisibilitySize)) FailOverrun();
}

void MakeRegionRows(const VisGraph& graph, std::span<CRegion> rows, std::vector<uint8_t>& visibility) {
    const size_t packedBytes = PackedBytes(graph.regionCount());
    std::vector<Word> row;
    for (int32_t region = 0; region < graph.regionCount(); ++region) {
        RegionVisRow(graph, region, row);
        rows[static_cast<size_t>(region) + 1].visOffset = static_cast<int32_t>(visibility.size());
        PackRow({reinterpret_cast<const uint8_t*>(row.data()), packedBytes}, visibility);
        if (visibility.size() > static_cast<size_t>(MaxVisibilitySize)) FailOverrun();
    }
}

}  // namespace k2k
