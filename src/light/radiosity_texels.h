// The final gather of the radiosity road: every texel from the fragments and patches near it, and how bright the level
// is on the whole.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "light/face_samples.h"
#include "light/light_block.h"
#include "light/vertex_normals.h"
#include "radiosity/light_patch.h"

namespace k2k {

struct FinalGather {
    const CVertexNormals& normals;
    const LightPatches& patches;
    const FaceLights& faceLights;
};

// A surface's texels, and the largest components of those that are bright.
struct FinishedFace {
    std::optional<LightBlock> block;
    std::vector<float> exposureSamples;
};

// A work item of the pool. Without a lightmap the result is empty.
FinishedFace FinalLightFace(const FinalGather& gather, uint32_t surfaceIndex);

// The mean of the samples and their mean distance from it, added: what is as bright as that or brighter gets the most
// that a texel can show. 0 without samples. The sums have the order of the faces.
double ComputeExposure(const std::vector<FinishedFace>& faces);

}  // namespace k2k
