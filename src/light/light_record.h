// Lights as lighting sees them.
#pragma once

#include <cstdint>

#include "levelfile/level_records.h"

namespace k2k {

// The lighting view of one row of the object table, and of the sun.
struct LightRecord {
    Vec3 origin{};
    float lightRange = 0;  // reach in world units; 0: no light
    Vec3 lightColor{};     // red, green, blue
    uint32_t flags = 0;
    int32_t lightValue = 0;  // the light style
    float rawRange = 0;      // the range field of the map, 0 meaning automatic
    float coneAngle = 0;     // spot cone in degrees; no reader fills it
    Vec3 coneDirection{};
};

// Bit of LightRecord::flags: surfaces that the light reaches are lit at the finer step.
constexpr uint32_t LightCastsShadows = 1;

struct ActiveLight {
    LightRecord light;
    bool isSun = false;  // its origin lies at SunVector from whatever it shines on
};

}  // namespace k2k
