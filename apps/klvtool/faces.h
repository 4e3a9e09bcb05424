// The surfaces of a level as polygons to draw, of levels with a tree and of mesh levels alike.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "klvtool/entities.h"
#include "klvtool/textures.h"
#include "levelcheck/level_view.h"

namespace klvtool {

constexpr uint32_t FlagNoLightmap = 0x01, FlagFlat = 0x02, FlagSky = 0x04, FlagTurbulent = 0x08;

struct Corner {
    Vec3 position;
    std::array<float, 2> texture;   // in images
    std::array<float, 2> lightmap;  // on the page, 0 to 1
};

struct Face {
    size_t surface = 0;
    uint32_t texture = 0, flags = 0;
    size_t page = 0;              // lightmap page; 0: not lit
    Vec3 normal{};                // of length 1, away from the solid side
    std::vector<Corner> corners;  // convex; clockwise as seen from the side that the face looks to
};

// All faces that can be drawn: surfaces of a level with a tree, triangles of a mesh level. Those that damaged data
// leaves without corners, with endless coordinates or without area are left out.
std::vector<Face> ReadFaces(const levelcheck::LevelView& level, const std::vector<Texture>& textures);

Vec3 CentreOf(const Face& face);

struct Bounds {
    Vec3 mins{}, maxs{};
};
// Of all faces; zero without any.
Bounds BoundsOf(const std::vector<Face>& faces);

}  // namespace klvtool
