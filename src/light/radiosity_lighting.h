// The radiosity road: light is sampled along the texel lines, bounces between patches, is smoothed across neighbouring
// surfaces and compressed to an exposure.
#pragma once

namespace k2k {

// Lights the level in work and makes its lightmap pages. Runs on -threads workers; the result is that of one.
void GenerateRadiosityLightmaps();

}  // namespace k2k
