// The first stage: from a map to the geometry of a level.
#pragma once

namespace k2k {

// Reads the map (or only its entities or textures, by mode) and writes the level file and the interim portal file.
// Returns 0.
int RunGeometryStage();

}  // namespace k2k
