// Vertices of one model, shared where points (nearly) meet.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "levelfile/geometry_data.h"
#include "surface/grid_hash.h"
#include "surface/near_point_index.h"

namespace k2k {

constexpr uint32_t WeldHashCells = 8192;

struct WeldEntry {
    Vec3 point{};  // as stored
    uint32_t chain = 0;
    int32_t vertexNumber = 0;
    int32_t planeCount = 0;  // distinct planes seen, stops counting at 3
    std::array<int32_t, 2> planes{};
    int32_t useCount = 0;
};

// Points meet only when they hash to the same cell: two that lie on both sides of a cell border stay apart. Of several
// that are near enough, the one entered last is taken.
class WeldTable {
  public:
    // An empty table; the hash area reaches to bound on both sides of the origin.
    void InitWeldHash(float bound);

    // The row of the point in the level's vertex table, which grows when no vertex is near.
    int32_t WeldVertex(const Vec3& point, int32_t planenum, std::vector<Vec3>& vertices);

    // Of a point as given: decides the chains of edges.
    uint32_t HashOf(const Vec3& point) const { return hash_(point); }
    const std::vector<WeldEntry>& entries() const { return entries_; }
    // Vertices where at least three planes meet.
    int32_t cornerCount() const { return cornerCount_; }

  private:
    int32_t FindLatest(uint32_t chain, const Vec3& point) const;
    void NoteUse(WeldEntry& entry, int32_t planenum);

    GridHash hash_;
    std::vector<WeldEntry> entries_;
    NearPointIndex index_;
    int32_t cornerCount_ = 0;
};

}  // namespace k2k
