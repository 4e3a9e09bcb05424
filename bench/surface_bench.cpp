// The region lists of a mesh level: from surfaces to meshes, over levels of growing size. The time per entry must stay.
#include <benchmark/benchmark.h>

#include "levelfile/geometry_data.h"
#include "levelfile/portal_data.h"
#include "surface/surface_tables.h"

namespace k2k {
namespace {

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
