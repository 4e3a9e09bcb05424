// Patches: the pieces of surfaces that exchange light.
#pragma once

#include <cstdint>
#include <vector>

#include "levelfile/level_records.h"
#include "solid/polygon.h"

namespace k2k {

constexpr int32_t NoPatch = -1;

// One link along which light moves from a patch to another.
struct Transfer {
    uint32_t patch = 0;  // the patch that the light comes from
    float factor = 0;    // share of that patch's light; the shares of a patch sum to 1
};
static_assert(sizeof(Transfer) == 8);

struct CLightPatch {
    PolygonRef polygon;
    Vec3d mins{}, maxs{};    // of the polygon
    int32_t next = NoPatch;  // of the same surface
    uint32_t surfaceIndex = 0;
    int32_t region = 0;  // at origin
    Vec3 origin{};       // centroid plus one normal length off the surface
    Vec3 normal{};       // of the surface at the centroid
    bool sky = false;
    Vec3 totallight{};  // received by bounces, per unit area
    float area = 0;     // at least 1
    Vec3 reflectivity{};
    Vec3 baselight{};    // own emission: always 0
    Vec3 samplelight{};  // mean direct light
    int32_t samples = 0;
    Vec3 emit{};  // shot in this iteration
    Vec3 send{};  // received in this iteration
};

// All patches of a level. Patches are known by their number, so the table can grow while it is walked.
struct LightPatches {
    std::vector<CLightPatch> patches;
    std::vector<int32_t> surfacePatches;  // per surface the first patch of its chain, or NoPatch

    CLightPatch& operator[](int32_t patch) { return patches[static_cast<size_t>(patch)]; }
    const CLightPatch& operator[](int32_t patch) const { return patches[static_cast<size_t>(patch)]; }
    int32_t count() const { return static_cast<int32_t>(patches.size()); }
};

}  // namespace k2k
