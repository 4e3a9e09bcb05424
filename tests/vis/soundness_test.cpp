// What can be seen is seen: lines of sight through the openings of random grids.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <optional>

#include "support/build_state.h"
#include "vis/base_vis.h"
#include "vis/graph_text.h"
#include "vis/portal_vis.h"
#include "vis/vis_rows.h"

namespace k2k::test {
namespace {

constexpr float Eps = 0.05F;
constexpr double Margin = 0.5;  // lines that graze an opening's edge are left out

// A grid whose openings can be asked for by wall; only for grids that are not tilted.
class OpeningIndex {
  public:
    explicit OpeningIndex(const RoomGrid& grid) : grid_(grid) {}

    bool IsOpen(int32_t room, int32_t next, const Vec3d& point) const {
        return std::any_of(grid_.openings.begin(), grid_.openings.end(), [&](const RoomOpening& opening) {
            const bool joins = (opening.a == room && opening.b == next) || (opening.a == next && opening.b == room);
            return joins && IsInside(opening.points, point);
        });
    }

  private:
    // Rectangles along the axes.
    static bool IsInside(const std::vector<Vec3d>& points, const Vec3d& point) {
        for (size_t axis = 0; axis < 3; ++axis) {
            const auto [low, high] = std::minmax_element(
                points.begin(), points.end(), [&](const Vec3d& a, const Vec3d& b) { return a[axis] < b[axis]; });
            if ((*low)[axis] == (*high)[axis]) continue;
            if (point[axis] < (*low)[axis] + Margin || point[axis] > (*high)[axis] - Margin) return false;
        }
        return true;
    }

    const RoomGrid& grid_;
};

class SightTest {
  public:
    explicit SightTest(const RoomGrid& grid) : grid_(grid), openings_(grid) {}

    // The rooms at both ends of a free line of sight; none when a wall is in the way.
    std::optional<std::array<int32_t, 2>> Look(const Vec3d& from, const Vec3d& to) const {
        int32_t room = RoomAt(from);
        const int32_t first = room;
        for (const double at : Crossings(from, to)) {
            const int32_t next = RoomAt(Along(from, to, at + 1e-9));
            if (!openings_.IsOpen(room, next, Along(from, to, at))) return {};
            room = next;
        }
        return std::array<int32_t, 2>{first, room};
    }

  private:
    static Vec3d Along(const Vec3d& from, const Vec3d& to, double t) {
        return {from[0] + t * (to[0] - from[0]), from[1] + t * (to[1] - from[1]), from[2] + t * (to[2] - from[2])};
    }
    int32_t RoomAt(const Vec3d& point) const {
        const auto cell = [&](size_t axis) { return static_cast<int32_t>(std::floor(point[axis] / grid_.roomSize)); };
        return grid_.RoomNumber(cell(0), cell(1), cell(2));
    }
    std::vector<double> Crossings(const Vec3d& from, const Vec3d& to) const {
        std::vector<double> crossings;
        for (size_t axis = 0; axis < 3; ++axis) {
            for (int32_t wall = 1; wall < grid_.size[axis]; ++wall) {
                const double t = (wall * grid_.roomSize - from[axis]) / (to[axis] - from[axis]);
                if (t > 0 && t < 1) crossings.push_back(t);
            }
        }
        std::sort(crossings.begin(), crossings.end());
        return crossings;
    }

    const RoomGrid& grid_;
    OpeningIndex openings_;
};

std::vector<BitRow> RegionRows(const VisGraph& graph) {
    const auto regionCount = static_cast<size_t>(graph.regionCount());
    std::vector<BitRow> rows(regionCount, BitRow(regionCount));
    for (size_t region = 0; region < regionCount; ++region) {
        rows[region][region] = true;
        for (const RegionExit& exit : graph.ExitsOf(static_cast<int32_t>(region))) {
            for (const int32_t seen : RegionsIn(graph.portal(exit.portal).visBits, graph.regionCount())) {
                rows[region][static_cast<size_t>(seen)] = true;
            }
        }
    }
    return rows;
}

class SoundnessTest : public BuildState {};

TEST_F(SoundnessTest, EveryFreeLineOfSightIsInTheRows) {
    int32_t freeLines = 0;
    for (uint32_t seed = 1; seed <= 6; ++seed) {
        RoomGridOptions options;
        options.size = {4, 3, 2};
        options.seed = seed;
        const RoomGrid grid = MakeRoomGrid(options);
        VisGraph graph = ReadGrid(options);
        BasePortalVis(graph, Eps);
        FlowSettings settings;
        settings.level = static_cast<int32_t>(seed) % 5;
        CalculatePortalVis(graph, settings, 2);
        const std::vector<BitRow> rows = RegionRows(graph);

        const SightTest sight(grid);
        std::mt19937 random(seed);
        const auto somewhere = [&] {
            Vec3d point;
            for (size_t axis = 0; axis < 3; ++axis) {
                point[axis] = std::uniform_real_distribution<double>(1, grid.size[axis] * grid.roomSize - 1)(random);
            }
            return point;
        };
        for (int i = 0; i < 20000; ++i) {
            const auto ends = sight.Look(somewhere(), somewhere());
            if (!ends || (*ends)[0] == (*ends)[1]) continue;
            ++freeLines;
            EXPECT_TRUE(rows[static_cast<size_t>((*ends)[0])][static_cast<size_t>((*ends)[1])])
                << "from " << (*ends)[0] << " to " << (*ends)[1] << ", seed " << seed;
        }
    }
    EXPECT_GT(freeLines, 1000);
}

}  // namespace
}  // namespace k2k::test
