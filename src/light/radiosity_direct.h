// The direct pass of the radiosity road: the light of all lights on the fragments of each surface.
#pragma once

#include <cstdint>
#include <span>

#include "light/face_samples.h"
#include "light/radiosity_lights.h"
#include "light/vertex_normals.h"
#include "radiosity/light_patch.h"

namespace k2k {

// What the direct pass works with.
struct DirectPass {
    const CVertexNormals& normals;
    std::span<const DirectLight> lights;
    LightPatches& patches;
    FaceLights& faceLights;
};

// A work item of the pool: lights a surface's fragments and its patches, and enters the result in the table. Touches
// nothing of other surfaces.
void BuildFaceLights(const DirectPass& pass, uint32_t surfaceIndex);

}  // namespace k2k
