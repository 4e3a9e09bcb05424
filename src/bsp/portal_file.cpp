#include "bsp/portal_file.h"

#include <cmath>
#include <cstdio>
#include <memory>
#include <vector>

#include "bsp/portals.h"
#include "driver/build_log.h"
#include "driver/build_options.h"
#include "solid/vectors.h"

namespace k2k {
namespace {

constexpr int32_t InnerNumber = -99;
constexpr int32_t SolidNumber = -1;
constexpr double SameDirection = 0.99;  // least dot product of normals that look the same way
constexpr double LargestWhole = 2147483648.0;
constexpr double WholeTolerance = 0.001;  // numbers closer to a whole one are written as that

struct LeafCounts {
    int32_t leaves = 0, portals = 0;
};

// Every portal stands in the lists of two leaves; it belongs to its first one.
bool JoinsEqualLeaves(const CPortal& portal, const CBspNode& leaf) {
    return portal.nodes[0] == &leaf && portal.nodes[0]->contents == portal.nodes[1]->contents;
}

// Calls visit on every node of the tree, the front child before the back one.
template <typename Visit>
void WalkTree(CBspNode& root, Visit visit) {
    std::vector<CBspNode*> stack{&root};
    while (!stack.empty()) {
        CBspNode& node = *stack.back();
        stack.pop_back();
        visit(node);
        if (node.IsLeaf()) continue;
        stack.push_back(node.children[1].get());
        stack.push_back(node.children[0].get());
    }
}

void NumberNode(CBspNode& node, LeafCounts& counts) {
    if (!node.IsLeaf()) {
        node.leafNumber = InnerNumber;
        return;
    }
    if (IsSolidOrDetail(node.contents)) {
        node.leafNumber = SolidNumber;
        return;
    }
    node.leafNumber = counts.leaves++;
    for (const CPortal* portal = node.portals; portal != nullptr; portal = portal->NextAt(node)) {
        if (JoinsEqualLeaves(*portal, node)) ++counts.portals;
    }
}

// Stricter than the test that numbers leaves: bits 4 and 8 do not make a leaf open either.
bool WritesPortals(const CBspNode& node) {
    constexpr int32_t Ignored = ContentsMarked | ContentsClipOnly | 8 | ContentsDetail;
    return node.IsLeaf() && (node.contents & ~Ignored) != ContentsSolid;
}

void WriteCoordinate(std::FILE* file, double coordinate) {
    const double value = static_cast<float>(coordinate);
    const double whole = Nearest(value);
    if (std::fabs(value - whole) < WholeTolerance && std::fabs(whole) < LargestWhole) {
        std::fprintf(file, "%i ", static_cast<int>(whole));
    } else {
        std::fprintf(file, "%f ", value);
    }
}

bool LooksAlongPlane(const CPortal& portal) {
    return Dot(PolygonPlane(*portal.polygon).normal, TablePlane(portal.planenum).normal) >= SameDirection;
}

// The first region named is the one that the polygon's own normal looks into.
void WritePortal(std::FILE* file, const CPortal& portal) {
    const bool isAlong = LooksAlongPlane(portal);
    const int32_t first = portal.nodes[isAlong ? 0 : 1]->leafNumber;
    const int32_t second = portal.nodes[isAlong ? 1 : 0]->leafNumber;
    std::fprintf(file, "%i %i %i ", portal.polygon->numpoints(), first, second);
    for (const Vec3d& point : portal.polygon->points) {
        std::fputs("(", file);
        for (const double coordinate : point) WriteCoordinate(file, coordinate);
        std::fputs(") ", file);
    }
    std::fputs("\n", file);
}

void WriteLeafPortals(std::FILE* file, const CBspNode& leaf) {
    if (!WritesPortals(leaf)) return;
    for (const CPortal* portal = leaf.portals; portal != nullptr; portal = portal->NextAt(leaf)) {
        if (portal->polygon && JoinsEqualLeaves(*portal, leaf)) WritePortal(file, *portal);
    }
}

}  // namespace

void WritePortalFile(CBspNode& root) {
    LeafCounts counts;
    WalkTree(root, [&](CBspNode& node) { NumberNode(node, counts); });
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(Paths().PortalPath.c_str(), "w"), &std::fclose);
    if (!file) FatalError("E078");
    std::fprintf(file.get(), "%s\n%i\n%i\n", "PORT", counts.leaves, counts.portals);
    WalkTree(root, [&](const CBspNode& node) { WriteLeafPortals(file.get(), node); });
    const bool isWritten = std::ferror(file.get()) == 0;
    if (std::fclose(file.release()) != 0 || !isWritten) FatalError("E078");
}

}  // namespace k2k
