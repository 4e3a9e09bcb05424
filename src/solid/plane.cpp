// Plane types.
#include "solid/plane.h"

#include <cmath>

#include "solid/vectors.h"

namespace k2k {

namespace {

constexpr double AxialComponent = 0.9999;  // a component from here on makes a plane axial before it is in the table

}  // namespace

void SetPlaneType(CPlane& plane) {
    constexpr int32_t ObliqueType = 3;
    plane.type = ObliqueType;
    for (int32_t axis = 0; axis < 3; ++axis) {
        if (plane.normal[axis] >= AxialComponent) {
            plane.type = axis;
            return;
        }
    }
    for (int32_t axis = 0; axis < 3; ++axis) {
        if (plane.normal[axis] <= -AxialComponent) {
            plane.type = axis - 3;
            return;
        }
    }
}

int32_t PlaneTypeFromNormal(const Vec3& normal) {
    for (int32_t axis = 0; axis < 3; ++axis) {
        if (normal[axis] == 1.0F) return axis;
    }
    for (int32_t axis = 0; axis < 3; ++axis) {
        if (normal[axis] == -1.0F) return axis - 3;
    }
    const float ax = std::fabs(normal[0]);
    const float ay = std::fabs(normal[1]);
    const float az = std::fabs(normal[2]);
    if (ay <= ax && az <= ax) return 3;
    if (ax > ay) return 5;
    return az <= ay ? 4 : 5;
}

CPlane FlippedPlane(const CPlane& plane) {
    CPlane flipped{Negate(plane.normal), -plane.dist};
    SetPlaneType(flipped);
    return flipped;
}

}  // namespace k2k
