// Warnings about single blocks: each kind prints once for a hull argument, and always with -verbose.
#pragma once

#include <cstdint>

namespace k2k {

enum class BlockWarning : int32_t { VertexOutOfPlane, NullEdge, NonConvex, NotCreated };

// Whether this occurrence is to be printed.
bool WarnsInHull(BlockWarning kind, int32_t hull);

}  // namespace k2k
