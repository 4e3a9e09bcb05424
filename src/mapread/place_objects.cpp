// Rebuilds the entity table from the packed records of a level.
#include <algorithm>

#include "driver/build_log.h"
#include "driver/build_options.h"
#include "levelfile/file_klv.h"
#include "mapread/entity.h"
#include "mapread/record_fields.h"

namespace k2k {

namespace {

// Offsets that several records share.
constexpr size_t OriginAt = 4;
constexpr size_t AnglesAt = 16;
constexpr size_t PathCountAt = 40;

struct Keys {
    KeyList& list;
    void Add(std::string_view name, std::string_view value) { AddKey(list, name, value); }
};

Vec3 VectorAt(const RecordFields& record, size_t offset) {
    return record.At<Vec3>(offset);
}

void PlaceStart(const RecordFields& record, CEntity& entity) {
    Keys keys{entity.keys};
    keys.Add("origin", record.FloatsText(OriginAt, 3));
    keys.Add("mangle", record.FloatsText(AnglesAt, 3));
    keys.Add("name", record.Text(36, 20));
    entity.origin = VectorAt(record, OriginAt);
    entity.angle = record.At<float>(AnglesAt);
}

// What the records of both kinds of model share: the fields up to the name.
void PlaceModelHead(const RecordFields& record, CEntity& entity, size_t nameSize) {
    Keys keys{entity.keys};
    keys.Add("origin", record.FloatsText(OriginAt, 3));
    keys.Add("mangle", record.FloatsText(AnglesAt, 3));
    keys.Add("scale", record.FloatsText(28, 3));
    keys.Add("name", record.Text(40, nameSize));
    entity.origin = VectorAt(record, OriginAt);
    entity.angle = record.At<float>(AnglesAt);
}

void AddUnlessEmpty(Keys keys, std::string_view name, const std::string& value) {
    if (!value.empty()) keys.Add(name, value);
}

void PlaceModel(const RecordFields& record, CEntity& entity) {
    constexpr size_t fileAt = 60, fileSize = 13, actionAt = 73, actionSize = 20;
    PlaceModelHead(record, entity, 20);
    Keys keys{entity.keys};
    const std::string action = record.Text(actionAt, actionSize);
    if (record.IsTerminated(fileAt, fileSize)) {
        keys.Add("file", record.Text(fileAt, fileSize));
        AddUnlessEmpty(keys, "action", action);
    } else {
        // A long file name runs on into the action's field.
        keys.Add("file", record.Text(fileAt, fileSize) + action);
    }
    keys.Add("skills", record.FloatsText(96, 8));
    keys.Add("flags", record.FlagsText(128));
    keys.Add("ambient", record.FloatsText(132, 1));
    entity.flags = record.At<uint32_t>(128);
}

void PlaceExtended(const RecordFields& record, CEntity& entity) {
    constexpr size_t textSize = 33;
    PlaceModelHead(record, entity, textSize);
    Keys keys{entity.keys};
    keys.Add("file", record.Text(73, textSize));
    AddUnlessEmpty(keys, "action", record.Text(106, textSize));
    keys.Add("skills", record.FloatsText(140, 20));
    keys.Add("flags", record.FlagsText(220));
    keys.Add("ambient", record.FloatsText(224, 1));
    keys.Add("albedo", record.FloatsText(228, 1));
    keys.Add("ent1", record.IntText(232));
    keys.Add("ent2", record.IntText(236));
    keys.Add("names1", record.Text(240, textSize));
    keys.Add("names2", record.Text(273, textSize));
    keys.Add("names3", record.Text(306, textSize));
    keys.Add("names4", record.Text(339, textSize));
    entity.flags = record.At<uint32_t>(220);
}

void PlaceSound(const RecordFields& record, CEntity& entity) {
    Keys keys{entity.keys};
    keys.Add("origin", record.FloatsText(OriginAt, 3));
    keys.Add("file", record.Text(36, 13));
    keys.Add("flags", record.FlagsText(32));
    keys.Add("volume", record.FloatsText(16, 3) + ' ' + record.IntText(28));
    entity.origin = VectorAt(record, OriginAt);
    entity.flags = record.At<uint32_t>(32);
}

void PlaceSun(const RecordFields& record, CEntity& entity) {
    Keys keys{entity.keys};
    keys.Add("sun_azm", record.FloatsText(16, 1));
    keys.Add("sun_elv", record.FloatsText(20, 1));
    keys.Add("flags", record.FlagsText(24));
    entity.angle = record.At<float>(16);
    entity.flags = record.At<uint32_t>(24);
}

size_t PathPoints(const RecordFields& record) {
    return static_cast<size_t>(std::max(record.At<int32_t>(PathCountAt), 0));
}

void PlacePath(const RecordFields& record, CEntity& entity) {
    constexpr size_t pointsAt = 44;
    Keys keys{entity.keys};
    keys.Add("name", record.Text(4, 20));
    keys.Add("ambient", record.FloatsText(24, 1));
    keys.Add("range", record.IntText(PathCountAt));
    const size_t points = PathPoints(record);
    for (size_t i = 0; i < points; ++i) keys.Add("origin", record.FloatsText(pointsAt + i * sizeof(Vec3), 3));
    if (points > 0) entity.origin = VectorAt(record, pointsAt);
}

// The light's colour as lighting takes it: a single number stands for grey, -mono leaves the brightest component.
Vec3 LightColour(Vec3 colour) {
    constexpr float defaultGrey = 50.0F;
    if (colour[0] == 0 && colour[1] == 0) {
        if (colour[2] <= 1) colour[2] = defaultGrey;
        colour.fill(colour[2]);
    }
    if (Options().mono) colour.fill(std::max({colour[0], colour[1], colour[2]}));
    return colour;
}

void PrepareLight(const RecordFields& record, CEntity& entity) {
    const Vec3 colour = LightColour(VectorAt(record, 16));
    entity.rawRange = record.At<float>(28);
    const double automatic = 2.0 * (static_cast<double>(colour[0]) + colour[1] + colour[2]);
    entity.lightRange = entity.rawRange == 0 ? static_cast<float>(automatic) : entity.rawRange;
    if (entity.lightRange < 1) entity.lightRange = 1;
    for (size_t i = 0; i < 3; ++i) entity.lightColor[i] = static_cast<float>(colour[i] * 3.0 / entity.lightRange);
}

void PlaceLight(const RecordFields& record, CEntity& entity) {
    Keys keys{entity.keys};
    keys.Add("origin", record.FloatsText(OriginAt, 3));
    keys.Add("brightness", record.FloatsText(16, 4));
    keys.Add("flags", record.FlagsText(32));
    entity.origin = VectorAt(record, OriginAt);
    entity.flags = record.At<uint32_t>(32);
    PrepareLight(record, entity);
}

// Direction and cone go into keys named "origin" too: a look-up finds the position, the two others ride along.
void PlaceSpotlight(const RecordFields& record, CEntity& entity) {
    PlaceLight(record, entity);
    Keys keys{entity.keys};
    keys.Add("origin", record.FloatsText(40, 3));
    keys.Add("origin", record.FloatsText(36, 1));
}

using PlaceRecord = void (*)(const RecordFields&, CEntity&);

// By type number; the level itself has no place.
constexpr std::array<PlaceRecord, TypeWords.size()> PlaceByType{
    nullptr, PlaceStart, PlaceLight, PlaceModel, PlaceSound, PlaceSun, PlacePath, PlaceExtended, PlaceSpotlight};

void Place(const EntityRecordView& view) {
    if (Entities().size() >= MaxEntities) FatalError("E011: Map size - too many objects");
    const auto type = static_cast<size_t>(static_cast<uint32_t>(view.type));
    if (type >= PlaceByType.size() || PlaceByType[type] == nullptr) return;
    CEntity& entity = NewEntity();
    AddKey(entity.keys, "type", TypeWords[type]);
    std::copy(TypeWords[type].begin(), TypeWords[type].end(), entity.typeName.begin());
    PlaceByType[type](RecordFields(view.bytes), entity);
}

// Paths stand side by side in the chunk, so all their points fit into it. A damaged table that leads to one long path
// thousands of times would fill the memory instead.
void CheckPathPoints(const std::vector<EntityRecordView>& records, size_t chunkSize) {
    size_t points = 0;
    for (const EntityRecordView& view : records) {
        if (view.type != static_cast<int32_t>(EntityType::Path)) continue;
        points += PathPoints(RecordFields(view.bytes));
        if (points > chunkSize / sizeof(Vec3)) InvalidLevelFile();
    }
}

}  // namespace

void PlaceObjects() {
    ClearEntities();
    const std::vector<uint8_t>& chunk = EntityRecords().block;
    const std::vector<EntityRecordView> records = EntityRecordViews(chunk);
    CheckPathPoints(records, chunk.size());
    for (const EntityRecordView& record : records) Place(record);
    if (!Options().quiet) BuildLog(" \nPlacing %i objects ..... ok", static_cast<int>(Entities().size()));
}

}  // namespace k2k
