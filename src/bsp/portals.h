// Portals: the convex openings between neighbouring leaves of a finished tree, and the flood that walks through them to
// find what lies outside a level.
#pragma once

#include <array>
#include <cstdint>
#include <deque>

#include "solid/block.h"
#include "solid/polygon.h"
#include "solid/tree.h"

namespace k2k {

struct CPortal {
    int32_t planenum = 0;
    std::array<CBspNode*, 2> nodes{};
    std::array<CPortal*, 2> next{};      // in the list of nodes[0] and of nodes[1]
    std::array<CPortal*, 2> previous{};  // lists of the outside are long, and portals leave them all the time
    PolygonRef polygon;

    // On which side the node is; -1 when on neither.
    int SideOf(const CBspNode& node) const { return nodes[0] == &node ? 0 : nodes[1] == &node ? 1 : -1; }
    // From a node that the portal names: its list's next portal, and the node at the far side.
    CPortal* NextAt(const CBspNode& node) const { return next[nodes[0] == &node ? 0 : 1]; }
    CBspNode& FarSide(const CBspNode& node) const { return *nodes[nodes[0] == &node ? 1 : 0]; }
};

// Owns the portals of one tree, and the node that stands for everything around the tree. The lists that the tree's
// nodes head lead through it, so it stays in place as long as they are walked.
struct TreePortals {
    TreePortals() = default;
    TreePortals(const TreePortals&) = delete;
    TreePortals& operator=(const TreePortals&) = delete;

    CBspNode outside;
    std::deque<CPortal> store;

    CPortal& NewPortal(int32_t planenum, PolygonRef polygon);
};

// Builds all portals of the tree. hull is a hull number; it tells warnings apart. Announces progress.
void MakeTreePortals(TreePortals& portals, CBspNode& root, const CBlockSet& set, int32_t hull);
// The six portals between the outside and the tree: the sides of the set's bounds with the tree's margin.
void MakeHeadnodePortals(TreePortals& portals, CBspNode& root, const CBlockSet& set);
// Makes the portal on the node's plane and hands the node's own portals on to its children; then the same below.
void CutNodePortals(TreePortals& portals, CBspNode& root, int32_t hull);
// Takes the portals off the tree's nodes, and frees all.
void FreeTreePortals(TreePortals& portals, CBspNode& root);

// Puts the portal at the head of both nodes' lists. One that stands in lists already is fatal.
void AddPortalToNodes(CPortal& portal, CBspNode& front, CBspNode& back);
// Takes the portal out of the node's list. One that is not in it is fatal.
void RemovePortalFromNode(CPortal& portal, CBspNode& node);

// Marks the leaves that can be reached from outside as solid and clears the faces that only they see. Where an entity
// can be reached the level leaks: the outside stays, and a warning is counted. False when the flood did not start: with
// -nofill, or when no entity stands in an open leaf.
bool FillOutside(TreePortals& portals, CBspNode& root);

}  // namespace k2k
