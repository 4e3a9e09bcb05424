// Distances and the nearness test of the lighting loops, inline because they run once a sample and light.
#pragma once

#include <cmath>

#include "solid/vectors.h"

namespace k2k {

// Positions this close count as one spot.
constexpr double SpotSize = 0.01;

// Every component differs by at most eps; the differences are not narrowed.
inline bool NearlyEqual(const Vec3& a, const Vec3& b, double eps) {
    const auto isNear = [&](size_t c) { return std::fabs(static_cast<double>(a[c]) - b[c]) <= eps; };
    return isNear(0) && isNear(1) && isNear(2);
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
