#include "solid/tree.h"

#include <algorithm>

#include "driver/build_log.h"

namespace k2k {

namespace {

constexpr float UnboundedMins = 999999.0F, UnboundedMaxs = -999999.0F;

void RequireContents(const CBlockFace& face) {
    if (face.contents[0] >= 0 || face.contents[1] >= 0) FatalError("E063");
}

// Frees a tree of any depth, without recursion and without memory for a list of what is still to be freed: a front
// child moves up into the place of its parent, which becomes its back child, until a node has none and can go.
void FreeTree(std::unique_ptr<CBspNode> node) {
    while (node != nullptr) {
        std::unique_ptr<CBspNode> next = std::move(node->children[0]);
        if (next == nullptr) {
            next = std::move(node->children[1]);
        } else {
            node->children[0] = std::move(next->children[1]);
            next->children[1] = std::move(node);
        }
        node = std::move(next);
    }
}

}  // namespace

CBspNode::~CBspNode() {
    for (std::unique_ptr<CBspNode>& child : children) FreeTree(std::move(child));
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
