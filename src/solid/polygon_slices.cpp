// Cutting a polygon along a grid, for surfaces that the lighting covers in pieces.
#include <algorithm>
#include <cmath>
#include <limits>

#include "driver/build_log.h"
#include "solid/polygon.h"
#include "solid/vectors.h"

namespace k2k {

namespace {

constexpr double MaxCuts = 1 << 24;       // more pieces than any surface table holds
constexpr double LargestMultiple = 1e15;  // up to here multiples are exact, and counting them ends

struct CutRange {
    double first, last;  // whole multiples of the spacing, outside and inside ends included
};

CutRange MultiplesAcross(const CPolygon& polygon, const Vec3& direction, double spacing) {
    double low = std::numeric_limits<double>::max();
    double high = std::numeric_limits<double>::lowest();
    for (const Vec3d& point : polygon.points) {
        const double along = Dot(point, direction);
        low = std::min(low, along);
        high = std::max(high, along);
    }
    return {std::floor(low / spacing), std::ceil(high / spacing)};
}

// Appends the slices of the polygon between the whole multiples of spacing along the (unit) direction.
void CutAcross(const PolygonRef& polygon, const Vec3& direction, double spacing, std::vector<PolygonRef>& slices) {
    const CutRange range = MultiplesAcross(*polygon, direction, spacing);
    if (range.last - range.first > MaxCuts || std::fabs(range.first) > LargestMultiple) {
        FatalError("E017: Map size - too many surfaces");
    }
    PolygonRef rest = polygon;
    for (double multiple = range.first + 1; multiple < range.last && rest != nullptr; ++multiple) {
        const CPlane line{direction, static_cast<float>(multiple * spacing)};
        PolygonPieces pieces = SplitPolygon(rest, line, 0.0);
        if (pieces.back != nullptr) slices.push_back(std::move(pieces.back));
        rest = std::move(pieces.front);
    }
    if (rest != nullptr) slices.push_back(std::move(rest));
}

struct GridAxis {
    Vec3 direction;
    double spacing;

    GridAxis(const Vec3& axis, double texels) : direction(axis), spacing(texels / Normalize(direction)) {}
};

}  // namespace

std::vector<PolygonRef> PolygonSlices(const PolygonRef& polygon, const Vec3& u, const Vec3& v, double spacing) {
    std::vector<PolygonRef> pieces;
    if (polygon == nullptr || polygon->points.size() < 3) return pieces;
    const GridAxis across(u, spacing);
    const GridAxis along(v, spacing);
    std::vector<PolygonRef> slices;
    CutAcross(polygon, across.direction, across.spacing, slices);
    std::vector<PolygonRef> cells;
    for (const PolygonRef& slice : slices) {
        if (slice->points.size() >= 3) CutAcross(slice, along.direction, along.spacing, cells);
    }
    for (const PolygonRef& cell : cells) {
        std::vector<Vec3d> corners = PolygonRemoveColinear(cell->points);
        if (corners.size() >= 3) pieces.push_back(MakePolygon(std::move(corners)));
    }
    return pieces;
}

}  // namespace k2k
