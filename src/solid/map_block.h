// A block as it was read from a map: its planes and textures, before any hull is built.
#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <vector>

#include "levelfile/level_records.h"

namespace k2k {

// Block flags, at MapBlock::flags.
constexpr uint32_t BlockMarked = 1;
constexpr uint32_t BlockPassable = 2;
constexpr uint32_t BlockInvisible = 4;
constexpr uint32_t BlockMarkedToo = 8;
constexpr uint32_t BlockDetail = 16;
constexpr uint32_t BlockMesh = 32;  // not convex; faces are kept as given

struct MapFace {
    int32_t texinfo = 0;      // id at the texture data set
    int32_t block = 0;        // number of its block
    bool bad = false;         // to be removed
    int32_t planeNumber = 0;  // 1-based position in the block in dialects with vertex lists, else 0
    Vec3 normal{};
    float dist = 0;
    int32_t planeType = 0;         // 0 to 2 axial, -3 to -1 negative axial, 3 any other
    std::array<Vec3, 3> points{};  // define the plane
    std::vector<Vec3> polygon;     // as given in the file, in dialects with vertex lists
    Vec3 mins{}, maxs{};           // bounds of what the block's other planes leave of the face
};

struct MapBlock {
    MapBlock* next = nullptr;
    uint32_t flags = 0;
    int32_t number = 0;          // 1 + the number of blocks accepted before it; messages show number - 1
    std::vector<MapFace> faces;  // in list order: the last face read comes first
    bool fromVertices = false;
    Vec3 mins{std::numeric_limits<float>::max(), std::numeric_limits<float>::max(), std::numeric_limits<float>::max()};
    Vec3 maxs{std::numeric_limits<float>::lowest(), std::numeric_limits<float>::lowest(),
              std::numeric_limits<float>::lowest()};
    std::array<char, 20> material{};  // default material, at most 19 characters
};

}  // namespace k2k
