// The vector helpers that are too long for the header.
#include "solid/vectors.h"

namespace k2k {

namespace {

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
        if (std::fabs(component) < VanishingLength) component = 0;
    }
    return length;
}

}  // namespace

float Normalize(Vec3& v) {
    return NormalizeBy(v, static_cast<float>(std::sqrt(LengthSquared(v))));
}

double NormalizeD(Vec3d& v) {
    return NormalizeBy(v, std::sqrt(Dot(v, v)));
}

}  // namespace k2k
