// The output curve of all lightmap texels.
#pragma once

#include <array>
#include <cstdint>

namespace k2k {

using GammaCurve = std::array<uint8_t, 256>;

// Byte i is the level i / 255 raised to 1 / gamma. The levels are counted up in 32 bits from 0.001, and results depend
// on the rounding of that count.
GammaCurve BuildGammaTable(float gamma);

}  // namespace k2k
