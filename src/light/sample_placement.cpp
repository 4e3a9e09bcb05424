#include "light/sample_placement.h"

#include <optional>

#include "driver/build_options.h"
#include "light/light_face.h"
#include "light/lighting_state.h"
#include "light/near_equal.h"
#include "light/polygon_info.h"
#include "light/polygon_test.h"
#include "light/rays.h"

namespace k2k {
namespace {

bool LightReaches(const ActiveLight& active, const Vec3& position) {
    const Vec3 origin = active.isSun ? Add(Lighting().SunVector, position) : active.light.origin;
    if (!(Distance(origin, position) < active.light.lightRange)) return false;
    return !IsShadowed(origin, position);
}

// One grid of samples in the making.
class SamplePlacer {
  public:
    SamplePlacer(const CLightFace& face, bool phong)
        : face_(face), phong_(phong), centreBad_(PointInSolid(face.centre)) {}

    Vec3 PositionOf(float s, float t) const {
        Vec3 position;
        for (size_t c = 0; c < 3; c++) {
            const double across = static_cast<double>(face_.texToWorld[0][c]) * s + face_.texOrigin[c];
            position[c] = static_cast<float>(across + static_cast<double>(face_.texToWorld[1][c]) * t);
        }
        return position;
    }

    // Of an oversampled grid; a sample in the spot of the one before shares its answer.
    bool IsValid(LightSample& sample) {
        if (phong_) {
            const double off = Dot(sample.position, face_.normal) - face_.planeDist;
            sample.position = PointAlong(sample.position, face_.normal, -off);
        }
        if (!NearlyEqual(sample.position, lastPos_, SpotSize)) {
            lastPos_ = sample.position;
            lastGood_ = IsSeenFromCentre(sample) || IsLitInside(sample);
        }
        return lastGood_;
    }

  private:
    bool IsSeenFromCentre(const LightSample& sample) const {
        return !centreBad_ && !IsShadowed(face_.centre, sample.position);
    }

    bool IsLitInside(const LightSample& sample) {
        if (!(sample.s >= face_.exactMin[0] && sample.s <= face_.exactMax[0])) return false;
        if (!(sample.t >= face_.exactMin[1] && sample.t <= face_.exactMax[1])) return false;
        if (!polygon_) polygon_ = MakePolygonInfo(face_.surfaceIndex);
        if (!IsInsideOutline(sample.position, polygon_->points, polygon_->normal)) return false;
        for (const ActiveLight& active : Lighting().ActiveLights) {
            if (LightReaches(active, sample.position)) return true;
        }
        return false;
    }

    const CLightFace& face_;
    const bool phong_;
    const bool centreBad_;
    std::optional<PolygonInfo> polygon_;  // made when the first sample needs it
    Vec3 lastPos_ = NoPosition;
    bool lastGood_ = false;
};

}  // namespace

void CalcSamples(CLightFace& face, std::vector<LightSample>& samples, int32_t step, bool phong) {
    const bool over = !Options().preview;
    const int64_t baseS = int64_t{face.texMin[0]} * step;
    const int64_t baseT = int64_t{face.texMin[1]} * step;
    int64_t texel = step;
    face.sampleDim = face.size;
    if (over) {
        face.sampleDim = {face.size[0] * 2, face.size[1] * 2};
        texel /= 2;
    }
    const int64_t jitter = over && phong ? Options().jitter : 0;
    face.sampleCount = face.sampleDim[0] * face.sampleDim[1];
    samples.reserve(static_cast<size_t>(face.sampleCount));
    SamplePlacer placer(face, phong);
    for (int32_t t = 0; t < face.sampleDim[1]; t++) {
        for (int32_t s = 0; s < face.sampleDim[0]; s++) {
            LightSample sample;
            sample.t = static_cast<float>(t * texel + baseT + (t % 2 != 0 ? jitter : -jitter));
            sample.s = static_cast<float>(s * texel + baseS + (s % 2 != 0 ? jitter : -jitter));
            sample.position = placer.PositionOf(sample.s, sample.t);
            sample.valid = !over || placer.IsValid(sample) ? 1 : 0;
            samples.push_back(sample);
        }
    }
}

}  // namespace k2k
