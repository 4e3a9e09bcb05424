#include "light/lighting_state.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "driver/build_log.h"
#include "driver/build_options.h"
#include "levelfile/entity_data.h"
#include "light/light_block.h"
#include "light/narrowing.h"
#include "mapread/entity.h"

namespace k2k {
namespace {

constexpr double SunDistance = 10000;
constexpr float SunRange = 20000;
constexpr float AmbientScale = 0.019999999552965164F;
constexpr double RadiansPerDegree = 3.141592653589793 / 180;

void SetAmbient(LightingState& state) {
    state.AmbientLevel = 0;
    for (size_t c = 0; c < 3; c++) {
        state.AmbientColour[c] = static_cast<float>(Options().ambrgb[c] * 255.0 / 100.0);
        state.AmbientLevel = TruncToInt(state.AmbientLevel + static_cast<double>(state.AmbientColour[c]));
    }
    state.AmbientLevel /= 3;
}

void SetSunVector(LightingState& state) {
    const double elevation = Options().el * RadiansPerDegree;
    const double azimuth = Options().az * RadiansPerDegree;
    const double level = SunDistance * std::cos(elevation);
    state.SunVector = {static_cast<float>(level * std::cos(azimuth)), static_cast<float>(level * std::sin(azimuth)),
                       static_cast<float>(SunDistance * std::sin(elevation))};
}

void TurnGrey(Vec3& colour) {
    colour.fill(*std::max_element(colour.begin(), colour.end()));
}

LightRecord DirectSun() {
    const auto& percent = Options().sunrgb;
    LightRecord sun;
    if (std::none_of(percent.begin(), percent.end(), [](float c) { return c > 0; })) return sun;
    sun.lightRange = SunRange;
    for (size_t c = 0; c < 3; c++)
        sun.lightColor[c] = static_cast<float>(percent[c] * 6.0 * 255.0 / 100.0 / sun.lightRange);
    return sun;
}

}  // namespace

LightingState& Lighting() {
    static LightingState state;
    return state;
}

void OpenLighting() {
    LightingState& state = Lighting();
    state = LightingState();
    state.LightStore.Open();
    LightBlocks().clear();
    state.GammaTable = BuildGammaTable(Options().gamma);
    FirstGammaValue = state.GammaTable[0];
    SetAmbient(state);
    SetSunVector(state);
    Options().lmambient *= AmbientScale;
}

void SetDirectLights() {
    LightingState& state = Lighting();
    state.SunLight = DirectSun();
    if (Options().mono) {
        TurnGrey(state.SunLight.lightColor);
        TurnGrey(state.AmbientColour);
    }
    for (const CEntity& entity : Entities()) {
        if (entity.lightRange > 0) state.ActiveLights.push_back({LightOfEntity(entity), false});
    }
    if (state.SunLight.lightRange > 0) state.ActiveLights.push_back({state.SunLight, true});
}

LightRecord LightOfEntity(const CEntity& entity) {
    LightRecord light;
    light.origin = entity.origin;
    light.lightRange = entity.lightRange;
    light.lightColor = entity.lightColor;
    light.flags = entity.flags;
    light.lightValue = TruncToInt(entity.lightValue);
    light.rawRange = entity.rawRange;
    return light;
}

void CloseLighting() {
    LightingState& state = Lighting();
    state.lightDataLength = static_cast<uint32_t>(state.LightStore.length());
    state.LightStore.Close();
    state.ActiveLights.clear();
}

uint32_t AllocLightData(uint32_t size) {
    const size_t offset = Lighting().LightStore.Alloc(size);
    if (offset + size > std::numeric_limits<uint32_t>::max()) FatalError("E041: Map size - lightmap space overrun!");
    return static_cast<uint32_t>(offset);
}

void ResetLighting() {
    Lighting() = LightingState();
}

}  // namespace k2k
