#include "solid/texture_axes.h"

#include <cmath>

#include "solid/vectors.h"

namespace k2k {

namespace {

struct BaseAxes {
    Vec3 axis, s, t;
};

constexpr std::array<BaseAxes, 6> BaseAxesTable{{
    {{0, 0, 1}, {1, 0, 0}, {0, -1, 0}},   // floor
    {{0, 0, -1}, {1, 0, 0}, {0, -1, 0}},  // ceiling
    {{1, 0, 0}, {0, 1, 0}, {0, 0, -1}},   // the four walls
    {{-1, 0, 0}, {0, 1, 0}, {0, 0, -1}},
    {{0, 1, 0}, {1, 0, 0}, {0, 0, -1}},
    {{0, -1, 0}, {1, 0, 0}, {0, 0, -1}},
}};

// The first of equals wins; without a positive dot product the first row does.
const BaseAxes& BaseAxesFor(const Vec3& normal) {
    const BaseAxes* best = BaseAxesTable.data();
    double bestDot = 0;
    for (const BaseAxes& row : BaseAxesTable) {
        const double dot = Dot(normal, row.axis);
        if (dot <= bestDot) continue;
        bestDot = dot;
        best = &row;
    }
    return *best;
}

struct Turn {
    float sine, cosine;
};

// Quarter turns are exact.
Turn TurnBy(float degrees) {
    if (degrees == 0) return {0, 1};
    if (degrees == 90) return {1, 0};
    if (degrees == 180) return {0, -1};
    if (degrees == 270) return {-1, 0};
    constexpr double Pi = 3.141592653589793;
    const auto angle = static_cast<float>(degrees / 180.0 * Pi);
    return {static_cast<float>(std::sin(static_cast<double>(angle))),
            static_cast<float>(std::cos(static_cast<double>(angle)))};
}

size_t FirstNonZero(const Vec3& v) {
    return v[0] != 0 ? 0 : v[1] != 0 ? 1 : 2;
}

Vec3 Rotated(Vec3 direction, size_t sv, size_t tv, const Turn& turn) {
    const float s = turn.cosine * direction[sv] - turn.sine * direction[tv];
    const float t = turn.sine * direction[sv] + turn.cosine * direction[tv];
    direction[sv] = s;
    direction[tv] = t;
    return direction;
}

Vec3 Divided(const Vec3& v, float scale) {
    const float divisor = scale == 0 ? 1 : scale;
    return {v[0] / divisor, v[1] / divisor, v[2] / divisor};
}

}  // namespace

void MakePlaneTextureAxes(const Vec3& normal, const std::array<float, 2>& shift, const std::array<float, 2>& scale,
                          float rotation, Texinfo& out) {
    const BaseAxes& base = BaseAxesFor(normal);
    const Turn turn = TurnBy(rotation);
    const size_t sv = FirstNonZero(base.s);
    const size_t tv = FirstNonZero(base.t);
    out.vecS = Divided(Rotated(base.s, sv, tv, turn), scale[0]);
    out.vecT = Divided(Rotated(base.t, sv, tv, turn), scale[1]);
    out.shiftS = shift[0];
    out.shiftT = shift[1];
}

}  // namespace k2k
