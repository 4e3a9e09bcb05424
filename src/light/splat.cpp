// Positions and weights are double; the sums are 32-bit.
#include "light/splat.h"

#include <algorithm>
#include <cmath>

#include "light/narrowing.h"
#include "solid/vectors.h"

namespace k2k {
namespace {

constexpr double AlmostOne = 0.9998999834060669;
constexpr double SmallestCover = 0.001;  // texels; less of a box does not count
constexpr double NearestDistance = 0.1;  // texels; nearer positions count as being there
constexpr double RadialReach = 1.42;     // sizes of the box; farther out the weight is 0
constexpr double SmallestWeight = 0.00001;
constexpr Vec3 FaultColour{2550, 0, 0};  // glows where a point does not lie on its own lightmap

// Whole texels from low up to high, without high.
struct TexelSpan {
    int32_t low, high;
};

TexelSpan ClampSpan(int32_t low, int64_t high, int32_t size) {
    return {std::max(low, 0), static_cast<int32_t>(std::min<int64_t>(high, size))};
}

TexelSpan BoxSpan(double min, double max, int32_t size) {
    return ClampSpan(TruncToInt(min), int64_t{TruncToInt(max + AlmostOne)} + 1, size);
}

TexelSpan RadialSpan(double centre, double boxSize, int32_t size) {
    return ClampSpan(TruncToInt(centre - boxSize * RadialReach), TruncToInt(centre + boxSize * RadialReach + 1), size);
}

void AddWeighted(SplatBuffer& buffer, int32_t x, int32_t y, const Vec3& colour, double weight) {
    const size_t texel = static_cast<size_t>(y) * buffer.width + x;
    Vec3& sum = buffer.colours[texel];
    for (size_t c = 0; c < 3; c++) sum[c] = static_cast<float>(sum[c] + colour[c] * weight);
    buffer.weights[texel] = static_cast<float>(buffer.weights[texel] + weight);
}

void SplatOwnFragments(SplatBuffer& buffer, const FaceLight& face, size_t slot) {
    for (size_t k = 0; k < face.fragments.size(); k++) {
        const SampleFragment& fragment = face.fragments[k];
        SplatBox(buffer, fragment.position, {fragment.minU, fragment.minV}, {fragment.maxU, fragment.maxV},
                 face.samples[slot][k]);
    }
}

// The corners of a neighbour's boxes go through the world; what comes out is not sorted again.
void SplatNeighbour(SplatBuffer& buffer, const FaceLight& neighbour, size_t slot) {
    const auto toBuffer = [&](float u, float v) {
        return WorldToLightmap(buffer.info, LightmapToWorld(neighbour.info, u, v));
    };
    for (size_t k = 0; k < neighbour.fragments.size(); k++) {
        const SampleFragment& fragment = neighbour.fragments[k];
        SplatBox(buffer, fragment.position, toBuffer(fragment.minU, fragment.minV),
                 toBuffer(fragment.maxU, fragment.maxV), neighbour.samples[slot][k]);
    }
}

std::optional<size_t> SlotOfStyle(const FaceLight& face, int32_t style) {
    for (size_t slot = 0; slot < face.samples.size(); slot++) {
        if (face.styles[slot] == style) return slot;
    }
    return std::nullopt;
}

void SplatPatch(SplatBuffer& buffer, const CLightPatch& patch) {
    constexpr double far = 1e30;
    LightmapPoint min{far, far};
    LightmapPoint max{-far, -far};
    for (const Vec3d& corner : patch.polygon->points) {
        const LightmapPoint point = WorldToLightmap(buffer.info, Narrow(corner));
        min = {std::min(min.u, point.u), std::min(min.v, point.v)};
        max = {std::max(max.u, point.u), std::max(max.v, point.v)};
    }
    SplatRadial(buffer, patch.origin, min, max, patch.totallight);
}

void SplatPatchesOf(SplatBuffer& buffer, uint32_t surfaceIndex, const LightPatches& patches) {
    for (int32_t i = patches.surfacePatches[surfaceIndex]; i != NoPatch; i = patches[i].next) {
        SplatPatch(buffer, patches[i]);
    }
}

}  // namespace

SplatBuffer::SplatBuffer(const FaceInfo& face)
    : info(face),
      width(face.size[0]),
      height(face.size[1]),
      weights(static_cast<size_t>(face.texels())),
      colours(static_cast<size_t>(face.texels())) {}

void SplatBox(SplatBuffer& buffer, const Vec3& position, const LightmapPoint& min, const LightmapPoint& max,
              const Vec3& colour) {
    const LightmapPoint centre = WorldToLightmap(buffer.info, position);
    const TexelSpan columns = BoxSpan(min.u, max.u, buffer.width);
    const TexelSpan rows = BoxSpan(min.v, max.v, buffer.height);
    for (int32_t x = columns.low; x < columns.high; x++) {
        for (int32_t y = rows.low; y < rows.high; y++) {
            const double a = std::max(min.u - x, -1.0);
            const double b = std::max(min.v - y, -1.0);
            const double c = std::min(max.u - x, 1.0);
            const double d = std::min(max.v - y, 1.0);
            const double area = (c - a) * (d - b);
            if (!(area > SmallestCover)) continue;
            const double dist = std::max(std::fabs(centre.u - x), std::fabs(centre.v - y));
            AddWeighted(buffer, x, y, colour, area / (dist >= NearestDistance ? dist : NearestDistance));
        }
    }
}

void SplatRadial(SplatBuffer& buffer, const Vec3& position, const LightmapPoint& min, const LightmapPoint& max,
                 const Vec3& colour) {
    const LightmapPoint centre = WorldToLightmap(buffer.info, position);
    const double sizeU = std::max(max.u - min.u, 1.0);
    const double sizeV = std::max(max.v - min.v, 1.0);
    const TexelSpan columns = RadialSpan(centre.u, sizeU, buffer.width);
    const TexelSpan rows = RadialSpan(centre.v, sizeV, buffer.height);
    for (int32_t x = columns.low; x < columns.high; x++) {
        for (int32_t y = rows.low; y < rows.high; y++) {
            const double du = (centre.u - x) / sizeU;
            const double dv = (centre.v - y) / sizeV;
            const double weight = 2 - (du * du + dv * dv);
            if (weight > 0) AddWeighted(buffer, x, y, colour, weight);
        }
    }
}

SplatBuffer SplatFragments(uint32_t surfaceIndex, size_t styleSlot, const FaceLights& faceLights,
                           const CVertexNormals& normals) {
    const FaceLight& face = *faceLights[surfaceIndex];
    SplatBuffer buffer(face.info);
    SplatOwnFragments(buffer, face, styleSlot);
    for (const uint32_t neighbour : normals.Of(surfaceIndex).neighbours) {
        const FaceLight& other = *faceLights[neighbour];
        const std::optional<size_t> slot = SlotOfStyle(other, face.styles[styleSlot]);
        if (slot) SplatNeighbour(buffer, other, *slot);
    }
    return buffer;
}

SplatBuffer SplatPatches(const FaceInfo& face, const LightPatches& patches, const CVertexNormals& normals) {
    SplatBuffer buffer(face);
    SplatPatchesOf(buffer, face.surfaceIndex, patches);
    for (const uint32_t neighbour : normals.Of(face.surfaceIndex).neighbours) {
        SplatPatchesOf(buffer, neighbour, patches);
    }
    return buffer;
}

bool ReadSplat(const SplatBuffer& buffer, const Vec3& point, Vec3& colourOut) {
    const LightmapPoint at = WorldToLightmap(buffer.info, point);
    const int32_t x = TruncToInt(at.u + 0.5);
    const int32_t y = TruncToInt(at.v + 0.5);
    if (x < 0 || x >= buffer.width || y < 0 || y >= buffer.height) {
        colourOut = FaultColour;
        return false;
    }
    const size_t texel = static_cast<size_t>(y) * buffer.width + x;
    const float weight = buffer.weights[texel];
    colourOut = {};
    if (weight <= SmallestWeight) return false;
    for (size_t c = 0; c < 3; c++) colourOut[c] = buffer.colours[texel][c] / weight;
    return true;
}

}  // namespace k2k
