// A level as triangles in batches: what the exporters write and the viewer shows.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "klvtool/entities.h"
#include "klvtool/image.h"
#include "levelcheck/level_view.h"

namespace klvtool {

constexpr size_t NoImage = static_cast<size_t>(-1);

// Triangles of one texture on one lightmap page. Coordinates are those of the level: z up.
struct Batch {
    std::string name;
    size_t image = NoImage;                                             // of the texture
    size_t page = NoImage;                                              // of the lightmap
    bool isUnlit = false;                                               // drawn in full light
    std::vector<float> positions, normals, texture, lightmap, regions;  // 3, 3, 2, 2 and 1 numbers a vertex
    std::vector<uint32_t> triangles;  // counter-clockwise from the side that they face

    size_t VertexCount() const { return regions.size(); }
};

struct SceneImage {
    std::string name;
    Image image;
};

struct Scene {
    std::string name;
    std::vector<SceneImage> images;
    std::vector<Batch> batches;
    std::vector<Entity> entities;
    std::vector<Vec3> way;  // a line to show
};

// The whole level: used textures and lightmap pages as images.
Scene MakeScene(const levelcheck::LevelView& level, const std::string& name);

}  // namespace klvtool
