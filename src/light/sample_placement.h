// Where a face takes its samples of light.
#pragma once

#include <cstdint>
#include <vector>

#include "levelfile/level_records.h"

namespace k2k {

class CLightFace;

// No sample lies here: the start value of all searches for a sample in the same spot.
constexpr Vec3 NoPosition{-99999, -99999, -99999};

struct LightSample {
    Vec3 position{};
    float t = 0, s = 0;  // texture coordinates
    uint8_t valid = 0;   // light can be taken here
};

// Fills the face's sample grid, row by row. A sample is valid when the face's centre or a light inside the face's
// bounds can see it; without oversampling all are. Samples of phong faces are moved by -jitter and put back on the
// plane.
void CalcSamples(CLightFace& face, std::vector<LightSample>& samples, int32_t step, bool phong);

}  // namespace k2k
