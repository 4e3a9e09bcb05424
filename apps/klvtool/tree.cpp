#include "klvtool/tree.h"

#include <bit>

namespace klvtool {
namespace {

using levelcheck::LevelView;

constexpr int32_t SolidContents = -128;
constexpr int32_t StillSolid = 1 | 4 | 16;  // contents bits that leave a solid region solid

double Distance(const levelcheck::Plane& plane, const std::array<double, 3>& p) {
    return double{plane.nx} * p[0] + double{plane.ny} * p[1] + double{plane.nz} * p[2] - double{plane.dist};
}

// A row's length is that of the level info; one that does not fit the regions would make rows of any size.
bool RowsFit(const LevelView& level) {
    return level.info.visRegions >= 0 && static_cast<size_t>(level.info.visRegions) <= level.regions.size();
}

}  // namespace

size_t RegionOf(const LevelView& level, const std::array<double, 3>& point) {
    if (level.nodes.empty()) return level.regions.size() > 1 ? 1 : 0;
    int32_t at = level.info.headNodes[0];
    for (size_t steps = 0; at >= 0; steps++) {
        if (static_cast<size_t>(at) >= level.nodes.size() || steps > level.nodes.size()) return 0;
        const levelcheck::Node& node = level.nodes[static_cast<size_t>(at)];
        if (node.plane >= level.planes.size()) return 0;
        at = node.children[Distance(level.planes[node.plane], point) > 0 ? 0 : 1];
    }
    const auto region = static_cast<size_t>(-(int64_t{at} + 1));
    return region < level.regions.size() ? region : 0;
}

bool IsOpen(const LevelView& level, size_t region) {
    if (region == 0 || region >= level.regions.size()) return false;
    return (level.regions[region].contents & ~StillSolid) != SolidContents;
}

std::vector<bool> VisibleFrom(const LevelView& level, size_t region) {
    std::vector<bool> visible(level.regions.size(), true);
    if (region == 0 || region >= level.regions.size() || !RowsFit(level)) return visible;
    const auto row = levelcheck::VisRow(level, region);
    if (!row) return visible;
    for (size_t i = 1; i < visible.size(); i++) {
        const size_t bit = i - 1;
        visible[i] = bit / 8 < row->size() && ((*row)[bit / 8] >> (bit % 8) & 1) != 0;
    }
    return visible;
}

VisibilityCount CountVisible(const LevelView& level) {
    VisibilityCount count;
    if (!RowsFit(level)) return count;
    for (size_t i = 1; i < level.regions.size(); i++) {
        const auto row = levelcheck::VisRow(level, i);
        if (!row) continue;
        count.rows++;
        for (const uint8_t byte : *row) count.visible += static_cast<size_t>(std::popcount(byte));
    }
    return count;
}

}  // namespace klvtool
