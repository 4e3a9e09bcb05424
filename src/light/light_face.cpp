#include "light/light_face.h"

#include <new>

#include "driver/build_log.h"
#include "driver/build_options.h"
#include "light/face_axes.h"
#include "light/lighting_state.h"
#include "light/near_equal.h"
#include "light/sample_placement.h"
#include "light/sample_repair.h"

namespace k2k {
namespace {

constexpr int64_t MaxFineTexels = 65536;
constexpr uint32_t NoLightOffset = 0xFFFFFFFF;

uint8_t LightShiftOf(int32_t step) {
    switch (step) {
        case 1:
            return 0;
        case 2:
            return 1;
        case 4:
            return 2;
        case 8:
            return 3;
        default:
            return 4;
    }
}

void ForgetLightmap(SurfaceRecord& surface) {
    surface.lightShift = NoLightmapShift;
    surface.lightOffset = NoLightOffset;
}

// The mean of the outline, one unit off the face.
Vec3 CentreOf(const SurfaceRecord& surface, const Vec3& normal) {
    const Vec3d mean = MeanOf(ConvexOutline(SurfaceVertices(surface), normal));
    return Narrow({mean[0] + normal[0], mean[1] + normal[1], mean[2] + normal[2]});
}

TextureAxes AxesOf(const CLightFace& face) {
    TextureAxes axes;
    for (size_t i = 0; i < 2; i++) {
        axes.axis[i] = face.worldVecs[i];
        axes.offset[i] = face.worldToTex[i][3];
    }
    return axes;
}

void PlaceSamples(CLightFace& face, int32_t step, bool phong, CSampleBuffers& buffers) {
    std::vector<LightSample> samples;
    CalcSamples(face, samples, step, phong);
    RepairSamples(samples, face.sampleDim[0], face.sampleDim[1], face.centre);
    std::vector<Vec3> positions;
    positions.reserve(samples.size());
    for (const LightSample& sample : samples) positions.push_back(sample.position);
    buffers.SetPositions(std::move(positions));
}

void ApplyAllLights(CLightFace& face, FaceScratch& scratch) {
    face.lit = 0;
    for (const ActiveLight& active : Lighting().ActiveLights) face.ApplyLight(active, scratch);
}

LightBlock BlockOf(const CLightFace& face) {
    LightBlock block = MakeLightBlock(1, static_cast<uint32_t>(face.size[0]), static_cast<uint32_t>(face.size[1]), 1);
    block.group = face.surface->blockId;
    block.lightShift = face.surface->lightShift;
    block.surfaceIndex = face.surfaceIndex;
    return block;
}

// One sample a texel.
std::optional<LightBlock> StoreFlat(const CLightFace& face, const CSampleBuffers& samples) {
    if (face.size[0] == 0 || face.size[1] == 0) return std::nullopt;
    LightBlock block = BlockOf(face);
    const Vec3& ambient = Lighting().AmbientColour;
    for (size_t i = 0; i < block.texels.size(); i++) {
        for (size_t c = 0; c < 3; c++)
            block.texels[i][c] = static_cast<float>(samples.colours[i][c] * 0.5 + ambient[c]);
    }
    return block;
}

// Half the mean of four samples a texel.
std::optional<LightBlock> StoreOversampled(const CLightFace& face, const CSampleBuffers& samples) {
    if (face.size[0] == 0 || face.size[1] == 0) return std::nullopt;
    LightBlock block = BlockOf(face);
    const Vec3& ambient = Lighting().AmbientColour;
    const auto& colours = samples.colours;
    const size_t w = block.width;
    for (size_t y = 0; y < block.height; y++) {
        for (size_t x = 0; x < w; x++) {
            const size_t a = (x + y * w * 2) * 2;
            const size_t b = ((y * 2 + 1) * w + x) * 2;
            for (size_t c = 0; c < 3; c++) {
                const double sum =
                    static_cast<double>(colours[a][c]) + colours[a + 1][c] + colours[b][c] + colours[b + 1][c];
                block.texels[y * w + x][c] = static_cast<float>(0.125 * sum + ambient[c]);
            }
        }
    }
    return block;
}

// Without the store flag only the face's lit mark can change.
std::optional<LightBlock> Store(CLightFace& face, const CSampleBuffers& samples, bool store) {
    if (face.lit == 0) {
        if (Lighting().AmbientLevel == 0) return std::nullopt;
        face.lit = 1;
    }
    if (!store) return std::nullopt;
    return Options().preview ? StoreFlat(face, samples) : StoreOversampled(face, samples);
}

// Lights a face that is in shadow somewhere a second time, in twice the resolution.
std::optional<LightBlock> LightFinely(CLightFace& face, FaceScratch& scratch) {
    SurfaceRecord& surface = *face.surface;
    const uint32_t surfaceIndex = face.surfaceIndex;
    face.Reset(&scratch);
    face.surface = &surface;
    if (!SizeLightFace(face, surfaceIndex, FineStep)) return std::nullopt;
    scratch.samples.Empty();
    face.BuildSamples(FineStep, scratch);
    ApplyAllLights(face, scratch);
    if (face.lit == 0 && Lighting().AmbientLevel == 0 && Options().litmapsonly) {
        ForgetLightmap(surface);
        return std::nullopt;
    }
    return Store(face, scratch.samples, true);
}

}  // namespace

void CFlatFace::BuildSamples(int32_t step, FaceScratch& scratch) {
    PlaceSamples(*this, step, false, scratch.samples);
}
void CPhongFace::BuildSamples(int32_t step, FaceScratch& scratch) {
    PlaceSamples(*this, step, true, scratch.samples);
}

void CFlatFace::Reset(FaceScratch* scratch) {
    ClearFields();
    if (scratch != nullptr) scratch->samples.ClearColours();
}

void CPhongFace::Reset(FaceScratch*) {
    ClearFields();
}

std::unique_ptr<CLightFace> MakeLightFace(uint32_t surfaceIndex) {
    SurfaceRecord& surface = SurfaceRow(surfaceIndex);
    if (surface.texInfoId < 1) return nullptr;
    const uint32_t flags = SurfaceFlags(surface);
    if ((flags & TextureNoLightmap) != 0) return nullptr;
    std::unique_ptr<CLightFace> face;
    if ((flags & TexturePhong) != 0) {
        face.reset(new (std::nothrow) CPhongFace);
    } else {
        face.reset(new (std::nothrow) CFlatFace);
    }
    if (!face) FatalError("\n Couldn´t create lightface- out of memory !\n");
    face->Reset(nullptr);
    face->surface = &surface;
    surface.lightOffset = NoLightOffset;
    if (!SizeLightFace(*face, surfaceIndex, CoarseStep)) return nullptr;
    return face;
}

bool SizeLightFace(CLightFace& face, uint32_t surfaceIndex, int32_t step) {
    SurfaceRecord& surface = *face.surface;
    face.surfaceIndex = surfaceIndex;
    surface.lightShift = LightShiftOf(step);
    const OrientedPlane plane = SurfacePlane(surface);
    face.normal = plane.normal;
    face.planeDist = plane.dist;
    face.centre = CentreOf(surface, face.normal);
    if (!CalcFaceVectors(face, step)) return false;
    CalcFaceExtents(face, step);
    const int64_t limit = step == CoarseStep ? MaxFaceTexels : MaxFineTexels;
    if (int64_t{face.size[0]} * face.size[1] > limit) FatalError("E023");
    // Only coordinates that are no numbers come to this.
    if (face.size[0] < 1 || face.size[1] < 1) FatalError("E023");
    return true;
}

bool CalcFaceVectors(CLightFace& face, int32_t) {
    const TextureAxes axes = LightmapAxesOf(*face.surface);
    for (size_t i = 0; i < 2; i++) {
        const Vec3& axis = axes.axis[i];
        face.worldVecs[i] = axis;
        face.worldToTex[i] = {axis[0], axis[1], axis[2], axes.offset[i]};
    }
    const TextureSlant slant = SlantOf(axes, face.normal);
    if (slant.distScale == 0) {
        ForgetLightmap(*face.surface);
        if (WarnOnce(WarnFamily::W023)) BuildLog("\n W023 - Invalid texture axis \n");
        return false;
    }
    const WorldAxes world = WorldAxesOf(axes, slant, {face.normal, face.planeDist}, 1.0);
    face.texToWorld = world.texToWorld;
    face.texOrigin = world.texOrigin;
    return true;
}

void CalcFaceExtents(CLightFace& face, int32_t step) {
    const FaceExtents extents = MeasureExtents(*face.surface, AxesOf(face), step);
    face.exactMin = extents.exactMin;
    face.exactMax = extents.exactMax;
    face.texMin = extents.texMin;
    face.size = extents.size;
    // The size stays as it is, so that the limit of the step ends the build.
    if (extents.texels() > MaxFaceTexels) face.lit = static_cast<uint32_t>(MaxFaceTexels);
}

std::optional<LightBlock> LightSurface(CLightFace& face, FaceScratch& scratch) {
    scratch.samples.Empty();
    face.BuildSamples(CoarseStep, scratch);
    ApplyAllLights(face, scratch);
    if (!Options().mesh) Store(face, scratch.samples, false);
    if (Options().nod3dlmaps) return std::nullopt;
    if (face.shadowed != 0) return LightFinely(face, scratch);
    return Store(face, scratch.samples, true);
}

}  // namespace k2k
