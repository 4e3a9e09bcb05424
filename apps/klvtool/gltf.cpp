#include "klvtool/gltf.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>
#include <numbers>
#include <optional>
#include <stdexcept>

#include "klvtool/json.h"
#include "klvtool/summary.h"

namespace klvtool {
namespace {

constexpr double MetresPerUnit = 0.0254;
constexpr double HalfRoot = std::numbers::sqrt2 / 2;
// Numbers of the format.
constexpr int FloatType = 5126, UintType = 5125, ArrayTarget = 34962, IndexTarget = 34963, LineStrip = 3,
              Repeat = 10497, ClampToEdge = 33071, Linear = 9729, Nearest = 9728, LinearMipmap = 9987;
constexpr uint32_t GlbMagic = 0x46546C67, GlbVersion = 2, JsonChunk = 0x4E4F534A, BinaryChunk = 0x004E4942;
constexpr double FullBrightness = 255;
// An object's light is as bright as its lightmap's at this part of its range.
constexpr double BrightAtRange = 0.25, AutomaticRange = 300;

struct Light {
    std::array<double, 3> colour{};
    double intensity = 0, range = 0;  // range 0: none
    const char* type = "point";
    std::array<float, 3> direction{};
    double cone = 0;
};

// The lamp that an object stands for. Red and green of zero make blue a grey brightness.
std::optional<Light> LightOf(const Entity& entity) {
    const std::vector<float> azimuth = entity.Numbers("azimuth"), elevation = entity.Numbers("elevation");
    if (entity.type == EntityType::Sun && azimuth.size() == 1 && elevation.size() == 1) {
        const double az = double{azimuth[0]} * std::numbers::pi / 180,
                     el = double{elevation[0]} * std::numbers::pi / 180;
        const auto part = [](double v) { return static_cast<float>(std::isfinite(v) ? -v : 0); };
        return Light{{1, 1, 1},
                     1,
                     0,
                     "directional",
                     {part(std::cos(az) * std::cos(el)), part(std::sin(az) * std::cos(el)), part(std::sin(el))},
                     0};
    }
    const std::vector<float> colour = entity.Numbers("colour"), range = entity.Numbers("range");
    if (colour.size() != 3 || range.size() != 1) return std::nullopt;
    Light light;
    const bool isGrey = colour[0] == 0 && colour[1] == 0;
    double brightest = 0;
    for (size_t i = 0; i < 3; i++) {
        const double value = isGrey ? colour[2] : colour[i];
        light.colour[i] = std::isfinite(value) ? std::max(0.0, value) : 0;
        brightest = std::max(brightest, light.colour[i]);
    }
    for (double& value : light.colour) value = brightest > 0 ? value / brightest : 1;
    const bool isGiven = range[0] > 0 && range[0] < 1e6F;
    const double reach = (isGiven ? double{range[0]} : AutomaticRange) * MetresPerUnit;
    light.intensity = brightest / FullBrightness * std::pow(reach * BrightAtRange, 2) * 4;
    light.range = isGiven ? reach : 0;
    const std::vector<float> cone = entity.Numbers("cone"), direction = entity.Numbers("direction");
    if (entity.type == EntityType::Spotlight && direction.size() == 3) {
        light.type = "spot";
        std::copy(direction.begin(), direction.end(), light.direction.begin());
        light.cone = cone.size() == 1 && cone[0] > 1 && cone[0] < 89 ? double{cone[0]} * std::numbers::pi / 180 : 0.7;
    }
    return light;
}

// The turn that makes a lamp's own direction, down the z axis, this one.
std::array<double, 4> TurnTo(const std::array<float, 3>& direction) {
    const double length = std::hypot(double{direction[0]}, double{direction[1]}, double{direction[2]});
    if (!(length > 1e-6) || !std::isfinite(length)) return {0, 0, 0, 1};
    const double x = direction[0] / length, y = direction[1] / length, z = direction[2] / length;
    if (z > 0.999999) return {1, 0, 0, 0};
    const double w = 1 - z, scale = 1 / std::hypot(x, y, w);
    return {y * scale, -x * scale, 0, w * scale};
}

class GlbMaker {
  public:
    explicit GlbMaker(const Scene& scene) : scene_(scene) {}

    std::vector<uint8_t> Make() {
        json_.BeginObject();
        json_.Key("asset").BeginObject().Key("version").Text("2.0").Key("generator").Text("klvtool").EndObject();
        WriteExtensions();
        json_.Key("scene").Int(0).Key("scenes").BeginArray();
        json_.BeginObject().Key("name").Text(scene_.name).Key("nodes").BeginArray().Int(0).EndArray().EndObject();
        json_.EndArray();
        WriteMeshes();
        WriteNodes();
        if (!scene_.batches.empty()) WriteMaterials();
        if (!scene_.images.empty()) WriteImages();
        WriteBuffer();
        json_.EndObject();
        return Assemble();
    }

  private:
    bool HasUnlit() const {
        return std::any_of(scene_.batches.begin(), scene_.batches.end(), [](const Batch& b) { return b.isUnlit; });
    }

    void WriteExtensions() {
        for (const Entity& entity : scene_.entities) {
            lightOf_.push_back(NoImage);
            if (const auto light = LightOf(entity)) {
                lightOf_.back() = lights_.size();
                lights_.push_back(*light);
            }
        }
        if (lights_.empty() && !HasUnlit()) return;
        json_.Key("extensionsUsed").BeginArray();
        if (!lights_.empty()) json_.Text("KHR_lights_punctual");
        if (HasUnlit()) json_.Text("KHR_materials_unlit");
        json_.EndArray();
        if (lights_.empty()) return;
        json_.Key("extensions").BeginObject().Key("KHR_lights_punctual").BeginObject().Key("lights").BeginArray();
        for (const Light& light : lights_) WriteLight(light);
        json_.EndArray().EndObject().EndObject();
    }

    void WriteLight(const Light& light) {
        json_.BeginObject().Key("type").Text(light.type).Key("color").Numbers(light.colour);
        json_.Key("intensity").Number(light.intensity);
        if (light.range > 0) json_.Key("range").Number(light.range);
        if (light.cone > 0) json_.Key("spot").BeginObject().Key("outerConeAngle").Number(light.cone).EndObject();
        json_.EndObject();
    }

    void WriteMeshes() {
        if (scene_.batches.empty() && scene_.way.size() < 2) return;
        json_.Key("meshes").BeginArray();
        if (!scene_.batches.empty()) {
            json_.BeginObject().Key("name").Text("level").Key("primitives").BeginArray();
            for (size_t i = 0; i < scene_.batches.size(); i++) WritePrimitive(scene_.batches[i], i);
            json_.EndArray().EndObject();
        }
        if (scene_.way.size() >= 2) {
            std::vector<float> points;
            for (const Vec3& point : scene_.way) points.insert(points.end(), point.begin(), point.end());
            json_.BeginObject().Key("name").Text("way").Key("primitives").BeginArray().BeginObject();
            json_.Key("attributes").BeginObject().Key("POSITION").Count(AddPositions(points)).EndObject();
            json_.Key("mode").Int(LineStrip).EndObject().EndArray().EndObject();
        }
        json_.EndArray();
    }

    void WritePrimitive(const Batch& batch, size_t material) {
        json_.BeginObject().Key("attributes").BeginObject();
        json_.Key("POSITION").Count(AddPositions(batch.positions));
        json_.Key("NORMAL").Count(AddFloats(batch.normals, "VEC3", 3));
        if (batch.image != NoImage) json_.Key("TEXCOORD_0").Count(AddFloats(batch.texture, "VEC2", 2));
        if (batch.page != NoImage) json_.Key("TEXCOORD_1").Count(AddFloats(batch.lightmap, "VEC2", 2));
        json_.Key("_REGION").Count(AddFloats(batch.regions, "SCALAR", 1));
        json_.EndObject().Key("indices").Count(AddIndices(batch.triangles));
        json_.Key("material").Count(material).EndObject();
    }

    void WriteNodes() {
        const bool hasLevel = !scene_.batches.empty(), hasWay = scene_.way.size() >= 2;
        const size_t shown = (hasLevel ? 1U : 0U) + (hasWay ? 1U : 0U);
        json_.Key("nodes").BeginArray();
        json_.BeginObject().Key("name").Text(scene_.name);
        json_.Key("rotation").Numbers(std::array{-HalfRoot, 0.0, 0.0, HalfRoot});
        json_.Key("scale").Numbers(std::array{MetresPerUnit, MetresPerUnit, MetresPerUnit});
        if (shown + scene_.entities.size() > 0) {
            json_.Key("children").BeginArray();
            for (size_t i = 1; i <= shown + scene_.entities.size(); i++) json_.Count(i);
            json_.EndArray();
        }
        json_.EndObject();
        if (hasLevel) json_.BeginObject().Key("name").Text("level").Key("mesh").Int(0).EndObject();
        if (hasWay) json_.BeginObject().Key("name").Text("way").Key("mesh").Int(hasLevel ? 1 : 0).EndObject();
        for (size_t i = 0; i < scene_.entities.size(); i++) WriteEntityNode(scene_.entities[i], lightOf_[i]);
        json_.EndArray();
    }

    void WriteEntityNode(const Entity& entity, size_t light) {
        const std::string name = entity.Text("name");
        json_.BeginObject().Key("name").Text(name.empty() ? entity.TypeName() : name);
        if (entity.HasPosition()) json_.Key("translation").Numbers(entity.Position());
        if (light != NoImage) {
            if (std::string_view(lights_[light].type) != "point") {
                json_.Key("rotation").Numbers(TurnTo(lights_[light].direction));
            }
            json_.Key("extensions").BeginObject().Key("KHR_lights_punctual").BeginObject();
            json_.Key("light").Count(light).EndObject().EndObject();
        }
        json_.Key("extras");
        WriteEntity(json_, entity);
        json_.EndObject();
    }

    // The texture that shows an image: the number of both is the same.
    void WriteTextureInfo(const char* key, size_t image, int coordinates) {
        json_.Key(key).BeginObject().Key("index").Count(image);
        if (coordinates != 0) json_.Key("texCoord").Int(coordinates);
        json_.EndObject();
    }

    void WriteMaterials() {
        json_.Key("materials").BeginArray();
        for (const Batch& batch : scene_.batches) {
            json_.BeginObject().Key("name").Text(batch.name).Key("pbrMetallicRoughness").BeginObject();
            if (batch.image != NoImage) WriteTextureInfo("baseColorTexture", batch.image, 0);
            json_.Key("metallicFactor").Int(0).Key("roughnessFactor").Int(1).EndObject();
            if (batch.page != NoImage) WriteTextureInfo("occlusionTexture", GreyImage(batch.page), 1);
            if (batch.isUnlit) {
                json_.Key("extensions").BeginObject().Key("KHR_materials_unlit").BeginObject().EndObject().EndObject();
            }
            if (batch.page != NoImage) {
                json_.Key("extras").BeginObject();
                WriteTextureInfo("lightmap", batch.page, 1);
                json_.EndObject();
            }
            json_.EndObject();
        }
        json_.EndArray();
    }

    // Occlusion is one channel: the page in grey, as an image behind those of the scene.
    size_t GreyImage(size_t page) {
        return greyImages_.emplace(page, scene_.images.size() + greyImages_.size()).first->second;
    }

    bool IsPage(size_t image) const { return greyImages_.count(image) != 0; }

    void WriteImages() {
        std::vector<SceneImage> all = scene_.images;
        all.resize(scene_.images.size() + greyImages_.size());
        for (const auto& [page, grey] : greyImages_) {
            all[grey] = scene_.images[page];
            all[grey].name += " in grey";
            for (Rgb& pixel : all[grey].image.pixels) {
                const auto light = static_cast<uint8_t>((pixel.r * 54 + pixel.g * 183 + pixel.b * 19) / 256);
                pixel = {light, light, light};
            }
        }
        json_.Key("images").BeginArray();
        for (const SceneImage& image : all) {
            json_.BeginObject().Key("name").Text(image.name).Key("mimeType").Text("image/png");
            json_.Key("bufferView").Count(AddView(EncodePng(image.image), 0)).EndObject();
        }
        json_.EndArray();
        json_.Key("samplers").BeginArray();
        json_.BeginObject().Key("magFilter").Int(Nearest).Key("minFilter").Int(LinearMipmap);
        json_.Key("wrapS").Int(Repeat).Key("wrapT").Int(Repeat).EndObject();
        json_.BeginObject().Key("magFilter").Int(Linear).Key("minFilter").Int(Linear);
        json_.Key("wrapS").Int(ClampToEdge).Key("wrapT").Int(ClampToEdge).EndObject().EndArray();
        json_.Key("textures").BeginArray();
        for (size_t i = 0; i < all.size(); i++) {
            const bool isLight = i >= scene_.images.size() || IsPage(i);
            json_.BeginObject().Key("source").Count(i).Key("sampler").Int(isLight ? 1 : 0).EndObject();
        }
        json_.EndArray();
    }

    // Bytes in a view of their own; target 0 for an image.
    size_t AddView(std::span<const uint8_t> bytes, int target) {
        views_.push_back({data_.size(), bytes.size(), target});
        data_.insert(data_.end(), bytes.begin(), bytes.end());
        data_.resize((data_.size() + 3) / 4 * 4);
        return views_.size() - 1;
    }

    struct Accessor {
        size_t view, count;
        int component;
        const char* type;
        std::vector<float> low, high;
    };
    size_t AddFloats(const std::vector<float>& values, const char* type, size_t width) {
        const std::span bytes(reinterpret_cast<const uint8_t*>(values.data()), values.size() * sizeof(float));
        accessors_.push_back({AddView(bytes, ArrayTarget), values.size() / width, FloatType, type, {}, {}});
        return accessors_.size() - 1;
    }
    size_t AddPositions(const std::vector<float>& values) {
        const size_t accessor = AddFloats(values, "VEC3", 3);
        std::vector<float> low(values.begin(), values.begin() + 3), high = low;
        for (size_t i = 0; i < values.size(); i++) {
            low[i % 3] = std::min(low[i % 3], values[i]);
            high[i % 3] = std::max(high[i % 3], values[i]);
        }
        accessors_[accessor].low = low;
        accessors_[accessor].high = high;
        return accessor;
    }
    size_t AddIndices(const std::vector<uint32_t>& values) {
        const std::span bytes(reinterpret_cast<const uint8_t*>(values.data()), values.size() * sizeof(uint32_t));
        accessors_.push_back({AddView(bytes, IndexTarget), values.size(), UintType, "SCALAR", {}, {}});
        return accessors_.size() - 1;
    }

    void WriteBuffer() {
        if (views_.empty()) return;
        json_.Key("accessors").BeginArray();
        for (const Accessor& accessor : accessors_) {
            json_.BeginObject().Key("bufferView").Count(accessor.view).Key("componentType").Int(accessor.component);
            json_.Key("count").Count(accessor.count).Key("type").Text(accessor.type);
            if (!accessor.low.empty()) json_.Key("min").Numbers(accessor.low).Key("max").Numbers(accessor.high);
            json_.EndObject();
        }
        json_.EndArray().Key("bufferViews").BeginArray();
        for (const View& view : views_) {
            json_.BeginObject()
                .Key("buffer")
                .Int(0)
                .Key("byteOffset")
                .Count(view.offset)
                .Key("byteLength")
                .Count(view.size);
            if (view.target != 0) json_.Key("target").Int(view.target);
            json_.EndObject();
        }
        json_.EndArray().Key("buffers").BeginArray();
        json_.BeginObject().Key("byteLength").Count(data_.size()).EndObject().EndArray();
    }

    std::vector<uint8_t> Assemble() {
        std::string text = json_.Take();
        text.resize((text.size() + 3) / 4 * 4, ' ');
        const size_t size = 12 + 8 + text.size() + (data_.empty() ? 0 : 8 + data_.size());
        if (size > 0xFFFFFFFFU) throw std::runtime_error("the level is too large for a glTF file");
        std::vector<uint8_t> out;
        out.reserve(size);
        const auto word = [&](size_t value) {
            for (int i = 0; i < 4; i++) out.push_back(static_cast<uint8_t>(value >> (8 * i) & 0xFF));
        };
        word(GlbMagic);
        word(GlbVersion);
        word(size);
        word(text.size());
        word(JsonChunk);
        out.insert(out.end(), text.begin(), text.end());
        if (!data_.empty()) {
            word(data_.size());
            word(BinaryChunk);
            out.insert(out.end(), data_.begin(), data_.end());
        }
        return out;
    }

    struct View {
        size_t offset, size;
        int target;
    };

    const Scene& scene_;
    Json json_;
    std::vector<Light> lights_;
    std::vector<size_t> lightOf_;  // for each entity
    std::map<size_t, size_t> greyImages_;
    std::vector<View> views_;
    std::vector<Accessor> accessors_;
    std::vector<uint8_t> data_;
};

}  // namespace

std::vector<uint8_t> MakeGlb(const Scene& scene) {
    return GlbMaker(scene).Make();
}

}  // namespace klvtool
