// The samples of the surface in work: where they are, and the light that has reached them.
#pragma once

#include <cstdint>
#include <vector>

#include "levelfile/level_records.h"

namespace k2k {

// Consecutive samples in one spot, which share one ray. Samples are compared with the first of their run.
struct SampleRun {
    uint32_t first = 0, count = 0;
};

// Where a sample's shadow ray ends, and the normal there.
struct LightSpot {
    Vec3 end{};
    Vec3 normal{};
};

struct SampleBounds {
    Vec3 mins{}, maxs{};

    void Add(const Vec3& point);
    // Certainly farther than reach from every point inside, rounding included.
    bool IsBeyond(const Vec3& from, float reach) const;
};

// One worker's buffers, as long as the sample set of its surface.
class CSampleBuffers {
  public:
    // Takes a new sample set, without light.
    void SetPositions(std::vector<Vec3> samplePositions);
    // Takes the light away again.
    void ClearColours();
    void Empty() { SetPositions({}); }

    std::vector<Vec3> positions;  // row by row
    std::vector<Vec3> colours;    // sums of light: red, green, blue
    std::vector<SampleRun> runs;  // cover all samples but those at the far-away start position
    SampleBounds bounds;          // of the positions
    bool dark = true;             // all colours are 0

    // Smooth faces: the spots of all samples, and the bounds of their ends; empty until a light needs them.
    std::vector<LightSpot> smoothSpots;
    SampleBounds smoothBounds;

  private:
    void FindRuns();
    void FindBounds();
};

}  // namespace k2k
