#include "bsp/tree_build.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "bsp/progress.h"
#include "bsp/split_choice.h"
#include "driver/build_log.h"
#include "driver/build_options.h"
#include "levelfile/texture_data.h"
#include "solid/vectors.h"
#include "surface/surface_tables.h"
#include "surface/texel_size.h"

namespace k2k {
namespace {

constexpr float TreeMargin = 24.0F;  // around the blocks, so that every boundary leaf has some outside
constexpr int32_t NodesPerMark = 300;
constexpr int32_t MaxOversizedSurfaces = 10000;
constexpr double SamePlaneNormal = 0.01;  // per axis
constexpr int32_t ContentsSolidOpen = ContentsSolid + ContentsOpen;

std::unique_ptr<CSplitSurface> CopyWithoutFaces(const CSplitSurface& surface) {
    auto copy = std::make_unique<CSplitSurface>();
    copy->planenum = surface.planenum;
    copy->sourceBlock = surface.sourceBlock;
    copy->mins = surface.mins;
    copy->maxs = surface.maxs;
    copy->onNode = surface.onNode;
    copy->contents = surface.contents;
    return copy;
}

std::unique_ptr<CSplitSurface> NullIfEmpty(std::unique_ptr<CSplitSurface> surface) {
    if (surface->faces.empty()) surface.reset();
    return surface;
}

// A surface on the splitting plane: its faces part by the side they look to, and keep their order.
SurfacePieces DivideBySide(std::unique_ptr<CSplitSurface> surface) {
    surface->onNode = true;
    auto back = CopyWithoutFaces(*surface);
    FaceList all = std::move(surface->faces);
    all.reverse();
    while (!all.empty()) {
        auto face = all.pop_front();
        auto& side = face->planeside == 1 ? *back : *surface;
        side.faces.push_front(std::move(face));
    }
    return {NullIfEmpty(std::move(surface)), NullIfEmpty(std::move(back))};
}

// Cuts every face. The bounds are taken anew only when faces lie on both sides, so a surface that stays on one side may
// keep bounds wider than its faces.
SurfacePieces CutFaces(std::unique_ptr<CSplitSurface> surface, const CPlane& plane) {
    FaceList front;
    FaceList back;
    while (!surface->faces.empty()) {
        FacePieces pieces = SplitFace(surface->faces.pop_front(), plane);
        if (pieces.front) front.push_front(std::move(pieces.front));
        if (pieces.back) back.push_front(std::move(pieces.back));
    }
    SurfacePieces result;
    if (front.empty()) {
        result.back = std::move(surface);
        result.back->faces = std::move(back);
        return result;
    }
    result.front = std::move(surface);
    result.front->faces = std::move(front);
    if (back.empty()) return result;
    result.back = CopyWithoutFaces(*result.front);
    result.back->faces = std::move(back);
    CalcSurfaceInfo(*result.front);
    CalcSurfaceInfo(*result.back);
    return result;
}

void PushSurface(SurfaceList& list, std::unique_ptr<CSplitSurface> surface) {
    if (!surface) return;
    if (surface->faces.empty()) FatalError("E066");
    list.push_front(std::move(surface));
}

// The children's surfaces: each piece goes to the head of its side's list.
std::array<SurfaceList, 2> DivideSurfaces(SurfaceList surfaces, const CPlane& plane) {
    std::array<SurfaceList, 2> sides;
    while (!surfaces.empty()) {
        SurfacePieces pieces = DivideSurface(surfaces.pop_front(), plane);
        PushSurface(sides[0], std::move(pieces.front));
        PushSurface(sides[1], std::move(pieces.back));
    }
    return sides;
}

const CSplitSurface* FindPlaneSurface(const SurfaceList& surfaces, int32_t planenum) {
    for (const CSplitSurface& surface : surfaces) {
        if (surface.planenum == planenum) return &surface;
    }
    return nullptr;
}

// A turned copy of the surface's first face. It only tells the contents behind the plane to a child without surfaces.
SurfaceList TemporarySurface(const CSplitSurface& surface) {
    auto face = surface.faces.front()->Clone();
    face->planeside = face->planeside == 0 ? 1 : 0;
    std::swap(face->contents[0], face->contents[1]);
    face->sourceBlock = TemporaryBlock;
    auto copy = CopyWithoutFaces(surface);
    copy->faces.push_front(std::move(face));
    SurfaceList list;
    list.push_front(std::move(copy));
    return list;
}

// Gives the side without surfaces a temporary face, made of a face on the splitting plane.
void FillEmptySide(std::array<SurfaceList, 2>& sides, int32_t planenum) {
    if (sides[0].empty() == sides[1].empty()) return;
    const size_t emptySide = sides[0].empty() ? 0 : 1;
    const CSplitSurface* found = FindPlaneSurface(sides[1 - emptySide], planenum);
    if (found != nullptr && !found->faces.empty()) sides[emptySide] = TemporarySurface(*found);
}

struct OpenNode {
    CBspNode* node;
    SurfaceList surfaces;
};

// Turns the node into an inner node or a leaf; the children that are still to be built go to the stack, the front one
// on top.
void BuildNode(TreeBuild& build, OpenNode open, std::vector<OpenNode>& stack) {
    CSplitSurface* splitter = SelectPartition(open.surfaces, build.midSplit);
    if (splitter == nullptr) {
        LinkLeafFaces(build, std::move(open.surfaces), *open.node);
        return;
    }
    ++build.nodes;
    CountProgress(NodesPerMark);
    CBspNode& node = *open.node;
    node.planenum = splitter->planenum;
    node.faces = LinkNodeFaces(build, *splitter);
    for (auto& child : node.children) child = std::make_unique<CBspNode>();
    const CPlane plane = TablePlane(node.planenum);
    DivideNodeBounds(node, plane);
    auto sides = DivideSurfaces(std::move(open.surfaces), plane);
    FillEmptySide(sides, node.planenum);
    stack.push_back({node.children[1].get(), std::move(sides[1])});
    stack.push_back({node.children[0].get(), std::move(sides[0])});
}

// What the faces of a leaf say about it.
struct LeafFaces {
    int32_t contents = 0;
    bool hasTemporary = false;
    std::vector<CBlockFace*> copies;  // null where no node keeps a copy
};

bool IsDetailFace(const CBlockFace& face) {
    return (Textures().GetTexinfo(face.texinfo).flags & TextureDetail) != 0;
}

// Faces of detail textures have no say in the contents.
void TakeContents(LeafFaces& leaf, const CBlockFace& face) {
    if (leaf.contents == face.contents[0] || IsDetailFace(face)) return;
    if (leaf.contents == 0) {
        leaf.contents = face.contents[0];
        return;
    }
    leaf.contents = ContentsSolid;
    if (WarnOnce(WarnFamily::W064)) BuildLog(" \nWARNING W064: Block with\tinconsistent surfaces\n");
}

LeafFaces CollectLeafFaces(const SurfaceList& surfaces) {
    LeafFaces leaf;
    for (const CSplitSurface& surface : surfaces) {
        for (const CBlockFace& face : surface.faces) {
            if (face.sourceBlock == TemporaryBlock) {
                leaf.hasTemporary = true;
            } else {
                leaf.copies.push_back(face.leafCopy);
            }
            TakeContents(leaf, face);
        }
    }
    return leaf;
}

void CountLeaf(TreeBuild& build, int32_t contents) {
    if (contents == ContentsEmpty) ++build.emptyLeaves;
    if (contents == ContentsSolid) ++build.solidLeaves;
    if (contents == ContentsSolidOpen) ++build.openLeaves;
}

void WarnOversized(const TreeBuild& build) {
    if (build.oversizedSurfaces <= MaxOversizedSurfaces || Options().quiet) return;
    BuildLog(" \nWARNING W066\t(%d): Surfaces too big for Shaded mode!\n", build.oversizedSurfaces);
}

}  // namespace

SurfacePieces DivideSurface(std::unique_ptr<CSplitSurface> surface, const CPlane& plane) {
    const CPlane& own = TablePlane(surface->planenum);
    if (!VectorEqual(own.normal, plane.normal, SamePlaneNormal)) return CutFaces(std::move(surface), plane);
    if (own.dist == plane.dist) return DivideBySide(std::move(surface));
    if (plane.dist < own.dist) return {std::move(surface), nullptr};
    return {nullptr, std::move(surface)};
}

void DivideNodeBounds(CBspNode& node, const CPlane& plane) {
    for (auto& child : node.children) {
        child->mins = node.mins;
        child->maxs = node.maxs;
    }
    if (plane.type >= 3) return;
    const auto axis = static_cast<size_t>(plane.type < 0 ? plane.type + 3 : plane.type);
    node.children[0]->mins[axis] = plane.dist;
    node.children[1]->maxs[axis] = plane.dist;
}

FaceList LinkNodeFaces(TreeBuild& build, CSplitSurface& splitter) {
    splitter.faces = SubdivideList(std::move(splitter.faces), build.hull);
    FaceList copies;
    for (CBlockFace& face : splitter.faces) {
        ++build.nodeFaces;
        auto copy = face.Clone();
        face.leafCopy = copy.get();
        copies.push_front(std::move(copy));
    }
    return copies;
}

void LinkLeafFaces(TreeBuild& build, SurfaceList surfaces, CBspNode& leaf) {
    LeafFaces found = CollectLeafFaces(surfaces);
    if (found.contents == 0) found.contents = Options().nobsp ? ContentsEmpty : ContentsSolid;
    if (found.contents > 0) FatalError("E065");
    if (found.hasTemporary && !found.copies.empty()) FatalError("E065a: Invalid temporary face");
    CountLeaf(build, found.contents);
    leaf.planenum = LeafPlane;
    leaf.contents = found.contents;
    // The list is read up to its first null, so a face without a copy hides those behind it.
    found.copies.erase(std::find(found.copies.begin(), found.copies.end(), nullptr), found.copies.end());
    leaf.markFaces = std::move(found.copies);
}

void BuildTree(TreeBuild& build, SurfaceList surfaces, CBspNode& node) {
    std::vector<OpenNode> stack;
    stack.push_back({&node, std::move(surfaces)});
    while (!stack.empty()) {
        OpenNode open = std::move(stack.back());
        stack.pop_back();
        BuildNode(build, std::move(open), stack);
    }
}

std::unique_ptr<CBspNode> SolidBsp(SurfaceList surfaces, bool midSplit, int32_t hull, const CBlockSet& set) {
    auto root = std::make_unique<CBspNode>();
    for (size_t axis = 0; axis < 3; ++axis) {
        root->mins[axis] = set.mins[axis] - TreeMargin;
        root->maxs[axis] = set.maxs[axis] + TreeMargin;
    }
    TreeBuild build;
    build.midSplit = midSplit;
    build.hull = hull;
    StartProgress(static_cast<int32_t>(2 * surfaces.size()));
    BuildTree(build, std::move(surfaces), *root);
    WarnOversized(build);
    return root;
}

CBspNode& PointInLeaf(CBspNode& root, const Vec3& point) {
    CBspNode* node = &root;
    while (!node->IsLeaf()) {
        const CPlane& plane = TablePlane(node->planenum);
        const bool isFront = Dot(point, plane.normal) - plane.dist > 0;
        node = node->children[isFront ? 0 : 1].get();
    }
    return *node;
}

void ResetTreeTables() {
    ResetSurfaceOutput();
}

}  // namespace k2k
