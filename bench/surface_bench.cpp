// Kernels of surface building: welding corners to vertices, and the region lists of a mesh level, from surfaces to
// meshes. The time per item must stay in levels of growing size.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <vector>

#include "levelfile/geometry_data.h"
#include "levelfile/portal_data.h"
#include "surface/surface_tables.h"
#include "surface/weld_table.h"

namespace k2k {
namespace {

// The corners of walls all over a level: each point comes four times, a little off.
std::vector<Vec3> CornersOfWalls(int64_t count) {
    constexpr float Bound = 4000, Off = 0.0005F;
    std::mt19937 engine(1);
    std::uniform_int_distribution<int> place(-500, 500);
    std::uniform_real_distribution<float> off(-Off, Off);
    std::vector<Vec3> corners;
    while (static_cast<int64_t>(corners.size()) < count) {
        Vec3 point;
        for (float& v : point) v = static_cast<float>(place(engine)) * Bound / 500;
        for (int i = 0; i < 4; i++) corners.push_back({point[0] + off(engine), point[1] + off(engine), point[2]});
    }
    std::shuffle(corners.begin(), corners.end(), engine);
    return corners;
}

void WeldsCorners(benchmark::State& state) {
    constexpr float Bound = 4096;
    constexpr int32_t Planes = 64;
    const std::vector<Vec3> corners = CornersOfWalls(state.range(0));
    size_t vertexCount = 0;
    for (auto _ : state) {
        WeldTable table;
        table.InitWeldHash(Bound);
        std::vector<Vec3> vertices;
        int32_t plane = 0;
        for (const Vec3& corner : corners) {
            benchmark::DoNotOptimize(table.WeldVertex(corner, plane++ % Planes, vertices));
        }
        vertexCount = vertices.size();
    }
    state.counters["vertices"] = static_cast<double>(vertexCount);
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(WeldsCorners)->Arg(4000)->Arg(32000)->Arg(256000)->Unit(benchmark::kMicrosecond);

constexpr uint32_t SurfacesOfMesh = 6, EntriesOfRegion = 24;

// Meshes of six surfaces; each region names 24 surfaces from all over the level.
void MakeLevel(uint32_t entries) {
    Geometry().Clear();
    Portals().Clear();
    for (uint32_t i = 0; i < entries; i++) {
        if (i % SurfacesOfMesh == 0) Geometry().meshes.emplace_back();
        Geometry().meshes.back().surfaces.insert(static_cast<int32_t>(i));
        if (i % EntriesOfRegion == 0) Portals().regions.emplace_back().firstSurface = i;
        Portals().regions.back().surfaceCount++;
        Portals().regionSurfaces.push_back((i * 7919U) % entries);
    }
}

void RemapsRegionLists(benchmark::State& state) {
    const auto entries = static_cast<uint32_t>(state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        MakeLevel(entries);
        state.ResumeTiming();
        RemapRegionLists();
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(RemapsRegionLists)->RangeMultiplier(4)->Range(4096, 262144)->Complexity(benchmark::oN);

}  // namespace
}  // namespace k2k
