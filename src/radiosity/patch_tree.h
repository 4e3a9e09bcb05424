// The patches of a level by surface and by place, to leave out at once all that a patch cannot see.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "radiosity/light_patch.h"

namespace k2k {

// What a transfer depends on.
struct PatchSite {
    Vec3 origin{};
    Vec3 normal{};
    float area = 0;
};

struct SiteBounds {
    Vec3 mins{}, maxs{};

    double DistanceSquared(const Vec3& point) const {
        double sum = 0;
        for (size_t c = 0; c < 3; c++) {
            const double below = static_cast<double>(mins[c]) - point[c];
            const double above = static_cast<double>(point[c]) - maxs[c];
            const double outside = std::max(0.0, std::max(below, above));
            sum += outside * outside;
        }
        return sum;
    }
    // The largest dot product of its points with a vector.
    double Highest(const Vec3& direction) const {
        double sum = 0;
        for (size_t c = 0; c < 3; c++) {
            sum += std::max(static_cast<double>(direction[c]) * mins[c], static_cast<double>(direction[c]) * maxs[c]);
        }
        return sum;
    }
};

// The patches of one surface, as a range of sites.
struct PatchGroup {
    uint32_t first = 0, count = 0;
    SiteBounds bounds;  // of the origins
    bool flat = true;   // all patches have the same normal, and so one plane bounds what they see:
    Vec3 normal{};
    double lowest = 0;  // the smallest dot product of an origin with the normal
};

// A node holds a range of groups; nodes stand in pre-order, so that one is left out by going on at its end.
struct PatchNode {
    SiteBounds bounds;
    uint32_t firstGroup = 0, groupCount = 0;
    uint32_t end = 0;  // the next node that is not below this one
    bool IsLeaf(uint32_t self) const { return end == self + 1; }
};

class CPatchTree {
  public:
    explicit CPatchTree(const LightPatches& patches);

    const std::vector<PatchNode>& nodes() const { return nodes_; }
    const std::vector<PatchGroup>& groups() const { return groups_; }
    const std::vector<PatchSite>& sites() const { return sites_; }
    // The number of the patch at a site.
    const std::vector<uint32_t>& patchAt() const { return patchAt_; }
    // At least 1.
    double longestNormal() const { return longestNormal_; }

  private:
    void AddGroup(const LightPatches& patches, int32_t firstPatch);
    void AddNodes(uint32_t firstGroup, uint32_t count);

    std::vector<PatchNode> nodes_;
    std::vector<PatchGroup> groups_;
    std::vector<PatchSite> sites_;
    std::vector<uint32_t> patchAt_;
    double longestNormal_ = 1;
};

}  // namespace k2k
