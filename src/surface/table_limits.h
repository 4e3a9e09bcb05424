// Capacities of the level's tables and of the working tables of this folder, with the words that report a full one.
#pragma once

#include <cstddef>

#include "driver/build_log.h"

namespace k2k {

struct TableLimit {
    size_t rows;
    const char* message;
};

// Tables of the level: what 32-bit byte offsets can reach.
constexpr TableLimit SurfaceLimit{178956970, "E017: Map size - too many surfaces"};
constexpr TableLimit SurfaceEdgeLimit{1073741823, "E024: Map size - too many edges"};
constexpr TableLimit MappedPlaneLimit{214748364, "E013: Map size - too many surfaces"};
constexpr TableLimit JoinedPlaneLimit{214748364, "E011: Map size - too many surfaces!"};
constexpr TableLimit VertexLimit{357913941, "E015: Map size - too many vertices"};
constexpr TableLimit EdgeLimit{536870911, "E023: Map size - too many edges"};
constexpr TableLimit NodeLimit{107374182, "E014: Map size - too many regions"};
constexpr TableLimit RegionLimit{119304647, "E017: Map size - too many regions"};
constexpr TableLimit RegionSurfaceLimit{1073741823, "E018: Map size - too many surfaces"};

// Working tables, for one model.
constexpr TableLimit WeldLimit{131072, "E015: Map size - too many vertices"};
constexpr TableLimit EdgeFaceLimit{512000, "E023: Map size - too many edges"};
constexpr TableLimit JunctionEdgeLimit{524288, "E101: Map size - too many edges!"};
constexpr TableLimit JunctionPointLimit{1048576, "E103: Map size - too many edge vertices!"};

// Fatal when a table of that many rows has no room for one more.
inline void RequireRoom(size_t rows, const TableLimit& limit) {
    if (rows >= limit.rows) FatalError("%s", limit.message);
}

}  // namespace k2k
