#include "bsp/split_choice.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "driver/build_log.h"
#include "driver/build_options.h"
#include "levelfile/texture_data.h"
#include "solid/vectors.h"

namespace k2k {
namespace {

constexpr float UnboundedBox = 999999.0F;
constexpr float WorstMidCost = 1610612736.0F;
constexpr float WorstSplits = 9999999.0F;
constexpr float WorstSplitCost = 9e30F;

bool IsAxial(const CPlane& plane) {
    return plane.type < 3;
}

bool HasStructuralFace(const CSplitSurface& surface) {
    return std::any_of(surface.faces.begin(), surface.faces.end(), [](const CBlockFace& face) {
        return (Textures().GetTexinfo(face.texinfo).flags & TextureDetail) == 0;
    });
}

struct Box {
    Vec3 mins{UnboundedBox, UnboundedBox, UnboundedBox}, maxs{-UnboundedBox, -UnboundedBox, -UnboundedBox};
};

Box BoxOfSurfaces(const SurfaceList& surfaces) {
    Box box;
    for (const CSplitSurface& surface : surfaces) {
        for (size_t axis = 0; axis < 3; ++axis) {
            box.mins[axis] = std::min(box.mins[axis], surface.mins[axis]);
            box.maxs[axis] = std::max(box.maxs[axis], surface.maxs[axis]);
        }
    }
    return box;
}

// Whether every point of the surface's box keeps so far to one side of the plane that no face in it can straddle. The
// distances allow for the rounding of the face test, and for cut vertices that lie a rounding error outside the box.
class ClearOfPlane {
  public:
    explicit ClearOfPlane(const CPlane& plane) : plane_(plane), eps_(Options().eps) {}

    bool operator()(const CSplitSurface& surface) const {
        double low = 0;
        double high = 0;
        double magnitude = std::fabs(plane_.dist);
        for (size_t axis = 0; axis < 3; ++axis) {
            const double n = plane_.normal[axis];
            const double atMins = n * surface.mins[axis];
            const double atMaxs = n * surface.maxs[axis];
            low += std::min(atMins, atMaxs);
            high += std::max(atMins, atMaxs);
            magnitude += std::max(std::fabs(atMins), std::fabs(atMaxs));
        }
        const double reach = magnitude * RoundingShare - eps_;
        return low - plane_.dist > reach || plane_.dist - high > reach;
    }

  private:
    static constexpr double RoundingShare = 1e-6;  // some sixteen units in the last place of a 32-bit number
    const CPlane& plane_;
    const double eps_;
};

// Counts the faces that the plane of the splitter would cut. A count that can no longer beat the best is cut short: it
// stops within a surface when it reaches the best, and altogether when it passes it. The cut counts are compared as
// they are, so surfaces may be passed over only when none of their faces is cut.
int CountSplits(const std::vector<const CSplitSurface*>& surfaces, const CSplitSurface& splitter, float bestSplits) {
    const CPlane& plane = TablePlane(splitter.planenum);
    const ClearOfPlane clearOfPlane(plane);
    int splits = 0;
    for (const CSplitSurface* surface : surfaces) {
        if (surface == &splitter || clearOfPlane(*surface)) continue;
        for (const CBlockFace& face : surface->faces) {
            if (FaceSide(face, plane) != 2) continue;
            ++splits;
            if (static_cast<float>(splits) >= bestSplits) break;
        }
        if (static_cast<float>(splits) > bestSplits) break;
    }
    return splits;
}

// The best splitter so far.
class SplitContest {
  public:
    SplitContest(const Vec3& mins, const Vec3& maxs) : mins_(mins), maxs_(maxs) {}

    float bestSplits() const { return bestSplits_; }
    CSplitSurface* winner() const { return winner_; }

    void Enter(CSplitSurface& surface, float splits) {
        const CPlane& plane = TablePlane(surface.planenum);
        if (splits > bestSplits_) return;
        if (!IsAxial(plane)) {
            if (splits < bestSplits_) Win(surface, splits);
            return;
        }
        const float cost = SplitterCost(plane, mins_, maxs_);
        if (cost > bestCost_ && splits == bestSplits_) return;
        bestCost_ = cost;
        Win(surface, splits);
    }

  private:
    void Win(CSplitSurface& surface, float splits) {
        bestSplits_ = splits;
        winner_ = &surface;
    }

    const Vec3 mins_, maxs_;
    float bestSplits_ = WorstSplits;
    float bestCost_ = WorstSplitCost;  // an oblique winner leaves the cost of the last axial one
    CSplitSurface* winner_ = nullptr;
};

}  // namespace

float SplitterCost(const CPlane& plane, const Vec3& mins, const Vec3& maxs) {
    const auto axis = static_cast<size_t>(plane.type);
    const double position = plane.dist * plane.normal[axis];
    float cost = 0;
    const auto add = [&cost](double term) { cost = static_cast<float>(cost + term); };
    for (size_t i = 0; i < 3; ++i) {
        if (i == axis) {
            add((maxs[i] - position) * (maxs[i] - position));
            add((position - mins[i]) * (position - mins[i]));
        } else {
            const double size = static_cast<double>(maxs[i]) - mins[i];
            add(size * 2.0 * size);
        }
    }
    return cost;
}

CSplitSurface* ChooseMidPlane(const SurfaceList& surfaces, const Vec3& mins, const Vec3& maxs) {
    float bestCost = WorstMidCost;
    CSplitSurface* best = nullptr;
    CSplitSurface* firstFree = nullptr;
    for (CSplitSurface& surface : surfaces) {
        if (surface.onNode) continue;
        if (firstFree == nullptr) firstFree = &surface;
        const CPlane& plane = TablePlane(surface.planenum);
        if (!IsAxial(plane)) continue;
        const float cost = SplitterCost(plane, mins, maxs);
        if (cost > bestCost) continue;
        bestCost = cost;
        best = &surface;
    }
    if (best != nullptr) return best;
    if (firstFree == nullptr) FatalError("E061");
    return firstFree;
}

CSplitSurface* ChooseSplitPlane(const SurfaceList& surfaces, const Vec3& mins, const Vec3& maxs, bool allowFloors) {
    std::vector<const CSplitSurface*> counted;
    for (const CSplitSurface& surface : surfaces) {
        if (!surface.onNode) counted.push_back(&surface);
    }
    SplitContest contest(mins, maxs);
    for (CSplitSurface& surface : surfaces) {
        if (surface.onNode) continue;
        if (!allowFloors && TablePlane(surface.planenum).normal[2] == 1.0F) continue;
        contest.Enter(surface, static_cast<float>(CountSplits(counted, surface, contest.bestSplits())));
    }
    return contest.winner();
}

CSplitSurface* SelectPartition(const SurfaceList& surfaces, bool midSplit) {
    int candidates = 0;
    CSplitSurface* last = nullptr;
    for (CSplitSurface& surface : surfaces) {
        if (surface.onNode || !HasStructuralFace(surface)) continue;
        ++candidates;
        last = &surface;
    }
    if (candidates < 2) return last;
    const Box box = BoxOfSurfaces(surfaces);
    if (midSplit) return ChooseMidPlane(surfaces, box.mins, box.maxs);
    return ChooseSplitPlane(surfaces, box.mins, box.maxs, true);
}

}  // namespace k2k
