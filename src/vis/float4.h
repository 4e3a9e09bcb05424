// Four 32-bit numbers that are worked on at once.
#pragma once

#include <cstdint>
#include <cstring>

#include "levelfile/level_records.h"

namespace k2k {

using Float4 = float __attribute__((vector_size(16)));
// What comes of comparing: all bits set where it holds.
using Mask4 = int32_t __attribute__((vector_size(16)));
constexpr size_t Lanes = 4;

inline Float4 Load4(const float* from) {
    Float4 v;
    std::memcpy(&v, from, sizeof(v));
    return v;
}
inline Float4 Abs(Float4 v) {
    return reinterpret_cast<Float4>(reinterpret_cast<Mask4>(v) & 0x7FFFFFFF);
}

// Four vectors.
struct Vec3x4 {
    Float4 x, y, z;
};
inline Vec3x4 operator-(const Vec3x4& a, const Vec3x4& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
inline Vec3x4 operator-(const Vec3& a, const Vec3x4& b) {
    return {a[0] - b.x, a[1] - b.y, a[2] - b.z};
}
inline Float4 Dot(const Vec3x4& a, const Vec3x4& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
inline Float4 AbsSum(const Vec3x4& v) {
    return Abs(v.x) + Abs(v.y) + Abs(v.z);
}
// The products and differences of Cross for single vectors, to the bit.
inline Vec3x4 Cross(const Vec3& a, const Vec3x4& b) {
    return {a[1] * b.z - a[2] * b.y, a[2] * b.x - a[0] * b.z, a[0] * b.y - a[1] * b.x};
}

}  // namespace k2k
