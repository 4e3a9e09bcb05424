// Cutting a polygon along a grid, for surfaces that the lighting covers in pieces.
#include <algorithm>
#include <cmath>
#include <limits>
#include <span>

#include "driver/build_log.h"
#include "solid/polygon.h"
#include "solid/vectors.h"

namespace k2k {

namespace {

constexpr double MaxPieces = 1 << 22;     // the vertices of a model end long before
constexpr double LargestMultiple = 1e15;  // up to here multiples are exact, and counting them ends

struct GridAxis {
    Vec3 direction;
    double spacing;

    GridAxis(const Vec3& axis, double texels) : direction(axis), spacing(texels / Normalize(direction)) {}
};

struct CutRange {
    double first, last;  // whole multiples of the spacing, outside and inside ends included
};

CutRange MultiplesAcross(const CPolygon& polygon, const GridAxis& axis) {
    double low = std::numeric_limits<double>::max();
    double high = std::numeric_limits<double>::lowest();
    for (const Vec3d& point : polygon.points) {
        const double along = Dot(point, axis.direction);
        low = std::min(low, along);
        high = std::max(high, along);
    }
    return {std::floor(low / axis.spacing), std::ceil(high / axis.spacing)};
}

// Fatal before any memory is taken for a grid that is far too fine.
void RequireFewPieces(std::span<const PolygonRef> polygons, const GridAxis& axis) {
    double pieces = 0;
    for (const PolygonRef& polygon : polygons) {
        const CutRange range = MultiplesAcross(*polygon, axis);
        pieces += range.last - range.first;
        if (pieces > MaxPieces || std::fabs(range.first) > LargestMultiple) {
            FatalError("E017: Map size - too many surfaces");
        }
    }
}

// Appends the slices of the polygon between the whole multiples of the axis' spacing.
void CutAcross(const PolygonRef& polygon, const GridAxis& axis, std::vector<PolygonRef>& slices) {
    const CutRange range = MultiplesAcross(*polygon, axis);
    PolygonRef rest = polygon;
    for (double multiple = range.first + 1; multiple < range.last && rest != nullptr; ++multiple) {
        const CPlane line{axis.direction, static_cast<float>(multiple * axis.spacing)};
        PolygonPieces pieces = SplitPolygon(rest, line, 0.0);
        if (pieces.back != nullptr) slices.push_back(std::move(pieces.back));
        rest = std::move(pieces.front);
    }
    if (rest != nullptr) slices.push_back(std::move(rest));
}

}  // namespace

std::vector<PolygonRef> PolygonSlices(const PolygonRef& polygon, const Vec3& u, const Vec3& v, double spacing) {
    std::vector<PolygonRef> pieces;
    if (polygon == nullptr || polygon->points.size() < 3) return pieces;
    const GridAxis across(u, spacing);
    const GridAxis along(v, spacing);
    std::vector<PolygonRef> slices;
    RequireFewPieces({&polygon, 1}, across);
    CutAcross(polygon, across, slices);
    std::erase_if(slices, [](const PolygonRef& slice) { return slice->points.size() < 3; });
    RequireFewPieces(slices, along);
    std::vector<PolygonRef> cells;
    for (const PolygonRef& slice : slices) CutAcross(slice, along, cells);
    for (const PolygonRef& cell : cells) {
        std::vector<Vec3d> corners = PolygonRemoveColinear(cell->points);
        if (corners.size() >= 3) pieces.push_back(MakePolygon(std::move(corners)));
    }
    return pieces;
}

}  // namespace k2k
