// The lightmap axes of mesh levels: one pair for each dominant axis of a plane.
#include "driver/build_options.h"
#include "levelfile/mesh.h"

namespace k2k {

namespace {

struct AxisPair {
    Vec3 s, t;
};
constexpr std::array<AxisPair, 3> AxesOfClass{{
    {{0, 0, 1}, {0, -1, 0}},
    {{1, 0, 0}, {0, 0, 1}},
    {{1, 0, 0}, {0, -1, 0}},
}};

// A vector of this length or less normalises to the zero vector.
constexpr double ShortestVector = 0.0001;

// Types -3 to -1 are the negative axial planes x, y, z.
size_t DominantAxis(int32_t planeType) {
    return static_cast<size_t>((planeType % 3 + 3) % 3);
}

Vec3 Scaled(const Vec3& axis, float factor) {
    return {axis[0] * factor, axis[1] * factor, axis[2] * factor};
}

}  // namespace

bool LightmapAxes(int32_t planeType, const Vec3& normal, Vec3& axisS, Vec3& axisT) {
    const size_t dominant = DominantAxis(planeType);
    const float resolution = Options().litres;
    axisS = Scaled(AxesOfClass[dominant].s, resolution);
    axisT = Scaled(AxesOfClass[dominant].t, resolution);
    // The cross product of the pair lies along the dominant axis with this length; normalised, its dot product with the
    // normal is the normal's component there, up to the sign.
    const float length = resolution * resolution;
    return length > ShortestVector && normal[dominant] != 0;
}

}  // namespace k2k
