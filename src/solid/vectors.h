// Vector helpers with the numeric rules that all geometry follows.
//
// A dot product of 32-bit vectors is summed in double, x then y then z, and narrowed only where it is stored in a
// 32-bit field. Differences and cross products of 32-bit vectors are 32-bit per component. Other expressions over
// 32-bit numbers are double until they are stored. Results of the build depend on it.
#pragma once

#include <cmath>

#include "levelfile/level_records.h"

namespace k2k {

inline double Dot(const Vec3& a, const Vec3& b) {
    return static_cast<double>(a[0]) * b[0] + static_cast<double>(a[1]) * b[1] + static_cast<double>(a[2]) * b[2];
}
inline double Dot(const Vec3d& a, const Vec3d& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}
inline double Dot(const Vec3& a, const Vec3d& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}
inline double Dot(const Vec3d& a, const Vec3& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

inline Vec3 Sub(const Vec3& a, const Vec3& b) {
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
inline Vec3d Sub(const Vec3d& a, const Vec3d& b) {
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
inline Vec3 Add(const Vec3& a, const Vec3& b) {
    return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}
inline Vec3 Negate(const Vec3& a) {
    return {-a[0], -a[1], -a[2]};
}
inline Vec3 Scale(const Vec3& a, float s) {
    return {a[0] * s, a[1] * s, a[2] * s};
}

inline Vec3 Cross(const Vec3& a, const Vec3& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
inline Vec3d Cross(const Vec3d& a, const Vec3d& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

inline double LengthSquared(const Vec3& a) {
    return Dot(a, a);
}

inline Vec3d Widen(const Vec3& a) {
    return {a[0], a[1], a[2]};
}
inline Vec3 Narrow(const Vec3d& a) {
    return {static_cast<float>(a[0]), static_cast<float>(a[1]), static_cast<float>(a[2])};
}

// Lengths up to this are no direction, and components below it are noise of the division.
constexpr double VanishingLength = 0.0001;

template <typename T>
T NormalizeBy(std::array<T, 3>& v, T length) {
    if (length <= VanishingLength) {
        v = {};
        return 0;
    }
    for (T& component : v) {
        component /= length;
        component = std::fabs(component) < VanishingLength ? T{0} : component;
    }
    return length;
}

// Divides by the length and returns it. A length of 0.0001 or less gives the zero vector and 0; after the division any
// component below 0.0001 in magnitude is set to exactly zero. The length is taken from the double sum, stored as
// 32-bit.
inline float Normalize(Vec3& v) {
    return NormalizeBy(v, static_cast<float>(std::sqrt(LengthSquared(v))));
}
// The same rules in double.
inline double NormalizeD(Vec3d& v) {
    return NormalizeBy(v, std::sqrt(Dot(v, v)));
}

// What lies between two 32-bit numbers, to be held against a tolerance: in 32 bits a difference just above the
// tolerance could be rounded down to it.
inline double AbsDifference(float a, float b) {
    return std::fabs(static_cast<double>(a) - b);
}

// True when no axis differs by more than the tolerance (a difference equal to it counts as equal).
inline bool VectorEqual(const Vec3& a, const Vec3& b, double tolerance) {
    return AbsDifference(a[0], b[0]) <= tolerance && AbsDifference(a[1], b[1]) <= tolerance &&
           AbsDifference(a[2], b[2]) <= tolerance;
}

// Nearest whole number, halves upwards.
inline double Nearest(double v) {
    return std::floor(v + 0.5);
}

}  // namespace k2k
