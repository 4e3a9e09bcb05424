#include "radiosity/patch_tree.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "solid/vectors.h"

namespace k2k {
namespace {

SiteBounds EmptyBounds() {
    SiteBounds bounds;
    bounds.mins.fill(std::numeric_limits<float>::max());
    bounds.maxs.fill(std::numeric_limits<float>::lowest());
    return bounds;
}

void Include(SiteBounds& bounds, const Vec3& mins, const Vec3& maxs) {
    for (size_t c = 0; c < 3; c++) {
        bounds.mins[c] = std::min(bounds.mins[c], mins[c]);
        bounds.maxs[c] = std::max(bounds.maxs[c], maxs[c]);
    }
}

double Middle(const PatchGroup& group, size_t axis) {
    return static_cast<double>(group.bounds.mins[axis]) + group.bounds.maxs[axis];
}

size_t LongestAxis(const SiteBounds& bounds) {
    size_t longest = 0;
    const auto extent = [&](size_t axis) { return bounds.maxs[axis] - bounds.mins[axis]; };
    for (size_t axis = 1; axis < 3; axis++) {
        if (extent(axis) > extent(longest)) longest = axis;
    }
    return longest;
}

}  // namespace

CPatchTree::CPatchTree(const LightPatches& patches) {
    sites_.reserve(patches.patches.size());
    patchAt_.reserve(patches.patches.size());
    for (const int32_t first : patches.surfacePatches) {
        if (first != NoPatch) AddGroup(patches, first);
    }
    if (!groups_.empty()) AddNodes(0, static_cast<uint32_t>(groups_.size()));
}

void CPatchTree::AddGroup(const LightPatches& patches, int32_t firstPatch) {
    PatchGroup group;
    group.first = static_cast<uint32_t>(sites_.size());
    group.bounds = EmptyBounds();
    group.normal = patches[firstPatch].normal;
    group.lowest = std::numeric_limits<double>::max();
    for (int32_t i = firstPatch; i != NoPatch; i = patches[i].next) {
        const CLightPatch& patch = patches[i];
        sites_.push_back({patch.origin, patch.normal, patch.area});
        patchAt_.push_back(static_cast<uint32_t>(i));
        Include(group.bounds, patch.origin, patch.origin);
        group.flat = group.flat && patch.normal == group.normal;
        group.lowest = std::min(group.lowest, Dot(patch.origin, group.normal));
        longestNormal_ = std::max(longestNormal_, std::sqrt(LengthSquared(patch.normal)));
    }
    group.count = static_cast<uint32_t>(sites_.size()) - group.first;
    groups_.push_back(group);
}

// Halves ranges of groups at the median of the longest axis.
void CPatchTree::AddNodes(uint32_t firstGroup, uint32_t count) {
    const size_t number = nodes_.size();
    PatchNode node;
    node.bounds = EmptyBounds();
    node.firstGroup = firstGroup;
    node.groupCount = count;
    const auto begin = groups_.begin() + firstGroup;
    for (auto group = begin; group != begin + count; ++group)
        Include(node.bounds, group->bounds.mins, group->bounds.maxs);
    nodes_.push_back(node);
    if (count > 1) {
        const size_t axis = LongestAxis(node.bounds);
        const uint32_t half = count / 2;
        std::nth_element(begin, begin + half, begin + count, [axis](const PatchGroup& a, const PatchGroup& b) {
            return Middle(a, axis) < Middle(b, axis);
        });
        AddNodes(firstGroup, half);
        AddNodes(firstGroup + half, count - half);
    }
    nodes_[number].end = static_cast<uint32_t>(nodes_.size());
}

}  // namespace k2k
