// The double-precision polygon that serves every clipping job where a plane of world size is cut down.
#pragma once

#include <memory>
#include <vector>

#include "solid/plane.h"

namespace k2k {

constexpr int MaxPolygonPoints = 64;

// Convex, 1 to 64 points. Never changed once shared, so results that equal their input are shared, not copied.
struct CPolygon {
    std::vector<Vec3d> points;
    int numpoints() const { return static_cast<int>(points.size()); }
};
using PolygonRef = std::shared_ptr<const CPolygon>;

// More than 64 points: fatal.
PolygonRef MakePolygon(std::vector<Vec3d> points);

// A quad of world size (-bound) in the plane.
PolygonRef BasePolygonForPlane(const Vec3& normal, float dist);

// What lies in front of the plane. A polygon wholly behind it comes back unchanged: this never drops a polygon.
PolygonRef ClipPolygon(const PolygonRef& polygon, const CPlane& plane, bool keepOn, double epsilon);
// The same, but a polygon with no point in front is dropped (null), unless keepOn is set.
PolygonRef ClipPolygonFree(PolygonRef polygon, const CPlane& plane, bool keepOn, double epsilon);

struct PolygonPieces {
    PolygonRef front, back;
};
// Both sides of the plane, at the -eps tolerance; cut edges are moved apart by gap on each side.
PolygonPieces SplitPolygon(const PolygonRef& polygon, const CPlane& plane, double gap);
// The same with an epsilon of its own (the radiosity road's cells).
PolygonPieces SplitPolygonEps(const PolygonRef& polygon, const CPlane& plane, double gap, double epsilon);
// The form of the detail filter: equal results.
PolygonPieces SplitPolygonFiltered(const PolygonRef& polygon, const CPlane& plane, double gap);

// The plane through the first three points, with its signed type.
CPlane PolygonPlane(const CPolygon& polygon);
float PolygonArea(const CPolygon& polygon);
Vec3 PolygonCenter(const CPolygon& polygon);
void PolygonBounds(const CPolygon& polygon, Vec3d& mins, Vec3d& maxs);
// The points without those on straight runs.
std::vector<Vec3d> PolygonRemoveColinear(const std::vector<Vec3d>& points);
bool PolygonContainsPoint(const CPolygon& polygon, const Vec3d& point);
// Cut along a grid: lines at whole multiples of spacing / |direction| along both directions. In the order of cutting.
std::vector<PolygonRef> PolygonSlices(const PolygonRef& polygon, const Vec3& u, const Vec3& v, double spacing);

// Fatal when the polygon is null or has no point, or more than 64.
void CheckPolygon(const PolygonRef& polygon);

}  // namespace k2k
