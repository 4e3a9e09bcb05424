// The level in work as patches see it.
#pragma once

#include <vector>

#include "light/vertex_normals.h"
#include "radiosity/make_patches.h"

namespace k2k {

class LevelSurfaces final : public PatchLevel {
  public:
    // The normals must have the centres of the surfaces before patches are cut.
    explicit LevelSurfaces(const CVertexNormals& normals);

    uint32_t SurfaceCount() const override;
    PatchSurface Surface(uint32_t surfaceIndex) const override;
    Vec3 NormalAt(uint32_t surfaceIndex, const Vec3& point) const override;
    int32_t RegionAt(const Vec3& point) const override;

  private:
    const CVertexNormals& normals_;
    std::vector<Vec3> reflectivity_;  // by texture
};

}  // namespace k2k
