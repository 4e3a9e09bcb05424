#include "light/gamma_table.h"

#include <cmath>

#include "light/narrowing.h"

namespace k2k {

GammaCurve BuildGammaTable(float gamma) {
    constexpr float firstLevel = 0.001F;
    constexpr float levelStep = 0.003921568859368563F;
    const double exponent = 1.0 / gamma;
    GammaCurve curve{};
    float level = firstLevel;
    for (uint8_t& value : curve) {
        value = TruncToByte(std::pow(static_cast<double>(level), exponent) * 255.0);
        level += levelStep;
    }
    return curve;
}

}  // namespace k2k
