// Grids of rooms with random openings, as portal files.
#pragma once

#include <array>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "levelfile/level_records.h"

namespace k2k::test {

struct RoomGridOptions {
    std::array<int32_t, 3> size{3, 3, 2};  // rooms along each axis
    double roomSize = 128;
    int32_t maxOpenings = 2;  // in one wall; each is at least 0
    int32_t maxCorners = 4;   // 4: rectangles; more: also other convex polygons
    bool allOpen = false;     // each wall is one opening: a cube of air, cut into cells
    bool tilted = false;      // turned, so that no plane is axial
    uint32_t seed = 1;
};

// An opening from one room to another; the points run such that the polygon's own normal looks from b into a.
struct RoomOpening {
    int32_t a = 0, b = 0;
    std::vector<Vec3d> points;
};

struct RoomGrid {
    std::array<int32_t, 3> size{};
    double roomSize = 0;
    std::vector<RoomOpening> openings;
    std::array<Vec3d, 3> axes{};  // from grid to world

    int32_t RoomCount() const { return size[0] * size[1] * size[2]; }
    int32_t RoomNumber(int32_t x, int32_t y, int32_t z) const { return (z * size[1] + y) * size[0] + x; }
    Vec3d ToWorld(const Vec3d& point) const;
};

RoomGrid MakeRoomGrid(const RoomGridOptions& options);

// The text of a portal file with these openings.
std::string PortalFileText(int32_t regionCount, const std::vector<RoomOpening>& openings);

}  // namespace k2k::test
