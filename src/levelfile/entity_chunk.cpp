// From the key lists of all entities to the entity chunk.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "driver/build_log.h"
#include "driver/build_options.h"
#include "driver/text.h"
#include "levelfile/entity_data.h"
#include "levelfile/portal_data.h"
#include "levelfile/texture_data.h"

namespace k2k {

namespace {

enum class FieldKind {
    Floats,     // up to `count` numbers
    Integer,    //
    Flags,      // binary digits, which replace the field
    MoreFlags,  // binary digits, added to the field's bits
    Text,       // at most `count` - 1 characters
    ModelFile,  // runs on into the action field behind it
    Volume      // three floats and an integer
};

struct Field {
    std::string_view key;
    FieldKind kind;
    size_t offset;
    size_t count = 1;
};

struct RecordLayout {
    size_t size;
    std::span<const Field> fields;
};

using enum FieldKind;

constexpr Field StartFields[] = {
    {"origin", Floats, 4, 3}, {"mangle", Floats, 16, 3}, {"angle", Floats, 16}, {"name", Text, 36, 20}};
constexpr Field LightFields[] = {{"origin", Floats, 4, 3}, {"brightness", Floats, 16, 4}, {"flags", Flags, 32}};
constexpr Field ModelFields[] = {{"origin", Floats, 4, 3}, {"mangle", Floats, 16, 3}, {"angle", Floats, 16},
                                 {"scale", Floats, 28, 3}, {"name", Text, 40, 20},    {"file", ModelFile, 60},
                                 {"action", Text, 73, 20}, {"skills", Floats, 96, 8}, {"flags", Flags, 128},
                                 {"ambient", Floats, 132}};
constexpr Field ExtendedFields[] = {{"origin", Floats, 4, 3},  {"mangle", Floats, 16, 3},   {"angle", Floats, 16},
                                    {"scale", Floats, 28, 3},  {"name", Text, 40, 33},      {"file", Text, 73, 33},
                                    {"action", Text, 106, 33}, {"skills", Floats, 140, 20}, {"flags", Flags, 220},
                                    {"ambient", Floats, 224},  {"albedo", Floats, 228},     {"ent1", Integer, 232},
                                    {"ent2", Integer, 236},    {"names1", Text, 240, 33},   {"names2", Text, 273, 33},
                                    {"names3", Text, 306, 33}, {"names4", Text, 339, 33}};
constexpr Field SoundFields[] = {
    {"origin", Floats, 4, 3}, {"volume", Volume, 16}, {"flags", Flags, 32}, {"file", Text, 36, 13}};
constexpr Field ShortSunFields[] = {{"sun_azm", Floats, 16}, {"sun_elv", Floats, 20}};
constexpr Field LongSunFields[] = {{"sun_azm", Floats, 16}, {"sun_elv", Floats, 20}, {"flags", MoreFlags, 24}};
constexpr size_t PathPointCount = 40;
constexpr Field PathFields[] = {{"name", Text, 4, 20}, {"ambient", Floats, 24}, {"range", Integer, PathPointCount}};

constexpr RecordLayout StartLayout{56, StartFields};
constexpr RecordLayout LightLayout{36, LightFields};
constexpr RecordLayout ModelLayout{136, ModelFields};
constexpr RecordLayout ExtendedLayout{372, ExtendedFields};
constexpr RecordLayout SoundLayout{72, SoundFields};
constexpr RecordLayout ShortSunLayout{56, ShortSunFields};
constexpr RecordLayout LongSunLayout{60, LongSunFields};
constexpr RecordLayout PathLayout{44, PathFields};
constexpr size_t PathPointSize = sizeof(Vec3);

// A model's file name fills its field to the last byte, and goes on in the action field.
constexpr size_t ModelFileField = 13, ModelActionField = 20;

// The sun record beyond its keys.
namespace sun {
constexpr size_t Elevation = 20, Flags = 24, CompilerVersion = 28, FirstGamma = 32, LightmapSizeCode = 33,
                 SunColour = 36, AmbientColour = 40, FogColours = 44, ColourSize = 4;
constexpr float DefaultElevation = 45.0F;
constexpr float Version = 7.01F;
constexpr uint32_t HasLightmapPages = 1, HasNoNodes = 4, Preview = 16, Always = 32;
}  // namespace sun

// One record in work: fields by offset, all zero at first.
class Record {
  public:
    Record(size_t size, EntityType type) : bytes_(size) { Put(0, static_cast<uint32_t>(type)); }

    template <typename T>
    void Put(size_t offset, T value) {
        std::memcpy(bytes_.data() + offset, &value, sizeof(T));
    }
    template <typename T>
    T Get(size_t offset) const {
        T value;
        std::memcpy(&value, bytes_.data() + offset, sizeof(T));
        return value;
    }
    // Cut to one character less than the field has, and filled with zeros.
    void PutText(size_t offset, size_t fieldSize, std::string_view text) {
        PutCharacters(offset, fieldSize, text.substr(0, fieldSize - 1));
    }
    void PutCharacters(size_t offset, size_t fieldSize, std::string_view text) {
        text = text.substr(0, std::min(text.size(), fieldSize));
        std::fill_n(bytes_.begin() + static_cast<std::ptrdiff_t>(offset), fieldSize, uint8_t{0});
        std::copy(text.begin(), text.end(), bytes_.begin() + static_cast<std::ptrdiff_t>(offset));
    }
    void SetKeys(const KeyList& keys, std::span<const Field> fields);
    std::span<const uint8_t> bytes() const { return bytes_; }

  private:
    void SetField(const Field& field, const std::string& value);
    size_t PutFloats(size_t offset, size_t count, const std::string& value);
    void PutModelFile(size_t offset, std::string_view value);

    std::vector<uint8_t> bytes_;
};

// What does not parse keeps the field's value. Returns where reading stopped.
size_t Record::PutFloats(size_t offset, size_t count, const std::string& value) {
    std::vector<float> numbers(count);
    std::memcpy(numbers.data(), bytes_.data() + offset, count * sizeof(float));
    const size_t stop = ParseFloats(value, numbers);
    std::memcpy(bytes_.data() + offset, numbers.data(), count * sizeof(float));
    return stop;
}

void Record::PutModelFile(size_t offset, std::string_view value) {
    PutCharacters(offset, ModelFileField, value);
    if (value.size() >= ModelFileField) {
        PutText(offset + ModelFileField, ModelActionField, value.substr(ModelFileField));
    }
}

void Record::SetField(const Field& field, const std::string& value) {
    switch (field.kind) {
        case Floats:
            PutFloats(field.offset, field.count, value);
            break;
        case Integer:
            Put(field.offset, ToInt(value));
            break;
        case Flags:
            Put(field.offset, ParseBinary(value));
            break;
        case MoreFlags:
            Put(field.offset, Get<uint32_t>(field.offset) | ParseBinary(value));
            break;
        case Text:
            PutText(field.offset, field.count, value);
            break;
        case ModelFile:
            PutModelFile(field.offset, value);
            break;
        case Volume: {
            const size_t stop = PutFloats(field.offset, 3, value);
            Put(field.offset + sizeof(Vec3), ToInt(std::string_view(value).substr(stop)));
            break;
        }
    }
}

// Keys in list order: of several with one name the last one holds.
void Record::SetKeys(const KeyList& keys, std::span<const Field> fields) {
    for (const EntityKey& key : keys) {
        const auto named = [&](const Field& field) { return field.key == key.name; };
        const auto field = std::find_if(fields.begin(), fields.end(), named);
        if (field != fields.end()) SetField(*field, key.value);
    }
}

Record PlainRecord(const KeyList& keys, EntityType type, const RecordLayout& layout) {
    Record record(layout.size, type);
    record.SetKeys(keys, layout.fields);
    return record;
}

// The low byte of a whole number of percent, as the low byte of its share of 255.
uint8_t ColourByte(int32_t percent) {
    return static_cast<uint8_t>((percent & 0xFF) * 255 / 100);
}

int32_t WholePercent(float percent) {
    constexpr float limit = 1e9F;
    return std::isnan(percent) ? 0 : static_cast<int32_t>(std::clamp(percent, -limit, limit));
}

// Blue, green, red, 0.
void PutColour(Record& record, size_t offset, const std::array<int32_t, 3>& rgbPercent) {
    for (size_t i = 0; i < 3; ++i) record.Put(offset + i, ColourByte(rgbPercent[2 - i]));
}

std::array<int32_t, 3> WholePercent(const std::array<float, 3>& rgb) {
    return {WholePercent(rgb[0]), WholePercent(rgb[1]), WholePercent(rgb[2])};
}

uint32_t SunFlags() {
    uint32_t flags = sun::Always;
    if (Textures().WritesLightmapPages()) flags |= sun::HasLightmapPages;
    if (Portals().nodes.empty()) flags |= sun::HasNoNodes;
    if (Options().preview) flags |= sun::Preview;
    return flags;
}

Record LongSunRecord(const KeyList& keys) {
    Record record(LongSunLayout.size, EntityType::Sun);
    record.Put(sun::Elevation, sun::DefaultElevation);
    record.Put(sun::Flags, SunFlags());
    record.Put(sun::CompilerVersion, sun::Version);
    record.Put(sun::FirstGamma, FirstGammaValue);
    record.Put(sun::LightmapSizeCode, static_cast<uint8_t>(Textures().lightmapSizeCode));
    PutColour(record, sun::SunColour, WholePercent(Options().sunrgb));
    PutColour(record, sun::AmbientColour, WholePercent(Options().ambrgb));
    for (size_t i = 0; i < Options().fog.size(); ++i) {
        PutColour(record, sun::FogColours + i * sun::ColourSize, Options().fog[i]);
    }
    record.SetKeys(keys, LongSunLayout.fields);
    return record;
}

Record SunRecord(const KeyList& keys) {
    if (!Options().nod3dlmaps) return LongSunRecord(keys);
    Record record(ShortSunLayout.size, EntityType::Sun);
    record.Put(sun::Elevation, sun::DefaultElevation);
    record.SetKeys(keys, ShortSunLayout.fields);
    return record;
}

[[noreturn]] void TooManyObjects() {
    FatalError("E011: Map size - too many objects");
}

// Has room for as many points as "range" says; the first ones come from the "origin" keys, in list order.
Record PathRecord(const KeyList& keys) {
    const int32_t points = PlainRecord(keys, EntityType::Path, PathLayout).Get<int32_t>(PathPointCount);
    const auto room = static_cast<size_t>(std::max(points, 0));
    if (room > MaxEntityChunk / PathPointSize) TooManyObjects();
    Record record(PathLayout.size + room * PathPointSize, EntityType::Path);
    record.SetKeys(keys, PathLayout.fields);
    size_t used = 0;
    for (const EntityKey& key : keys) {
        if (key.name != "origin" || used == room) continue;
        Vec3 point{};
        ParseFloats(key.value, point);
        record.Put(PathLayout.size + used++ * PathPointSize, point);
    }
    return record;
}

Record MakeRecord(const KeyList& keys, EntityType type) {
    switch (type) {
        case EntityType::Start:
            return PlainRecord(keys, type, StartLayout);
        case EntityType::Light:
            return PlainRecord(keys, type, LightLayout);
        case EntityType::Model:
            return PlainRecord(keys, type, ModelLayout);
        case EntityType::Sound:
            return PlainRecord(keys, type, SoundLayout);
        case EntityType::Sun:
            return SunRecord(keys);
        case EntityType::Path:
            return PathRecord(keys);
        case EntityType::Extended:
            return PlainRecord(keys, type, ExtendedLayout);
        case EntityType::Level:
        case EntityType::Spotlight:
            break;
    }
    FatalError("E02B: Can´t write Unknown entity type");
}

// The first "type" key that holds a type word; -1 when none does.
int32_t RecordType(const KeyList& keys) {
    for (const EntityKey& key : keys) {
        const int32_t type = key.name == "type" ? TypeNumber(key.value) : -1;
        if (type >= 0) return type;
    }
    return -1;
}

void MoveSunToFront(std::span<KeyList* const> entities) {
    const auto isSun = [](const KeyList* keys) {
        return TypeNumber(GetKey(*keys, "type")) == static_cast<int32_t>(EntityType::Sun);
    };
    const auto found = std::find_if(entities.begin(), entities.end(), isSun);
    if (found != entities.end() && found != entities.begin()) (*found)->swap(*entities.front());
}

void PutU32(std::vector<uint8_t>& block, size_t row, uint32_t value) {
    std::memcpy(block.data() + row * sizeof(value), &value, sizeof(value));
}

}  // namespace

void BuildEntityChunk(std::span<KeyList* const> entities) {
    if (!Options().nod3dlmaps) MoveSunToFront(entities);
    std::vector<uint8_t>& block = EntityRecords().block;
    block.assign(sizeof(uint32_t) * std::max<size_t>(1 + entities.size(), 2), 0);
    uint32_t count = 0;
    for (const KeyList* keys : entities) {
        const int32_t type = RecordType(*keys);
        // The level itself is told by the chunks around this one.
        if (type < 0 || type == static_cast<int32_t>(EntityType::Level)) continue;
        const Record record = MakeRecord(*keys, static_cast<EntityType>(type));
        if (block.size() + record.bytes().size() > MaxEntityChunk) TooManyObjects();
        PutU32(block, ++count, static_cast<uint32_t>(block.size()));
        block.insert(block.end(), record.bytes().begin(), record.bytes().end());
    }
    PutU32(block, 0, count);
}

}  // namespace k2k
