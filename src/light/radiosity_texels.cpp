#include "light/radiosity_texels.h"

#include <algorithm>
#include <cmath>

#include "driver/build_options.h"
#include "light/lighting_state.h"
#include "light/splat.h"
#include "light/surface_geometry.h"
#include "solid/vectors.h"

namespace k2k {
namespace {

constexpr uint8_t TexelShift = 4;
constexpr int32_t MaxFinishedStyles = 10;
constexpr Vec3 NoFragmentColour{1, 0, 0};

bool IsWanted(const FaceLight& face) {
    return Lighting().AmbientLevel != 0 || Options().radbounce > 0 || face.hasLight || !Options().litmapsonly;
}

LightBlock BlockOf(const FaceLight& face) {
    const FaceInfo& info = face.info;
    LightBlock block = MakeLightBlock(static_cast<uint32_t>(std::max(face.styleCount, 1)),
                                      static_cast<uint32_t>(info.size[0]), static_cast<uint32_t>(info.size[1]), 1);
    block.group = info.surface->blockId;
    block.surfaceIndex = info.surfaceIndex;
    block.lightShift = TexelShift;
    return block;
}

// Scales a texel, adds the ambient colour in the road's order of components, and leaves nothing negative.
void Expose(Vec3& colour) {
    for (size_t c = 0; c < 3; c++) {
        colour[c] *= Options().litscale;
        colour[c] = static_cast<float>(colour[c] + static_cast<double>(Options().ambrgb[2 - c]) * 255 / 100);
        if (colour[c] < 0) colour[c] = 0;
    }
}

// Fills one style of a face's block.
class StyleGather {
  public:
    StyleGather(const FinalGather& gather, const FaceLight& face, size_t slot) : face_(face), slot_(slot) {
        if (!Options().preview)
            direct_.emplace(SplatFragments(face.info.surfaceIndex, slot, gather.faceLights, gather.normals));
        if (slot == 0 && Options().radbounce > 0)
            bounced_.emplace(SplatPatches(face.info, gather.patches, gather.normals));
    }

    // The colour of a texel; false when it stands for no light of the level.
    bool ColourAt(size_t texel, const Vec3& point, Vec3& colour) const {
        bool valid = true;
        if (face_.fragments.empty()) {
            colour = NoFragmentColour;
            valid = false;
        } else {
            if (direct_) {
                valid = ReadSplat(*direct_, point, colour);
            } else {
                colour = face_.samples[slot_][texel];
            }
            Vec3 extra;
            if (bounced_) {
                ReadSplat(*bounced_, point, extra);
                colour = Add(colour, extra);
            }
        }
        Expose(colour);
        return valid;
    }

  private:
    const FaceLight& face_;
    size_t slot_;
    std::optional<SplatBuffer> direct_, bounced_;
};

}  // namespace

FinishedFace FinalLightFace(const FinalGather& gather, uint32_t surfaceIndex) {
    FinishedFace finished;
    const FaceLight* face = gather.faceLights[surfaceIndex].get();
    if (face == nullptr || !IsWanted(*face)) return finished;
    LightBlock& block = finished.block.emplace(BlockOf(*face));
    const auto knee = static_cast<float>(static_cast<double>(Options().litcomp) * Options().litmax);
    const int32_t styles = std::min(face->styleCount, MaxFinishedStyles);
    Vec3* texel = block.texels.data();
    for (size_t slot = 0; slot < static_cast<size_t>(styles); slot++) {
        block.styles[slot] = face->styles[slot];
        const StyleGather style(gather, *face, slot);
        for (size_t j = 0; j < size_t{block.width} * block.height; j++) {
            const size_t s = j % block.width, t = j / block.width;
            const Vec3 point = LightmapToWorld(face->info, static_cast<double>(s), static_cast<double>(t));
            const bool valid = style.ColourAt(j, point, *texel);
            const float brightest = *std::max_element(texel->begin(), texel->end());
            if (slot == 0 && valid && brightest > knee) finished.exposureSamples.push_back(brightest);
            texel++;
        }
    }
    return finished;
}

double ComputeExposure(const std::vector<FinishedFace>& faces) {
    double sum = 0;
    size_t count = 0;
    for (const FinishedFace& face : faces) {
        for (const float sample : face.exposureSamples) sum += sample;
        count += face.exposureSamples.size();
    }
    if (count == 0) return 0;
    const double mean = sum / static_cast<double>(count);
    double deviation = 0;
    for (const FinishedFace& face : faces) {
        for (const float sample : face.exposureSamples) deviation += std::fabs(sample - mean);
    }
    return mean + deviation / static_cast<double>(count);
}

}  // namespace k2k
