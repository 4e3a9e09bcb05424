// Scalars that come from dot products stay double; vectors and extremes are stored as 32-bit.
#include "light/face_axes.h"

#include <algorithm>
#include <atomic>
#include <cmath>

#include "driver/build_log.h"
#include "driver/build_options.h"
#include "levelfile/geometry_data.h"
#include "levelfile/mesh.h"
#include "light/lighting_state.h"
#include "light/narrowing.h"
#include "light/near_equal.h"

namespace k2k {
namespace {

constexpr float UnboundedExtent = 9999999;

int64_t WholeTexel(double texels) {
    constexpr double farAway = 1e15;
    return static_cast<int64_t>(std::clamp(texels, -farAway, farAway));
}

void WarnOfSize(const SurfaceRecord& surface) {
    if (std::atomic_ref(Lighting().sizeWarned).exchange(true)) return;
    BuildLog(" \nWARNING W149: \"%s\" - invalid surface size\n", TextureTitle(SurfaceTexinfo(surface)).c_str());
}

}  // namespace

TextureAxes LightmapAxesOf(const SurfaceRecord& surface) {
    TextureAxes axes;
    if (Options().mesh) {
        const int32_t planeType = Geometry().planes[surface.planeNumber].type;
        // Axes of no use come out with a slant of 0 as well.
        if (!LightmapAxes(planeType, SurfaceNormal(surface), axes.axis[0], axes.axis[1])) return {};
    } else {
        const Texinfo& texinfo = SurfaceTexinfo(surface);
        axes = {{texinfo.vecS, texinfo.vecT}, {texinfo.shiftS, texinfo.shiftT}};
    }
    return axes;
}

TextureSlant SlantOf(const TextureAxes& axes, const Vec3& normal) {
    TextureSlant slant;
    slant.texNormal = Cross(axes.axis[1], axes.axis[0]);
    Normalize(slant.texNormal);
    slant.distScale = Dot(slant.texNormal, normal);
    if (slant.distScale < 0) {
        slant.distScale = -slant.distScale;
        slant.texNormal = Negate(slant.texNormal);
    }
    return slant;
}

WorldAxes WorldAxesOf(const TextureAxes& axes, const TextureSlant& slant, const OrientedPlane& plane, double lift) {
    WorldAxes world;
    for (size_t i = 0; i < 2; i++) {
        const double inverse = 1 / Dot(axes.axis[i], axes.axis[i]);
        const double d = Dot(axes.axis[i], plane.normal) / slant.distScale;
        for (size_t c = 0; c < 3; c++) {
            world.texToWorld[i][c] = static_cast<float>((axes.axis[i][c] - slant.texNormal[c] * d) * inverse);
        }
    }
    Vec3 origin{};
    if (!Options().mesh) {
        for (size_t c = 0; c < 3; c++) {
            origin[c] = static_cast<float>(-static_cast<double>(axes.offset[0]) * world.texToWorld[0][c] -
                                           static_cast<double>(axes.offset[1]) * world.texToWorld[1][c]);
        }
    }
    const double d = (Dot(origin, plane.normal) - plane.dist - lift) / slant.distScale;
    world.texOrigin = PointAlong(origin, slant.texNormal, -d);
    return world;
}

FaceExtents MeasureExtents(const SurfaceRecord& surface, const TextureAxes& axes, int32_t step) {
    FaceExtents extents;
    extents.exactMin.fill(UnboundedExtent);
    extents.exactMax.fill(-UnboundedExtent);
    for (const Vec3& vertex : SurfaceVertices(surface)) {
        for (size_t i = 0; i < 2; i++) {
            const auto value = static_cast<float>(Dot(vertex, axes.axis[i]) + axes.offset[i]);
            if (value < extents.exactMin[i]) extents.exactMin[i] = value;
            if (value > extents.exactMax[i]) extents.exactMax[i] = value;
        }
    }
    const double texel = step;
    for (size_t i = 0; i < 2; i++) {
        const int64_t low = WholeTexel(std::floor(extents.exactMin[i] / texel));
        const int64_t high = WholeTexel(std::ceil(extents.exactMax[i] / texel));
        extents.texMin[i] = ClampToInt(low);
        extents.size[i] = ClampToInt(high + 1 - low);
    }
    if (extents.texels() > MaxFaceTexels) WarnOfSize(surface);
    return extents;
}

}  // namespace k2k
