#include "klvtool/summary.h"

#include <algorithm>
#include <array>

namespace klvtool {

Summary::Summary(const levelcheck::LevelView& viewed)
    : level(viewed),
      tables{{"planes", viewed.planes.size()},     {"vertices", viewed.vertices.size()},
             {"edges", viewed.edges.size()},       {"surface_edges", viewed.surfaceEdges.size()},
             {"surfaces", viewed.surfaces.size()}, {"texinfos", viewed.texinfos.size()},
             {"regions", viewed.regions.size()},   {"region_surfaces", viewed.regionSurfaces.size()},
             {"nodes", viewed.nodes.size()},       {"hull_nodes", viewed.hullNodes.size()},
             {"meshes", viewed.meshes.size()},     {"lightmap_pages", viewed.pageCount}},
      textures(ReadTextures(viewed)),
      textureUses(textures.size()),
      entities(ReadEntities(viewed)),
      visibility(CountVisible(viewed)) {
    const std::vector<Face> faces = ReadFaces(viewed, textures);
    for (const Face& face : faces) {
        if (face.texture < textureUses.size()) textureUses[face.texture]++;
    }
    pages = CountPageUse(viewed, faces);
}

double Summary::MeanVisible() const {
    if (visibility.rows == 0) return 0;
    return static_cast<double>(visibility.visible) / static_cast<double>(visibility.rows);
}

const Entity* Summary::Sun() const {
    const auto sun = std::find_if(entities.begin(), entities.end(),
                                  [](const Entity& entity) { return entity.type == EntityType::Sun; });
    return sun == entities.end() ? nullptr : &*sun;
}

const char* ChunkName(int number) {
    constexpr std::array<const char*, levelcheck::ChunkCount> Names{
        "palette",  "planes",        "textures", "vertices", "visibility",     "nodes",
        "texinfos", "surfaces",      "",         "hulls",    "regions",        "region surfaces",
        "edges",    "surface edges", "info",     "entities", "lightmap pages", "meshes",
        ""};
    return Names[static_cast<size_t>(number)];
}

}  // namespace klvtool
