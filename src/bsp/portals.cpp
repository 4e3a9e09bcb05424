#include "bsp/portals.h"

#include <utility>
#include <vector>

#include "driver/build_log.h"
#include "driver/build_options.h"
#include "solid/plane.h"

namespace k2k {
namespace {

constexpr float PortalMargin = 24.0F;  // as around the tree
constexpr size_t BoxSides = 6;

// The plane of one side of a box, facing into it.
CPlane BoxSide(const Vec3& low, const Vec3& high, size_t axis, bool isHigh) {
    CPlane plane;
    plane.normal[axis] = isHigh ? -1.0F : 1.0F;
    plane.dist = isHigh ? -high[axis] : low[axis];
    plane.type = static_cast<int32_t>(axis) - (isHigh ? 3 : 0);
    return plane;
}

std::array<CPlane, BoxSides> HeadnodePlanes(const CBlockSet& set) {
    Vec3 low = set.mins;
    Vec3 high = set.maxs;
    std::array<CPlane, BoxSides> planes;
    for (size_t axis = 0; axis < 3; ++axis) {
        low[axis] -= PortalMargin;
        high[axis] += PortalMargin;
        planes[axis] = BoxSide(low, high, axis, false);
        planes[axis + 3] = BoxSide(low, high, axis, true);
    }
    return planes;
}

void WarnNoPortal(int32_t hull) {
    constexpr std::array families{WarnFamily::W177Hull0, WarnFamily::W177Hull1, WarnFamily::W177Hull2};
    if (WarnOnce(families[static_cast<size_t>(hull)])) BuildLog(" \nWARNING 177: Can't create portal!");
    ++WarnCount;
}

// The opening on the node's plane inside the node's region, which the node's portals bound.
PolygonRef NodePolygon(const CBspNode& node, int32_t hull) {
    const CPlane& plane = TablePlane(node.planenum);
    PolygonRef polygon = BasePolygonForPlane(plane.normal, plane.dist);
    for (const CPortal* portal = node.portals; portal != nullptr; portal = portal->NextAt(node)) {
        const int side = portal->SideOf(node);
        if (side < 0) FatalError("E076");
        const CPlane& bound = TablePlane(portal->planenum);
        polygon = ClipPolygon(polygon, side == 0 ? bound : FlippedPlane(bound), true, Options().eps);
        if (!polygon) {
            WarnNoPortal(hull);
            break;
        }
    }
    return polygon;
}

// Puts a portal between a node and the other one, on the side where its parent stood.
void Reattach(CPortal& portal, CBspNode& node, CBspNode& other, int side) {
    if (side == 0) {
        AddPortalToNodes(portal, node, other);
    } else {
        AddPortalToNodes(portal, other, node);
    }
}

// Hands one portal of the node on to the child or the children that it borders.
void DistributePortal(TreePortals& portals, CPortal& portal, CBspNode& node) {
    const int side = portal.SideOf(node);
    if (side < 0) FatalError("E077");
    CBspNode& other = portal.FarSide(node);
    RemovePortalFromNode(portal, node);
    RemovePortalFromNode(portal, other);
    PolygonPieces pieces = SplitPolygon(portal.polygon, TablePlane(node.planenum), 0.0);
    if (pieces.front && pieces.back) {
        CPortal& backPortal = portals.NewPortal(portal.planenum, std::move(pieces.back));
        portal.polygon = std::move(pieces.front);
        Reattach(portal, *node.children[0], other, side);
        Reattach(backPortal, *node.children[1], other, side);
        return;
    }
    Reattach(portal, *node.children[pieces.front ? 0 : 1], other, side);
}

void CutNode(TreePortals& portals, CBspNode& node, int32_t hull) {
    CPortal& opening = portals.NewPortal(node.planenum, NodePolygon(node, hull));
    AddPortalToNodes(opening, *node.children[0], *node.children[1]);
    CPortal* portal = node.portals;
    while (portal != nullptr) {
        CPortal* next = portal->NextAt(node);
        DistributePortal(portals, *portal, node);
        portal = next;
    }
    ++ProgressDone;
}

}  // namespace

CPortal& TreePortals::NewPortal(int32_t planenum, PolygonRef polygon) {
    CPortal& portal = store.emplace_back();
    portal.planenum = planenum;
    portal.polygon = std::move(polygon);
    return portal;
}

void AddPortalToNodes(CPortal& portal, CBspNode& front, CBspNode& back) {
    if (portal.nodes[0] != nullptr || portal.nodes[1] != nullptr) FatalError("E071");
    portal.nodes = {&front, &back};
    for (size_t side = 0; side < 2; ++side) {
        CBspNode& node = *portal.nodes[side];
        CPortal* head = node.portals;
        portal.next[side] = head;
        portal.previous[side] = nullptr;
        if (head != nullptr) head->previous[static_cast<size_t>(head->SideOf(node))] = &portal;
        node.portals = &portal;
    }
}

void RemovePortalFromNode(CPortal& portal, CBspNode& node) {
    const int side = portal.SideOf(node);
    if (side < 0) FatalError("E072");
    const auto at = static_cast<size_t>(side);
    CPortal* next = portal.next[at];
    CPortal* previous = portal.previous[at];
    for (const CPortal* neighbour : {next, previous}) {
        if (neighbour != nullptr && neighbour->SideOf(node) < 0) FatalError("E073");
    }
    if (previous == nullptr && node.portals != &portal) FatalError("E072");
    if (previous != nullptr) {
        previous->next[static_cast<size_t>(previous->SideOf(node))] = next;
    } else {
        node.portals = next;
    }
    if (next != nullptr) next->previous[static_cast<size_t>(next->SideOf(node))] = previous;
    portal.nodes[at] = nullptr;
    portal.next[at] = portal.previous[at] = nullptr;
}

void MakeHeadnodePortals(TreePortals& portals, CBspNode& root, const CBlockSet& set) {
    portals.store.clear();
    portals.outside.contents = ContentsSolid;
    portals.outside.portals = nullptr;
    root.portals = nullptr;
    const std::array<CPlane, BoxSides> planes = HeadnodePlanes(set);
    std::array<CPortal*, BoxSides> sides{};
    for (size_t axis = 0; axis < 3; ++axis) {
        for (const size_t n : {axis, axis + 3}) {
            int32_t side = 0;
            const int32_t planenum = FindPlane(planes[n], side);
            sides[n] = &portals.NewPortal(planenum, BasePolygonForPlane(planes[n].normal, planes[n].dist));
            Reattach(*sides[n], root, portals.outside, side);
        }
    }
    for (size_t i = 0; i < BoxSides; ++i) {
        for (size_t j = 0; j < BoxSides; ++j) {
            if (i != j) sides[i]->polygon = ClipPolygon(sides[i]->polygon, planes[j], true, Options().eps);
        }
    }
}

void CutNodePortals(TreePortals& portals, CBspNode& root, int32_t hull) {
    std::vector<CBspNode*> stack{&root};
    while (!stack.empty()) {
        CBspNode& node = *stack.back();
        stack.pop_back();
        if (node.IsLeaf()) continue;
        CutNode(portals, node, hull);
        stack.push_back(node.children[1].get());
        stack.push_back(node.children[0].get());
    }
}

void MakeTreePortals(TreePortals& portals, CBspNode& root, const CBlockSet& set, int32_t hull) {
    MakeHeadnodePortals(portals, root, set);
    StartProgress(static_cast<int32_t>(2 * PlaneTable().size()));
    CutNodePortals(portals, root, hull);
}

void FreeTreePortals(TreePortals& portals, CBspNode& root) {
    std::vector<CBspNode*> stack{&root};
    while (!stack.empty()) {
        CBspNode& node = *stack.back();
        stack.pop_back();
        while (node.portals != nullptr) {
            CPortal& portal = *node.portals;
            RemovePortalFromNode(portal, portal.FarSide(node));
            RemovePortalFromNode(portal, node);
        }
        if (node.IsLeaf()) continue;
        for (auto& child : node.children) stack.push_back(child.get());
    }
    portals.outside.portals = nullptr;
    portals.store.clear();
}

}  // namespace k2k
