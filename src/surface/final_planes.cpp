#include "surface/final_planes.h"

#include <bit>

#include "surface/surface_state.h"
#include "surface/table_limits.h"
#include "surface/tree_walk.h"

namespace k2k {

namespace {

constexpr uint32_t NotMapped = 0xFFFFFFFFU;

}  // namespace

void PlaneMap::Clear(size_t expectedPlanes) {
    finalNumbers_.clear();
    finalNumbers_.reserve(expectedPlanes);
}

uint32_t PlaneMap::FinalPlane(int32_t planenum, std::vector<FinalPlaneRecord>& planes) {
    const auto row = static_cast<size_t>(planenum);
    RequireRoom(row, {PlaneTable().size(), MappedPlaneLimit.message});  // a face without a plane has number -1
    if (row >= finalNumbers_.size()) finalNumbers_.resize(row + 1, NotMapped);
    uint32_t& number = finalNumbers_[row];
    if (number == NotMapped) {
        RequireRoom(planes.size(), MappedPlaneLimit);
        number = static_cast<uint32_t>(planes.size());
        const CPlane& plane = TablePlane(planenum);
        planes.push_back({plane.normal, plane.dist, plane.type});
    }
    return number;
}

size_t FinalPlaneIndex::ValueHash::operator()(const FinalPlaneRecord& plane) const {
    uint64_t hash = static_cast<uint32_t>(plane.type);
    for (const float v : {plane.dist, plane.normal[0], plane.normal[1], plane.normal[2]}) {
        hash = (hash ^ std::bit_cast<uint32_t>(v + 0.0F)) * 0x9E3779B97F4A7C15U;  // -0 equals +0
        hash ^= hash >> 32U;
    }
    return static_cast<size_t>(hash);
}

bool FinalPlaneIndex::ValueEqual::operator()(const FinalPlaneRecord& a, const FinalPlaneRecord& b) const {
    return a.type == b.type && a.dist == b.dist && a.normal == b.normal;
}

void FinalPlaneIndex::Clear() {
    firstRows_.clear();
    rowsSeen_ = 0;
}

// Takes in the rows that were appended since the last call; an entry is never replaced, so the first row wins.
void FinalPlaneIndex::CatchUp(const std::vector<FinalPlaneRecord>& planes) {
    if (planes.size() < rowsSeen_) Clear();
    for (; rowsSeen_ < planes.size(); ++rowsSeen_) {
        firstRows_.try_emplace(planes[rowsSeen_], static_cast<uint32_t>(rowsSeen_));
    }
}

uint32_t FinalPlaneIndex::FindOrAdd(const FinalPlaneRecord& plane, std::vector<FinalPlaneRecord>& planes) {
    CatchUp(planes);
    const auto found = firstRows_.find(plane);
    if (found != firstRows_.end()) return found->second;
    RequireRoom(planes.size(), JoinedPlaneLimit);
    planes.push_back(plane);
    return static_cast<uint32_t>(planes.size() - 1);
}

uint32_t FinalPlane(int32_t planenum) {
    return State().planeMap.FinalPlane(planenum, Geometry().planes);
}

uint32_t FindOrAddFinalPlane(const FinalPlaneRecord& plane) {
    return State().finalPlaneIndex.FindOrAdd(plane, Geometry().planes);
}

void MapPlanes(CBspNode& root) {
    SurfaceState& state = State();
    state.planeMap.Clear(PlaneTable().size());
    state.nodeCount = 0;
    ForEachNodeAndLeaf(root, [&](CBspNode& node) {
        ++state.nodeCount;
        if (IsInnerNode(node)) node.outputPlane = static_cast<int32_t>(FinalPlane(node.planenum));
    });
}

}  // namespace k2k
