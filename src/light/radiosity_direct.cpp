#include "light/radiosity_direct.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "driver/build_log.h"
#include "driver/build_options.h"
#include "light/face_axes.h"
#include "light/sample_buffers.h"
#include "light/surface_geometry.h"
#include "radiosity/make_patches.h"
#include "solid/vectors.h"

namespace k2k {
namespace {

constexpr size_t MaxFaceStyles = 4;
constexpr int RefinePasses = 4;
constexpr double RefineContrast = 0.015625;
constexpr double BrightnessPower = 0.45454545454545453;

// Leaves out the lights that certainly give nothing to the places where a surface is sampled. Skewed texture axes carry
// those away from the surface, and even out of its plane.
class LightPicker {
  public:
    explicit LightPicker(const FaceLight& face) : info_(face.info) {
        const auto& [s, t] = info_.texToWorld;
        for (size_t c = 0; c < 3; c++) {
            reach_[c] = static_cast<float>(RefineReach * (std::fabs(s[c]) + std::fabs(t[c]))) + RoundingReach;
        }
        heightReach_ = RefineReach * (std::fabs(Dot(s, info_.normal)) + std::fabs(Dot(t, info_.normal)));
        bounds_ = {face.fragments[0].position, face.fragments[0].position};
        lowest_ = Dot(face.fragments[0].position, info_.normal);
        for (const SampleFragment& fragment : face.fragments) {
            AddPlace(fragment.position);
            // The middle of the points at which the fragment is sampled again.
            const LightmapPoint middle = WorldToLightmap(info_, fragment.position);
            AddPlace(LightmapToWorld(info_, middle.u, middle.v));
        }
    }

    bool CanReach(const DirectLight& light) const {
        if (light.type == DirectLightType::Sun) return !info_.flat || Dot(light.normal, info_.normal) < 0;
        if (info_.flat && Dot(light.origin, info_.normal) < lowest_ - RoundingReach) return false;
        if (light.type == DirectLightType::Surface) return true;
        return !bounds_.IsBeyond(light.origin, light.intensity);
    }

  private:
    static constexpr float RoundingReach = 0.1F;
    static constexpr double RefineReach = 16 * 0.376;  // of the new samples from their middle, up to 0.375 texels

    void AddPlace(const Vec3& position) {
        bounds_.Add(Sub(position, reach_));
        bounds_.Add(Add(position, reach_));
        lowest_ = std::min(lowest_, Dot(position, info_.normal) - heightReach_);
    }

    const FaceInfo& info_;
    Vec3 reach_{};
    double heightReach_ = 0;
    SampleBounds bounds_;
    double lowest_ = 0;  // along the normal
};

// Lights one surface.
class FaceLighter {
  public:
    FaceLighter(const DirectPass& pass, FaceLight& face) : pass_(pass), face_(face) {}

    void Light() {
        PickLights();
        face_.styles.fill(FreeStyle);
        StartStyle(0);
        for (size_t k = 0; k < face_.fragments.size(); k++) {
            SampleFragment& fragment = face_.fragments[k];
            fragment.normal = NormalAt(fragment.position);
            if (AddLights(k, fragment.position, fragment.normal)) face_.hasLight = true;
        }
        for (int32_t slot = 0; slot < face_.styleCount; slot++) RefineStyle(static_cast<size_t>(slot));
    }

  private:
    uint32_t surfaceIndex() const { return face_.info.surfaceIndex; }

    Vec3 NormalAt(const Vec3& position) const {
        return face_.info.flat ? face_.info.normal : pass_.normals.FaceNormalAt(surfaceIndex(), position);
    }

    // Takes the next slot for a style.
    void StartStyle(int32_t style) {
        face_.styles[static_cast<size_t>(face_.styleCount++)] = style;
        face_.samples.emplace_back(face_.fragments.size());
    }
    bool IsFree(size_t slot) const { return slot >= static_cast<size_t>(face_.styleCount); }

    void PickLights();
    size_t FindSlot(int32_t style);
    bool AddLights(size_t k, const Vec3& point, const Vec3& normal);
    void AddLightOfStyle(int32_t style, const Vec3& point, Vec3& sum) const;
    void RefineStyle(size_t slot);
    bool RefineFragment(size_t slot, size_t k);
    std::vector<size_t> HighContrast(const std::vector<double>& brightness, const std::vector<bool>& done) const;

    const DirectPass& pass_;
    FaceLight& face_;
    std::vector<const DirectLight*> lights_;  // those that can reach the surface, in the order of the list
    bool warned_ = false;
};

void FaceLighter::PickLights() {
    if (face_.fragments.empty()) return;
    const LightPicker picker(face_);
    for (const DirectLight& light : pass_.lights) {
        if (picker.CanReach(light)) lights_.push_back(&light);
    }
}

void AddScaled(Vec3& sum, const DirectLight& light, const LightStrength& strength) {
    const double factor = strength.scale * light.intensity * strength.dot;
    for (size_t c = 0; c < 3; c++) sum[c] = static_cast<float>(sum[c] + light.colour[c] * factor);
}

// The slot of a style, or MaxFaceStyles when the surface has no room for another one.
size_t FaceLighter::FindSlot(int32_t style) {
    for (size_t slot = 0; slot < face_.styles.size(); slot++) {
        if (!IsFree(slot)) {
            if (face_.styles[slot] == style) return slot;
            continue;
        }
        if (slot < MaxFaceStyles) {
            StartStyle(style);
            return slot;
        }
        if (!warned_) {
            BuildLog("\nWARNING: Face %d has too many lightstyles\n", static_cast<int32_t>(surfaceIndex()));
        }
        warned_ = true;
        return MaxFaceStyles;
    }
    FatalError("Too much lightstyles on face");
}

bool FaceLighter::AddLights(size_t k, const Vec3& point, const Vec3& normal) {
    bool added = false;
    for (const DirectLight* light : lights_) {
        LightStrength strength;
        if (SampleLight(*light, surfaceIndex(), point, normal, strength) != LightReach::Lit) continue;
        const size_t slot = FindSlot(light->style);
        if (slot == MaxFaceStyles) continue;
        AddScaled(face_.samples[slot][k], *light, strength);
        added = true;
    }
    return added;
}

void FaceLighter::AddLightOfStyle(int32_t style, const Vec3& point, Vec3& sum) const {
    const Vec3 normal = NormalAt(point);
    for (const DirectLight* light : lights_) {
        LightStrength strength;
        if (light->style != style) continue;
        if (SampleLight(*light, surfaceIndex(), point, normal, strength) != LightReach::Lit) continue;
        AddScaled(sum, *light, strength);
    }
}

double BrightnessOf(const Vec3& colour) {
    return std::pow(static_cast<double>(colour[0]) + colour[1] + colour[2], BrightnessPower);
}

// The fragments that are not done and differ from a texel next to theirs.
std::vector<size_t> FaceLighter::HighContrast(const std::vector<double>& brightness,
                                              const std::vector<bool>& done) const {
    const int32_t width = face_.info.size[0];
    const int32_t height = face_.info.size[1];
    std::vector<size_t> found;
    for (size_t k = 0; k < face_.fragments.size(); k++) {
        if (done[k]) continue;
        const auto x = static_cast<int32_t>(face_.fragments[k].x);
        const auto y = static_cast<int32_t>(face_.fragments[k].y);
        const double own = brightness[static_cast<size_t>(y) * width + x];
        double contrast = 0;
        for (int32_t ny = std::max(y - 1, 0); ny <= std::min(y + 1, height - 1); ny++) {
            for (int32_t nx = std::max(x - 1, 0); nx <= std::min(x + 1, width - 1); nx++) {
                contrast = std::max(contrast, std::fabs(own - brightness[static_cast<size_t>(ny) * width + nx]));
            }
        }
        if (contrast >= RefineContrast) found.push_back(k);
    }
    return found;
}

// Samples a fragment again at 4 x 4 points. False when none of them lies on the surface.
bool FaceLighter::RefineFragment(size_t slot, size_t k) {
    const SampleFragment& fragment = face_.fragments[k];
    const LightmapPoint centre = WorldToLightmap(face_.info, fragment.position);
    Vec3 sum{};
    int32_t count = 0;
    for (int i = 0; i < 4; i++) {
        for (int j = 0; j < 4; j++) {
            const double u = i * 0.25 + centre.u - 0.375;
            const double v = j * 0.25 + centre.v - 0.375;
            const Vec3 point = LightmapToWorld(face_.info, u, v);
            if (fragment.polygon && !PolygonContainsPoint(*fragment.polygon, Widen(point))) continue;
            AddLightOfStyle(face_.styles[slot], point, sum);
            count++;
        }
    }
    if (count == 0) return false;
    for (size_t c = 0; c < 3; c++) face_.samples[slot][k][c] = sum[c] / static_cast<float>(count);
    return true;
}

void FaceLighter::RefineStyle(size_t slot) {
    const auto texelOf = [&](size_t k) {
        return static_cast<size_t>(face_.fragments[k].y) * face_.info.size[0] + face_.fragments[k].x;
    };
    std::vector<double> brightness(static_cast<size_t>(face_.info.texels()));
    std::vector<bool> done(face_.fragments.size());
    for (size_t k = 0; k < done.size(); k++) brightness[texelOf(k)] = BrightnessOf(face_.samples[slot][k]);
    for (int pass = 1; pass <= RefinePasses; pass++) {
        const std::vector<size_t> found = HighContrast(brightness, done);
        if (found.empty()) break;
        for (const size_t k : found) {
            done[k] = true;
            if (RefineFragment(slot, k)) brightness[texelOf(k)] = BrightnessOf(face_.samples[slot][k]);
        }
    }
}

void LightPatchesOf(const DirectPass& pass, const FaceLight& face) {
    for (size_t k = 0; k < face.fragments.size(); k++) {
        AddSampleToPatches(pass.patches, face.fragments[k].position, face.samples[0][k], face.info.surfaceIndex);
    }
    AverageSamples(pass.patches, face.info.surfaceIndex);
}

}  // namespace

void BuildFaceLights(const DirectPass& pass, uint32_t surfaceIndex) {
    if (!IsLitSurface(SurfaceRow(surfaceIndex))) return;
    auto face = std::make_unique<FaceLight>();
    face->info = InitFace(surfaceIndex, pass.normals);
    // Sizes below 1 come from coordinates that are no numbers.
    const bool isSized = face->info.size[0] > 0 && face->info.size[1] > 0;
    if (!isSized || face->info.texels() > MaxFaceTexels) FatalError("Surface to large to map");
    MakeFragments(*face);
    FaceLighter(pass, *face).Light();
    if (Options().radbounce > 0) LightPatchesOf(pass, *face);
    for (SampleFragment& fragment : face->fragments) fragment.polygon.reset();
    pass.faceLights[surfaceIndex] = std::move(face);
}

}  // namespace k2k
