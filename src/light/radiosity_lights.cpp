#include "light/radiosity_lights.h"

#include <algorithm>
#include <cmath>

#include "driver/build_log.h"
#include "driver/build_options.h"
#include "light/lighting_state.h"
#include "light/near_equal.h"
#include "light/rays.h"
#include "light/regions.h"
#include "mapread/entity.h"

namespace k2k {
namespace {

constexpr float EntityScale = 1.0F;   // of the brightness of objects
constexpr double DirectScale = 0.4;   // of the emission of patches
constexpr float ShiningPatch = 3.0F;  // a component from which on a patch is a light
constexpr double GrazingCosine = 0.001;
constexpr float SunDistance = -10000;
constexpr double DegreesPerHalfTurn = 180;
constexpr double Pi = 3.14159;

Vec3 Reversed(const Vec3& colour) {
    return {colour[2], colour[1], colour[0]};
}

DirectLight LightOfPatch(const CLightPatch& patch) {
    DirectLight light;
    light.type = DirectLightType::Surface;
    light.region = patch.region;
    light.origin = patch.origin;
    light.normal = patch.normal;
    const float largest = *std::max_element(patch.totallight.begin(), patch.totallight.end());
    for (size_t c = 0; c < 3; c++) light.colour[c] = patch.totallight[c] / largest;
    light.intensity = static_cast<float>(static_cast<double>(largest) * patch.area * DirectScale);
    return light;
}

DirectLight LightOfRecord(const LightRecord& record) {
    DirectLight light;
    light.style = record.lightValue >= 0 && record.lightValue <= 255 ? record.lightValue : 0;
    light.origin = record.origin;
    light.region = RegionAt(record.origin);
    light.colour = Reversed(record.lightColor);
    light.intensity = record.rawRange * EntityScale;
    if (record.coneAngle <= 0) {
        light.type = DirectLightType::Point;
        light.stopDot = 1;
    } else {
        light.type = DirectLightType::Spot;
        light.stopDot = static_cast<float>(std::cos(record.coneAngle / DegreesPerHalfTurn * Pi));
        light.normal = record.coneDirection;
    }
    return light;
}

DirectLight LightOfSun(const LightRecord& sun) {
    DirectLight light;
    light.type = DirectLightType::Sun;
    light.origin = Lighting().SunVector;
    light.region = RegionAt(light.origin);
    light.colour = Reversed(sun.lightColor);
    light.intensity = 1;
    light.normal = Negate(Lighting().SunVector);
    Normalize(light.normal);
    light.stopDot = 1;
    return light;
}

bool Shines(const LightRecord& sun) {
    return sun.rawRange > 0 && std::all_of(sun.lightColor.begin(), sun.lightColor.end(), [](float c) { return c > 0; });
}

// The sun is a far point of the world, the same for all samples.
LightReach SampleSun(const DirectLight& light, uint32_t surfaceIndex, const Vec3& target, const Vec3& normal,
                     LightStrength& strength) {
    strength.dot = -Dot(light.normal, normal);
    if (strength.dot <= 0) return LightReach::Behind;
    if (IsShadowed(Scale(light.normal, SunDistance), target, static_cast<int32_t>(surfaceIndex))) {
        return LightReach::Blocked;
    }
    strength.scale = 1;
    return LightReach::Lit;
}

// The light's strength at a distance along dir; 0 outside its reach or cone.
double ScaleAt(const DirectLight& light, const Vec3& dir, float dist) {
    const double c = -Dot(dir, light.normal);
    switch (light.type) {
        case DirectLightType::Surface:
            return c > GrazingCosine ? c / (static_cast<double>(dist) * dist) : 0;
        case DirectLightType::Point:
            return 1 - static_cast<double>(dist) / light.intensity;
        case DirectLightType::Spot:
            return light.stopDot >= c ? 0 : 1 - static_cast<double>(dist) / light.intensity;
        default:
            FatalError("Bad dl->type");
    }
}

}  // namespace

void SetRadiositySun() {
    LightRecord& sun = Lighting().SunLight;
    sun = LightRecord();
    sun.rawRange = 1;
    for (size_t c = 0; c < 3; c++) {
        sun.lightColor[c] = static_cast<float>(static_cast<double>(Options().sunrgb[c]) * 255 / 100);
    }
}

std::vector<DirectLight> BuildDirectLights(LightPatches& patches) {
    std::vector<DirectLight> lights;
    for (CLightPatch& patch : patches.patches) {
        if (std::none_of(patch.totallight.begin(), patch.totallight.end(), [](float c) { return c >= ShiningPatch; })) {
            continue;
        }
        lights.push_back(LightOfPatch(patch));
        patch.totallight = {};
    }
    for (const CEntity& entity : Entities()) {
        if (entity.rawRange > 0) lights.push_back(LightOfRecord(LightOfEntity(entity)));
    }
    if (Shines(Lighting().SunLight)) lights.push_back(LightOfSun(Lighting().SunLight));
    std::reverse(lights.begin(), lights.end());
    return lights;
}

LightReach SampleLight(const DirectLight& light, uint32_t surfaceIndex, const Vec3& point, const Vec3& normal,
                       LightStrength& strength) {
    const Vec3 target = Add(point, normal);
    if (light.type == DirectLightType::Sun) return SampleSun(light, surfaceIndex, target, normal, strength);
    Vec3 dir = Sub(light.origin, point);
    float dist = Normalize(dir);
    strength.dot = Dot(dir, normal);
    if (!(strength.dot > GrazingCosine)) return LightReach::Behind;
    if (dist < 1) dist = 1;
    strength.scale = ScaleAt(light, dir, dist);
    if (strength.scale <= 0) return LightReach::None;
    if (IsShadowed(light.origin, target, static_cast<int32_t>(surfaceIndex))) return LightReach::Blocked;
    const double ambient = Options().lmambient;
    strength.dot = strength.dot * (2 - ambient) + ambient;
    return LightReach::Lit;
}

}  // namespace k2k
