#include "light/direct_lighting.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "driver/build_log.h"
#include "driver/run_stats.h"
#include "levelfile/geometry_data.h"
#include "light/light_face.h"
#include "light/light_finishing.h"
#include "light/lighting_state.h"
#include "light/phong_table.h"
#include "light/rays.h"
#include "radiosity/worker_pool.h"

namespace k2k {
namespace {

constexpr int32_t SurfacesPerDot = 30;
constexpr int32_t PlainVersion = 0;

using FaceTable = std::vector<std::unique_ptr<CLightFace>>;  // by surface; null: no lightmap

FaceTable MakeFaces() {
    FaceTable faces(Geometry().surfaces.size());
    for (uint32_t i = 0; i < faces.size(); i++) faces[i] = MakeLightFace(i);
    return faces;
}

// Hands out surfaces in order and shows how far the work is.
class SurfaceQueue {
  public:
    explicit SurfaceQueue(size_t count) : count_(count) {}

    // Starts from the first surface. Dots that were printed already are not printed again.
    void Restart() {
        next_ = 0;
        StartProgress(static_cast<int32_t>(count_));
    }

    // The surfaces that are left are not handed out.
    void Drop() {
        const std::lock_guard lock(guard_);
        next_ = count_;
    }

    std::optional<size_t> Next() {
        const std::lock_guard lock(guard_);
        if (next_ == count_) return std::nullopt;
        const int32_t done = ++ProgressDone;
        if (done % SurfacesPerDot == 0 && done > dotsUntil_) {
            dotsUntil_ = done;
            BuildLog(".");
        }
        return next_++;
    }

  private:
    std::mutex guard_;
    const size_t count_;
    size_t next_ = 0;
    int32_t dotsUntil_ = 0;  // surfaces that dots were printed for
};

// Lights all faces and keeps each one's block in its surface's place, so that it does not matter who lit it.
class FaceLighter {
  public:
    explicit FaceLighter(const FaceTable& faces) : faces_(faces), queue_(faces.size()) {}

    void LightAll() {
        if (!LightOnWorkers(SettleThreadCount(), PlaneFlips::Refuse)) {
            // Planes have to be negated on the way: only the order of one worker gives the right normals.
            for (size_t i = 0; i < faces_.size(); i++) ForgetAttempt(i);
            LightOnWorkers(1, PlaneFlips::Apply);
        }
        for (auto& block : blocks_) {
            if (block) LightBlocks().push_back(std::move(*block));
        }
    }

  private:
    // False when the order of the surfaces matters.
    bool LightOnWorkers(int32_t workers, PlaneFlips flips) {
        blocks_.clear();
        blocks_.resize(faces_.size());
        orderMatters_ = false;
        queue_.Restart();
        RunWorkers(workers, [&](int32_t) { Work(flips); });
        return !orderMatters_;
    }

    void Work(PlaneFlips flips) {
        FaceScratch scratch(smooth_, flips);
        try {
            while (const auto surface = queue_.Next()) LightOne(*surface, scratch);
        } catch (const PlaneFlipNeeded&) {
            orderMatters_ = true;
            queue_.Drop();
        } catch (...) {
            queue_.Drop();
            throw;
        }
        AddStat("rays", TakeRayCount());
    }

    void LightOne(size_t surface, FaceScratch& scratch) {
        if (!faces_[surface]) return;
        const std::unique_ptr<CLightFace> face = faces_[surface]->Clone();
        blocks_[surface] = LightSurface(*face, scratch);
    }

    // The surface as its face was made.
    void ForgetAttempt(size_t surface) {
        if (faces_[surface]) SizeLightFace(*faces_[surface]->Clone(), static_cast<uint32_t>(surface), CoarseStep);
    }

    const FaceTable& faces_;
    const CPhongTable smooth_;
    SurfaceQueue queue_;
    std::vector<std::optional<LightBlock>> blocks_;
    std::atomic<bool> orderMatters_ = false;
};

}  // namespace

void GenerateLightmaps() {
    OpenLighting();
    SetDirectLights();
    BuildLog(" \nGenerating lightmaps ...");
    {
        const FaceTable faces = MakeFaces();
        FaceLighter(faces).LightAll();
        FinishLightmaps(PlainVersion);
    }
    BuildLog("... ok");
    CloseLighting();
}

}  // namespace k2k
