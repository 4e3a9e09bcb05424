// Vectors are 32-bit per component; fractions, distances and angles are double, from 32-bit vectors.
#include "light/phong_normal.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "driver/build_log.h"
#include "driver/build_options.h"
#include "levelfile/geometry_data.h"
#include "light/lighting_state.h"
#include "light/near_equal.h"
#include "light/polygon_test.h"
#include "light/surface_geometry.h"

namespace k2k {
namespace {

constexpr int MaxPhongDepth = 10;
constexpr int MaxWalkSteps = 6;

// A plane given by a normal, not of unit length, and the dot product of its points with it.
struct CutPlane {
    Vec3 across{};
    double dist = 0;
};

size_t NextPoint(const PolygonInfo& polygon, size_t i) {
    return i + 1 < polygon.points.size() ? i + 1 : 0;
}

Vec3 EdgeVector(const PolygonInfo& polygon, size_t i) {
    return Sub(polygon.points[NextPoint(polygon, i)], polygon.points[i]);
}

Vec3 ProjectOnPlane(const PolygonInfo& polygon, const Vec3& point) {
    return PointAlong(point, polygon.normal, -(Dot(point, polygon.normal) - polygon.dist));
}

// Turns p about the line through a point along a unit axis (Rodrigues' rotation formula).
Vec3 RotateAbout(const Vec3& p, const Vec3& onAxis, const Vec3& axis, double angle) {
    const Vec3 arm = Sub(p, onAxis);
    const double sine = std::sin(angle);
    const double cosine = std::cos(angle);
    const double along = Dot(axis, arm) * (1 - cosine);
    const Vec3d turn = Cross(Widen(axis), Widen(arm));
    Vec3 turned;
    for (size_t c = 0; c < 3; c++) {
        turned[c] = static_cast<float>(onAxis[c] + arm[c] * cosine + turn[c] * sine + axis[c] * along);
    }
    return turned;
}

// Folds a point of the polygon's plane over an edge onto the plane of the surface across it.
Vec3 FoldOverEdge(const PolygonInfo& polygon, size_t edge, const Vec3& nextNormal, const Vec3& p) {
    Vec3 direction = EdgeVector(polygon, edge);
    Normalize(direction);
    double angle = std::acos(std::clamp(Dot(polygon.normal, nextNormal), -1.0, 1.0));
    if (Dot(Cross(polygon.normal, nextNormal), direction) < 0) angle = -angle;
    return RotateAbout(p, polygon.points[edge], direction, angle);
}

// The first edge that the way from the polygon's middle to p crosses.
std::optional<size_t> CrossedEdge(const PolygonInfo& polygon, const Vec3& p) {
    const Vec3 middle = Narrow(MeanOf(polygon.points));
    Vec3 dir = Sub(p, middle);
    Normalize(dir);
    const Vec3 across = Cross(polygon.normal, dir);
    const double dist = Dot(across, middle);
    for (size_t i = 0; i < polygon.points.size(); i++) {
        const Vec3& a = polygon.points[i];
        const double slope = Dot(EdgeVector(polygon, i), across);
        if (slope == 0) continue;
        const double t = (dist - Dot(a, across)) / slope;
        if (!(t >= 0 && t <= 1)) continue;
        if (Dot(dir, Sub(PointBetween(a, polygon.points[NextPoint(polygon, i)], t), middle)) >= 0) return i;
    }
    return std::nullopt;
}

void FillVertexNormals(PolygonInfo& polygon) {
    for (const auto& joining : polygon.edgeNeighbours) {
        Vec3 normal = polygon.normal;
        for (const int32_t surface : joining) {
            if (surface != NoNeighbour) normal = Add(normal, SurfaceNormal(SurfaceRow(static_cast<uint32_t>(surface))));
        }
        Normalize(normal);
        polygon.vertexNormals.push_back(normal);
    }
}

// Where q lies between a and b, as a fraction of the way. Not a number when the two are one point.
double FractionBetween(const Vec3& a, const Vec3& b, const Vec3& q) {
    const Vec3 way = Sub(b, a);
    return Dot(Sub(q, a), way) / Dot(way, way);
}

// The fraction at which an edge meets the plane through a corner and q, when it lies across from the corner.
std::optional<double> MeetEdge(const PolygonInfo& polygon, size_t i, const Vec3& corner, const CutPlane& plane,
                               const Vec3& q) {
    const Vec3& a = polygon.points[i];
    const Vec3& b = polygon.points[NextPoint(polygon, i)];
    const double over = plane.dist - Dot(a, plane.across);
    const double slope = Dot(Sub(b, a), plane.across);
    if (slope == 0) {
        if (over != 0) return std::nullopt;
        const double t = FractionBetween(a, b, q);
        if (t >= 0 && t <= 1) return t;
        return std::nullopt;
    }
    const double eps = Options().eps;
    const double t = over / slope;
    if (!(t >= -eps && t <= 1 + eps)) return std::nullopt;
    if (NearlyEqual(a, corner, SpotSize) || NearlyEqual(b, corner, SpotSize)) return std::nullopt;
    return t;
}

// a * (1 - f) + b * f, normalised.
Vec3 MixNormals(const Vec3& a, const Vec3& b, double f) {
    Vec3 mixed;
    for (size_t c = 0; c < 3; c++) mixed[c] = static_cast<float>(b[c] * f + a[c] * (1 - f));
    Normalize(mixed);
    return mixed;
}

// The normal at q, interpolated along the line from a corner through q to the edge across. False when no edge lies
// across from this corner.
bool NormalFromCorner(const PolygonInfo& polygon, size_t corner, const Vec3& q, Vec3& normalOut) {
    const Vec3& from = polygon.points[corner];
    Vec3 dir = Sub(q, from);
    if (Normalize(dir) <= Options().eps) {
        normalOut = polygon.normal;
        return true;
    }
    CutPlane plane{Cross(polygon.normal, dir)};
    plane.dist = Dot(plane.across, q);
    for (size_t i = 0; i < polygon.points.size(); i++) {
        const std::optional<double> met = MeetEdge(polygon, i, from, plane, q);
        if (!met) continue;
        const double t = std::clamp(*met, 0.0, 1.0);
        const Vec3 e = PointBetween(polygon.points[i], polygon.points[NextPoint(polygon, i)], t);
        const Vec3 edgeNormal = MixNormals(polygon.vertexNormals[i], polygon.vertexNormals[NextPoint(polygon, i)], t);
        const double fraction = FractionBetween(from, e, q);
        const double f = std::isnan(fraction) ? 0 : std::clamp(fraction, 0.0, 1.0);
        normalOut = MixNormals(polygon.vertexNormals[corner], edgeNormal, f);
        return true;
    }
    return false;
}

}  // namespace

void CSmoothNormals::PhongNormal(uint32_t surfaceIndex, const Vec3& sample, Vec3& normalOut, Vec3& pointOut,
                                 int depth) {
    pointOut = sample;
    depth++;
    if ((SurfaceFlags(SurfaceRow(surfaceIndex)) & TexturePhong) != 0 && depth <= MaxPhongDepth) {
        InterpolateNormal(surfaceIndex, sample, normalOut, pointOut, depth);
    } else {
        FlatNormal(surfaceIndex, normalOut);
    }
}

// The plane table's row of a back-side surface changes sign at each visit, and a later visit sees the changed one.
void CSmoothNormals::FlatNormal(uint32_t surfaceIndex, Vec3& normalOut) {
    const SurfaceRecord& surface = SurfaceRow(surfaceIndex);
    const bool warns = Options().verbose && !Lighting().recursionWarned;
    if (flips_ == PlaneFlips::Refuse && (surface.side != 0 || warns)) throw PlaneFlipNeeded();
    Vec3& normal = Geometry().planes[surface.planeNumber].normal;
    if (surface.side != 0) normal = Negate(normal);
    normalOut = normal;
    if (warns) {
        Lighting().recursionWarned = true;
        BuildLog("\n WARNING W081: Recursion in phong interpolation !\n");
    }
}

void CSmoothNormals::InterpolateNormal(uint32_t surfaceIndex, const Vec3& sample, Vec3& normalOut, Vec3& pointOut,
                                       int depth) {
    pointOut = sample;
    const PolygonRefScope polygon(cache_, surfaceIndex);
    normalOut = polygon->normal;
    if (polygon->edgeNeighbours.empty() || polygon->points.size() < 3) return;
    walkSteps_ = 0;
    Vec3 q;
    const uint32_t other = WalkToSurface(*polygon, sample, q, NoNeighbour);
    if (other != surfaceIndex) {
        PhongNormal(other, q, normalOut, pointOut, depth);
        return;
    }
    // The walk leads to the same place from every corner; only the interpolation is tried again.
    for (size_t corner = 0; corner < polygon->points.size(); corner++) {
        pointOut = q;
        if (polygon->vertexNormals.empty()) FillVertexNormals(*polygon);
        if (NormalFromCorner(*polygon, corner, q, normalOut)) return;
    }
    pointOut = sample;
    normalOut = polygon->normal;
}

uint32_t CSmoothNormals::WalkToSurface(const PolygonInfo& polygon, const Vec3& point, Vec3& pointOut, int32_t avoid) {
    const auto self = static_cast<int32_t>(polygon.surfaceIndex);
    walkSteps_++;
    if (avoid == self || walkSteps_ > MaxWalkSteps) {
        pointOut = point;
        return polygon.surfaceIndex;
    }
    const Vec3 p = ProjectOnPlane(polygon, point);
    int32_t next = NoNeighbour;
    std::optional<size_t> edge;
    if (!IsInsideOutline(p, polygon.points, polygon.normal)) {
        edge = CrossedEdge(polygon, p);
        if (edge) next = polygon.edgeNeighbours[*edge].front();
    }
    if (next == NoNeighbour) {
        pointOut = Add(p, polygon.normal);
        return polygon.surfaceIndex;
    }
    const auto nextSurface = static_cast<uint32_t>(next);
    const Vec3 folded = FoldOverEdge(polygon, *edge, SurfaceNormal(SurfaceRow(nextSurface)), p);
    const PolygonRefScope nextPolygon(cache_, nextSurface);
    return WalkToSurface(*nextPolygon, folded, pointOut, avoid >= 0 ? avoid : self);
}

}  // namespace k2k
