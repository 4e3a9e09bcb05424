#include "bsp/split_choice.h"

#include <algorithm>

#include "bsp/split_count.h"
#include "driver/build_log.h"
#include "levelfile/texture_data.h"

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
    const SplitCounter counter(surfaces);
    SplitContest contest(mins, maxs);
    for (CSplitSurface& surface : surfaces) {
        if (surface.onNode) continue;
        if (!allowFloors && TablePlane(surface.planenum).normal[2] == 1.0F) continue;
        contest.Enter(surface, static_cast<float>(counter.Count(surface, contest.bestSplits())));
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
