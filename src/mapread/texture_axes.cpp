// Plain texture mapping.
#include "mapread/texture_axes.h"

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
    {{1, 0, 0}, {0, 1, 0}, {0, 0, -1}},   // walls
    {{-1, 0, 0}, {0, 1, 0}, {0, 0, -1}},
    {{0, 1, 0}, {1, 0, 0}, {0, 0, -1}},
    {{0, -1, 0}, {1, 0, 0}, {0, 0, -1}},
}};

// The first of equals wins, and the floor when the normal looks along no axis.
const BaseAxes& AxesFor(const Vec3& normal) {
    const BaseAxes* best = &BaseAxesTable[0];
    double bestDot = 0;
    for (const BaseAxes& row : BaseAxesTable) {
        const double dot = Dot(normal, row.axis);
        if (dot <= bestDot || std::isnan(dot)) continue;
        bestDot = dot;
        best = &row;
    }
    return *best;
}

struct Turn {
    float sine, cosine;
};

// Exact for right angles.
Turn TurnBy(int32_t degrees) {
    switch (degrees) {
        case 0:
            return {0, 1};
        case 90:
            return {1, 0};
        case 180:
            return {0, -1};
        case 270:
            return {-1, 0};
        default:
            break;
    }
    const auto angle = static_cast<float>(degrees / 180.0 * 3.141592653589793);
    const double wide = angle;
    return {static_cast<float>(std::sin(wide)), static_cast<float>(std::cos(wide))};
}

size_t FirstNonZero(const Vec3& direction) {
    if (direction[0] != 0) return 0;
    return direction[1] != 0 ? 1 : 2;
}

}  // namespace

void SetTextureAxes(Texinfo& texinfo, const Vec3& normal, const PlainMapping& mapping) {
    const BaseAxes& base = AxesFor(normal);
    const Turn turn = TurnBy(mapping.rotation);
    const size_t sv = FirstNonZero(base.s);
    const size_t tv = FirstNonZero(base.t);
    const auto axis = [&](const Vec3& d, float scale) {
        Vec3 turned = d;
        turned[sv] = turn.cosine * d[sv] - turn.sine * d[tv];
        turned[tv] = turn.sine * d[sv] + turn.cosine * d[tv];
        for (float& component : turned) component /= scale == 0 ? 1 : scale;
        return turned;
    };
    texinfo.vecS = axis(base.s, mapping.scale[0]);
    texinfo.vecT = axis(base.t, mapping.scale[1]);
    texinfo.shiftS = mapping.shift[0];
    texinfo.shiftT = mapping.shift[1];
}

}  // namespace k2k
