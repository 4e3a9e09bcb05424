// The lights of the radiosity road, and what one of them gives to a point.
#pragma once

#include <cstdint>
#include <vector>

#include "levelfile/level_records.h"
#include "radiosity/light_patch.h"

namespace k2k {

enum class DirectLightType : int32_t { Surface = 0, Point = 1, Spot = 2, Sun = 3 };

struct DirectLight {
    DirectLightType type = DirectLightType::Point;
    int32_t region = 0;  // at origin
    float intensity = 0;
    int32_t style = 0;  // 0 to 255
    Vec3 origin{};
    Vec3 colour{};  // blue, green, red
    Vec3 normal{};
    float stopDot = 0;  // cosine of the spot cone
};

// All lights, the newest first: the sun, the objects of the table from its end, and patches that shine by themselves,
// whose totallight moves into their light. The sun must be set in the lighting state.
std::vector<DirectLight> BuildDirectLights(LightPatches& patches);

// The sun of this road: a colour without one of its components is no sun.
void SetRadiositySun();

enum class LightReach { Blocked = -2, Behind = -1, None = 0, Lit = 1 };

// How strong a light is at a point.
struct LightStrength {
    double dot = 0;
    double scale = 0;
};

// Whether the light reaches a point of a surface, and how strong it is there.
LightReach SampleLight(const DirectLight& light, uint32_t surfaceIndex, const Vec3& point, const Vec3& normal,
                       LightStrength& strength);

}  // namespace k2k
