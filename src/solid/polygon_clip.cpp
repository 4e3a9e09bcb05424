// Clipping and splitting of polygons by planes.
#include "solid/polygon_clip.h"

#include "driver/build_log.h"
#include "driver/build_options.h"

namespace k2k {

namespace {

// A convex polygon grows by one point when it is cut; the rest is room for points that are not quite in one plane.
constexpr size_t ExtraPiecePoints = 4;

bool IsInFrontOnly(const PointSides& sides) {
    return sides.back == 0;
}
bool IsBehindOrOn(const PointSides& sides) {
    return sides.front == 0;
}

void RequireCapacity(size_t used, size_t capacity) {
    if (used > capacity) FatalError("E052");
}

PolygonRef FrontPart(const CPolygon& polygon, const CPlane& plane, const PointSides& sides) {
    auto part = std::make_shared<CPolygon>();
    KeepFront(polygon.points, plane, sides, part->points);
    return part;
}

Vec3d MovedAlong(const Vec3d& point, const Vec3& normal, double distance) {
    return {point[0] + normal[0] * distance, point[1] + normal[1] * distance, point[2] + normal[2] * distance};
}

PolygonPieces CutInTwo(const CPolygon& polygon, const CPlane& plane, const PointSides& sides, double gap) {
    const size_t count = polygon.points.size();
    const size_t capacity = PieceCapacity(count);
    auto front = std::make_shared<CPolygon>();
    auto back = std::make_shared<CPolygon>();
    front->points.reserve(capacity);
    back->points.reserve(capacity);
    for (size_t i = 0; i < count; ++i) {
        const Vec3d& point = polygon.points[i];
        if (sides.side[i] != PointSide::Back) front->points.push_back(point);
        if (sides.side[i] != PointSide::Front) back->points.push_back(point);
        if (!sides.IsCutAfter(i)) continue;
        const double t = sides.distance[i] / (sides.distance[i] - sides.distance[i + 1]);
        const Vec3d cut = CutPoint(point, polygon.points[(i + 1) % count], t, plane);
        front->points.push_back(MovedAlong(cut, plane.normal, gap));
        back->points.push_back(MovedAlong(cut, plane.normal, -gap));
    }
    RequireCapacity(front->points.size(), capacity);
    RequireCapacity(back->points.size(), capacity);
    CheckPolygon(front);
    CheckPolygon(back);
    return {front, back};
}

}  // namespace

PointSides::PointSides(std::span<const Vec3d> points, const CPlane& plane, double epsilon) {
    const size_t count = points.size();
    if (count > MaxPolygonPoints) FatalError("\nInvalid extent!");
    for (size_t i = 0; i < count; ++i) {
        const double d = Dot(plane.normal, points[i]) - plane.dist;
        distance[i] = d;
        side[i] = d > epsilon ? PointSide::Front : d < -epsilon ? PointSide::Back : PointSide::On;
        front += side[i] == PointSide::Front;
        back += side[i] == PointSide::Back;
    }
    distance[count] = count == 0 ? 0 : distance[0];
    side[count] = count == 0 ? PointSide::On : side[0];
}

size_t PieceCapacity(size_t pointCount) {
    const size_t capacity = pointCount + ExtraPiecePoints;
    if (capacity > MaxPolygonPoints) FatalError("Too many intersection points requested !");
    return capacity;
}

void KeepFront(std::span<const Vec3d> points, const CPlane& plane, const PointSides& sides, std::vector<Vec3d>& out) {
    const size_t count = points.size();
    const size_t capacity = PieceCapacity(count);
    out.clear();
    out.reserve(capacity);
    for (size_t i = 0; i < count; ++i) {
        if (sides.side[i] != PointSide::Back) out.push_back(points[i]);
        if (!sides.IsCutAfter(i)) continue;
        const double t = sides.distance[i] / (sides.distance[i] - sides.distance[i + 1]);
        out.push_back(CutPoint(points[i], points[(i + 1) % count], t, plane));
    }
    RequireCapacity(out.size(), capacity);
}

PolygonRef ClipPolygon(const PolygonRef& polygon, const CPlane& plane, bool /*keepOn*/, double epsilon) {
    CheckPolygon(polygon);
    const PointSides sides(polygon->points, plane, epsilon);
    // keepOn makes no difference here: a polygon on the plane has no point in front, and those are all kept.
    if (IsBehindOrOn(sides) || IsInFrontOnly(sides)) return polygon;
    return FrontPart(*polygon, plane, sides);
}

PolygonRef ClipPolygonFree(PolygonRef polygon, const CPlane& plane, bool keepOn, double epsilon) {
    CheckPolygon(polygon);
    const PointSides sides(polygon->points, plane, epsilon);
    if (IsBehindOrOn(sides)) return keepOn ? polygon : nullptr;
    if (IsInFrontOnly(sides)) return polygon;
    return FrontPart(*polygon, plane, sides);
}

PolygonPieces SplitPolygonEps(const PolygonRef& polygon, const CPlane& plane, double gap, double epsilon) {
    if (polygon == nullptr) FatalError("\nInvalid extent!");
    const PointSides sides(polygon->points, plane, epsilon);
    if (IsBehindOrOn(sides)) return {nullptr, polygon};
    if (IsInFrontOnly(sides)) return {polygon, nullptr};
    return CutInTwo(*polygon, plane, sides, gap);
}

PolygonPieces SplitPolygon(const PolygonRef& polygon, const CPlane& plane, double gap) {
    return SplitPolygonEps(polygon, plane, gap, Options().eps);
}

PolygonPieces SplitPolygonFiltered(const PolygonRef& polygon, const CPlane& plane, double gap) {
    return SplitPolygonEps(polygon, plane, gap, Options().eps);
}

}  // namespace k2k
