#include "light/sample_buffers.h"

#include <algorithm>

#include "light/near_equal.h"
#include "light/sample_placement.h"

namespace k2k {

void SampleBounds::Add(const Vec3& point) {
    for (size_t axis = 0; axis < 3; axis++) {
        mins[axis] = std::min(mins[axis], point[axis]);
        maxs[axis] = std::max(maxs[axis], point[axis]);
    }
}

bool SampleBounds::IsBeyond(const Vec3& from, float reach) const {
    constexpr double margin = 1.00001;
    double squared = 0;
    for (size_t axis = 0; axis < 3; axis++) {
        const double outside =
            std::max({0.0, static_cast<double>(mins[axis]) - from[axis], static_cast<double>(from[axis]) - maxs[axis]});
        squared += outside * outside;
    }
    return squared > static_cast<double>(reach) * reach * margin;
}

void CSampleBuffers::SetPositions(std::vector<Vec3> samplePositions) {
    positions = std::move(samplePositions);
    colours.assign(positions.size(), Vec3{});
    dark = true;
    smoothSpots.clear();
    FindRuns();
    FindBounds();
}

void CSampleBuffers::ClearColours() {
    if (!dark) colours.assign(colours.size(), Vec3{});
    dark = true;
}

void CSampleBuffers::FindRuns() {
    runs.clear();
    Vec3 last = NoPosition;
    for (uint32_t i = 0; i < positions.size(); i++) {
        if (!NearlyEqual(last, positions[i], SpotSize)) {
            last = positions[i];
            runs.push_back({i, 0});
        }
        if (!runs.empty()) runs.back().count++;
    }
}

void CSampleBuffers::FindBounds() {
    if (positions.empty()) return;
    bounds = {positions.front(), positions.front()};
    for (const Vec3& position : positions) bounds.Add(position);
}

}  // namespace k2k
