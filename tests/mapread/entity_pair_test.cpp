// The fields of every entity type in every dialect.
#include "map_text.h"

namespace k2k::test {

namespace {

using Pairs = std::vector<std::pair<std::string, std::string>>;

class EntityPair : public MapTest {
  protected:
    // The keys of the first entity of a text that holds these lines in one entity.
    Pairs Keys(const std::string& lines, const std::string& version = "") {
        Read(version + "{\n" + lines + "}\n");
        Pairs keys;
        for (const EntityKey& key : Entities().at(0).keys) keys.emplace_back(key.name, key.value);
        return keys;
    }
};

const std::string V51 = "version 511\n";
const std::string V71 = "version 711\n";

TEST_F(EntityPair, LevelHasTwoLines) {
    const Pairs expected{{"type", "level"}, {"wad", "my textures.$$w"}, {"palette", "my palette.pcx"}};
    EXPECT_EQ(Keys("0 my textures.$$w\nmy palette.pcx\n"), expected);
    EXPECT_EQ(Keys("0\nmy textures.$$w\n\nmy palette.pcx\n", V51), expected);
    EXPECT_EQ(Keys("0 my textures.$$w\nmy palette.pcx\n", V71), expected);
}

TEST_F(EntityPair, StartHasPlaceAnglesAndName) {
    const Pairs expected{{"type", "start"}, {"origin", "1 2 3"}, {"mangle", "90 0 0"}, {"name", "first"}};
    EXPECT_EQ(Keys("1 1 2 3\n90 0 0\nfirst\n"), expected);
    EXPECT_EQ(Keys("1\n1   2\t3 90 0 0 first\n", V51), expected);
    EXPECT_EQ(Keys("1 1 2 3 90 0 0 first\n", V71), expected);
    EXPECT_EQ(Entities()[0].origin, (Vec3{1, 2, 3}));
}

TEST_F(EntityPair, LightDropsThreeValues) {
    const Pairs expected{{"type", "light"}, {"origin", "1 2 3"}, {"brightness", "255 128 0 300"}, {"flags", "01"}};
    const std::string lines = "2 1 2 3\n0 0 0\n255 128 0 300\n01\n";
    EXPECT_EQ(Keys(lines), expected);
    EXPECT_EQ(Keys(lines, V51), expected);
    EXPECT_EQ(Keys(lines, V71), expected);
}

TEST_F(EntityPair, LightThatEndsBehindItsBrightnessHasNoFlags) {
    const Pairs expected{{"type", "light"}, {"origin", "1 2 3"}, {"brightness", "255 128 0 300"}};
    EXPECT_EQ(Keys("2 1 2 3\n0 0 0\n255 128 0 300\n"), expected);
}

TEST_F(EntityPair, LightTakesOnlyABraceOfItsOwnForTheEnd) {
    EXPECT_EQ(Keys("2 1 2 3\n0 0 0\n255 128 0 300\n}x\n").back().second, "}x");
}

const std::string ModelHead = "1 2 3\n0 90 0\n1 1 1\nmy model.mdl\nguard\n";
const std::string Skills8 = "1 2 3 4 5 6 7 8\n";
const std::string Skills20 = "1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20\n";

TEST_F(EntityPair, ModelHasEightSkills) {
    const Pairs expected{{"type", "model"},  {"origin", "1 2 3"},           {"mangle", "0 90 0"},
                         {"scale", "1 1 1"}, {"file", "my model.mdl"},      {"name", "guard"},
                         {"action", "walk"}, {"skills", "1 2 3 4 5 6 7 8"}, {"flags", "0101"},
                         {"ambient", "-20"}};
    const std::string lines = "3 " + ModelHead + "walk\n" + Skills8 + "0101\n-20\n";
    EXPECT_EQ(Keys(lines), expected);
    EXPECT_EQ(Keys(lines, V51), expected);
    EXPECT_EQ(Keys(lines, V71), expected);
}

TEST_F(EntityPair, ModelWithAnUndefinedActionHasNoSuchKey) {
    Keys("3 " + ModelHead + "ndef\n" + Skills8 + "0\n");
    EXPECT_EQ(Entities()[0].keys.size(), 8U);
    EXPECT_EQ(GetKey(Entities()[0].keys, "action"), "");
    EXPECT_EQ(GetKey(Entities()[0].keys, "flags"), "0");
}

TEST_F(EntityPair, ModelFileMayBeUndefinedWithoutAMeaning) {
    Keys("3 1 2 3\n0 0 0\n1 1 1\nndef\nndef\nndef\n" + Skills8 + "0\n");
    EXPECT_EQ(GetKey(Entities()[0].keys, "file"), "ndef");
    EXPECT_EQ(GetKey(Entities()[0].keys, "name"), "ndef");
}

TEST_F(EntityPair, ExtendedReadsAsAModelInTheOldestDialect) {
    Keys("7 " + ModelHead + "walk\n" + Skills8 + "0101\n-20\n");
    EXPECT_EQ(GetKey(Entities()[0].keys, "type"), "model");
    EXPECT_EQ(Entities()[0].keys.size(), 10U);
}

TEST_F(EntityPair, ExtendedHasTwentySkillsAndLinks) {
    const std::string lines =
        "7 " + ModelHead + "walk\n" + Skills20 + "0101\n-20\n75\n3\n4\nname one\nname two\nname three\nname four\n";
    const std::vector<std::string> names{"type",   "origin", "mangle", "scale",   "file",   "name",
                                         "action", "skills", "flags",  "ambient", "albedo", "ent1",
                                         "ent2",   "names1", "names2", "names3",  "names4"};
    for (const std::string& version : {V51, V71}) {
        const Pairs keys = Keys(lines, version);
        ASSERT_EQ(keys.size(), names.size());
        for (size_t i = 0; i < names.size(); ++i) EXPECT_EQ(keys[i].first, names[i]);
        EXPECT_EQ(keys[0].second, "extended");
        EXPECT_EQ(keys[7].second, "1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20");
        EXPECT_EQ(keys[9].second, "-20");
        EXPECT_EQ(keys[10].second, "75");
        EXPECT_EQ(keys[12].second, "4");
        EXPECT_EQ(keys[16].second, "name four");
    }
}

TEST_F(EntityPair, ExtendedMayEndBehindAnyOfItsLastFields) {
    const std::string head = "7 " + ModelHead + "ndef\n" + Skills20 + "0\n";
    const std::vector<std::string> optional{"-20\n", "75\n", "1\n", "2\n", "a\n", "b\n", "c\n", "d\n"};
    std::string lines = head;
    for (size_t given = 0; given <= optional.size(); ++given) {
        EXPECT_EQ(Keys(lines, V71).size(), 8 + given);
        if (given < optional.size()) lines += optional[given];
    }
}

TEST_F(EntityPair, SoundDropsThreeValues) {
    const Pairs expected{
        {"type", "sound"}, {"origin", "1 2 3"}, {"file", "water drop.wav"}, {"flags", "1"}, {"volume", "50 0 0 400"}};
    const std::string lines = "4 1 2 3\n0 0 0\nwater drop.wav\n1\n50 0 0 400\n";
    EXPECT_EQ(Keys(lines), expected);
    EXPECT_EQ(Keys(lines, V51), expected);
    EXPECT_EQ(Keys(lines, V71), expected);
}

TEST_F(EntityPair, SunHasTwoAngles) {
    const Pairs expected{{"type", "sun"}, {"sun_azm", "270"}, {"sun_elv", "60"}};
    EXPECT_EQ(Keys("5 270 60\n"), expected);
    EXPECT_EQ(Keys("5\n270\n60\n", V51), expected);
}

TEST_F(EntityPair, SunOfTheNewestDialectHasFlags) {
    const Pairs expected{{"type", "sun"}, {"sun_azm", "270"}, {"sun_elv", "60"}, {"flags", "10"}};
    EXPECT_EQ(Keys("5 270 60\n", V71), expected);
}

TEST_F(EntityPair, PathHasAsManyPointsAsItsRange) {
    const Pairs expected{{"type", "path"}, {"name", "patrol"},  {"ambient", "0"},
                         {"range", "2"},   {"origin", "1 2 3"}, {"origin", "4 5 6"}};
    const std::string lines = "6 patrol\n0\n2\n1 2 3\n4 5 6\n";
    EXPECT_EQ(Keys(lines), expected);
    EXPECT_EQ(Keys(lines, V51), expected);
    EXPECT_EQ(Keys(lines, V71), expected);
    EXPECT_EQ(Entities()[0].origin, (Vec3{1, 2, 3}));
}

TEST_F(EntityPair, PathWithoutPointsStandsAtZero) {
    for (const char* range : {"0", "-4", "none"}) {
        EXPECT_EQ(Keys("6 patrol\n0\n" + std::string(range) + "\n").size(), 4U);
        EXPECT_EQ(Entities()[0].origin, (Vec3{}));
    }
}

TEST_F(EntityPair, PathThatPromisesTooManyPointsRunsOut) {
    ExpectFatalRead("{\n6 patrol\n0\n2000000000\n1 2 3\n4 5 6\n}\n", " \nInvalid line 7");
}

TEST_F(EntityPair, JoinedGroupMustStayOnItsLine) {
    ExpectFatalRead("{\n1 1 2\n3 0 0 0 first\n}\n", " \nInvalid line 2");
}

TEST_F(EntityPair, DroppedValuesMustStayOnTheirLine) {
    ExpectFatalRead("{\n2 1 2 3\n0 0\n0\n255 128 0 300\n}\n", " \nInvalid line 3");
}

TEST_F(EntityPair, TypeThatIsNoNumberIsALevel) {
    EXPECT_EQ(Keys("x textures.$$w\npalette.raw\n")[0].second, "level");
}

TEST_F(EntityPair, TypeWithoutAReaderIsFatal) {
    for (const char* type : {"8", "9", "-1", "100"}) {
        for (const std::string& version : {std::string(), V51, V71}) {
            ExpectFatalRead(version + "{\n" + type + " 1 2 3\n}\n", "E02A: Unknown entity type");
        }
    }
}

TEST_F(EntityPair, VectorsStopAtWhatIsNoNumber) {
    Keys("1 1 x 3 0 0 0 first\n");
    EXPECT_EQ(GetKey(Entities()[0].keys, "origin"), "1 x 3");
    EXPECT_EQ(Entities()[0].origin, (Vec3{1, 0, 0}));
}

std::string ModelLines(size_t length, const std::string& action) {
    return "3 1 2 3\n0 0 0\n1 1 1\n" + std::string(length, 'm') + "\nguard\n" + action + "\n" + Skills8 + "0\n";
}

std::string LongNameWarning(size_t length, int line) {
    return " \nWARNING W050: Model Filename too long: <" + std::string(length, 'm') + ">, line " +
           std::to_string(line) + "!\n";
}

TEST_F(EntityPair, ModelFileOf33CharactersWarnsTwiceWithoutAnAction) {
    Keys(ModelLines(33, "ndef"));
    EXPECT_EQ(TakeLoggedText(), LongNameWarning(33, 5) + LongNameWarning(33, 7));
    EXPECT_EQ(WarnCount, 2);
    Keys(ModelLines(32, "ndef"));
    EXPECT_EQ(TakeLoggedText(), "");
    EXPECT_EQ(WarnCount, 0);
}

TEST_F(EntityPair, ModelFileOf13CharactersWarnsWhenThereIsAnAction) {
    Keys(ModelLines(13, "walk"));
    EXPECT_EQ(TakeLoggedText(), LongNameWarning(13, 7));
    Keys(ModelLines(12, "walk"));
    EXPECT_EQ(TakeLoggedText(), "");
}

TEST_F(EntityPair, LongFileNameWarnsEachTimeAndUnderQuiet) {
    Options().quiet = true;
    Keys(ModelLines(33, "walk") + "}\n{\n" + ModelLines(33, "walk"));
    EXPECT_EQ(WarnCount, 4);
    EXPECT_FALSE(TakeLoggedText().empty());
}

TEST_F(EntityPair, ExtendedFileNameIsCheckedOnce) {
    const std::string lines = "7 1 2 3\n0 0 0\n1 1 1\n" + std::string(33, 'm') + "\nguard\nwalk\n" + Skills20 + "0\n";
    Keys(lines, V71);
    EXPECT_EQ(TakeLoggedText(), LongNameWarning(33, 6));
}

TEST_F(EntityPair, KeyValueIsCutTo1023Characters) {
    CEntity& entity = NewEntity();
    AddKey(entity.keys, "name", std::string(1024, 'x'));
    EXPECT_EQ(GetKey(entity.keys, "name"), std::string(1023, 'x'));
}

}  // namespace

}  // namespace k2k::test
