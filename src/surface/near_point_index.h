// Finds numbered points that lie near a place, for tables that promise "the latest of a hash chain that matches".
#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

#include "levelfile/level_records.h"

namespace k2k {

// A level spans few cells of the coarse grids that decide which points may meet, so their chains grow long. This index
// divides each chain by cells of one unit. It offers more points than match, never fewer: the caller does the test.
class NearPointIndex {
  public:
    void Clear();
    void Add(uint32_t chain, const Vec3d& point, int32_t number);

    // Visits the numbers of all points of the chain that differ by no more than the margin (below half a unit) on any
    // axis, among others, in no particular order.
    template <typename Visit>
    void ForEachNear(uint32_t chain, const Vec3d& point, double margin, Visit visit) const {
        if (entries_.empty()) return;
        const Vec3d low = CellOf({point[0] - margin, point[1] - margin, point[2] - margin});
        const Vec3d high = CellOf({point[0] + margin, point[1] + margin, point[2] + margin});
        for (unsigned corner = 0; corner < 8; ++corner) {
            Vec3d cell = low;
            bool isNewCell = true;
            for (unsigned axis = 0; axis < 3; ++axis) {
                if ((corner >> axis & 1U) == 0) continue;
                isNewCell = isNewCell && high[axis] != low[axis];
                cell[axis] = high[axis];
            }
            if (isNewCell) VisitCell(KeyOf(chain, cell), visit);
        }
    }

  private:
    struct Entry {
        uint64_t key;
        int32_t next;
        int32_t number;
    };

    // Borders stand off the whole numbers and halves where most points of a level are.
    static constexpr double BorderShift = 0.37;

    static Vec3d CellOf(const Vec3d& point) {
        return {std::floor(point[0] + BorderShift), std::floor(point[1] + BorderShift),
                std::floor(point[2] + BorderShift)};
    }
    static uint64_t KeyOf(uint32_t chain, const Vec3d& cell);

    template <typename Visit>
    void VisitCell(uint64_t key, Visit& visit) const {
        for (int32_t at = heads_[key & (heads_.size() - 1)]; at >= 0; at = entries_[static_cast<size_t>(at)].next) {
            const Entry& entry = entries_[static_cast<size_t>(at)];
            if (entry.key == key) visit(entry.number);
        }
    }
    void Link(size_t position);
    void GrowHeads();

    std::vector<int32_t> heads_;  // a power of two of them
    std::vector<Entry> entries_;
};

}  // namespace k2k
