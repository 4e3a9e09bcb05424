// The body of the first stage: what the run's mode makes of the map.
#pragma once

namespace k2k {

// Updates the entities or the textures of the level on disk, or builds the whole level, by mode.
void CompileMap();

}  // namespace k2k
