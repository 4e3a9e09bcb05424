// Clips the faces of blocks against other blocks, and sorts what is left by plane.
#include "solid/csg.h"

#include <algorithm>

#include "driver/build_log.h"
#include "solid/block_index.h"
#include "solid/face_cutter.h"
#include "solid/merge_list.h"

namespace k2k {

namespace {

constexpr int32_t BlocksPerMark = 60;

// By plane number.
template <typename List>
List& ListOfPlane(std::vector<List>& lists, int32_t planenum) {
    const auto plane = static_cast<size_t>(planenum);
    if (plane >= lists.size()) lists.resize(plane + 1);
    return lists[plane];
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

// The faces that are left of all blocks, by plane number.
class PlaneFaces {
  public:
    // Takes the cutter's faces, and their reversed twins for a block that can be looked into.
    void Save(FaceCutter& cutter, bool mirror) {
        while (std::unique_ptr<CBlockFace> face = cutter.TakeFace()) {
            std::unique_ptr<CBlockFace> twin = mirror ? ReversedTwin(*face) : nullptr;
            MergeList& list = ListOfPlane(lists_, face->planenum);
            list.Merge(std::move(face));
            if (twin != nullptr) list.Merge(std::move(twin));
            // Taking merged faces out moves the others one by one to the head of a new list.
            list.Reverse();
        }
    }

    SurfaceList Finish(bool printOk) {
        if (printOk) BuildLog(" ok");
        std::vector<FaceList> planeFaces;
        planeFaces.reserve(lists_.size());
        for (MergeList& list : lists_) planeFaces.push_back(list.Take());
        return BuildSurfaces(planeFaces);
    }

  private:
    std::vector<MergeList> lists_;
};

bool IsMirrored(const CBlock& block) {
    return !IsSolidOrDetail(block.contents);
}

}  // namespace

SurfaceList CSGFaces(const CBlockSet& set, bool printOk) {
    StartProgress(set.count);
    FaceCutter cutter;
    PlaneFaces kept;
    BlockIndex index(set);
    const std::vector<const CBlock*>& blocks = index.blocks();
    for (int32_t i = 0; i < static_cast<int32_t>(blocks.size()); ++i) {
        const CBlock& block = *blocks[i];
        if (++ProgressDone % BlocksPerMark == 0) BuildLog(".");
        cutter.Start(block);
        for (const int32_t other : index.Meeting(block)) {
            if (!cutter.HasFaces()) break;
            if (other != i) cutter.ClipBy(*blocks[other], block, other > i);
        }
        kept.Save(cutter, IsMirrored(block));
    }
    return kept.Finish(printOk);
}

SurfaceList CopyBlockFaces(const CBlockSet& set, bool printOk) {
    StartProgress(set.count);
    FaceCutter cutter;
    PlaneFaces kept;
    for (const CBlock& block : set.blocks) {
        cutter.Start(block);
        kept.Save(cutter, IsMirrored(block));
    }
    return kept.Finish(printOk);
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
            FaceList& list = ListOfPlane(planeFaces, face->planenum);
            list.push_front(std::move(face));
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
