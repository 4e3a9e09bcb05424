// Counts the faces that a splitter would cut: the quadratic part of choosing it.
#pragma once

#include <cstdint>
#include <vector>

#include "solid/tree.h"

namespace k2k {

// Works on the faces of all surfaces that are free to split, as boxes in flat arrays. Valid while the surfaces stay as
// they are.
class SplitCounter {
  public:
    explicit SplitCounter(const SurfaceList& surfaces);

    // How many faces of other surfaces the splitter's plane would cut. A count that can no longer beat the best one is
    // cut short: it stops within a surface when it reaches the best, and altogether when it has passed it behind one.
    int32_t Count(const CSplitSurface& splitter, float bestSplits) const;

  private:
    struct FaceBox {
        Vec3 mins, maxs;
        const CBlockFace* face;
    };
    struct SurfaceBox {
        Vec3 mins, maxs;
        const CSplitSurface* surface;
        size_t firstFace, endFace;
    };

    template <typename Cut>
    int32_t CountIf(const CSplitSurface& splitter, float bestSplits, Cut cut) const;

    std::vector<SurfaceBox> surfaces_;
    std::vector<FaceBox> faces_;
};

}  // namespace k2k
