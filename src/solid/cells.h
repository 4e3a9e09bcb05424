// Grid cells along one coordinate, for lookups within a tolerance.
#pragma once

#include <cmath>
#include <cstdint>

namespace k2k {

// Nearly always first equals last.
struct CellRange {
    int64_t first, last;
};

// The cells that hold some value within reach of the given one. Cells are offset so that round values lie inside them,
// not on their borders.
inline CellRange CellsAround(double value, double reach, double cellSize) {
    constexpr double Offset = 0.37;
    constexpr double Limit = 1e18;  // beyond it cells are no longer told apart; that costs time, not correctness
    const auto cellOf = [cellSize](double v) {
        const double cell = std::floor(v / cellSize + Offset);
        if (cell > Limit) return static_cast<int64_t>(Limit);
        return cell > -Limit ? static_cast<int64_t>(cell) : -static_cast<int64_t>(Limit);
    };
    return {cellOf(value - reach), cellOf(value + reach)};
}

}  // namespace k2k
