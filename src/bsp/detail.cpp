#include "bsp/detail.h"

#include <utility>

#include "bsp/progress.h"
#include "levelfile/geometry_data.h"
#include "solid/polygon.h"
#include "surface/surface_tables.h"
#include "surface/texel_size.h"

namespace k2k {
namespace {

constexpr int32_t FacesPerMark = 300;
constexpr double FilterGap = 0.5;  // a part thinner than this reaches no leaf behind a plane

CBlockSet EmptySetOf(const CBlockSet& set) {
    CBlockSet empty;
    empty.mins = set.mins;
    empty.maxs = set.maxs;
    return empty;
}

CPlane FinalPlaneOf(const CBspNode& node) {
    const FinalPlaneRecord& record = Geometry().planes[static_cast<size_t>(node.outputPlane)];
    return {record.normal, record.dist, record.type};
}

// Leaves have no plane number of their own, that is 0. A node on final plane 0 counts as a leaf too.
bool CountsAsLeaf(const CBspNode& node) {
    return node.outputPlane < 1;
}

// The leaves that the polygon reaches, each once.
std::vector<CBspNode*> FilterPolygon(CBspNode& root, PolygonRef polygon) {
    struct Part {
        CBspNode* node;
        PolygonRef polygon;
    };
    std::vector<CBspNode*> leaves;
    std::vector<Part> stack;
    stack.push_back({&root, std::move(polygon)});
    while (!stack.empty()) {
        const Part part = std::move(stack.back());
        stack.pop_back();
        if (CountsAsLeaf(*part.node)) {
            if (!IsSolidOrDetail(part.node->contents)) leaves.push_back(part.node);
            continue;
        }
        PolygonPieces pieces = SplitPolygonFiltered(part.polygon, FinalPlaneOf(*part.node), FilterGap);
        if (pieces.back) stack.push_back({part.node->children[1].get(), std::move(pieces.back)});
        if (pieces.front) stack.push_back({part.node->children[0].get(), std::move(pieces.front)});
    }
    return leaves;
}

}  // namespace

CBlockSet SplitDetailBlocks(CBlockSet& set) {
    CBlockSet detail = EmptySetOf(set);
    IntrusiveList<CBlock> kept;
    while (!set.blocks.empty()) {
        auto block = set.blocks.pop_front();
        if ((block->contents & ContentsDetail) != 0) {
            detail.blocks.push_front(std::move(block));
            ++detail.count;
        } else {
            kept.push_front(std::move(block));
        }
    }
    kept.reverse();
    set.blocks = std::move(kept);
    return detail;
}

CBlockSet TakeAllBlocks(CBlockSet& set) {
    CBlockSet all = EmptySetOf(set);
    all.blocks = std::move(set.blocks);
    all.count = std::exchange(set.count, 0);
    for (CBlock& block : all.blocks) block.contents &= ~ContentsDetail;
    return all;
}

FaceList TakeDetailFaces(SurfaceList surfaces) {
    FaceList faces;
    for (CSplitSurface& surface : surfaces) {
        while (!surface.faces.empty()) faces.push_front(surface.faces.pop_front());
    }
    faces.reverse();
    return faces;
}

FaceList SubdivideDetailFaces(FaceList faces, int32_t hull) {
    return SubdivideList(std::move(faces), hull);
}

void EmitDetailFaces(FaceList& faces) {
    for (CBlockFace& face : faces) {
        EmitSingleSurface(face);
        CountProgress(FacesPerMark);
    }
}

void FilterDetailFaces(FaceList& faces, CBspNode& root) {
    for (CBlockFace& face : faces) {
        std::vector<CBspNode*> leaves = FilterPolygon(root, PolygonOfFace(face));
        if (leaves.empty()) leaves.push_back(&root);
        face.contents = {ContentsEmpty, ContentsSolid};
        for (CBspNode* leaf : leaves) {
            leaf->markFaces.push_back(&face);
            leaf->contents |= ContentsDetail;
        }
    }
}

}  // namespace k2k
