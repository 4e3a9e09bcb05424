// The level in work as transfers see it: shadow rays, and on BSP levels the shadows of its solid leaves.
#pragma once

#include <memory>
#include <vector>

#include "light/blocker_cells.h"
#include "radiosity/light_patch.h"
#include "radiosity/shadow_rays.h"

namespace k2k {

class CLevelRays final : public ShadowRays {
  public:
    // For rays between these patches, while the ray structures stand.
    explicit CLevelRays(const LightPatches& patches);

    bool IsBlocked(const Vec3& start, const Vec3& end, Blocker& blocker) const override;
    bool IsOpen(const Vec3& end) const override;
    bool CastShadow(Blocker blocker, const Vec3& end, ShadowVolume& shadow) const override;

  private:
    struct FaceBox {
        Vec3 mins, maxs;
    };
    std::unique_ptr<const CBlockerCells> cells_;  // null on mesh levels
    std::vector<FaceBox> seeThroughBoxes_;        // around the surfaces of detail leaves
};

}  // namespace k2k
