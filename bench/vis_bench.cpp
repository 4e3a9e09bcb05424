// Visibility: clipping, separators, the might-see flood and the flow through a grid of rooms with random openings.
#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <random>
#include <vector>

#include "vis/base_vis.h"
#include "vis/portal_vis.h"
#include "vis/separators.h"

namespace k2k {
namespace {

constexpr float Eps = 0.05F;
constexpr double RoomSize = 128;

// Cubic rooms, side by side in x, y and z, with one opening in most of the walls between them.
class RoomGrid {
  public:
    explicit RoomGrid(int32_t side) : side_(side), lists_(static_cast<size_t>(side * side * 2)) {
        for (int32_t room = 0; room < side_ * side_ * 2; ++room) {
            for (size_t axis = 0; axis < 3; ++axis) AddWall(room, axis);
        }
    }
    VisGraph Finish() { return VisGraph(std::move(portals_), lists_); }

  private:
    std::array<int32_t, 3> CellOf(int32_t room) const {
        return {room % side_, room / side_ % side_, room / side_ / side_};
    }
    double Between(double low, double high) { return std::uniform_real_distribution<double>(low, high)(random_); }

    void AddWall(int32_t room, size_t axis) {
        const std::array<int32_t, 3> sizes{side_, side_, 2};
        const std::array<int32_t, 3> steps{1, side_, side_ * side_};
        const std::array<int32_t, 3> cell = CellOf(room);
        if (cell[axis] + 1 == sizes[axis] || Between(0, 1) < 0.1) return;
        const CPlane plane = WallPlane(cell, axis);
        const PolygonRef polygon = Opening(cell, axis);
        AddRecord(room, room + steps[axis], plane, polygon);
        AddRecord(room + steps[axis], room, FlippedPlane(plane), polygon);
    }

    static CPlane WallPlane(const std::array<int32_t, 3>& cell, size_t axis) {
        CPlane plane;
        plane.normal[axis] = 1;
        plane.dist = static_cast<float>((cell[axis] + 1) * RoomSize);
        return plane;
    }

    PolygonRef Opening(const std::array<int32_t, 3>& cell, size_t axis) {
        const size_t u = (axis + 1) % 3;
        const size_t v = (axis + 2) % 3;
        const std::array<double, 2> low{Between(0.05, 0.45), Between(0.05, 0.45)};
        const std::array<double, 2> high{Between(0.55, 0.95), Between(0.55, 0.95)};
        const auto corner = [&](double across, double up) {
            Vec3d point{};
            point[axis] = (cell[axis] + 1) * RoomSize;
            point[u] = (cell[u] + across) * RoomSize;
            point[v] = (cell[v] + up) * RoomSize;
            return point;
        };
        return MakePolygon(
            {corner(low[0], low[1]), corner(high[0], low[1]), corner(high[0], high[1]), corner(low[0], high[1])});
    }

    void AddRecord(int32_t from, int32_t to, const CPlane& plane, const PolygonRef& polygon) {
        lists_[static_cast<size_t>(from)].push_back(static_cast<int32_t>(portals_.size()));
        VisPortal& portal = portals_.emplace_back();
        portal.plane = plane;
        portal.region = to;
        portal.polygon = polygon;
    }

    int32_t side_;
    std::mt19937 random_{5};
    std::vector<VisPortal> portals_;
    std::vector<std::vector<int32_t>> lists_;
};

void BasePortals(benchmark::State& state) {
    VisGraph graph = RoomGrid(static_cast<int32_t>(state.range(0))).Finish();
    for (auto _ : state) BasePortalVis(graph, Eps);
    state.counters["portals"] = static_cast<double>(graph.portals.size());
}
BENCHMARK(BasePortals)->Arg(8)->Arg(16)->Unit(benchmark::kMillisecond);

// The time of one call of RegionFlow is the inverse of the rate.
void PortalFlows(benchmark::State& state) {
    int64_t calls = 0;
    for (auto _ : state) {
        state.PauseTiming();
        VisGraph graph = RoomGrid(12).Finish();
        BasePortalVis(graph, Eps);
        state.ResumeTiming();
        FlowSettings settings;
        settings.level = static_cast<int32_t>(state.range(0));
        calls += CalculatePortalVis(graph, settings, static_cast<int32_t>(state.range(1))).regionFlowCalls;
    }
    state.counters["calls"] = benchmark::Counter(static_cast<double>(calls), benchmark::Counter::kIsRate);
}
BENCHMARK(PortalFlows)
    ->ArgNames({"level", "threads"})
    ->Args({0, 1})
    ->Args({2, 1})
    ->Args({4, 1})
    ->Args({2, 2})
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

// Pairs of openings as they follow each other in the grid.
void Separators(benchmark::State& state) {
    const VisGraph graph = RoomGrid(8).Finish();
    std::vector<FlowPlane> planes;
    size_t at = 0;
    for (auto _ : state) {
        planes.clear();
        const VisPortal& first = graph.portals[at++ % graph.portals.size()];
        for (const RegionExit& exit : graph.ExitsOf(first.region)) {
            AddSeparators(first.polygon->points, graph.portal(exit.portal).polygon->points, false, {Eps, true}, planes);
        }
        benchmark::DoNotOptimize(planes.data());
    }
}
BENCHMARK(Separators);

void ClipOpening(benchmark::State& state) {
    const VisGraph graph = RoomGrid(8).Finish();
    ClippedPolygon polygon;
    size_t at = 0;
    for (auto _ : state) {
        polygon.Start(graph.portals[at % graph.portals.size()].polygon->points);
        const double middle = static_cast<double>(at++ % 8) * RoomSize + RoomSize / 2;
        benchmark::DoNotOptimize(polygon.Clip({{1, 0, 0}, middle}, Eps));
    }
}
BENCHMARK(ClipOpening);

}  // namespace
}  // namespace k2k
