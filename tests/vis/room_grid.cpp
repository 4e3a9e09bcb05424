// Grids of rooms with random openings, as portal files.
#include "vis/room_grid.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <sstream>

namespace k2k::test {
namespace {

class Maker {
  public:
    explicit Maker(const RoomGridOptions& options) : options_(options), random_(options.seed) {
        grid_.size = options.size;
        grid_.roomSize = options.roomSize;
        grid_.axes = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
        if (options.tilted) grid_.axes = {{{0.8, 0.36, -0.48}, {-0.6, 0.48, -0.64}, {0, 0.8, 0.6}}};
    }

    RoomGrid Make() {
        for (int32_t z = 0; z < grid_.size[2]; ++z) {
            for (int32_t y = 0; y < grid_.size[1]; ++y) {
                for (int32_t x = 0; x < grid_.size[0]; ++x) {
                    for (size_t axis = 0; axis < 3; ++axis) AddWall({x, y, z}, axis);
                }
            }
        }
        return std::move(grid_);
    }

  private:
    double Between(double low, double high) { return std::uniform_real_distribution<double>(low, high)(random_); }
    int32_t UpTo(int32_t most) { return std::uniform_int_distribution<int32_t>(0, most)(random_); }

    // The wall between a room and the next one along an axis: one half for each opening, so that they do not overlap.
    void AddWall(const std::array<int32_t, 3>& room, size_t axis) {
        std::array<int32_t, 3> next = room;
        if (++next[axis] == grid_.size[axis]) return;
        const int32_t count = options_.allOpen ? 1 : UpTo(options_.maxOpenings);
        for (int32_t i = 0; i < count; ++i) {
            AddOpening(room, next, axis, static_cast<double>(i) / count, static_cast<double>(i + 1) / count);
        }
    }

    void AddOpening(const std::array<int32_t, 3>& room, const std::array<int32_t, 3>& next, size_t axis, double from,
                    double to) {
        const size_t u = (axis + 1) % 3;
        const size_t v = (axis + 2) % 3;
        RoomOpening opening;
        opening.a = grid_.RoomNumber(room[0], room[1], room[2]);
        opening.b = grid_.RoomNumber(next[0], next[1], next[2]);
        for (const std::array<double, 2>& corner : Outline(from, to)) {
            Vec3d point;
            point[axis] = (room[axis] + 1) * options_.roomSize;
            point[u] = (room[u] + corner[0]) * options_.roomSize;
            point[v] = (room[v] + corner[1]) * options_.roomSize;
            opening.points.push_back(grid_.ToWorld(point));
        }
        if (UpTo(1) != 0) TurnAround(opening);
        grid_.openings.push_back(opening);
    }

    static void TurnAround(RoomOpening& opening) {
        std::swap(opening.a, opening.b);
        std::reverse(opening.points.begin(), opening.points.end());
    }

    // Corners in fractions of the wall, counterclockwise seen along the wall's axis: the normal of a portal file is the
    // other way round, and looks back into the room.
    std::vector<std::array<double, 2>> Outline(double from, double to) {
        if (options_.allOpen) return {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
        const double width = to - from;
        const double low = from + Between(0.02, 0.4) * width;
        const double high = to - Between(0.02, 0.4) * width;
        const double bottom = Between(0.02, 0.4);
        const double top = 1 - Between(0.02, 0.4);
        const int32_t corners = options_.maxCorners > 4 ? 3 + UpTo(options_.maxCorners - 3) : 4;
        if (corners == 4) return {{low, bottom}, {high, bottom}, {high, top}, {low, top}};
        std::vector<std::array<double, 2>> outline;
        for (int32_t i = 0; i < corners; ++i) {
            const double angle = 2 * std::numbers::pi * i / corners;
            outline.push_back({(low + high) / 2 + std::cos(angle) * (high - low) / 2,
                               (bottom + top) / 2 + std::sin(angle) * (top - bottom) / 2});
        }
        return outline;
    }

    RoomGridOptions options_;
    std::mt19937 random_;
    RoomGrid grid_;
};

std::string Number(double value) {
    const auto narrow = static_cast<double>(static_cast<float>(value));
    const double nearest = std::floor(narrow + 0.5);
    char text[64];
    if (std::abs(narrow - nearest) < 0.001) {
        std::snprintf(text, sizeof(text), "%.0f ", nearest);
    } else {
        std::snprintf(text, sizeof(text), "%f ", narrow);
    }
    return text;
}

}  // namespace

Vec3d RoomGrid::ToWorld(const Vec3d& point) const {
    Vec3d world{};
    for (size_t axis = 0; axis < 3; ++axis) {
        for (size_t i = 0; i < 3; ++i) world[i] += axes[axis][i] * point[axis];
    }
    return world;
}

RoomGrid MakeRoomGrid(const RoomGridOptions& options) {
    return Maker(options).Make();
}

std::string PortalFileText(int32_t regionCount, const std::vector<RoomOpening>& openings) {
    std::ostringstream text;
    text << "PORT\n" << regionCount << "\n" << openings.size() << "\n";
    for (const RoomOpening& opening : openings) {
        text << opening.points.size() << " " << opening.a << " " << opening.b << " ";
        for (const Vec3d& point : opening.points) {
            text << "(" << Number(point[0]) << Number(point[1]) << Number(point[2]) << ") ";
        }
        text << "\n";
    }
    return text.str();
}

}  // namespace k2k::test
