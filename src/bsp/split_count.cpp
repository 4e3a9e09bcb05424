#include "bsp/split_count.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "driver/build_options.h"
#include "solid/vectors.h"

namespace k2k {
namespace {

constexpr float Unbounded = std::numeric_limits<float>::infinity();

template <typename Box>
void ClearBounds(Box& box) {
    box.mins.fill(Unbounded);
    box.maxs.fill(-Unbounded);
}

template <typename Box>
void TakeIn(Box& box, const Vec3& mins, const Vec3& maxs) {
    for (size_t axis = 0; axis < 3; ++axis) {
        box.mins[axis] = std::min(box.mins[axis], mins[axis]);
        box.maxs[axis] = std::max(box.maxs[axis], maxs[axis]);
    }
}

// For an axial plane the face test looks at one coordinate of each point, so the extremes of that coordinate tell.
class AxialCut {
  public:
    AxialCut(const CPlane& plane, double eps)
        : axis_(static_cast<size_t>(plane.type)), upper_(plane.dist + eps), lower_(plane.dist - eps) {}

    template <typename Box>
    bool CanCut(const Box& box) const {
        return box.maxs[axis_] > upper_ && box.mins[axis_] < lower_;
    }
    template <typename FaceBox>
    bool Cuts(const FaceBox& box) const {
        return CanCut(box);
    }

  private:
    size_t axis_;
    double upper_, lower_;
};

// For an oblique plane a box only tells when nothing in it can be cut.
class ObliqueCut {
  public:
    ObliqueCut(const CPlane& plane, double eps) : plane_(plane), eps_(eps) {}

    // Whether the box reaches beyond the tolerance on both sides, as far as rounding lets that be known.
    template <typename Box>
    bool CanCut(const Box& box) const {
        double low = 0;
        double high = 0;
        double magnitude = std::fabs(plane_.dist);
        for (size_t axis = 0; axis < 3; ++axis) {
            const double n = plane_.normal[axis];
            const double atMins = n * box.mins[axis];
            const double atMaxs = n * box.maxs[axis];
            low += std::min(atMins, atMaxs);
            high += std::max(atMins, atMaxs);
            magnitude += std::max(std::fabs(atMins), std::fabs(atMaxs));
        }
        const double reach = eps_ - magnitude * RoundingShare;
        return high - plane_.dist > reach && low - plane_.dist < -reach;
    }
    template <typename FaceBox>
    bool Cuts(const FaceBox& box) const {
        return CanCut(box) && FaceSide(*box.face, plane_) == 2;
    }

  private:
    static constexpr double RoundingShare = 1e-12;  // of sums in double
    const CPlane& plane_;
    double eps_;
};

}  // namespace

SplitCounter::SplitCounter(const SurfaceList& surfaces) {
    for (const CSplitSurface& surface : surfaces) {
        if (surface.onNode) continue;
        SurfaceBox box{{}, {}, &surface, faces_.size(), 0};
        ClearBounds(box);
        for (const CBlockFace& face : surface.faces) {
            FaceBox& faceBox = faces_.emplace_back(FaceBox{{}, {}, &face});
            ClearBounds(faceBox);
            for (const Vec3& point : face.points) TakeIn(faceBox, point, point);
            TakeIn(box, faceBox.mins, faceBox.maxs);
        }
        box.endFace = faces_.size();
        surfaces_.push_back(box);
    }
}

template <typename Cut>
int32_t SplitCounter::CountIf(const CSplitSurface& splitter, float bestSplits, Cut cut) const {
    int32_t splits = 0;
    for (const SurfaceBox& surface : surfaces_) {
        if (!cut.CanCut(surface) || surface.surface == &splitter) continue;
        for (size_t i = surface.firstFace; i < surface.endFace; ++i) {
            if (!cut.Cuts(faces_[i])) continue;
            ++splits;
            if (static_cast<float>(splits) >= bestSplits) break;
        }
        if (static_cast<float>(splits) > bestSplits) break;
    }
    return splits;
}

int32_t SplitCounter::Count(const CSplitSurface& splitter, float bestSplits) const {
    const CPlane& plane = TablePlane(splitter.planenum);
    const double eps = Options().eps;
    if (plane.type < 3) return CountIf(splitter, bestSplits, AxialCut(plane, eps));
    return CountIf(splitter, bestSplits, ObliqueCut(plane, eps));
}

}  // namespace k2k
