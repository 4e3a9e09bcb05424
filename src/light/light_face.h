// The direct road's working object for one surface: lightmap axes and extents, samples, light, and at last a block of
// texels.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>

#include "levelfile/level_records.h"
#include "light/light_block.h"
#include "light/light_record.h"
#include "light/phong_normal.h"
#include "light/sample_buffers.h"

namespace k2k {

// Texel steps in world units of the texture: every lit surface, and surfaces that a shadow-casting light reaches.
constexpr int32_t CoarseStep = 16;
constexpr int32_t FineStep = 8;

struct LightFaceFields {
    uint32_t surfaceIndex = 0;
    std::array<int32_t, 2> size{};  // lightmap size in texels, s and t
    uint32_t lit = 0;               // a light has contributed, or ambient makes the face worth keeping
    SurfaceRecord* surface = nullptr;
    float planeDist = 0;  // the plane as the surface sees it
    Vec3 normal{};
    Vec3 centre{};  // of the outline, one unit off the face
    int32_t sampleCount = 0;
    Vec3 texOrigin{};                  // world point of texture coordinate (0, 0), one unit off the face
    std::array<Vec3, 2> worldVecs{};   // texture axes as vectors
    std::array<Vec3, 2> texToWorld{};  // texture steps in the face's plane
    std::array<std::array<float, 4>, 2> worldToTex{};  // with offsets
    std::array<float, 2> exactMin{}, exactMax{};       // texture extents of the vertices
    std::array<int32_t, 2> texMin{};                   // first texel coordinate
    std::array<int32_t, 2> sampleDim{};                // sample grid, twice the size when oversampling
    uint8_t shadowed = 0;                              // a shadow-casting light is strong somewhere on the face
};

// What a worker lights its faces with. Nothing of it outlasts a face but the smooth polygons that it has seen.
struct FaceScratch {
    FaceScratch(const CPhongTable& smooth, PlaneFlips flips) : normals(smooth, flips) {}

    CSampleBuffers samples;
    CSmoothNormals normals;
};

class CLightFace : public LightFaceFields {
  public:
    virtual void BuildSamples(int32_t step, FaceScratch& scratch) = 0;
    // Adds one light to all samples.
    virtual void ApplyLight(const ActiveLight& active, FaceScratch& scratch) = 0;
    // Clears all fields.
    virtual void Reset(FaceScratch* scratch) = 0;
    virtual ~CLightFace() = default;

    virtual std::unique_ptr<CLightFace> Clone() const = 0;

  protected:
    void ClearFields() { static_cast<LightFaceFields&>(*this) = LightFaceFields(); }
};

// A surface with one normal.
class CFlatFace final : public CLightFace {
  public:
    void BuildSamples(int32_t step, FaceScratch& scratch) override;
    void ApplyLight(const ActiveLight& active, FaceScratch& scratch) override;
    void Reset(FaceScratch* scratch) override;
    std::unique_ptr<CLightFace> Clone() const override { return std::make_unique<CFlatFace>(*this); }
};

// A surface that is shaded smoothly across its edges.
class CPhongFace final : public CLightFace {
  public:
    void BuildSamples(int32_t step, FaceScratch& scratch) override;
    void ApplyLight(const ActiveLight& active, FaceScratch& scratch) override;
    void Reset(FaceScratch* scratch) override;
    std::unique_ptr<CLightFace> Clone() const override { return std::make_unique<CPhongFace>(*this); }
};

// The face of a surface, sized for the coarse step; null when the surface gets no lightmap.
std::unique_ptr<CLightFace> MakeLightFace(uint32_t surfaceIndex);

// False when the surface has no usable axes. Fatal when it is too large for the step.
bool SizeLightFace(CLightFace& face, uint32_t surfaceIndex, int32_t step);
bool CalcFaceVectors(CLightFace& face, int32_t step);
void CalcFaceExtents(CLightFace& face, int32_t step);

// The whole lighting of one face. The block, if the surface gets one, goes to the caller, who keeps the surfaces'
// order.
std::optional<LightBlock> LightSurface(CLightFace& face, FaceScratch& scratch);

}  // namespace k2k
