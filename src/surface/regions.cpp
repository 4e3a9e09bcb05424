// The tree of the visible hull as flat region and node rows.
#include "driver/build_options.h"
#include "levelfile/geometry_data.h"
#include "levelfile/portal_data.h"
#include "surface/grid_hash.h"
#include "surface/surface_state.h"
#include "surface/table_limits.h"
#include "surface/tree_walk.h"

namespace k2k {

namespace {

// The tree's box is built 24 units wider on each side than the blocks, and its leaves one more.
constexpr double TreeMargin = 24.0;
constexpr double LeafMargin = 1.0;
constexpr int32_t SolidRegionLink = -1;

std::array<int16_t, 3> SqueezeBounds(const Vec3& bounds) {
    return {SqueezeBound(bounds[0]), SqueezeBound(bounds[1]), SqueezeBound(bounds[2])};
}

void AppendRegionSurface(const CBlockFace& face, std::vector<uint32_t>& list) {
    RequireRoom(list.size(), RegionSurfaceLimit);
    list.push_back(static_cast<uint32_t>(face.outputIndex));
    if (Options().mesh) NoteMeshSurface(face.sourceBlock, face.outputIndex);
}

// The surface that stands for the face and all pieces that junctions have cut off it.
void AppendChain(const CBlockFace& entry, std::vector<uint32_t>& list) {
    for (const CBlockFace* face = &entry; face != nullptr; face = face->leafCopy) {
        if (face->surfaceOut != nullptr) face = face->surfaceOut;
        AppendRegionSurface(*face, list);
    }
}

void WriteRegion(const CBspNode& leaf, CPortalData& portals) {
    RequireRoom(portals.regions.size(), RegionLimit);
    CRegion row;
    row.contents = leaf.contents;
    row.visOffset = -1;
    row.mins = SqueezeBounds(leaf.mins);
    row.maxs = SqueezeBounds(leaf.maxs);
    row.firstSurface = static_cast<uint32_t>(portals.regionSurfaces.size());
    ForEachMarkedFace(leaf, [&](const CBlockFace& entry) { AppendChain(entry, portals.regionSurfaces); });
    row.surfaceCount = static_cast<uint32_t>(portals.regionSurfaces.size()) - row.firstSurface;
    portals.regions.push_back(row);
}

void AppendNode(const CBspNode& node, CPortalData& portals) {
    RequireRoom(portals.nodes.size(), NodeLimit);
    CRegionNode row;
    row.plane = static_cast<uint32_t>(node.outputPlane);
    row.mins = SqueezeBounds(node.mins);
    row.maxs = SqueezeBounds(node.maxs);
    row.firstSurface = static_cast<uint32_t>(node.firstFace);
    row.surfaceCount = static_cast<uint32_t>(node.numFaces);
    portals.nodes.push_back(row);
}

// A subtree that is still to be written, and the link that will lead to it.
struct OpenChild {
    const CBspNode* node;
    size_t parentRow;
    size_t side;
};

void PushChildren(const CBspNode& node, size_t row, std::vector<OpenChild>& open) {
    open.push_back({node.children[1].get(), row, 1});
    open.push_back({node.children[0].get(), row, 0});
}

// Rows in pre-order. Leaves that are not solid are met in the order in which the portal file numbers them, so region
// row v + 1 has portal number v.
void WriteRegionNode(const CBspNode& root, CPortalData& portals) {
    std::vector<OpenChild> open;
    AppendNode(root, portals);
    PushChildren(root, portals.nodes.size() - 1, open);
    while (!open.empty()) {
        const OpenChild child = open.back();
        open.pop_back();
        int32_t link = SolidRegionLink;
        if (IsInnerNode(*child.node)) {
            link = static_cast<int32_t>(portals.nodes.size());
            AppendNode(*child.node, portals);
            PushChildren(*child.node, portals.nodes.size() - 1, open);
        } else if (!IsSolidOrDetail(child.node->contents)) {
            link = -(static_cast<int32_t>(portals.regions.size()) + 1);
            WriteRegion(*child.node, portals);
        }
        portals.nodes[child.parentRow].children[child.side] = link;
    }
}

void NoteModelSurfaces(CGeometryData& level) {
    int32_t& first = State().firstModelSurface;
    const auto end = static_cast<int32_t>(level.surfaces.size());
    level.info.firstSurface = first;
    level.info.surfaceCount = end - first;
    first = end;
}

}  // namespace

int16_t SqueezeBound(float bound) {
    constexpr int32_t Linear = 29000;
    constexpr int32_t Divisor = 1024;
    int32_t v = TruncateToInt(bound);
    if (v > Linear) {
        v = (v - Linear) / Divisor + Linear;
    } else if (v < -Linear) {
        v = (v + Linear) / Divisor - Linear;
    }
    return static_cast<int16_t>(v);
}

void WriteRegions(CBspNode& root) {
    CGeometryData& level = Geometry();
    CPortalData& portals = Portals();
    level.info.headNodes[0] = static_cast<int32_t>(portals.nodes.size());
    NoteModelSurfaces(level);

    const size_t regionsBefore = portals.regions.size();
    if (IsInnerNode(root)) {
        WriteRegionNode(root, portals);
    } else {
        WriteRegion(root, portals);
    }
    level.info.visRegions = static_cast<int32_t>(portals.regions.size() - regionsBefore);
    for (size_t axis = 0; axis < 3; ++axis) {
        level.info.mins[axis] = static_cast<float>(root.mins[axis] + TreeMargin + LeafMargin);
        level.info.maxs[axis] = static_cast<float>(root.maxs[axis] - TreeMargin - LeafMargin);
    }
}

}  // namespace k2k
