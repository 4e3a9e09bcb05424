#include "bsp/clip_hull.h"

#include <array>
#include <memory>
#include <vector>

#include "driver/build_log.h"
#include "levelfile/geometry_data.h"
#include "levelfile/portal_data.h"
#include "solid/block.h"
#include "solid/plane.h"
#include "solid/vectors.h"
#include "surface/grid_hash.h"
#include "surface/surface_tables.h"

namespace k2k {
namespace {

constexpr size_t MaxHullNodes = 268435455;

struct HullCapture {
    std::vector<int32_t> roots;  // one
    std::vector<int32_t> child0, child1;
    std::vector<FinalPlaneRecord> planes;
};

std::array<std::unique_ptr<HullCapture>, 3>& Captures() {
    static std::array<std::unique_ptr<HullCapture>, 3> captures;
    return captures;
}

int32_t AppendHullNode() {
    auto& table = Portals().hullNodes;
    if (table.size() >= MaxHullNodes) FatalError("E010: Map size - too many regions");
    table.emplace_back();
    return static_cast<int32_t>(table.size() - 1);
}

CHullNode& HullNode(int32_t row) {
    return Portals().hullNodes[static_cast<size_t>(row)];
}

// A node to be written, and the row and side that name it.
struct Link {
    const CBspNode* node;
    int32_t parent;
    size_t side;
};

std::array<int32_t, 3> RoundToWhole(const Vec3& v) {
    std::array<int32_t, 3> whole{};
    for (size_t axis = 0; axis < 3; ++axis) whole[axis] = TruncateToInt(static_cast<float>(Nearest(v[axis])));
    return whole;
}

void JoinRow(const HullCapture& capture, size_t position, int32_t base) {
    const int32_t row = AppendHullNode();
    FinalPlaneRecord plane = capture.planes[position];
    plane.type = PlaneTypeFromNormal(plane.normal);
    HullNode(row).plane = FindOrAddFinalPlane(plane);
    const auto shifted = [base](int32_t child) { return child < 0 ? child : child + base; };
    HullNode(row).children = {shifted(capture.child0[position]), shifted(capture.child1[position])};
}

}  // namespace

int32_t WriteClipNodes(const CBspNode& root) {
    const auto rootRow = static_cast<int32_t>(Portals().hullNodes.size());
    constexpr int32_t NoParent = -1;
    std::vector<Link> stack{{&root, NoParent, 0}};
    while (!stack.empty()) {
        const Link link = stack.back();
        stack.pop_back();
        const CBspNode& node = *link.node;
        const int32_t value = node.IsLeaf() ? node.contents : AppendHullNode();
        if (link.parent != NoParent) HullNode(link.parent).children[link.side] = value;
        if (node.IsLeaf()) continue;
        HullNode(value).plane = static_cast<uint32_t>(node.outputPlane);
        stack.push_back({node.children[1].get(), value, 1});
        stack.push_back({node.children[0].get(), value, 0});
    }
    return rootRow;
}

void RecordHull(int32_t hull, int32_t root) {
    const auto row = static_cast<size_t>(hull);
    LevelInfo& info = Geometry().info;
    info.headNodes[row] = root;
    info.hullMins[row] = RoundToWhole(HullBoxes()[row].mins);
    info.hullMaxs[row] = RoundToWhole(HullBoxes()[row].maxs);
}

void CaptureHull(int32_t hull) {
    const auto slot = static_cast<size_t>(hull);
    auto capture = std::make_unique<HullCapture>();
    capture->roots.push_back(Geometry().info.headNodes[slot]);
    for (const CHullNode& node : Portals().hullNodes) {
        capture->planes.push_back(Geometry().planes[node.plane]);
        capture->child0.push_back(node.children[0]);
        capture->child1.push_back(node.children[1]);
    }
    Captures()[slot] = std::move(capture);
}

void JoinHull(int32_t hull) {
    const auto slot = static_cast<size_t>(hull);
    auto& capture = Captures()[slot];
    if (!capture) return;
    if (capture->roots.size() != 1) {
        BuildLog(" \nWARNING W021: No hull generated!\n");
        return;
    }
    const auto base = static_cast<int32_t>(Portals().hullNodes.size());
    Geometry().info.headNodes[slot] = base + capture->roots.front();
    for (size_t i = 0; i < capture->planes.size(); ++i) JoinRow(*capture, i, base);
    capture.reset();
}

void ResetHullCaptures() {
    Captures() = {};
}

}  // namespace k2k
