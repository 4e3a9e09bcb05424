// From surfaces to patches, and the direct light that patches start from.
#pragma once

#include <cstdint>
#include <vector>

#include "radiosity/light_patch.h"

namespace k2k {

// A surface as patches are made from it.
struct PatchSurface {
    std::vector<Vec3d> outline;
    Vec3 normal{};
    bool shaded = false;  // gets a patch
    bool sky = false;
    Vec3 reflectivity{};
};

// What patches ask of the level.
class PatchLevel {
  public:
    virtual ~PatchLevel() = default;
    virtual uint32_t SurfaceCount() const = 0;
    virtual PatchSurface Surface(uint32_t surfaceIndex) const = 0;
    // The surface's normal at a point of it, as shading sees it.
    virtual Vec3 NormalAt(uint32_t surfaceIndex, const Vec3& point) const = 0;
    // The region that a point lies in.
    virtual int32_t RegionAt(const Vec3& point) const = 0;
};

// One patch for each shaded surface. centres receives the centroid of every surface, shaded or not.
LightPatches MakePatches(const PatchLevel& level, std::vector<Vec3>& centres);

// Cuts patches along the world's grid of `size` units; below 1 nothing is cut.
void SubdividePatches(LightPatches& patches, int32_t size, const PatchLevel& level);

// Adds a sample of direct light to the patches of its surface that lie near it. Samples that are nearly dark count for
// nothing.
void AddSampleToPatches(LightPatches& patches, const Vec3& position, const Vec3& colour, uint32_t surfaceIndex);

// Turns the samples of a surface's patches into their mean, when all have been added.
void AverageSamples(LightPatches& patches, uint32_t surfaceIndex);

}  // namespace k2k
