// Reading a map: from a file of any dialect into the entity table.
#pragma once

#include <cstdint>

namespace k2k {

// Number of detail blocks of the last read.
extern int32_t DetailCount;

// Reads MapPath into the entity table; with entitiesOnly the blocks are skipped. Turns on -mesh when the map holds a
// mesh block. Every failure is fatal.
void ReadMap(bool entitiesOnly);

// Numbers the entities that own blocks, and rewrites the entity chunk of the level on disk from the entity table.
void UpdateObjects();

}  // namespace k2k
