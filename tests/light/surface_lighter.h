// One worker of the direct road, to light single surfaces of the level in work.
#pragma once

#include <memory>

#include "light/light_face.h"
#include "light/lighting_state.h"
#include "light/phong_table.h"
#include "light/rays.h"

namespace k2k::test {

// Opens the direct road with the lights that the level has.
inline void OpenDirectRoad() {
    OpenLighting();
    SetDirectLights();
}

struct SurfaceLighter {
    explicit SurfaceLighter(PlaneFlips flips = PlaneFlips::Refuse) : scratch(smooth, flips) {}

    // The surface's face with its samples placed, before any light.
    std::unique_ptr<CLightFace> Sampled(uint32_t surface) {
        auto face = MakeLightFace(surface);
        face->BuildSamples(CoarseStep, scratch);
        return face;
    }

    const RayStructures rays;
    const CPhongTable smooth;
    FaceScratch scratch;
};

}  // namespace k2k::test
