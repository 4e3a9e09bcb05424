// Settles which blocks of a map are detail.
#pragma once

#include <cstdint>
#include <vector>

namespace k2k {

// Lists the detail blocks that would have to cut a surface of the level: they become plain ones at the next read of the
// map. Reads the map again, with those listed so far as plain, until no more are found or only such that stay detail
// whatever the list says. Nothing with -forcedetail or without detail blocks.
std::vector<int32_t> SettleDetailBlocks();

}  // namespace k2k
