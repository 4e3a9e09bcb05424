#include "solid/tree.h"

#include <algorithm>

#include "driver/build_log.h"

namespace k2k {

namespace {

constexpr float UnboundedMins = 999999.0F, UnboundedMaxs = -999999.0F;

void RequireContents(const CBlockFace& face) {
    if (face.contents[0] >= 0 || face.contents[1] >= 0) FatalError("E063");
}

}  // namespace

CBspNode::~CBspNode() {
    // Trees can be as deep as a level has planes: the subtree is taken apart node by node.
    std::vector<std::unique_ptr<CBspNode>> pending;
    const auto take = [&pending](CBspNode& node) {
        for (std::unique_ptr<CBspNode>& child : node.children) {
            if (child != nullptr) pending.push_back(std::move(child));
        }
    };
    take(*this);
    while (!pending.empty()) {
        const std::unique_ptr<CBspNode> node = std::move(pending.back());
        pending.pop_back();
        take(*node);
    }
}

void CalcSurfaceInfo(CSplitSurface& surface) {
    if (surface.faces.empty()) FatalError("E062");
    surface.mins.fill(UnboundedMins);
    surface.maxs.fill(UnboundedMaxs);
    for (const CBlockFace& face : surface.faces) {
        RequireContents(face);
        if (face.mergedAway) continue;
        for (const Vec3& point : face.points) {
            for (size_t axis = 0; axis < 3; ++axis) {
                surface.mins[axis] = std::min(surface.mins[axis], point[axis]);
                surface.maxs[axis] = std::max(surface.maxs[axis], point[axis]);
            }
        }
    }
}

}  // namespace k2k
