// -mergeacross: coplanar faces in different regions become one surface.
#include <algorithm>
#include <unordered_map>

#include "levelfile/geometry_data.h"
#include "surface/plane_merger.h"
#include "surface/surface_state.h"
#include "surface/tree_walk.h"

namespace k2k {

namespace {

template <typename Visit>
void ForEachListing(CBspNode& root, Visit visit) {
    ForEachNodeAndLeaf(root, [&](CBspNode& node) {
        if (node.contents != 0) ForEachMarkedFace(node, visit);
    });
}

// All listings of all leaves, plane by plane, in the order of the walk within each plane.
std::vector<CBlockFace*> ListingsByPlane(CBspNode& root) {
    std::vector<CBlockFace*> listings;
    ForEachListing(root, [&](CBlockFace& face) { listings.push_back(&face); });
    std::stable_sort(listings.begin(), listings.end(),
                     [](const CBlockFace* a, const CBlockFace* b) { return a->planenum < b->planenum; });
    return listings;
}

using MergedPool = std::unordered_map<const CBlockFace*, std::unique_ptr<CBlockFace>>;

MergedPool MergePlanes(const std::vector<CBlockFace*>& listings) {
    MergedPool pool;
    for (auto first = listings.begin(); first != listings.end();) {
        const int32_t planenum = (*first)->planenum;
        const auto end = std::find_if(first, listings.end(),
                                      [planenum](const CBlockFace* face) { return face->planenum != planenum; });
        PlaneMerger merger({first, end});
        Geometry().SurfaceFaceCount += merger.Run();
        for (std::unique_ptr<CBlockFace>& face : merger.TakeMergedFaces()) pool[face.get()] = std::move(face);
        first = end;
    }
    return pool;
}

}  // namespace

void MergeAcross(CBspNode& root) {
    auto& mergedFaces = State().MergedFaces;
    mergedFaces.clear();
    Geometry().SurfaceFaceCount = 0;
    MergedPool pool = MergePlanes(ListingsByPlane(root));
    // In the order in which the leaves come upon them, which is the order of their surface numbers.
    ForEachListing(root, [&](CBlockFace& face) {
        auto found = pool.find(face.surfaceOut);
        if (found == pool.end()) return;
        mergedFaces.push_back(std::move(found->second));
        pool.erase(found);
    });
}

void EmitMergedFaces() {
    for (const std::unique_ptr<CBlockFace>& face : State().MergedFaces) EmitSingleSurface(*face);
}

}  // namespace k2k
