#include "surface/weld_table.h"

#include <algorithm>
#include <cmath>

#include "solid/vectors.h"
#include "surface/table_limits.h"

namespace k2k {

namespace {

constexpr double SnapDistance = 0.001;
// Wider than the snap on purpose: whatever else they are, points this near on every axis become one vertex.
constexpr double WeldDistance = 0.1;
constexpr double SearchMargin = 0.11;
constexpr int32_t CornerPlanes = 3;

Vec3 SnapToWhole(Vec3 point) {
    for (float& v : point) {
        const double whole = Nearest(v);
        if (std::fabs(v - whole) < SnapDistance) v = static_cast<float>(whole);
    }
    return point;
}

bool IsNear(const Vec3& a, const Vec3& b) {
    const Vec3d difference = Sub(Widen(a), Widen(b));
    return std::all_of(difference.begin(), difference.end(), [](double d) { return std::fabs(d) < WeldDistance; });
}

}  // namespace

void WeldTable::InitWeldHash(float bound) {
    hash_ = GridHash({-bound, -bound, -bound}, {bound, bound, bound}, WeldHashCells);
    entries_.clear();
    index_.Clear();
    cornerCount_ = 0;
}

int32_t WeldTable::FindLatest(uint32_t chain, const Vec3& point) const {
    int32_t latest = -1;
    index_.ForEachNear(chain, Widen(point), SearchMargin, [&](int32_t number) {
        const WeldEntry& entry = entries_[static_cast<size_t>(number)];
        if (number > latest && entry.chain == chain && IsNear(entry.point, point)) latest = number;
    });
    return latest;
}

void WeldTable::NoteUse(WeldEntry& entry, int32_t planenum) {
    ++entry.useCount;
    if (entry.planeCount == CornerPlanes) return;
    const auto known = entry.planes.begin() + entry.planeCount;
    if (std::find(entry.planes.begin(), known, planenum) != known) return;
    if (entry.planeCount == CornerPlanes - 1) {
        ++cornerCount_;
    } else {
        *known = planenum;
    }
    ++entry.planeCount;
}

int32_t WeldTable::WeldVertex(const Vec3& point, int32_t planenum, std::vector<Vec3>& vertices) {
    const Vec3 snapped = SnapToWhole(point);
    const uint32_t chain = hash_(snapped) % WeldHashCells;
    if (const int32_t found = FindLatest(chain, snapped); found >= 0) {
        WeldEntry& entry = entries_[static_cast<size_t>(found)];
        NoteUse(entry, planenum);
        return entry.vertexNumber;
    }

    RequireRoom(entries_.size(), WeldLimit);
    RequireRoom(vertices.size(), VertexLimit);
    const auto vertexNumber = static_cast<int32_t>(vertices.size());
    index_.Add(chain, Widen(snapped), static_cast<int32_t>(entries_.size()));
    entries_.push_back({snapped, chain, vertexNumber, 1, {planenum, 0}, 1});
    vertices.push_back(snapped);
    return vertexNumber;
}

}  // namespace k2k
