// The one shared plane table and its lookup.
//
// Which row a plane gets depends on the order of insertion: the first row within tolerance wins, and tolerance is not
// transitive. The lookup therefore gathers every row that could match from a grid over normals and distances, puts each
// through the exact test, and takes the lowest number.
#include <cmath>
#include <cstdint>

#include "driver/build_log.h"
#include "solid/cells.h"
#include "solid/plane.h"
#include "solid/vectors.h"

namespace k2k {

namespace {

constexpr double UnitLengthTolerance = 1e-5;
constexpr double MatchingNormalDot = 1 - 1e-5;
constexpr double MatchingDist = 0.01;

bool Matches(const CPlane& row, const CPlane& plane) {
    return AbsDifference(row.dist, plane.dist) < MatchingDist && Dot(row.normal, plane.normal) > MatchingNormalDot;
}

// The form in which planes stand in the table: the dominant component of the normal is positive.
CPlane NormalForm(CPlane plane) {
    for (float& component : plane.normal) {
        if (component != -1.0F) continue;
        component = 1.0F;
        plane.dist = -plane.dist;
    }
    plane.type = PlaneTypeFromNormal(plane.normal);
    if (plane.type < 3) return plane;
    if (plane.normal[plane.type - 3] < 0) {
        plane.normal = Negate(plane.normal);
        plane.dist = -plane.dist;
    }
    return plane;
}

// A plane without a distance would match no row, and grow the table at every search.
void RequirePlane(const CPlane& plane) {
    const double length = std::sqrt(LengthSquared(plane.normal));
    const bool isUnit = length >= 1 - UnitLengthTolerance && length <= 1 + UnitLengthTolerance;
    if (!isUnit || !std::isfinite(plane.dist)) FatalError(" \nE701");
}

class PlaneLookup {
  public:
    const std::vector<CPlane>& rows() const { return rows_; }

    int32_t FindOrAdd(const CPlane& plane) {
        const int32_t found = Find(plane);
        return found != None ? found : Add(plane);
    }

  private:
    static constexpr int32_t None = -1;
    // Unit normals (within 1e-5) with a matching dot product differ by less than sqrt(6e-5) on every axis.
    static constexpr double NormalReach = 0.008;
    static constexpr double NormalCell = 0.0625;
    static constexpr double DistReach = 0.0101;  // with room for rounding
    static constexpr double DistCell = 1.0;

    static uint64_t Hash(int64_t x, int64_t y, int64_t z, int64_t dist) {
        uint64_t hash = static_cast<uint64_t>(dist) * 0x9E3779B97F4A7C15U;
        hash ^=
            static_cast<uint64_t>(x + 64) | static_cast<uint64_t>(y + 64) << 8U | static_cast<uint64_t>(z + 64) << 16U;
        hash *= 0xD6E8FEB86659FD93U;
        return hash ^ hash >> 32U;
    }

    // Calls visit(slot) for every slot of heads_ in which a row that matches the plane can stand.
    template <typename Visit>
    void ForEachSlot(const CPlane& plane, double normalReach, double distReach, const Visit& visit) const {
        const CellRange x = CellsAround(plane.normal[0], normalReach, NormalCell);
        const CellRange y = CellsAround(plane.normal[1], normalReach, NormalCell);
        const CellRange z = CellsAround(plane.normal[2], normalReach, NormalCell);
        const CellRange d = CellsAround(plane.dist, distReach, DistCell);
        for (int64_t i = x.first; i <= x.last; ++i) {
            for (int64_t j = y.first; j <= y.last; ++j) {
                for (int64_t k = z.first; k <= z.last; ++k) {
                    for (int64_t l = d.first; l <= d.last; ++l) visit(Hash(i, j, k, l) & (heads_.size() - 1));
                }
            }
        }
    }

    int32_t Find(const CPlane& plane) const {
        if (rows_.empty()) return None;
        int32_t lowest = None;
        ForEachSlot(plane, NormalReach, DistReach, [&](size_t slot) {
            for (int32_t row = heads_[slot]; row != None; row = older_[row]) {
                if ((lowest == None || row < lowest) && Matches(rows_[row], plane)) lowest = row;
            }
        });
        return lowest;
    }

    int32_t Add(const CPlane& plane) {
        rows_.push_back(plane);
        older_.push_back(None);
        const auto row = static_cast<int32_t>(rows_.size() - 1);
        if (rows_.size() > heads_.size()) {
            Rehash();
        } else {
            Chain(row);
        }
        return row;
    }

    void Chain(int32_t row) {
        ForEachSlot(rows_[row], 0, 0, [&](size_t slot) {
            older_[row] = heads_[slot];
            heads_[slot] = row;
        });
    }

    void Rehash() {
        constexpr size_t FirstSlots = 1024;
        heads_.assign(heads_.empty() ? FirstSlots : heads_.size() * 4, None);
        for (size_t row = 0; row < rows_.size(); ++row) Chain(static_cast<int32_t>(row));
    }

    std::vector<CPlane> rows_;
    std::vector<int32_t> heads_;  // by hash slot (a power of two of them): the newest row, or None
    std::vector<int32_t> older_;  // by row: the next older row of the same slot, or None
};

PlaneLookup& Lookup() {
    static PlaneLookup lookup;
    return lookup;
}

}  // namespace

int32_t FindPlane(const CPlane& plane, int32_t& side) {
    RequirePlane(plane);
    const CPlane form = NormalForm(plane);
    side = Dot(form.normal, plane.normal) <= 0 ? 1 : 0;
    return Lookup().FindOrAdd(form);
}

const std::vector<CPlane>& PlaneTable() {
    return Lookup().rows();
}

void ResetPlaneTableForTest() {
    Lookup() = PlaneLookup();
}

}  // namespace k2k
