// Kernels of solid geometry: plane lookup, clipping and splitting, merging, and the clipping of blocks.
#include <benchmark/benchmark.h>

#include <cmath>
#include <random>

#include "driver/build_log.h"
#include "levelfile/texture_data.h"
#include "solid/csg.h"
#include "solid/merge_list.h"
#include "solid/vectors.h"

namespace k2k {
namespace {

class Random {
  public:
    int Whole(int low, int high) { return std::uniform_int_distribution<int>(low, high)(engine_); }
    float Real(float low, float high) { return std::uniform_real_distribution<float>(low, high)(engine_); }
    Vec3 UnitVector() {
        Vec3 v{Real(-1, 1), Real(-1, 1), Real(-1, 1)};
        Normalize(v);
        Normalize(v);
        return v;
    }

  private:
    std::mt19937 engine_{1};
};

CPlane MakePlane(const Vec3& normal, float dist) {
    CPlane plane{normal, dist};
    SetPlaneType(plane);
    return plane;
}

// Half of the planes axial on a grid, half oblique, as levels have them.
std::vector<CPlane> SomePlanes(int64_t count) {
    Random random;
    std::vector<CPlane> planes;
    for (int64_t i = 0; i < count; ++i) {
        Vec3 normal{};
        if (i % 2 == 0) {
            normal[static_cast<size_t>(random.Whole(0, 2))] = random.Whole(0, 1) == 0 ? 1.0F : -1.0F;
        } else {
            normal = random.UnitVector();
        }
        planes.push_back(MakePlane(normal, static_cast<float>(random.Whole(-4000, 4000))));
    }
    return planes;
}

std::vector<Vec3> Ring(int count, double radius) {
    std::vector<Vec3> points;
    for (int i = 0; i < count; ++i) {
        const double angle = -2 * M_PI * i / count;
        points.push_back(Narrow({radius * std::cos(angle), radius * std::sin(angle), 0}));
    }
    return points;
}

std::unique_ptr<CBlockFace> MakeFace(std::vector<Vec3> points) {
    auto face = std::make_unique<CBlockFace>();
    face->planenum = FindPlane(MakePlane({0, 0, 1}, 0), face->planeside);
    face->points = std::move(points);
    face->contents = {ContentsEmpty, ContentsSolid};
    return face;
}

void FindsPlanes(benchmark::State& state) {
    ResetPlaneTableForTest();
    const std::vector<CPlane> planes = SomePlanes(state.range(0));
    int32_t side = 0;
    for (const CPlane& plane : planes) FindPlane(plane, side);
    size_t i = 0;
    for (auto _ : state) benchmark::DoNotOptimize(FindPlane(planes[i++ % planes.size()], side));
}
BENCHMARK(FindsPlanes)->Arg(100)->Arg(10000)->Arg(100000);

void ClipsPolygons(benchmark::State& state) {
    Random random;
    std::vector<Vec3d> points;
    for (const Vec3& point : Ring(static_cast<int>(state.range(0)), 100)) points.push_back(Widen(point));
    const PolygonRef polygon = MakePolygon(points);
    const CPlane plane = MakePlane(random.UnitVector(), 0);
    for (auto _ : state) benchmark::DoNotOptimize(ClipPolygon(polygon, plane, false, 0.05));
}
BENCHMARK(ClipsPolygons)->Arg(4)->Arg(12);

void SplitsFaces(benchmark::State& state) {
    const auto face = MakeFace(Ring(static_cast<int>(state.range(0)), 100));
    const CPlane plane = MakePlane({1, 0, 0}, 10);
    for (auto _ : state) benchmark::DoNotOptimize(SplitFace(face->Clone(), plane));
}
BENCHMARK(SplitsFaces)->Arg(4)->Arg(12);

// A floor of tiles that arrive in random order and become one face.
void MergesTiles(benchmark::State& state) {
    const auto side = static_cast<int>(state.range(0));
    Random random;
    std::vector<std::unique_ptr<CBlockFace>> tiles;
    for (int i = 0; i < side * side; ++i) {
        const auto x = static_cast<float>(i % side), y = static_cast<float>(i / side);
        tiles.push_back(MakeFace({{x, y + 1, 0}, {x + 1, y + 1, 0}, {x + 1, y, 0}, {x, y, 0}}));
    }
    for (size_t i = tiles.size(); i-- > 1;)
        std::swap(tiles[i], tiles[static_cast<size_t>(random.Whole(0, static_cast<int>(i)))]);
    for (auto _ : state) {
        MergeList list;
        for (const auto& tile : tiles) list.Merge(tile->Clone());
        benchmark::DoNotOptimize(list.Take());
    }
    state.SetItemsProcessed(state.iterations() * side * side);
}
BENCHMARK(MergesTiles)->Arg(8)->Arg(32)->Arg(96);

std::unique_ptr<MapBlock> RandomBox(Random& random, int32_t number, int spread) {
    auto block = std::make_unique<MapBlock>();
    block->number = number;
    for (size_t axis = 0; axis < 3; ++axis) {
        const auto low = static_cast<float>(random.Whole(0, spread) * 16);
        const float high = low + static_cast<float>(random.Whole(1, 12) * 16);
        MapFace face;
        face.normal[axis] = 1;
        face.dist = high;
        block->faces.push_back(face);
        face.normal[axis] = -1;
        face.dist = -low;
        block->faces.push_back(face);
    }
    return block;
}

// Blocks in a space that grows with their number, so that each meets about as many others.
void ClipsBlocks(benchmark::State& state) {
    ResetPlaneTableForTest();
    if (Textures().texinfos.empty()) Textures().AddTexinfo({});
    Random random;
    IntrusiveList<MapBlock> blocks;
    const auto count = static_cast<int32_t>(state.range(0));
    const auto spread = static_cast<int>(8 * std::cbrt(count));
    for (int32_t i = 0; i < count; ++i) blocks.push_front(RandomBox(random, i + 1, spread));
    const CBlockSet set = BuildBlockSet(blocks, 0);
    for (auto _ : state) benchmark::DoNotOptimize(CSGFaces(set, false));
    state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(ClipsBlocks)->Arg(1000)->Arg(16000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace k2k
