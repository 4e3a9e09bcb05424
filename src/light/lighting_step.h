// The frame that both roads of the lighting stage share.
#pragma once

namespace k2k {

// What differs between the roads.
struct LightingRoad {
    void (*prepareTextures)() = nullptr;  // before rays are prepared; may be null
    void (*lightLevel)() = nullptr;       // between the set-up and the release of the ray structures
};

// The whole stage: updates the objects under -lightsonly, reads the level, places the objects, lights when there is
// something to light, and saves. Returns 0, or -1 without a level path.
int RunLightingRoad(const LightingRoad& road);

}  // namespace k2k
