// The fields of each entity type, in file order.
#include "mapread/entity_pair.h"

#include "driver/build_log.h"
#include "mapread/pair_fields.h"

namespace k2k {

namespace {

// Room of the file name in the records of models, with its terminating zero: in the field alone, and with the field
// behind it when no action needs that one.
constexpr size_t FileFieldSize = 13;
constexpr size_t LongFileFieldSize = 33;

constexpr int ModelSkills = 8;
constexpr int ExtendedSkills = 20;

void WarnLongFileName(const std::string& file, size_t limit, int32_t line) {
    if (file.size() < limit) return;
    BuildLog(" \nWARNING W050: Model Filename too long: <%s>, line %d!\n", file.c_str(), line);
    ++WarnCount;
}

struct ModelHead {
    const std::string& file;
    bool hasAction;
};

// What models of both kinds begin with, up to the action.
ModelHead ReadModelHead(PairFields& fields) {
    fields.Joined("origin", 3);
    fields.Joined("mangle", 3);
    fields.Joined("scale", 3);
    const std::string& file = fields.Line("file");
    WarnLongFileName(file, LongFileFieldSize, fields.line());
    fields.Token("name");
    const bool hasAction = fields.TokenUnless(NotDefined, "action");
    return {file, hasAction};
}

}  // namespace

void CEPairWorld::Read(TokenScanner& scanner, CEntity& entity) {
    PairFields fields(scanner, entity.keys, EntityType::Level);
    fields.Line("wad");
    fields.Line("palette");
}

void CEPairStart::Read(TokenScanner& scanner, CEntity& entity) {
    PairFields fields(scanner, entity.keys, EntityType::Start);
    fields.Joined("origin", 3);
    fields.Joined("mangle", 3);
    fields.Token("name");
}

void CEPairLight::Read(TokenScanner& scanner, CEntity& entity) {
    PairFields fields(scanner, entity.keys, EntityType::Light);
    fields.Joined("origin", 3);
    fields.Drop(3);  // angles, which a light has no use for
    fields.Joined("brightness", 4);
    fields.OptionalTokenStrict("flags");
}

void CEPairModel::Read(TokenScanner& scanner, CEntity& entity) {
    PairFields fields(scanner, entity.keys, EntityType::Model);
    const ModelHead head = ReadModelHead(fields);
    WarnLongFileName(head.file, head.hasAction ? FileFieldSize : LongFileFieldSize, fields.line());
    fields.Joined("skills", ModelSkills);
    fields.Token("flags");
    fields.OptionalToken("ambient");
}

void CEPairModelExt::Read(TokenScanner& scanner, CEntity& entity) {
    PairFields fields(scanner, entity.keys, EntityType::Extended);
    ReadModelHead(fields);
    fields.Joined("skills", ExtendedSkills);
    fields.Token("flags");
    fields.OptionalToken("ambient");
    fields.OptionalToken("albedo");
    for (const char* name : {"ent1", "ent2", "names1", "names2", "names3", "names4"}) fields.OptionalLine(name);
}

void CEPairSound::Read(TokenScanner& scanner, CEntity& entity) {
    PairFields fields(scanner, entity.keys, EntityType::Sound);
    fields.Joined("origin", 3);
    fields.Drop(3);
    fields.Line("file");
    fields.Token("flags");
    fields.Joined("volume", 4);
}

void CEPairSun::Read(TokenScanner& scanner, CEntity& entity) {
    PairFields fields(scanner, entity.keys, EntityType::Sun);
    fields.Token("sun_azm");
    fields.Token("sun_elv");
}

void CEPairPath::Read(TokenScanner& scanner, CEntity& entity) {
    PairFields fields(scanner, entity.keys, EntityType::Path);
    fields.Token("name");
    fields.Token("ambient");
    const int32_t points = ToInt(fields.Token("range"));
    for (int32_t i = 0; i < points; ++i) fields.Joined("origin", 3);
}

std::unique_ptr<CEntityPair> MakeEntityPair(int32_t type) {
    switch (static_cast<EntityType>(type)) {
        case EntityType::Level:
            return std::make_unique<CEPairWorld>();
        case EntityType::Start:
            return std::make_unique<CEPairStart>();
        case EntityType::Light:
            return std::make_unique<CEPairLight>();
        case EntityType::Model:
            return std::make_unique<CEPairModel>();
        case EntityType::Sound:
            return std::make_unique<CEPairSound>();
        case EntityType::Sun:
            return std::make_unique<CEPairSun>();
        case EntityType::Path:
            return std::make_unique<CEPairPath>();
        default:
            return nullptr;
    }
}

}  // namespace k2k
