// A surface's lightmap as the radiosity road sees it: 16 units a texel, texel centres on whole coordinates, in the
// plane of the surface.
#pragma once

#include <array>
#include <cstdint>

#include "levelfile/level_records.h"

namespace k2k {

struct FaceInfo {
    float planeDist = 0;  // the plane as the surface sees it
    Vec3 normal{};
    Vec3 texOrigin{};
    std::array<Vec3, 2> worldToTex{};  // the axes
    std::array<Vec3, 2> texToWorld{};
    std::array<float, 2> texOffset{};
    std::array<float, 2> exactMin{}, exactMax{};
    std::array<int32_t, 2> texMin{};
    std::array<int32_t, 2> size{};  // in texels
    uint32_t surfaceIndex = 0;
    const SurfaceRecord* surface = nullptr;
    bool flat = true;  // all vertex normals equal the face normal

    int64_t texels() const { return int64_t{size[0]} * size[1]; }
    // The world area of one texel.
    float LuxelArea() const;
};

// A point of a lightmap, in texels.
struct LightmapPoint {
    double u = 0, v = 0;
};

class CVertexNormals;

// Axes that are of no use are taken as they are.
FaceInfo InitFace(uint32_t surfaceIndex, const CVertexNormals& normals);

Vec3 LightmapToWorld(const FaceInfo& info, double u, double v);
LightmapPoint WorldToLightmap(const FaceInfo& info, const Vec3& world);

}  // namespace k2k
