#include "surface/grid_hash.h"

#include <cmath>
#include <limits>

namespace k2k {

uint32_t TruncateToUnsigned(float value) {
    constexpr float Limit = 9223372036854775808.0F;
    if (!(std::fabs(value) < Limit)) return 0;
    return static_cast<uint32_t>(static_cast<int64_t>(value));
}

int32_t TruncateToInt(float value) {
    constexpr float Limit = 2147483648.0F;
    if (!(std::fabs(value) < Limit)) return std::numeric_limits<int32_t>::min();
    return static_cast<int32_t>(value);
}

GridHash::GridHash(const Vec3& mins, const Vec3& maxs, int cells) : minX_(mins[0]), minY_(mins[1]) {
    const float sizeX = maxs[0] - mins[0];
    const float sizeY = maxs[1] - mins[1];
    const float area = sizeX * sizeY;
    const float cell = std::sqrt(area / static_cast<float>(cells));
    const auto columns = static_cast<float>(TruncateToInt(sizeX / cell));
    rows_ = static_cast<float>(TruncateToInt(sizeY / cell));
    scaleX_ = columns / sizeX;
    scaleY_ = rows_ / sizeY;
}

uint32_t GridHash::operator()(const Vec3& point) const {
    const float row = (point[1] - minY_) * scaleY_;
    const float column = (point[0] - minX_) * scaleX_ * rows_;
    return TruncateToUnsigned(row + column);
}

}  // namespace k2k
