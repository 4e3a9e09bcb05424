// Distances and the nearness test of the lighting loops, inline because they run once a sample and light.
#pragma once

#include <cmath>

#include "solid/vectors.h"

namespace k2k {

// Positions this close count as one spot.
constexpr double SpotSize = 0.01;

// Every component differs by at most eps.
inline bool NearlyEqual(const Vec3& a, const Vec3& b, double eps) {
    return std::fabs(a[0] - b[0]) <= eps && std::fabs(a[1] - b[1]) <= eps && std::fabs(a[2] - b[2]) <= eps;
}

inline float Length(const Vec3& v) {
    return static_cast<float>(std::sqrt(LengthSquared(v)));
}
inline float Distance(const Vec3& from, const Vec3& to) {
    return Length(Sub(to, from));
}

// from + direction * t, narrowed once a component.
inline Vec3 PointAlong(const Vec3& from, const Vec3& direction, double t) {
    return {static_cast<float>(from[0] + direction[0] * t), static_cast<float>(from[1] + direction[1] * t),
            static_cast<float>(from[2] + direction[2] * t)};
}

// from + (to - from) * t, all of it in double, narrowed once a component.
inline Vec3 PointBetween(const Vec3& from, const Vec3& to, double t) {
    Vec3 point;
    for (size_t c = 0; c < 3; c++) {
        point[c] = static_cast<float>(from[c] + (static_cast<double>(to[c]) - from[c]) * t);
    }
    return point;
}

}  // namespace k2k
