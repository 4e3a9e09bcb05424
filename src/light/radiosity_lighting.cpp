#include "light/radiosity_lighting.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "driver/build_log.h"
#include "driver/build_options.h"
#include "driver/run_stats.h"
#include "levelfile/geometry_data.h"
#include "light/level_rays.h"
#include "light/level_surfaces.h"
#include "light/light_finishing.h"
#include "light/lighting_state.h"
#include "light/radiosity_direct.h"
#include "light/radiosity_lights.h"
#include "light/radiosity_texels.h"
#include "light/rays.h"
#include "light/vertex_normals.h"
#include "radiosity/bounce_light.h"
#include "radiosity/make_patches.h"
#include "radiosity/transfers.h"
#include "radiosity/worker_pool.h"

namespace k2k {
namespace {

constexpr int32_t CompressedVersion = 1;
constexpr double BytesPerMeg = 1048576;

// Adds the duration of its scope to the run's statistics.
class TimedScope {
  public:
    explicit TimedScope(const char* name) : name_(name) {}
    ~TimedScope() {
        const auto duration = std::chrono::steady_clock::now() - start_;
        AddStat(name_ + "_us", std::chrono::duration_cast<std::chrono::microseconds>(duration).count());
    }
    TimedScope(const TimedScope&) = delete;
    TimedScope& operator=(const TimedScope&) = delete;

  private:
    const std::string name_;
    const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

// Adds the rays that the work items of all workers cast, and the run's duration, to the run's statistics.
void RunCounted(const char* name, int32_t workCount, bool showProgress, const std::function<void(int32_t)>& function) {
    const TimedScope timed(name);
    std::atomic<int64_t> rays = 0;
    RunOnThreads(workCount, showProgress, [&](int32_t item) {
        function(item);
        rays.fetch_add(TakeRayCount(), std::memory_order_relaxed);
    });
    AddStat(std::string(name) + "_rays", rays);
}

class RadiosityRoad {
  public:
    void Light() {
        Prepare();
        LightDirectly();
        if (!lights_.empty() && Options().radbounce >= 1) Bounce();
        Gather();
    }

  private:
    int32_t surfaceCount() const { return static_cast<int32_t>(Geometry().surfaces.size()); }

    void Prepare();
    void LightDirectly();
    void Bounce();
    void Gather();

    CVertexNormals normals_;
    LightPatches patches_;
    std::vector<DirectLight> lights_;
    FaceLights faceLights_;
};

void RadiosityRoad::Prepare() {
    const LevelSurfaces level(normals_);
    std::vector<Vec3> centres;
    patches_ = MakePatches(level, centres);
    normals_.SetCentres(std::move(centres));
    SubdividePatches(patches_, Options().radsubdiv, level);
    AddStat("patches", patches_.count());
    BuildLog("... ok");
}

void RadiosityRoad::LightDirectly() {
    lights_ = BuildDirectLights(patches_);
    BuildLog(" \nGenerating %d direct lights ...", static_cast<int32_t>(lights_.size()));
    faceLights_.resize(Geometry().surfaces.size());
    const DirectPass pass{normals_, lights_, patches_, faceLights_};
    RunCounted("direct", surfaceCount(), true,
               [&](int32_t surface) { BuildFaceLights(pass, static_cast<uint32_t>(surface)); });
    BuildLog("... ok");
}

void RadiosityRoad::Bounce() {
    BuildLog(" \nGenerating radiosity ...");
    const CLevelRays rays(patches_);
    CTransfers transfers(patches_, rays);
    RunCounted("transfer", patches_.count(), true, [&](int32_t patch) { transfers.MakeTransfers(patch); });
    transfers.ShareOut();
    BuildLog("... ok");
    const auto bytes = static_cast<double>(transfers.count()) * sizeof(Transfer);
    BuildLog(" \ntransfer lists: %5.1f megs", bytes / BytesPerMeg);
    AddStat("transfers", transfers.count());
    {
        const TimedScope timed("bounce");
        BounceLight(patches_, transfers);
    }
    transfers.FreeTransfers();
    CheckPatches(patches_);
}

void RadiosityRoad::Gather() {
    BuildLog(" \nGenerating lightmaps ...");
    std::vector<FinishedFace> faces(Geometry().surfaces.size());
    const FinalGather gather{normals_, patches_, faceLights_};
    RunCounted("gather", surfaceCount(), true, [&](int32_t surface) {
        faces[static_cast<size_t>(surface)] = FinalLightFace(gather, static_cast<uint32_t>(surface));
    });
    Lighting().ExposureReference = ComputeExposure(faces);
    for (FinishedFace& face : faces) {
        if (face.block) AddFinishedBlock(std::move(*face.block));
    }
}

}  // namespace

void GenerateRadiosityLightmaps() {
    OpenLighting();
    SetRadiositySun();
    BuildLog("\nUse %d threads", Options().threads);
    BuildLog(" \nPrepare lighting ...");
    RadiosityRoad().Light();
    FinishLightmaps(CompressedVersion);
    BuildLog("... ok");
    CloseLighting();
}

}  // namespace k2k
