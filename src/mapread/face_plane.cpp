// Planes of map faces.
#include "mapread/face_plane.h"

#include <algorithm>
#include <cmath>

#include "driver/build_options.h"
#include "solid/plane.h"
#include "solid/vectors.h"

namespace k2k {

namespace {

constexpr double NarrowComponent = 0.0001;  // of the cross product of two edges
constexpr double AxisTolerance = 0.00001;   // of a normal's component to 1
constexpr double WholeTolerance = 0.01;     // above a whole distance

void SnapPrecise(MapFace& face) {
    Normalize(face.normal);
    face.dist = std::floor(2 * face.dist) / 2;
}

void SnapNormalToAxis(Vec3& normal) {
    for (size_t axis = 0; axis < 3; ++axis) {
        for (const float sign : {1.0F, -1.0F}) {
            const bool isAxis = std::fabs(static_cast<double>(normal[axis]) - sign) < AxisTolerance;
            if (!isAxis) continue;
            normal = {};
            normal[axis] = sign;
            return;
        }
    }
}

// A distance just below a whole number is not moved.
void SnapAxial(MapFace& face) {
    SnapNormalToAxis(face.normal);
    const double whole = std::floor(static_cast<double>(face.dist));
    if (face.dist - whole < WholeTolerance) face.dist = static_cast<float>(whole);
}

int32_t SignedType(const Vec3& normal) {
    CPlane plane;
    plane.normal = normal;
    SetPlaneType(plane);
    return plane.type;
}

}  // namespace

void RoundPoints(MapFace& face) {
    for (Vec3& point : face.points) {
        for (float& coordinate : point) coordinate = std::round(coordinate);
    }
}

bool SetFacePlane(MapFace& face, bool precise) {
    const Vec3d corner = Widen(face.points[1]);
    Vec3d normal = Cross(Sub(Widen(face.points[0]), corner), Sub(Widen(face.points[2]), corner));
    const bool spansArea = std::any_of(normal.begin(), normal.end(),
                                       [](double component) { return !(std::fabs(component) <= NarrowComponent); });
    // The normal stays in double precision until it is stored, and the distance is taken from that.
    NormalizeD(normal);
    face.normal = Narrow(normal);
    face.dist = static_cast<float>(Dot(corner, normal));
    if (precise) SnapPrecise(face);
    SnapAxial(face);
    face.planeType = SignedType(face.normal);
    return spansArea;
}

bool HasFinitePlane(const MapFace& face) {
    const auto isFinite = [](float number) { return std::isfinite(number); };
    return std::all_of(face.normal.begin(), face.normal.end(), isFinite) && isFinite(face.dist);
}

bool ArePointsInPlane(const std::array<Vec3, 3>& points, const MapFace& face) {
    return std::all_of(points.begin(), points.end(), [&face](const Vec3& point) {
        return std::fabs(Dot(point, face.normal) - face.dist) <= static_cast<double>(Options().eps);
    });
}

}  // namespace k2k
