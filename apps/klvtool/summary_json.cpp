#include "klvtool/json.h"
#include "klvtool/summary.h"

namespace klvtool {
namespace {

void WriteChunks(Json& json, const levelcheck::LevelView& level) {
    json.Key("chunks").BeginArray();
    for (int i = 0; i < levelcheck::ChunkCount; i++) {
        const levelcheck::ChunkPlace& place = level.chunks[static_cast<size_t>(i)];
        json.BeginObject().Key("number").Int(i).Key("name").Text(ChunkName(i));
        json.Key("offset").Int(place.offset).Key("size").Int(place.size).EndObject();
    }
    json.EndArray();
}

void WriteHulls(Json& json, const levelcheck::Info& info) {
    json.Key("bounds").BeginObject().Key("mins").Numbers(info.mins).Key("maxs").Numbers(info.maxs).EndObject();
    json.Key("hulls").BeginArray();
    for (size_t hull = 0; hull < 3; hull++) {
        json.BeginObject().Key("root").Int(info.headNodes[hull]);
        json.Key("mins").BeginArray();
        for (const int32_t value : info.hullMins[hull]) json.Int(value);
        json.EndArray().Key("maxs").BeginArray();
        for (const int32_t value : info.hullMaxs[hull]) json.Int(value);
        json.EndArray().EndObject();
    }
    json.EndArray();
}

void WriteTextures(Json& json, const Summary& summary) {
    json.Key("textures").BeginArray();
    for (size_t i = 0; i < summary.textures.size(); i++) {
        const Texture& texture = summary.textures[i];
        json.BeginObject().Key("name").Text(texture.name).Key("width").Int(texture.width);
        json.Key("height").Int(texture.height).Key("faces").Count(summary.textureUses[i]).EndObject();
    }
    json.EndArray();
}

void WritePages(Json& json, const Summary& summary) {
    json.Key("page_size").Int(summary.level.pageSize).Key("pages").BeginArray();
    for (const PageUse& page : summary.pages) {
        json.BeginObject().Key("surfaces").Count(page.surfaces).Key("fill").Number(page.fill).EndObject();
    }
    json.EndArray();
}

void WriteValue(Json& json, const FieldValue& value) {
    if (const auto* text = std::get_if<std::string>(&value)) {
        json.Text(*text);
    } else if (const auto* whole = std::get_if<int32_t>(&value)) {
        json.Int(*whole);
    } else if (const auto* flags = std::get_if<Flags>(&value)) {
        json.Int(flags->bits);
    } else {
        const auto& numbers = std::get<std::vector<float>>(value);
        if (numbers.size() == 1) {
            json.Number(numbers[0]);
        } else {
            json.Numbers(numbers);
        }
    }
}

}  // namespace

void WriteEntity(Json& json, const Entity& entity) {
    json.BeginObject().Key("type").Text(entity.TypeName());
    for (const Field& field : entity.fields) {
        json.Key(field.name);
        WriteValue(json, field.value);
    }
    if (!entity.points.empty()) {
        json.Key("points").BeginArray();
        for (const Vec3& point : entity.points) json.Numbers(point);
        json.EndArray();
    }
    json.EndObject();
}

std::string SummaryJson(const Summary& summary) {
    const levelcheck::LevelView& level = summary.level;
    Json json;
    json.BeginObject().Key("version").Text(ToUtf8(std::string(1, level.version)));
    json.Key("bytes").Count(level.bytes.size()).Key("mesh_level").Bool(level.meshLevel);
    json.Key("damaged").BeginArray();
    for (const std::string& broken : level.broken) json.Text(broken);
    json.EndArray();
    WriteChunks(json, level);
    json.Key("counts").BeginObject();
    for (const TableCount& table : summary.tables) json.Key(table.name).Count(table.count);
    json.EndObject();
    WriteHulls(json, level.info);
    json.Key("visibility").BeginObject().Key("rows").Count(summary.visibility.rows);
    json.Key("mean_visible").Number(summary.MeanVisible()).EndObject();
    WritePages(json, summary);
    WriteTextures(json, summary);
    json.Key("entities").BeginArray();
    for (const Entity& entity : summary.entities) WriteEntity(json, entity);
    json.EndArray();
    if (summary.Sun() != nullptr) {
        json.Key("sun");
        WriteEntity(json, *summary.Sun());
    }
    json.EndObject();
    return json.Take() + "\n";
}

}  // namespace klvtool
