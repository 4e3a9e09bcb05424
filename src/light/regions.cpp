#include "light/regions.h"

#include "driver/build_options.h"
#include "levelfile/geometry_data.h"
#include "levelfile/portal_data.h"
#include "solid/vectors.h"

namespace k2k {

int32_t RegionAt(const Vec3& point) {
    const auto& nodes = Portals().nodes;
    if (nodes.empty() || Options().mesh) return 0;
    int32_t child = 0;
    while (child >= 0) {
        const CRegionNode& node = nodes[static_cast<size_t>(child)];
        const FinalPlaneRecord& plane = Geometry().planes[node.plane];
        child = node.children[Dot(point, plane.normal) - plane.dist > -Options().eps ? 0 : 1];
    }
    return ~child;
}

}  // namespace k2k
