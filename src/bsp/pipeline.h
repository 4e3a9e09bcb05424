// The order of work between the blocks of a map and a finished tree, for each hull.
#pragma once

#include <cstdint>

namespace k2k {

// Hull numbers: the visible tree, the narrow (or only) clipping hull, the fat clipping hull.
constexpr int32_t VisibleHull = 0;
constexpr int32_t NarrowHull = 1;
constexpr int32_t FatHull = 2;

// Builds all hulls of the map in the entity table, the visible one last. A map without blocks turns on -preview and
// -noportals instead.
void BuildHulls();

// One hull of every entity with blocks.
void RunHull(int32_t hull);

// One hull of one entity, which must be the world; whether the list of intersecting detail blocks is empty.
bool ProcessEntity(int32_t entity, int32_t hull);

// The world's blocks as meshes, without a tree. Always true.
bool ProcessEntityNoBsp(int32_t entity);

// Builds the world only to see which detail blocks would have to cut a surface; they are listed at the geometry data.
// True when there are none.
bool CheckDetailIntersections();

}  // namespace k2k
