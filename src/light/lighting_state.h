// What all lighting code shares from the lighting step's first line to the end of the stage.
#pragma once

#include <cstdint>
#include <vector>

#include "light/gamma_table.h"
#include "light/light_record.h"
#include "light/light_store.h"

namespace k2k {

struct CEntity;

struct LightingState {
    CLightStore LightStore;
    GammaCurve GammaTable{};
    Vec3 AmbientColour{};      // -ambrgb scaled to 0 to 255
    int32_t AmbientLevel = 0;  // not 0: faces without light still get a lightmap
    Vec3 SunVector{};          // from a sample to the sun, 10,000 long
    LightRecord SunLight;
    std::vector<ActiveLight> ActiveLights;  // direct road: the lights with a range, then the sun
    double ExposureReference = 0;           // radiosity road: what lands on -litmax
    uint32_t lightDataLength = 0;           // used bytes of LightStore, recorded at the end of the step
    bool sizeWarned = false;                // once flags of the stage
    bool recursionWarned = false;
};

LightingState& Lighting();

// The opening of both roads: store, gamma table, ambient colour, sun vector; scales -lmambient in place.
void OpenLighting();

// The direct road's sun and the list of active lights, from the object table. -mono turns sun and ambient grey here.
void SetDirectLights();

// The lighting view of a row of the object table.
LightRecord LightOfEntity(const CEntity& entity);

// Records the light data's length; the store and the lights are freed.
void CloseLighting();

// A block of LightStore, as an offset that surfaces can keep.
uint32_t AllocLightData(uint32_t size);

// Back to the state before any lighting.
void ResetLighting();

}  // namespace k2k
