// The direct road: every surface is lit by itself, from the lights and the sun.
#pragma once

namespace k2k {

// Lights the level in work and makes its lightmap pages. Runs on -threads workers; the result is that of one.
void GenerateLightmaps();

}  // namespace k2k
