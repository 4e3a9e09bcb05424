// A surface cut along the lines of its lightmap: every piece is a sample.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "light/light_block.h"
#include "light/radiosity_face.h"
#include "solid/polygon.h"

namespace k2k {

struct SampleFragment {
    PolygonRef polygon;                            // world outline of a partly covered texel, while it is needed
    uint32_t x = 0, y = 0;                         // texel
    float u = 0, v = 0;                            // centroid in texels
    float minU = 0, minV = 0, maxU = 0, maxV = 0;  // bounds in texels
    Vec3 position{};                               // the centroid in the world
    Vec3 normal{};                                 // smoothed, on faces that are not flat
    float area = 0;                                // in the world
};

constexpr int32_t FreeStyle = 255;

// What the direct pass finds for a surface.
struct FaceLight {
    FaceInfo info;
    std::vector<SampleFragment> fragments;
    int32_t styleCount = 0;
    std::array<int32_t, MaxBlockStyles> styles{};  // FreeStyle marks a free slot
    std::vector<std::vector<Vec3>> samples;        // per style in use, one colour a fragment
    float luxelArea = 0;
    bool hasLight = false;  // a light reached a fragment
};

// By surface; null where it is not lit.
using FaceLights = std::vector<std::unique_ptr<FaceLight>>;

// Fills in fragments and texel area. Under -preview a fragment is a whole texel, and they come row by row.
void MakeFragments(FaceLight& face);

}  // namespace k2k
