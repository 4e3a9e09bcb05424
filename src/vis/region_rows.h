// The regions' visibility rows, packed for the level file.
#pragma once

#include <span>
#include <vector>

#include "levelfile/level_records.h"
#include "vis/vis_graph.h"

namespace k2k {

// Appends the first bytes of a row, runs of zero bytes as a zero and their number (1 to 255).
void PackRow(std::span<const uint8_t> row, std::vector<uint8_t>& packed);

// Fatal when the rows of so many regions overrun the level's visibility data however well they pack, so that none of
// the work on them is begun.
void RequireRowSpace(int32_t regionCount);

// Appends the packed row of every region, in order, to visibility (at most MaxVisibilitySize bytes) and sets visOffset
// of row r + 1 for region r. Every portal must be done.
void MakeRegionRows(const VisGraph& graph, std::span<CRegion> rows, std::vector<uint8_t>& visibility);

}  // namespace k2k
