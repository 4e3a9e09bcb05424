#include "klvtool/entities.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <span>
#include <string_view>

namespace klvtool {
namespace {

constexpr int EntityChunk = 15;

enum class Kind { Floats, Int, Byte, Flags, Text, Colour };

struct FieldPlace {
    const char* name;
    uint32_t offset;
    Kind kind;
    uint32_t count;  // of numbers, or bytes of a text
};
using Layout = std::span<const FieldPlace>;

constexpr FieldPlace StartFields[] = {
    {"position", 4, Kind::Floats, 3}, {"angles", 16, Kind::Floats, 3}, {"name", 36, Kind::Text, 20}};
constexpr FieldPlace LightFields[] = {{"position", 4, Kind::Floats, 3},
                                      {"colour", 16, Kind::Floats, 3},
                                      {"range", 28, Kind::Floats, 1},
                                      {"flags", 32, Kind::Flags, 1}};
constexpr FieldPlace ModelFields[] = {
    {"position", 4, Kind::Floats, 3}, {"angles", 16, Kind::Floats, 3}, {"scale", 28, Kind::Floats, 3},
    {"name", 40, Kind::Text, 20},     {"file", 60, Kind::Text, 33},    {"action", 73, Kind::Text, 20},
    {"skills", 96, Kind::Floats, 8},  {"flags", 128, Kind::Flags, 1},  {"ambient", 132, Kind::Floats, 1}};
constexpr FieldPlace SoundFields[] = {{"position", 4, Kind::Floats, 3},
                                      {"volume", 16, Kind::Floats, 3},
                                      {"volume4", 28, Kind::Int, 1},
                                      {"flags", 32, Kind::Flags, 1},
                                      {"file", 36, Kind::Text, 13}};
constexpr FieldPlace ShortSunFields[] = {{"azimuth", 16, Kind::Floats, 1}, {"elevation", 20, Kind::Floats, 1}};
constexpr FieldPlace SunFields[] = {{"azimuth", 16, Kind::Floats, 1},    {"elevation", 20, Kind::Floats, 1},
                                    {"flags", 24, Kind::Flags, 1},       {"compiler_version", 28, Kind::Floats, 1},
                                    {"gamma_start", 32, Kind::Byte, 1},  {"lightmap_size_code", 33, Kind::Byte, 1},
                                    {"sun_colour", 36, Kind::Colour, 1}, {"ambient_colour", 40, Kind::Colour, 1},
                                    {"fog1", 44, Kind::Colour, 1},       {"fog2", 48, Kind::Colour, 1},
                                    {"fog3", 52, Kind::Colour, 1},       {"fog4", 56, Kind::Colour, 1}};
constexpr FieldPlace PathFields[] = {{"name", 4, Kind::Text, 20}, {"ambient", 24, Kind::Floats, 1}};
constexpr FieldPlace ExtendedFields[] = {
    {"position", 4, Kind::Floats, 3},  {"angles", 16, Kind::Floats, 3}, {"scale", 28, Kind::Floats, 3},
    {"name", 40, Kind::Text, 33},      {"file", 73, Kind::Text, 33},    {"action", 106, Kind::Text, 33},
    {"skills", 140, Kind::Floats, 20}, {"flags", 220, Kind::Flags, 1},  {"ambient", 224, Kind::Floats, 1},
    {"albedo", 228, Kind::Floats, 1},  {"entity1", 232, Kind::Int, 1},  {"entity2", 236, Kind::Int, 1},
    {"names1", 240, Kind::Text, 33},   {"names2", 273, Kind::Text, 33}, {"names3", 306, Kind::Text, 33},
    {"names4", 339, Kind::Text, 33}};
constexpr FieldPlace SpotlightFields[] = {{"position", 4, Kind::Floats, 3}, {"colour", 16, Kind::Floats, 3},
                                          {"range", 28, Kind::Floats, 1},   {"flags", 32, Kind::Flags, 1},
                                          {"cone", 36, Kind::Floats, 1},    {"direction", 40, Kind::Floats, 3}};

constexpr uint32_t ModelFile = 60, ModelAction = 73, PathPointCount = 40, PathPoints = 44, PathPointSize = 12;

Layout LayoutOf(EntityType type, char version) {
    switch (type) {
        case EntityType::Start:
            return StartFields;
        case EntityType::Light:
            return LightFields;
        case EntityType::Model:
            return ModelFields;
        case EntityType::Sound:
            return SoundFields;
        case EntityType::Sun:
            return version == '5' ? Layout(ShortSunFields) : Layout(SunFields);
        case EntityType::Path:
            return PathFields;
        case EntityType::Extended:
            return ExtendedFields;
        case EntityType::Spotlight:
            return SpotlightFields;
    }
    return {};
}

template <typename T>
T ValueAt(std::span<const uint8_t> data, size_t at) {
    T value{};
    std::memcpy(&value, data.data() + at, sizeof(T));
    return value;
}

uint32_t BytesOf(const FieldPlace& place) {
    const bool single = place.kind == Kind::Text || place.kind == Kind::Byte;
    return single ? place.count : 4 * place.count;
}

std::string TextAt(std::span<const uint8_t> data, const FieldPlace& place) {
    const auto field = data.subspan(place.offset, place.count);
    return ToUtf8({reinterpret_cast<const char*>(field.data()),
                   static_cast<size_t>(std::find(field.begin(), field.end(), 0) - field.begin())});
}

FieldValue ReadField(std::span<const uint8_t> record, const FieldPlace& place) {
    switch (place.kind) {
        case Kind::Text:
            return TextAt(record, place);
        case Kind::Int:
            return ValueAt<int32_t>(record, place.offset);
        case Kind::Byte:
            return static_cast<int32_t>(record[place.offset]);
        case Kind::Flags:
            return Flags{ValueAt<uint32_t>(record, place.offset)};
        case Kind::Colour: {  // blue, green, red in the record
            const auto channel = [&](size_t i) { return static_cast<float>(record[place.offset + i]); };
            return std::vector<float>{channel(2), channel(1), channel(0)};
        }
        case Kind::Floats:
            break;
    }
    std::vector<float> numbers(place.count);
    for (uint32_t i = 0; i < place.count; i++) numbers[i] = ValueAt<float>(record, place.offset + 4 * i);
    return numbers;
}

// A file name that fills its field goes on in the field of the action, and there is no action then.
void SettleModelFile(std::span<const uint8_t> record, Entity& entity) {
    const auto own = record.subspan(ModelFile, ModelAction - ModelFile);
    if (std::find(own.begin(), own.end(), 0) != own.end()) return;
    for (Field& field : entity.fields) {
        if (field.name == std::string_view("action")) field.value = std::string();
    }
}

// The points that the record has room for, unless they are more than the limit.
void ReadPoints(std::span<const uint8_t> record, size_t limit, Entity& entity) {
    if (record.size() < PathPoints) return;
    const int64_t wanted = ValueAt<int32_t>(record, PathPointCount);
    const auto room = static_cast<int64_t>((record.size() - PathPoints) / PathPointSize);
    const int64_t count = std::min(wanted, room);
    if (count > static_cast<int64_t>(limit)) return;
    for (int64_t i = 0; i < count; i++) {
        entity.points.push_back(ValueAt<Vec3>(record, PathPoints + static_cast<size_t>(i) * PathPointSize));
    }
}

std::optional<Entity> ReadRecord(std::span<const uint8_t> record, char version, size_t pointLimit) {
    Entity entity{static_cast<EntityType>(ValueAt<uint32_t>(record, 0)), {}, {}};
    const Layout layout = LayoutOf(entity.type, version);
    if (layout.empty()) return std::nullopt;
    for (const FieldPlace& place : layout) {
        if (place.offset + BytesOf(place) > record.size()) return std::nullopt;
        entity.fields.push_back({place.name, ReadField(record, place)});
    }
    if (entity.type == EntityType::Model) SettleModelFile(record, entity);
    if (entity.type == EntityType::Path) ReadPoints(record, pointLimit, entity);
    return entity;
}

}  // namespace

const char* Entity::TypeName() const {
    constexpr std::array Names{"", "start", "light", "model", "sound", "sun", "path", "extended model", "spotlight"};
    return Names[static_cast<size_t>(type)];
}

const FieldValue* Entity::Find(std::string_view name) const {
    const auto found =
        std::find_if(fields.begin(), fields.end(), [&](const Field& field) { return field.name == name; });
    return found == fields.end() ? nullptr : &found->value;
}

std::string Entity::Text(std::string_view name) const {
    const FieldValue* value = Find(name);
    const auto* text = value == nullptr ? nullptr : std::get_if<std::string>(value);
    return text == nullptr ? "" : *text;
}

std::vector<float> Entity::Numbers(std::string_view name) const {
    const FieldValue* value = Find(name);
    const auto* numbers = value == nullptr ? nullptr : std::get_if<std::vector<float>>(value);
    return numbers == nullptr ? std::vector<float>{} : *numbers;
}

Vec3 Entity::Position() const {
    const std::vector<float> numbers = Numbers("position");
    return numbers.size() == 3 ? Vec3{numbers[0], numbers[1], numbers[2]} : Vec3{};
}

std::vector<Entity> ReadEntities(const levelcheck::LevelView& level) {
    const auto data = level.Chunk(EntityChunk);
    std::vector<Entity> entities;
    if (data.size() < 8) return entities;
    const uint64_t count = std::min<uint64_t>(ValueAt<uint32_t>(data, 0), data.size() / 4 - 1);
    size_t room = data.size() / PathPointSize;  // for points: a damaged table can name one long path again and again
    for (uint64_t i = 0; i < count; i++) {
        const uint64_t offset = ValueAt<uint32_t>(data, 4 + 4 * i);
        if (offset == 0 || offset + 4 > data.size()) continue;
        auto entity = ReadRecord(data.subspan(offset), level.version, room);
        if (!entity) continue;
        room -= entity->points.size();
        entities.push_back(std::move(*entity));
    }
    return entities;
}

std::string ToUtf8(std::string_view text) {
    std::string out;
    for (const char c : text) {
        const auto byte = static_cast<uint8_t>(c);
        if (byte < 0x80) {
            out += c;
        } else {
            out += static_cast<char>(0xC0 | byte >> 6);
            out += static_cast<char>(0x80 | (byte & 0x3F));
        }
    }
    return out;
}

}  // namespace klvtool
