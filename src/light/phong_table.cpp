#include "light/phong_table.h"

#include <algorithm>
#include <cmath>

#include "levelfile/geometry_data.h"
#include "light/near_equal.h"
#include "light/surface_geometry.h"

namespace k2k {
namespace {

// Cells are one unit wide, so that a point's surroundings seldom reach into a second one.
int64_t CellNumber(double coordinate) {
    constexpr double farAway = 1e15;
    return static_cast<int64_t>(std::floor(std::clamp(coordinate, -farAway, farAway)));
}

bool IsNumber(const Vec3& point) {
    return !std::isnan(point[0]) && !std::isnan(point[1]) && !std::isnan(point[2]);
}

}  // namespace

bool SharesPoint(const std::vector<Vec3>& outline, const Vec3& point) {
    return std::any_of(outline.begin(), outline.end(),
                       [&](const Vec3& other) { return NearlyEqual(other, point, SharedPointSize); });
}

size_t CPhongTable::CellHash::operator()(const Cell& cell) const {
    uint64_t hash = 0;
    for (const int64_t part : cell) hash = (hash ^ static_cast<uint64_t>(part)) * 0x9E3779B97F4A7C15ULL;
    return static_cast<size_t>(hash ^ hash >> 32);
}

CPhongTable::CPhongTable() {
    const auto& surfaces = Geometry().surfaces;
    for (uint32_t i = 0; i < surfaces.size(); i++) {
        if ((SurfaceFlags(surfaces[i]) & TexturePhong) == 0) continue;
        const auto row = static_cast<uint32_t>(phongSurfaces_.size());
        phongSurfaces_.push_back(i);
        outlines_.push_back(ConvexOutline(SurfaceEdgeEnds(surfaces[i]), SurfaceNormal(surfaces[i])));
        for (const Vec3& point : outlines_.back()) {
            if (!IsNumber(point)) continue;
            auto& cell = cells_[{CellNumber(point[0]), CellNumber(point[1]), CellNumber(point[2])}];
            if (cell.empty() || cell.back() != row) cell.push_back(row);
        }
    }
}

std::vector<uint32_t> CPhongTable::RowsSharingPoints(const std::vector<Vec3>& outline) const {
    constexpr double reach = 2 * SharedPointSize;  // wider than the test, against rounding
    std::vector<uint32_t> rows;
    for (const Vec3& point : outline) {
        if (!IsNumber(point)) continue;
        Cell low, high;
        for (size_t axis = 0; axis < 3; axis++) {
            low[axis] = CellNumber(point[axis] - reach);
            high[axis] = CellNumber(point[axis] + reach);
        }
        for (int64_t x = low[0]; x <= high[0]; x++) {
            for (int64_t y = low[1]; y <= high[1]; y++) {
                for (int64_t z = low[2]; z <= high[2]; z++) {
                    const auto found = cells_.find({x, y, z});
                    if (found != cells_.end()) rows.insert(rows.end(), found->second.begin(), found->second.end());
                }
            }
        }
    }
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    return rows;
}

}  // namespace k2k
