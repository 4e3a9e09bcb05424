// The last filters of the radiosity road: fragments and patches are spread over the texels near them.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "light/face_samples.h"
#include "light/vertex_normals.h"
#include "radiosity/light_patch.h"

namespace k2k {

// Weighted colours of one lightmap, as large as the surface needs.
struct SplatBuffer {
    explicit SplatBuffer(const FaceInfo& face);

    const FaceInfo& info;
    int32_t width, height;
    std::vector<float> weights;
    std::vector<Vec3> colours;  // sums of weighted colours
};

// Adds a colour to the texels that a box reaches, by how much of each it covers and how near its position is.
void SplatBox(SplatBuffer& buffer, const Vec3& position, const LightmapPoint& min, const LightmapPoint& max,
              const Vec3& colour);
// Adds a colour to the texels around a position; the weight falls with the distance in sizes of the box.
void SplatRadial(SplatBuffer& buffer, const Vec3& position, const LightmapPoint& min, const LightmapPoint& max,
                 const Vec3& colour);

// The light in a style slot of a surface, from its own fragments and those of its neighbours.
SplatBuffer SplatFragments(uint32_t surfaceIndex, size_t styleSlot, const FaceLights& faceLights,
                           const CVertexNormals& normals);
// Bounced light on a surface, from its own patches and those of its neighbours.
SplatBuffer SplatPatches(const FaceInfo& face, const LightPatches& patches, const CVertexNormals& normals);

// The colour at a point. False when no weight fell on its texel.
bool ReadSplat(const SplatBuffer& buffer, const Vec3& point, Vec3& colourOut);

}  // namespace k2k
