// Clips the faces of blocks against other blocks, and sorts what is left by plane.
#include "solid/csg.h"

#include <algorithm>

#include "driver/build_log.h"
#include "solid/block_index.h"
#include "solid/merge_list.h"

namespace k2k {

namespace {

constexpr int32_t BlocksPerMark = 60;
constexpr int32_t ContentsVolume = ContentsSolid | ContentsOpen;  // a volume that solid blocks keep their faces in

// By plane number.
template <typename List>
List& ListOfPlane(std::vector<List>& lists, int32_t planenum) {
    const auto plane = static_cast<size_t>(planenum);
    if (plane >= lists.size()) lists.resize(plane + 1);
    return lists[plane];
}

int32_t WithoutMarks(int32_t contents) {
    return contents & ~(ContentsMarked | ContentsDetail);
}

std::unique_ptr<CBlockFace> ReversedTwin(const CBlockFace& face) {
    std::unique_ptr<CBlockFace> twin = face.CopyHeader();
    twin->planeside = face.planeside == 0 ? 1 : 0;
    twin->contents = {face.contents[1], face.contents[0]};
    twin->points.assign(face.points.rbegin(), face.points.rend());
    return twin;
}

// One surface for each plane with faces, from the highest plane number down.
SurfaceList BuildSurfaces(std::vector<FaceList>& planeFaces) {
    SurfaceList surfaces;
    const size_t count = std::min(planeFaces.size(), PlaneTable().size());
    for (size_t plane = 0; plane < count; ++plane) {
        if (planeFaces[plane].empty()) continue;
        auto surface = std::make_unique<CSplitSurface>();
        surface->planenum = static_cast<int32_t>(plane);
        surface->sourceBlock = planeFaces[plane].front()->sourceBlock;
        surface->contents = planeFaces[plane].front()->contents;
        surface->faces = std::move(planeFaces[plane]);
        CalcSurfaceInfo(*surface);
        surfaces.push_front(std::move(surface));
    }
    return surfaces;
}

class FaceCutter {
  public:
    // Takes up copies of the block's faces, as seen from empty space.
    void CopyFacesToOutside(const CBlock& block);
    // Cuts b2 out of the faces of b1. With precedence b2's coplanar faces give way.
    void ClipByBlock(const CBlock& b1, const CBlock& b2, bool precedence);
    // Hands over the faces that are left, and their reversed twins for a block that can be looked into.
    void SaveOutside(bool mirror);
    bool HasFaces() const { return !outside_.empty(); }

    SurfaceList Finish(bool printOk);

  private:
    void ClipInside(int32_t planenum, int32_t side, bool precedence);
    void FreeInside(int32_t contents);

    FaceList outside_;  // faces of the block in work that are still alive
    FaceList inside_;   // of those, the ones not yet found outside the other block
    std::vector<MergeList> planeFaces_;
};

void FaceCutter::CopyFacesToOutside(const CBlock& block) {
    for (const CBlockFace& face : block.faces) {
        std::unique_ptr<CBlockFace> copy = face.Clone();
        copy->sourceBlock = block.blockNumber;
        copy->contents = {ContentsEmpty, block.contents};
        outside_.push_front(std::move(copy));
    }
}

void FaceCutter::ClipByBlock(const CBlock& b1, const CBlock& b2, bool precedence) {
    inside_ = std::move(outside_);
    for (const CBlockFace& face : b2.faces) ClipInside(face.planenum, face.planeside, precedence);
    const bool isSolidInVolume = IsSolidOrDetail(b1.contents) && WithoutMarks(b2.contents) == ContentsVolume;
    FreeInside(isSolidInVolume ? b2.contents : ContentsSolid);
}

void FaceCutter::ClipInside(int32_t planenum, int32_t side, bool precedence) {
    const CPlane& plane = TablePlane(planenum);
    FaceList stillInside;
    while (!inside_.empty()) {
        std::unique_ptr<CBlockFace> face = inside_.pop_front();
        std::unique_ptr<CBlockFace> outer, inner;
        if (face->planenum != planenum) {
            FacePieces pieces = SplitFace(std::move(face), plane);
            outer = std::move(side == 0 ? pieces.front : pieces.back);
            inner = std::move(side == 0 ? pieces.back : pieces.front);
        } else if (face->planeside == side && !precedence) {
            outer = std::move(face);
        } else {
            inner = std::move(face);
        }
        if (outer != nullptr) outside_.push_front(std::move(outer));
        if (inner != nullptr) stillInside.push_front(std::move(inner));
    }
    inside_ = std::move(stillInside);
}

void FaceCutter::FreeInside(int32_t contents) {
    if (IsSolidOrDetail(contents)) {
        inside_.clear();
        return;
    }
    while (!inside_.empty()) {
        std::unique_ptr<CBlockFace> face = inside_.pop_front();
        face->contents[0] = contents;
        outside_.push_front(std::move(face));
    }
}

void FaceCutter::SaveOutside(bool mirror) {
    while (!outside_.empty()) {
        std::unique_ptr<CBlockFace> face = outside_.pop_front();
        std::unique_ptr<CBlockFace> twin = mirror ? ReversedTwin(*face) : nullptr;
        MergeList& list = ListOfPlane(planeFaces_, face->planenum);
        list.Merge(std::move(face));
        if (twin != nullptr) list.Merge(std::move(twin));
        // Taking merged faces out moves the others one by one to the head of a new list.
        list.Reverse();
    }
}

SurfaceList FaceCutter::Finish(bool printOk) {
    if (printOk) BuildLog(" ok");
    std::vector<FaceList> planeFaces;
    planeFaces.reserve(planeFaces_.size());
    for (MergeList& list : planeFaces_) planeFaces.push_back(list.Take());
    return BuildSurfaces(planeFaces);
}

bool IsMirrored(const CBlock& block) {
    return !IsSolidOrDetail(block.contents);
}

}  // namespace

SurfaceList CSGFaces(const CBlockSet& set, bool printOk) {
    StartProgress(set.count);
    FaceCutter cutter;
    BlockIndex index(set);
    const std::vector<const CBlock*>& blocks = index.blocks();
    for (int32_t i = 0; i < static_cast<int32_t>(blocks.size()); ++i) {
        const CBlock& block = *blocks[i];
        if (++ProgressDone % BlocksPerMark == 0) BuildLog(".");
        cutter.CopyFacesToOutside(block);
        for (const int32_t other : index.Meeting(block)) {
            if (!cutter.HasFaces()) break;
            if (other != i) cutter.ClipByBlock(block, *blocks[other], other > i);
        }
        cutter.SaveOutside(IsMirrored(block));
    }
    return cutter.Finish(printOk);
}

SurfaceList CopyBlockFaces(const CBlockSet& set, bool printOk) {
    StartProgress(set.count);
    FaceCutter cutter;
    for (const CBlock& block : set.blocks) {
        cutter.CopyFacesToOutside(block);
        cutter.SaveOutside(IsMirrored(block));
    }
    return cutter.Finish(printOk);
}

SurfaceList GatherTreeSurfaces(std::unique_ptr<CBspNode> root) {
    std::vector<FaceList> planeFaces;
    std::vector<std::unique_ptr<CBspNode>> pending;
    if (root != nullptr) pending.push_back(std::move(root));
    while (!pending.empty()) {
        const std::unique_ptr<CBspNode> node = std::move(pending.back());
        pending.pop_back();
        if (node->IsLeaf()) continue;
        while (!node->faces.empty()) {
            std::unique_ptr<CBlockFace> face = node->faces.pop_front();
            if (face->numpoints() == 0) continue;
            ListOfPlane(planeFaces, face->planenum).push_front(std::move(face));
        }
        for (size_t child = 2; child-- > 0;) {
            if (node->children[child] != nullptr) pending.push_back(std::move(node->children[child]));
        }
    }
    return BuildSurfaces(planeFaces);
}

void MergeSurfaces(SurfaceList& surfaces) {
    for (CSplitSurface& surface : surfaces) {
        MergeList merged;
        while (!surface.faces.empty()) merged.Merge(surface.faces.pop_front());
        merged.Reverse();
        surface.faces = merged.Take();
    }
}

}  // namespace k2k
