// Conversions from floating point to whole numbers that are defined for every input.
#pragma once

#include <cstdint>
#include <limits>

namespace k2k {

// Towards zero; what does not fit takes the nearest end, and what is no number gives 0.
inline int32_t TruncToInt(double value) {
    constexpr double low = std::numeric_limits<int32_t>::min();
    constexpr double high = std::numeric_limits<int32_t>::max();
    if (value >= high) return std::numeric_limits<int32_t>::max();
    if (value <= low) return std::numeric_limits<int32_t>::min();
    return value == value ? static_cast<int32_t>(value) : 0;
}

inline int32_t ClampToInt(int64_t value) {
    if (value > std::numeric_limits<int32_t>::max()) return std::numeric_limits<int32_t>::max();
    if (value < std::numeric_limits<int32_t>::min()) return std::numeric_limits<int32_t>::min();
    return static_cast<int32_t>(value);
}

// Towards zero, and held in 0 to 255.
inline uint8_t TruncToByte(double value) {
    if (value >= 255.0) return 255;
    return value > 0 ? static_cast<uint8_t>(value) : uint8_t{0};
}

}  // namespace k2k
