// What a light gives to a sample: (range - distance) * (cosine * (2 - lm) + lm) * colour, with lm the angle softness.
// Distances and colours are stored in 32 bits; everything between two stores is double.
//
// A ray changes nothing, so it is cast last: range, angle and amount decide without it for most samples.
#include "driver/build_options.h"
#include "light/light_face.h"
#include "light/lighting_state.h"
#include "light/near_equal.h"
#include "light/rays.h"

namespace k2k {
namespace {

constexpr double FlatHorizon = 0;
constexpr double PhongHorizon = -0.5;  // light wraps 60 degrees past a smooth surface's horizon
constexpr double PhongReach = 1.5;     // smooth samples can lie this much nearer than their plane

double Sum(const Vec3& colour) {
    return static_cast<double>(colour[0]) + colour[1] + colour[2];
}

// Certainly out of reach, without a root: the margin covers the rounding of the exact test.
bool IsFarAway(const Vec3& toLight, float range) {
    return LengthSquared(toLight) > static_cast<double>(range) * range * 1.000001;
}

// The light that reaches a spot, ray included. False when it is none.
bool LightAt(const ActiveLight& active, const LightSpot& spot, double horizon, Vec3& value) {
    const LightRecord& light = active.light;
    const Vec3 origin = active.isSun ? Add(Lighting().SunVector, spot.end) : light.origin;
    const Vec3 toLight = Sub(origin, spot.end);
    if (IsFarAway(toLight, light.lightRange)) return false;
    Vec3 dir = toLight;
    float dist = Normalize(dir);
    if (dist == 0) dist = Length(toLight);
    if (dist >= light.lightRange) return false;
    double angle = Dot(dir, spot.normal);
    if (angle < horizon) return false;
    const double softness = Options().lmambient;
    angle = angle * (2 - softness) + softness;
    const double left = static_cast<double>(light.lightRange) - dist;
    for (size_t c = 0; c < 3; c++) value[c] = static_cast<float>(left * angle * light.lightColor[c]);
    if (Sum(value) <= 0) return false;
    return !IsShadowed(origin, spot.end);
}

// Adds value to a run of samples; whether one of them is brighter than 1 now.
bool AddToRun(CSampleBuffers& samples, const SampleRun& run, const Vec3& value) {
    bool strong = false;
    for (uint32_t i = run.first; i < run.first + run.count; i++) {
        Vec3& colour = samples.colours[i];
        colour = Add(colour, value);
        if (Sum(colour) > 1) strong = true;
    }
    samples.dark = false;
    return strong;
}

// As long as nothing strong has reached the face, each light starts from darkness.
void StartLight(const CLightFace& face, CSampleBuffers& samples) {
    if (face.lit == 0) samples.ClearColours();
}

void FinishLight(CLightFace& face, const ActiveLight& active, bool strong) {
    if (strong && (active.light.flags & LightCastsShadows) != 0) face.shadowed = 1;
    if (strong || Lighting().AmbientLevel != 0) face.lit = 1;
}

// Adds a light to all runs; spotAt gives the spot of a run's first sample, and bounds hold the ends of all spots.
template <typename SpotAt>
bool LightRuns(const ActiveLight& active, CSampleBuffers& samples, const SampleBounds& bounds, double horizon,
               SpotAt spotAt) {
    if (!active.isSun && bounds.IsBeyond(active.light.origin, active.light.lightRange)) return false;
    bool strong = false;
    for (const SampleRun& run : samples.runs) {
        Vec3 value;
        if (LightAt(active, spotAt(run.first), horizon, value) && AddToRun(samples, run, value)) strong = true;
    }
    return strong;
}

// A light or the sun behind a flat face gives nothing, and one too far from its plane neither.
bool ReachesFlatFace(const CLightFace& face, const ActiveLight& active) {
    if (active.isSun) {
        Vec3 toSun = Lighting().SunVector;
        Normalize(toSun);
        return !(Dot(toSun, face.normal) <= 0);
    }
    const double d = Dot(active.light.origin, face.normal) - face.planeDist;
    return !(d <= 0) && !(d > active.light.lightRange);
}

bool ReachesPhongFace(const CLightFace& face, const ActiveLight& active) {
    if (active.isSun) return true;
    const double d = Dot(active.light.origin, face.normal) - face.planeDist;
    return !(d > active.light.lightRange * PhongReach);
}

LightSpot SmoothSpot(const CLightFace& face, FaceScratch& scratch, uint32_t sample) {
    LightSpot spot;
    scratch.normals.PhongNormal(face.surfaceIndex, scratch.samples.positions[sample], spot.normal, spot.end, 0);
    return spot;
}

void FindSmoothSpots(const CLightFace& face, FaceScratch& scratch) {
    CSampleBuffers& samples = scratch.samples;
    std::vector<LightSpot> spots;
    spots.reserve(samples.positions.size());
    for (uint32_t i = 0; i < samples.positions.size(); i++) {
        spots.push_back(SmoothSpot(face, scratch, i));
        if (i == 0) samples.smoothBounds = {spots[0].end, spots[0].end};
        samples.smoothBounds.Add(spots[i].end);
    }
    samples.smoothSpots = std::move(spots);
}

// One smooth normal a sample, for all lights.
bool LightKeptSpots(const CLightFace& face, const ActiveLight& active, FaceScratch& scratch) {
    CSampleBuffers& samples = scratch.samples;
    if (samples.smoothSpots.empty()) FindSmoothSpots(face, scratch);
    return LightRuns(active, samples, samples.smoothBounds, PhongHorizon,
                     [&](uint32_t sample) { return samples.smoothSpots[sample]; });
}

// A smooth normal for every sample and light, in their order: each of these visits may negate a plane, which the ones
// after it see, and the rays of detail leaves too.
bool LightInOrder(const CLightFace& face, const ActiveLight& active, FaceScratch& scratch) {
    CSampleBuffers& samples = scratch.samples;
    const uint32_t ahead =
        samples.runs.empty() ? static_cast<uint32_t>(samples.positions.size()) : samples.runs[0].first;
    for (uint32_t i = 0; i < ahead; i++) SmoothSpot(face, scratch, i);
    bool strong = false;
    for (const SampleRun& run : samples.runs) {
        Vec3 value;
        const bool lights = LightAt(active, SmoothSpot(face, scratch, run.first), PhongHorizon, value);
        for (uint32_t i = run.first + 1; i < run.first + run.count; i++) SmoothSpot(face, scratch, i);
        if (lights && AddToRun(samples, run, value)) strong = true;
    }
    return strong;
}

}  // namespace

void CFlatFace::ApplyLight(const ActiveLight& active, FaceScratch& scratch) {
    if (!ReachesFlatFace(*this, active)) return;
    CSampleBuffers& samples = scratch.samples;
    StartLight(*this, samples);
    const bool strong = LightRuns(active, samples, samples.bounds, FlatHorizon, [&](uint32_t sample) {
        return LightSpot{samples.positions[sample], normal};
    });
    FinishLight(*this, active, strong);
}

void CPhongFace::ApplyLight(const ActiveLight& active, FaceScratch& scratch) {
    if (!ReachesPhongFace(*this, active)) return;
    StartLight(*this, scratch.samples);
    const bool strong = scratch.normals.flips() == PlaneFlips::Apply ? LightInOrder(*this, active, scratch)
                                                                     : LightKeptSpots(*this, active, scratch);
    FinishLight(*this, active, strong);
}

}  // namespace k2k
