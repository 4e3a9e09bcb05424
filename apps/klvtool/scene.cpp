#include "klvtool/scene.h"

#include <map>
#include <tuple>

#include "klvtool/faces.h"
#include "klvtool/lightmaps.h"
#include "klvtool/tree.h"

namespace klvtool {
namespace {

using levelcheck::LevelView;

class SceneMaker {
  public:
    SceneMaker(const LevelView& level, const std::string& name)
        : level_(level), palette_(ReadPalette(level)), textures_(ReadTextures(level)) {
        scene_.name = name;
    }

    Scene Make() {
        for (const Face& face : ReadFaces(level_, textures_)) AddFace(face);
        scene_.entities = ReadEntities(level_);
        return std::move(scene_);
    }

  private:
    size_t ImageOfTexture(uint32_t number) {
        const auto [found, isNew] = textureImages_.emplace(number, scene_.images.size());
        if (isNew) {
            const Texture texture = number < textures_.size() ? textures_[number] : Texture{};
            const std::string name = texture.name.empty() ? "texture " + std::to_string(number) : texture.name;
            scene_.images.push_back({name, TextureImage(texture, palette_)});
        }
        return found->second;
    }

    size_t ImageOfPage(size_t page) {
        if (page == 0) return NoImage;
        const auto [found, isNew] = pageImages_.emplace(page, scene_.images.size());
        if (isNew) scene_.images.push_back({"lightmap page " + std::to_string(page), PageImage(level_, page)});
        return found->second;
    }

    Batch& BatchOf(const Face& face) {
        const bool isUnlit = (face.flags & (FlagFlat | FlagSky | FlagTurbulent)) != 0;
        const auto [found, isNew] =
            batches_.emplace(std::tuple(face.texture, face.page, isUnlit), scene_.batches.size());
        if (isNew) {
            Batch batch;
            batch.image = ImageOfTexture(face.texture);
            batch.page = ImageOfPage(face.page);
            batch.isUnlit = isUnlit;
            batch.name = scene_.images[batch.image].name;
            scene_.batches.push_back(std::move(batch));
        }
        return scene_.batches[found->second];
    }

    float RegionBefore(const Face& face) const {
        const Vec3 centre = CentreOf(face);
        return static_cast<float>(
            RegionOf(level_, {double{centre[0]} + face.normal[0], double{centre[1]} + face.normal[1],
                              double{centre[2]} + face.normal[2]}));
    }

    // Corners run clockwise in a level, so the fan goes round the other way.
    void AddFace(const Face& face) {
        Batch& batch = BatchOf(face);
        const auto first = static_cast<uint32_t>(batch.VertexCount());
        const float region = RegionBefore(face);
        for (const Corner& corner : face.corners) {
            batch.positions.insert(batch.positions.end(), corner.position.begin(), corner.position.end());
            batch.normals.insert(batch.normals.end(), face.normal.begin(), face.normal.end());
            batch.texture.insert(batch.texture.end(), corner.texture.begin(), corner.texture.end());
            batch.lightmap.insert(batch.lightmap.end(), corner.lightmap.begin(), corner.lightmap.end());
            batch.regions.push_back(region);
        }
        for (uint32_t i = 2; i < face.corners.size(); i++) {
            batch.triangles.insert(batch.triangles.end(), {first, first + i, first + i - 1});
        }
    }

    const LevelView& level_;
    Palette palette_;
    std::vector<Texture> textures_;
    Scene scene_;
    std::map<uint32_t, size_t> textureImages_;
    std::map<size_t, size_t> pageImages_;
    std::map<std::tuple<uint32_t, size_t, bool>, size_t> batches_;
};

}  // namespace

Scene MakeScene(const LevelView& level, const std::string& name) {
    return SceneMaker(level, name).Make();
}

}  // namespace klvtool
