// The smooth-shaded surfaces of the level: their outlines, and which of them meet at a point.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "levelfile/level_records.h"

namespace k2k {

// Outline points this close are one point of the level.
constexpr double SharedPointSize = 0.0001;

bool SharesPoint(const std::vector<Vec3>& outline, const Vec3& point);

// Made once a lighting step; read by all workers.
class CPhongTable {
  public:
    // From the surfaces of the level in work.
    CPhongTable();

    // All surfaces whose texture has the phong flag, in rising order.
    const std::vector<uint32_t>& PhongSurfaces() const { return phongSurfaces_; }
    // Of a row of PhongSurfaces.
    const std::vector<Vec3>& Outline(uint32_t row) const { return outlines_[row]; }
    // The rows whose outlines share a point with this one, in rising order; rows that share none can be among them.
    std::vector<uint32_t> RowsSharingPoints(const std::vector<Vec3>& outline) const;

  private:
    using Cell = std::array<int64_t, 3>;
    struct CellHash {
        size_t operator()(const Cell& cell) const;
    };

    std::vector<uint32_t> phongSurfaces_;
    std::vector<std::vector<Vec3>> outlines_;
    std::unordered_map<Cell, std::vector<uint32_t>, CellHash> cells_;  // rows by the cells of their points
};

}  // namespace k2k
