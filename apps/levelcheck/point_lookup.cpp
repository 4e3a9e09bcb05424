#include "levelcheck/point_lookup.h"

namespace levelcheck {
namespace {

template <typename Row>
int32_t ChildAt(const LevelView& level, const Row& node, const std::array<double, 3>& point) {
    return node.children[Distance(level.planes[node.plane], point) > 0 ? 0 : 1];
}

}  // namespace

double Distance(const Plane& plane, const std::array<double, 3>& point) {
    return double{plane.nx} * point[0] + double{plane.ny} * point[1] + double{plane.nz} * point[2] - plane.dist;
}

size_t RegionAt(const LevelView& level, const std::array<double, 3>& point) {
    if (level.nodes.empty()) return level.regions.size() > 1 ? 1 : 0;
    int32_t at = level.info.headNodes[0];
    while (at >= 0) at = ChildAt(level, level.nodes[static_cast<size_t>(at)], point);
    return static_cast<size_t>(-(at + 1));
}

int32_t HullContentsAt(const LevelView& level, size_t hull, const std::array<double, 3>& point) {
    int32_t at = level.info.headNodes[hull];
    while (at >= 0) at = ChildAt(level, level.hullNodes[static_cast<size_t>(at)], point);
    return at;
}

}  // namespace levelcheck
