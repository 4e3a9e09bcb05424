#include "light/radiosity_face.h"

#include <algorithm>
#include <cmath>

#include "light/face_axes.h"
#include "light/surface_geometry.h"
#include "light/vertex_normals.h"
#include "solid/vectors.h"

namespace k2k {
namespace {

constexpr int32_t TexelStep = 16;
constexpr double TexelsPerUnit = 0.0625;
constexpr double FlatCosine = 0.999;

}  // namespace

float FaceInfo::LuxelArea() const {
    const double lengths = std::sqrt(LengthSquared(worldToTex[0])) * std::sqrt(LengthSquared(worldToTex[1]));
    return static_cast<float>(TexelStep * TexelStep / lengths);
}

FaceInfo InitFace(uint32_t surfaceIndex, const CVertexNormals& normals) {
    FaceInfo info;
    info.surfaceIndex = surfaceIndex;
    info.surface = &SurfaceRow(surfaceIndex);
    const OrientedPlane plane = SurfacePlane(*info.surface);
    info.normal = plane.normal;
    info.planeDist = plane.dist;
    const TextureAxes axes = LightmapAxesOf(*info.surface);
    info.worldToTex = axes.axis;
    info.texOffset = axes.offset;
    TextureSlant slant = SlantOf(axes, plane.normal);
    if (slant.distScale == 0) slant.distScale = 1;
    const WorldAxes world = WorldAxesOf(axes, slant, plane, 0);
    info.texToWorld = world.texToWorld;
    info.texOrigin = world.texOrigin;
    const FaceExtents extents = MeasureExtents(*info.surface, axes, TexelStep);
    info.exactMin = extents.exactMin;
    info.exactMax = extents.exactMax;
    info.texMin = extents.texMin;
    info.size = extents.size;
    const auto& vertexNormals = normals.Of(surfaceIndex).vertexNormals;
    info.flat = std::none_of(vertexNormals.begin(), vertexNormals.end(),
                             [&](const Vec3& normal) { return Dot(normal, plane.normal) < FlatCosine; });
    return info;
}

Vec3 LightmapToWorld(const FaceInfo& info, double u, double v) {
    const double s = info.texMin[0] + u;
    const double t = info.texMin[1] + v;
    Vec3 world;
    for (size_t c = 0; c < 3; c++) {
        world[c] =
            static_cast<float>((s * info.texToWorld[0][c] + t * info.texToWorld[1][c]) * TexelStep + info.texOrigin[c]);
    }
    return world;
}

LightmapPoint WorldToLightmap(const FaceInfo& info, const Vec3& world) {
    Vec3 d = Sub(world, info.texOrigin);
    for (float& component : d) component = static_cast<float>(component * TexelsPerUnit);
    return {Dot(d, info.worldToTex[0]) - info.texMin[0], Dot(d, info.worldToTex[1]) - info.texMin[1]};
}

}  // namespace k2k
