// The approximate convex hull of Bentley, Faust and Preparata ("Approximation algorithms for convex hulls", 1982).
#include <algorithm>
#include <cmath>
#include <limits>

#include "solid/block.h"

namespace k2k {

namespace {

constexpr int32_t None = -1;
constexpr double StraightArea = 0.01;  // twice the area of a corner that counts as none

using Points = std::vector<Point2D>;

// Above 0 when c lies to the left of the line from a to b.
double IsLeft(const Point2D& a, const Point2D& b, const Point2D& c) {
    const double x = a.x;
    const double y = a.y;
    return (b.x - x) * (c.y - y) - (c.x - x) * (b.y - y);
}

// Indices of the lowest and highest point at one end in x.
struct EndPoints {
    int32_t low = 0, high = 0;
};

void TakeIntoEnd(const Points& points, int32_t i, bool isFurther, EndPoints& end) {
    if (isFurther) {
        end = {i, i};
    } else if (points[i].y < points[end.low].y) {
        end.low = i;
    } else if (points[i].y > points[end.high].y) {
        end.high = i;
    }
}

struct Extremes {
    EndPoints left, right;
    float lowest, highest;  // x

    explicit Extremes(const Points& points) : lowest(points[0].x), highest(points[0].x) {
        for (int32_t i = 1; i < static_cast<int32_t>(points.size()); ++i) {
            const float x = points[i].x;
            if (x <= lowest) TakeIntoEnd(points, i, x < lowest, left);
            if (x >= highest) TakeIntoEnd(points, i, x > highest, right);
            lowest = std::min(lowest, x);
            highest = std::max(highest, x);
        }
    }
};

// Candidates for the lower and the upper chain in one vertical strip.
struct Bin {
    int32_t low = None, high = None;
};

// An occupied slot gives way to a point whose x is below the number of the point in the low slot. That compares a
// coordinate with an index, for both slots; the format's hulls depend on it.
void TakeIntoSlot(const Points& points, int32_t i, const Bin& bin, int32_t& slot) {
    if (slot == None || points[i].x < static_cast<double>(bin.low)) slot = i;
}

std::vector<Bin> FillBins(const Points& points, const Extremes& ends, int32_t bins) {
    const double lowest = ends.lowest;
    const double width = ends.highest - lowest;
    std::vector<Bin> filled(static_cast<size_t>(bins) + 2);
    filled.front() = {ends.left.low, ends.left.high};
    filled.back() = {ends.right.low, ends.right.high};
    for (int32_t i = 0; i < static_cast<int32_t>(points.size()); ++i) {
        const Point2D& point = points[i];
        if (point.x == ends.lowest || point.x == ends.highest) continue;
        const double strip = bins * (point.x - lowest) / width;
        const bool isInRange = strip >= 0 && strip < bins + 1.0;  // false for coordinates that are no numbers
        Bin& bin = filled[isInRange ? static_cast<size_t>(strip) + 1 : 0];
        if (IsLeft(points[ends.left.low], points[ends.right.low], point) < 0) {
            TakeIntoSlot(points, i, bin, bin.low);
        } else if (IsLeft(points[ends.left.high], points[ends.right.high], point) > 0) {
            TakeIntoSlot(points, i, bin, bin.high);
        }
    }
    return filled;
}

// Pushes a point, after dropping those that it puts inside the hull; the first `fixed` points stay.
void PushHull(Points& hull, const Point2D& point, size_t fixed) {
    while (hull.size() > fixed && !(IsLeft(hull[hull.size() - 2], hull.back(), point) > 0)) hull.pop_back();
    hull.push_back(point);
}

Points ChainHull(const Points& points, const Extremes& ends, const std::vector<Bin>& bins) {
    Points hull;
    for (const Bin& bin : bins) {
        if (bin.low != None) PushHull(hull, points[bin.low], 1);
    }
    if (ends.right.high != ends.right.low) hull.push_back(points[ends.right.high]);
    const size_t lowerChain = hull.size();
    for (size_t i = bins.size() - 1; i-- > 0;) {
        if (bins[i].high != None) PushHull(hull, points[bins[i].high], lowerChain);
    }
    if (ends.left.high != ends.left.low) hull.push_back(points[ends.left.low]);
    return hull;
}

bool IsStraight(const Point2D& a, const Point2D& b, const Point2D& c) {
    return std::fabs(IsLeft(a, b, c)) < StraightArea;
}

// Without the corners on straight runs; of a run, every second corner goes.
Points Cleaned(const Points& hull) {
    const size_t count = hull.size();
    std::vector<bool> isMarked(count, false);
    for (size_t i = 0; i < count; ++i) {
        if (isMarked[i]) continue;
        const size_t next = (i + 1) % count;
        if (IsStraight(hull[i], hull[next], hull[(i + 2) % count])) isMarked[next] = true;
    }
    Points cleaned;
    for (size_t i = 0; i < count; ++i) {
        if (!isMarked[i]) cleaned.push_back(hull[i]);
    }
    return cleaned;
}

}  // namespace

std::vector<Point2D> NearHull2D(const std::vector<Point2D>& points, int32_t bins) {
    if (points.empty() || bins < 0) return {};
    const Extremes ends(points);
    if (ends.lowest == ends.highest) {
        Points line{points[ends.left.low]};
        if (ends.left.high != ends.left.low) line.push_back(points[ends.left.high]);
        return line;
    }
    return Cleaned(ChainHull(points, ends, FillBins(points, ends, bins)));
}

}  // namespace k2k
