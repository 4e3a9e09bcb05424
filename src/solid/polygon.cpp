// Making and measuring polygons.
#include "solid/polygon.h"

#include <algorithm>
#include <limits>

#include "driver/build_log.h"
#include "driver/build_options.h"
#include "solid/vectors.h"

namespace k2k {

namespace {

int DominantAxis(const Vec3& normal) {
    int axis = -1;
    double largest = -999999;
    for (int i = 0; i < 3; ++i) {
        const double size = std::fabs(static_cast<double>(normal[i]));
        if (size <= largest || std::isnan(size)) continue;
        largest = size;
        axis = i;
    }
    if (axis < 0) FatalError("E051");
    return axis;
}

// A unit vector in the plane, close to an axis.
Vec3d UpInPlane(const Vec3& normal) {
    Vec3d up = DominantAxis(normal) == 2 ? Vec3d{1, 0, 0} : Vec3d{0, 0, 1};
    const auto overlap = static_cast<float>(-Dot(up, normal));
    for (size_t i = 0; i < 3; ++i) up[i] += static_cast<double>(normal[i]) * overlap;
    NormalizeD(up);
    return up;
}

Vec3d Scaled(const Vec3d& v, double factor) {
    return {v[0] * factor, v[1] * factor, v[2] * factor};
}

Vec3d Sum(const Vec3d& a, const Vec3d& b) {
    return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}

void RequireTriangle(const CPolygon& polygon) {
    if (polygon.points.size() < 3) FatalError("\nInvalid extent!");
}

}  // namespace

PolygonRef MakePolygon(std::vector<Vec3d> points) {
    if (points.size() > MaxPolygonPoints) FatalError("Too many intersection points requested !");
    auto polygon = std::make_shared<CPolygon>();
    polygon->points = std::move(points);
    return polygon;
}

void CheckPolygon(const PolygonRef& polygon) {
    if (polygon == nullptr || polygon->points.empty() || polygon->points.size() > MaxPolygonPoints) {
        FatalError("\nInvalid extent!");
    }
}

PolygonRef BasePolygonForPlane(const Vec3& normal, float dist) {
    const double bound = Options().bound;
    const Vec3d upUnit = UpInPlane(normal);
    const Vec3d org = Scaled(Widen(normal), dist);
    const Vec3d right = Scaled(Cross(upUnit, Widen(normal)), bound);
    const Vec3d up = Scaled(upUnit, bound);
    return MakePolygon(
        {Sum(Sub(org, right), up), Sum(Sum(org, right), up), Sub(Sum(org, right), up), Sub(Sub(org, right), up)});
}

CPlane PolygonPlane(const CPolygon& polygon) {
    RequireTriangle(polygon);
    const std::vector<Vec3d>& p = polygon.points;
    CPlane plane;
    plane.normal = Narrow(Cross(Sub(p[2], p[0]), Sub(p[1], p[0])));
    Normalize(plane.normal);
    plane.dist = static_cast<float>(Dot(plane.normal, p[0]));
    SetPlaneType(plane);
    return plane;
}

float PolygonArea(const CPolygon& polygon) {
    const std::vector<Vec3d>& p = polygon.points;
    double area = 0;
    for (size_t i = 2; i < p.size(); ++i) {
        const Vec3d parallelogram = Cross(Sub(p[i - 1], p[0]), Sub(p[i], p[0]));
        area += 0.5 * std::sqrt(Dot(parallelogram, parallelogram));
    }
    return static_cast<float>(area);
}

Vec3 PolygonCenter(const CPolygon& polygon) {
    Vec3d sum{};
    for (const Vec3d& point : polygon.points) sum = Sum(sum, point);
    const auto count = static_cast<double>(polygon.points.size());
    return Narrow({sum[0] / count, sum[1] / count, sum[2] / count});
}

void PolygonBounds(const CPolygon& polygon, Vec3d& mins, Vec3d& maxs) {
    mins.fill(std::numeric_limits<double>::max());
    maxs.fill(std::numeric_limits<double>::lowest());
    for (const Vec3d& point : polygon.points) {
        for (size_t axis = 0; axis < 3; ++axis) {
            mins[axis] = std::min(mins[axis], point[axis]);
            maxs[axis] = std::max(maxs[axis], point[axis]);
        }
    }
}

std::vector<Vec3d> PolygonRemoveColinear(const std::vector<Vec3d>& points) {
    constexpr double StraightDot = 0.999;  // cosine between two edges that count as one line
    std::vector<Vec3d> corners;
    corners.reserve(points.size());
    const size_t count = points.size();
    for (size_t i = 0; i < count; ++i) {
        Vec3d toNext = Sub(points[(i + 1) % count], points[i]);
        Vec3d fromPrevious = Sub(points[i], points[(i + count - 1) % count]);
        NormalizeD(toNext);
        NormalizeD(fromPrevious);
        if (Dot(toNext, fromPrevious) < StraightDot) corners.push_back(points[i]);
    }
    return corners;
}

bool PolygonContainsPoint(const CPolygon& polygon, const Vec3d& point) {
    const std::vector<Vec3d>& p = polygon.points;
    const size_t count = p.size();
    if (count == 0) return false;
    const auto edgeNormal = [&](size_t i) {
        Vec3d normal = Cross(Sub(p[(i + 1) % count], p[i]), Sub(point, p[i]));
        NormalizeD(normal);
        return normal;
    };
    const Vec3d reference = edgeNormal(0);
    for (size_t i = 1; i < count; ++i) {
        if (Dot(edgeNormal(i), reference) < 0) return false;
    }
    return true;
}

}  // namespace k2k
