// Kernels of lighting: shadow rays, point in polygon, smooth normals, packing. K2K_BENCH_LEVEL names a level file whose
// surfaces are lit ray by ray in the order of their samples, as the lighting stage does it.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <numbers>
#include <random>

#include "driver/build_log.h"
#include "driver/build_options.h"
#include "levelfile/file_klv.h"
#include "levelfile/geometry_data.h"
#include "levelfile/portal_data.h"
#include "levelfile/texture_data.h"
#include "light/light_face.h"
#include "light/lighting_state.h"
#include "light/page_packer.h"
#include "light/phong_table.h"
#include "light/polygon_test.h"
#include "light/rays.h"
#include "light/selection_order.h"
#include "light/trace_nodes.h"
#include "mapread/entity.h"
#include "solid/vectors.h"

namespace k2k {
namespace {

class Random {
  public:
    int Whole(int low, int high) { return std::uniform_int_distribution<int>(low, high)(engine_); }
    float Real(float low, float high) { return std::uniform_real_distribution<float>(low, high)(engine_); }

  private:
    std::mt19937 engine_{1};
};

constexpr float CellSize = 128;
constexpr float PillarSize = 32;

// A hall of pillars, one a cell, under a balanced tree.
class PillarHall {
  public:
    explicit PillarHall(int cells) {
        ClearDataSets();
        Portals().regions = {{.contents = ContentsSolid}, {.contents = ContentsEmpty}};
        Build(0, 0, cells, cells);
    }

  private:
    int32_t Node(size_t axis, float dist) {
        FinalPlaneRecord plane{{}, dist, static_cast<int32_t>(axis)};
        plane.normal[axis] = 1;
        Geometry().planes.push_back(plane);
        CRegionNode node;
        node.plane = static_cast<uint32_t>(Geometry().planes.size() - 1);
        Portals().nodes.push_back(node);
        return static_cast<int32_t>(Portals().nodes.size() - 1);
    }
    static void Link(int32_t node, int32_t front, int32_t back) {
        Portals().nodes[static_cast<size_t>(node)].children = {front, back};
    }

    int32_t Build(int x0, int y0, int x1, int y1) {
        constexpr int32_t open = -2, solid = -1;
        if (x1 - x0 == 1 && y1 - y0 == 1) {
            const float x = static_cast<float>(x0) * CellSize, y = static_cast<float>(y0) * CellSize;
            const int32_t left = Node(0, x), right = Node(0, x + PillarSize);
            const int32_t low = Node(1, y), high = Node(1, y + PillarSize);
            Link(left, right, open);
            Link(right, open, low);
            Link(low, high, open);
            Link(high, open, solid);
            return left;
        }
        const size_t axis = x1 - x0 >= y1 - y0 ? 0 : 1;
        const int middle = axis == 0 ? (x0 + x1) / 2 : (y0 + y1) / 2;
        const int32_t node = Node(axis, (static_cast<float>(middle) - 0.5F) * CellSize);
        const int32_t front = axis == 0 ? Build(middle, y0, x1, y1) : Build(x0, middle, x1, y1);
        const int32_t back = axis == 0 ? Build(x0, y0, middle, y1) : Build(x0, y0, x1, middle);
        Link(node, front, back);
        return node;
    }
};

struct Segment {
    Vec3 start, end;
};

// From a light in the hall to samples around it, row by row.
std::vector<Segment> LightSegments(int cells) {
    Random random;
    const float size = static_cast<float>(cells) * CellSize;
    std::vector<Segment> segments;
    for (int light = 0; light < 40; light++) {
        const Vec3 from{random.Real(0, size), random.Real(0, size), 60};
        for (int y = 0; y < 32; y++) {
            for (int x = 0; x < 32; x++) {
                segments.push_back(
                    {from,
                     {from[0] + static_cast<float>(x * 16 - 256), from[1] + static_cast<float>(y * 16 - 256), 1}});
            }
        }
    }
    return segments;
}

void TraceLineThroughPillars(benchmark::State& state) {
    const auto cells = static_cast<int>(state.range(0));
    const PillarHall hall(cells);
    const CTraceTree tree;
    const std::vector<Segment> segments = LightSegments(cells);
    size_t next = 0;
    for (auto _ : state) {
        Vec3 hit;
        benchmark::DoNotOptimize(tree.TraceLine(segments[next].start, segments[next].end, hit));
        next = next + 1 < segments.size() ? next + 1 : 0;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(TraceLineThroughPillars)->Arg(8)->Arg(32)->Arg(128);

// All surfaces of a real level with all its lights, on one thread. Items are rays.
void LightRealLevel(benchmark::State& state) {
    const char* path = std::getenv("K2K_BENCH_LEVEL");
    if (path == nullptr || !std::filesystem::exists(path)) {
        state.SkipWithError("K2K_BENCH_LEVEL names no level");
        return;
    }
    ClearDataSets();
    CFileKLV file(path);
    file.Open(true);
    file.Load();
    Options().quiet = true;
    PlaceObjects();
    const RayStructures rays;
    OpenLighting();
    SetDirectLights();
    const CPhongTable smooth;
    FaceScratch scratch(smooth, PlaneFlips::Refuse);
    std::vector<std::unique_ptr<CLightFace>> faces;
    for (uint32_t i = 0; i < Geometry().surfaces.size(); i++) faces.push_back(MakeLightFace(i));
    TakeRayCount();
    for (auto _ : state) {
        for (const auto& face : faces) {
            if (face) benchmark::DoNotOptimize(LightSurface(*face->Clone(), scratch));
        }
    }
    state.SetItemsProcessed(TakeRayCount());
    CloseLighting();
    ClearEntities();
}
BENCHMARK(LightRealLevel)->Unit(benchmark::kMillisecond);

void PointInOutline(benchmark::State& state) {
    const auto corners = static_cast<int>(state.range(0));
    std::vector<Vec3> outline;
    for (int i = 0; i < corners; i++) {
        const double angle = 2 * std::numbers::pi * i / corners;
        outline.push_back({static_cast<float>(100 * std::cos(angle)), static_cast<float>(100 * std::sin(angle)), 0});
    }
    Random random;
    std::vector<Vec3> points;
    for (int i = 0; i < 1024; i++) points.push_back({random.Real(-110, 110), random.Real(-110, 110), 0});
    size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(IsInsideOutline(points[next++ % points.size()], outline, {0, 0, 1}));
    }
}
BENCHMARK(PointInOutline)->Arg(4)->Arg(12);

// Blocks as the surfaces of levels give them, in as many groups as there are map blocks.
void PackPages(benchmark::State& state) {
    const auto count = static_cast<size_t>(state.range(0));
    const auto groups = static_cast<int>(state.range(1));
    Random random;
    const LightBlock anyBlock;
    std::vector<PageNode> blocks;
    for (size_t i = 0; i < count; i++) {
        PageNode node;
        node.group = static_cast<uint32_t>(random.Whole(1, groups));
        node.block = &anyBlock;
        node.x1 = random.Whole(3, 18);
        node.y1 = random.Whole(3, 18);
        blocks.push_back(node);
    }
    size_t pageCount = 0;
    for (auto _ : state) {
        std::vector<PageNode> nodes = blocks;
        CPageTrees trees(nodes);
        std::vector<LightPage> pages;
        PackBlocks(trees, count, 0, pages);
        pageCount = pages.size();
    }
    state.counters["pages"] = static_cast<double>(pageCount);
}
BENCHMARK(PackPages)
    ->Args({2000, 400})
    ->Args({20000, 1})
    ->Args({20000, 4000})
    ->Args({20000, 20000})
    ->Unit(benchmark::kMillisecond);

void OrderOfSelectionSort(benchmark::State& state) {
    Random random;
    std::vector<int> keys;
    for (int64_t i = 0; i < state.range(0); i++) keys.push_back(random.Whole(0, 300));
    for (auto _ : state) benchmark::DoNotOptimize(SelectionOrder(keys, std::less<>()));
}
BENCHMARK(OrderOfSelectionSort)->Arg(1000)->Arg(20000)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace k2k
