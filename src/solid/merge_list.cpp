#include "solid/merge_list.h"

#include <algorithm>

#include "solid/cells.h"
#include "solid/csg.h"

namespace k2k {

namespace {

constexpr int32_t None = -1;
constexpr double PointReach = 0.0011;  // points of a shared edge differ by up to 0.001 an axis; with room for rounding
constexpr double PointCell = 1.0;
constexpr size_t FirstBuckets = 16;

uint64_t HashCell(int64_t x, int64_t y, int64_t z) {
    uint64_t hash = static_cast<uint64_t>(x) * 0x9E3779B97F4A7C15U;
    hash = (hash ^ hash >> 29U) + static_cast<uint64_t>(y);
    hash *= 0xBF58476D1CE4E5B9U;
    hash = (hash ^ hash >> 32U) + static_cast<uint64_t>(z);
    hash *= 0x94D049BB133111EBU;
    return hash ^ hash >> 31U;
}

// Calls visit(hash) for every cell within reach of the point.
template <typename Visit>
void ForEachCell(const Vec3& point, double reach, const Visit& visit) {
    const CellRange x = CellsAround(point[0], reach, PointCell);
    const CellRange y = CellsAround(point[1], reach, PointCell);
    const CellRange z = CellsAround(point[2], reach, PointCell);
    for (int64_t i = x.first; i <= x.last; ++i) {
        for (int64_t j = y.first; j <= y.last; ++j) {
            for (int64_t k = z.first; k <= z.last; ++k) visit(HashCell(i, j, k));
        }
    }
}

}  // namespace

void MergeList::Merge(std::unique_ptr<CBlockFace> face) {
    while (std::unique_ptr<CBlockFace> merged = MergeWithFirstPartner(*face)) face = std::move(merged);
    PushHead(std::move(face));
}

FaceList MergeList::Take() {
    std::erase_if(slots_, [](const Slot& slot) { return slot.face == nullptr; });
    std::sort(slots_.begin(), slots_.end(), [](const Slot& a, const Slot& b) { return a.position < b.position; });
    if (!isReversed_) std::reverse(slots_.begin(), slots_.end());
    FaceList faces;
    for (Slot& slot : slots_) faces.push_front(std::move(slot.face));
    *this = MergeList();
    return faces;
}

bool MergeList::IsBefore(int32_t slot, int32_t other) const {
    const bool isLower = slots_[slot].position < slots_[other].position;
    return slot != other && isLower != isReversed_;
}

// Fills partners_ with the faces that share an edge with this one, in list order.
void MergeList::FindPartners(const CBlockFace& face) {
    partners_.clear();
    if (buckets_.empty()) return;
    const size_t count = face.points.size();
    for (size_t i = 0; i < count; ++i) {
        ForEachCell(face.points[(i + 1) % count], PointReach, [&](uint64_t hash) {
            for (int32_t e = buckets_[hash & (buckets_.size() - 1)]; e != None; e = edges_[e].older) {
                const Edge& edge = edges_[e];
                const CBlockFace* other = slots_[edge.slot].face.get();
                if (other == nullptr || !MayMerge(face, *other)) continue;
                if (IsOppositeEdge(face, i, *other, static_cast<size_t>(edge.point))) partners_.push_back(edge.slot);
            }
        });
    }
    std::sort(partners_.begin(), partners_.end(), [this](int32_t a, int32_t b) { return IsBefore(a, b); });
}

std::unique_ptr<CBlockFace> MergeList::MergeWithFirstPartner(const CBlockFace& face) {
    FindPartners(face);
    for (const int32_t partner : partners_) {
        std::unique_ptr<CBlockFace> merged = TryMerge(face, *slots_[partner].face);
        if (merged == nullptr) continue;
        slots_[partner].face.reset();
        return merged;
    }
    return nullptr;
}

void MergeList::PushHead(std::unique_ptr<CBlockFace> face) {
    slots_.push_back({std::move(face), isReversed_ ? ++highest_ : --lowest_});
    const auto slot = static_cast<int32_t>(slots_.size() - 1);
    if (edges_.size() + slots_[slot].face->points.size() > buckets_.size()) {
        Reindex();
    } else {
        AddEdges(slot);
    }
}

void MergeList::AddEdges(int32_t slot) {
    const std::vector<Vec3>& points = slots_[slot].face->points;
    for (size_t i = 0; i < points.size(); ++i) {
        ForEachCell(points[i], 0, [&](uint64_t hash) {
            int32_t& newest = buckets_[hash & (buckets_.size() - 1)];
            edges_.push_back({slot, static_cast<int32_t>(i), newest});
            newest = static_cast<int32_t>(edges_.size() - 1);
        });
    }
}

// Forgets faces that are merged away, and makes room for as many edges again as are in use.
void MergeList::Reindex() {
    std::erase_if(slots_, [](const Slot& slot) { return slot.face == nullptr; });
    size_t edgeCount = 0;
    for (const Slot& slot : slots_) edgeCount += slot.face->points.size();
    size_t bucketCount = FirstBuckets;
    while (bucketCount < edgeCount * 2) bucketCount *= 2;
    edges_.clear();
    buckets_.assign(bucketCount, None);
    for (size_t slot = 0; slot < slots_.size(); ++slot) AddEdges(static_cast<int32_t>(slot));
}

}  // namespace k2k
