// Lightmap axes and extents of a surface: the arithmetic that both roads share.
#pragma once

#include <array>
#include <cstdint>

#include "levelfile/level_records.h"
#include "light/surface_geometry.h"

namespace k2k {

// From the world to texture coordinates: dot(point, axis) + offset.
struct TextureAxes {
    std::array<Vec3, 2> axis{};
    std::array<float, 2> offset{};
};

// The texture's own axes on a BSP level; those of the plane's dominant axis on a mesh level.
TextureAxes LightmapAxesOf(const SurfaceRecord& surface);

// The direction of the axes' own plane, turned to the face's side, and its share of the face's normal. A scale of 0
// means that the axes are of no use for the face.
struct TextureSlant {
    Vec3 texNormal{};
    double distScale = 0;
};
TextureSlant SlantOf(const TextureAxes& axes, const Vec3& normal);

// Back from texture coordinates to the world, in the plane that lies lift units above the face. distScale must not be
// 0.
struct WorldAxes {
    std::array<Vec3, 2> texToWorld{};
    Vec3 texOrigin{};
};
WorldAxes WorldAxesOf(const TextureAxes& axes, const TextureSlant& slant, const OrientedPlane& plane, double lift);

// Texture coordinates that the surface covers, exact and in texels of step units.
struct FaceExtents {
    std::array<float, 2> exactMin{}, exactMax{};
    std::array<int32_t, 2> texMin{}, size{};

    int64_t texels() const { return int64_t{size[0]} * size[1]; }
};
// Warns once a stage of a size that no lightmap can have.
FaceExtents MeasureExtents(const SurfaceRecord& surface, const TextureAxes& axes, int32_t step);

// The most texels that a surface's lightmap can have at any step.
constexpr int64_t MaxFaceTexels = 262144;

}  // namespace k2k
