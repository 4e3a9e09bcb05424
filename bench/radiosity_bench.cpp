// The radiosity road on a real level that K2K_BENCH_LEVEL names: its pool runs on one and two threads, and what the
// transfers cost against the plain double loop over all patches.
#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <optional>
#include <string>

#include "driver/build_log.h"
#include "driver/build_options.h"
#include "driver/run_stats.h"
#include "levelfile/file_klv.h"
#include "levelfile/geometry_data.h"
#include "light/level_rays.h"
#include "light/level_surfaces.h"
#include "light/lighting_state.h"
#include "light/radiosity_lighting.h"
#include "light/rays.h"
#include "mapread/entity.h"
#include "radiosity/transfers.h"
#include "radiosity/worker_pool.h"

namespace k2k {
namespace {

bool LoadLevel(benchmark::State& state) {
    const char* path = std::getenv("K2K_BENCH_LEVEL");
    if (path == nullptr || !std::filesystem::exists(path)) {
        state.SkipWithError("K2K_BENCH_LEVEL names no level");
        return false;
    }
    Options().quiet = true;
    Options().solidsky = true;
    ClearDataSets();
    ClearEntities();
    CFileKLV file(path);
    file.Open(true);
    file.Load();
    Options().mesh = !Geometry().meshes.empty();
    PlaceObjects();
    TakeLoggedText();
    return true;
}

// A counter of the run's statistics.
double Stat(const std::string& name) {
    const std::string json = RunStatsJson();
    const size_t at = json.find("\"" + name + "\":");
    return at == std::string::npos ? 0 : std::atof(json.c_str() + at + name.size() + 3);
}

// The whole road; the counters are the seconds of its pool runs.
void RadiosityRoad(benchmark::State& state) {
    if (!LoadLevel(state)) return;
    Options().threads = static_cast<int32_t>(state.range(0));
    const RayStructures rays;
    for (auto _ : state) {
        Options().lmambient = 50;
        ResetRunStats();
        GenerateRadiosityLightmaps();
    }
    for (const char* run : {"direct", "transfer", "bounce", "gather"}) {
        state.counters[run] = Stat(std::string(run) + "_us") / 1e6;
    }
    state.counters["patches"] = Stat("patches");
}
BENCHMARK(RadiosityRoad)->Arg(1)->Arg(2)->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();

LightPatches PatchesOfLevel() {
    CVertexNormals normals;
    const LevelSurfaces level(normals);
    std::vector<Vec3> centres;
    LightPatches patches = MakePatches(level, centres);
    normals.SetCentres(std::move(centres));
    SubdividePatches(patches, Options().radsubdiv, level);
    return patches;
}

// Pairs for which the plain double loop casts a ray.
int64_t PairsWithARay(const LightPatches& patches) {
    std::vector<PatchSite> sites;
    for (const CLightPatch& patch : patches.patches) sites.push_back({patch.origin, patch.normal, patch.area});
    std::atomic<int64_t> pairs = 0;
    RunOnThreads(patches.count(), false, [&](int32_t me) {
        int64_t count = 0;
        const PatchSite& from = sites[static_cast<size_t>(me)];
        for (const PatchSite& to : sites) {
            if (&to != &from && TransferAmount(from, to) > 0) count++;
        }
        pairs += count;
    });
    return pairs;
}

// walks_share: tree walks as a share of those of the plain double loop.
void TransfersOfLevel(benchmark::State& state) {
    if (!LoadLevel(state)) return;
    Options().threads = static_cast<int32_t>(state.range(0));
    const RayStructures rays;
    const LightPatches patches = PatchesOfLevel();
    const auto pairs = static_cast<double>(PairsWithARay(patches));
    std::atomic<int64_t> walks = 0;
    const std::clock_t start = std::clock();
    for (auto _ : state) {
        const CLevelRays levelRays(patches);
        CTransfers transfers(patches, levelRays);
        RunOnThreads(patches.count(), false, [&](int32_t patch) {
            transfers.MakeTransfers(patch);
            walks += TakeRayCount();
        });
        transfers.ShareOut();
    }
    const double cpuSeconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    const auto runs = static_cast<double>(state.iterations());
    state.counters["pairs"] = pairs;
    state.counters["walks_share"] = static_cast<double>(walks) / runs / pairs;
    state.counters["pairs_per_core_second"] = pairs * runs / cpuSeconds;
}
BENCHMARK(TransfersOfLevel)->Arg(1)->Arg(2)->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();

}  // namespace
}  // namespace k2k
