// From packed records to entities.
#include <cstring>

#include "map_text.h"

namespace k2k::test {

namespace {

using Pairs = std::vector<std::pair<std::string, std::string>>;

class Record {
  public:
    Record(uint32_t type, size_t size) : bytes(size) { Put(0, type); }
    template <typename T>
    Record& Put(size_t offset, T value) {
        std::memcpy(bytes.data() + offset, &value, sizeof value);
        return *this;
    }
    Record& Text(size_t offset, const std::string& text) {
        std::memcpy(bytes.data() + offset, text.data(), text.size());
        return *this;
    }
    Record& Vector(size_t offset, float x, float y, float z) { return Put(offset, Vec3{x, y, z}); }

    std::vector<uint8_t> bytes;
};

class PlaceObjectsTest : public MapTest {
  protected:
    // An offset table and the records behind it.
    static void SetRecords(const std::vector<Record>& records) {
        std::vector<uint8_t> chunk(4 + 4 * std::max<size_t>(records.size(), 1));
        const auto put = [&chunk](size_t at, size_t value) {
            const auto word = static_cast<uint32_t>(value);
            std::memcpy(chunk.data() + at, &word, sizeof word);
        };
        put(0, records.size());
        for (size_t i = 0; i < records.size(); ++i) {
            put(4 + 4 * i, chunk.size());
            chunk.insert(chunk.end(), records[i].bytes.begin(), records[i].bytes.end());
        }
        EntityRecords().block = chunk;
    }

    static Pairs Keys(size_t entity = 0) {
        Pairs keys;
        for (const EntityKey& key : Entities().at(entity).keys) keys.emplace_back(key.name, key.value);
        return keys;
    }

    static const CEntity& Placed(const Record& record) {
        SetRecords({record});
        PlaceObjects();
        return Entities().at(0);
    }
};

const std::string Zero8 = "0.000000 0.000000 0.000000 0.000000 0.000000 0.000000 0.000000 0.000000";

TEST_F(PlaceObjectsTest, StartHasOriginAnglesAndName) {
    const CEntity& entity = Placed(Record(1, 56).Vector(4, 1, 2, 3.5).Vector(16, 90, 10, 0).Text(36, "first"));
    EXPECT_EQ(Keys(), (Pairs{{"type", "start"},
                             {"origin", "1.000000 2.000000 3.500000"},
                             {"mangle", "90.000000 10.000000 0.000000"},
                             {"name", "first"}}));
    EXPECT_EQ(entity.origin, (Vec3{1, 2, 3.5}));
    EXPECT_EQ(entity.angle, 90);
    EXPECT_STREQ(entity.typeName.data(), "start");
    EXPECT_EQ(entity.rawRange, 0);
}

Record ModelRecord() {
    Record record(3, 136);
    record.Vector(4, 1, 2, 3).Vector(16, 90, 0, 0).Vector(28, 1, 1, 2).Text(40, "guard").Text(60, "guard.mdl");
    record.Put(100, 7.0F).Put<uint32_t>(128, 5).Put(132, -20.0F);
    return record;
}

const std::string ModelSkills = "0.000000 7.000000 0.000000 0.000000 0.000000 0.000000 0.000000 0.000000";

TEST_F(PlaceObjectsTest, ModelHasAllItsFields) {
    const CEntity& entity = Placed(ModelRecord().Text(73, "walk"));
    EXPECT_EQ(Keys(), (Pairs{{"type", "model"},
                             {"origin", "1.000000 2.000000 3.000000"},
                             {"mangle", "90.000000 0.000000 0.000000"},
                             {"scale", "1.000000 1.000000 2.000000"},
                             {"name", "guard"},
                             {"file", "guard.mdl"},
                             {"action", "walk"},
                             {"skills", ModelSkills},
                             {"flags", "00000101"},
                             {"ambient", "-20.000000"}}));
    EXPECT_EQ(entity.flags, 5U);
    EXPECT_EQ(entity.angle, 90);
    EXPECT_STREQ(entity.typeName.data(), "model");
}

TEST_F(PlaceObjectsTest, ModelWithAnEmptyActionHasNoSuchKey) {
    Placed(ModelRecord());
    EXPECT_EQ(Keys().size(), 9U);
    EXPECT_EQ(Keys()[6].first, "skills");
}

TEST_F(PlaceObjectsTest, ModelFileThatFillsItsFieldRunsOnIntoTheAction) {
    Placed(ModelRecord().Text(60, "abcdefghijklm").Text(73, "nop.mdl"));
    EXPECT_EQ(GetKey(Entities()[0].keys, "file"), "abcdefghijklmnop.mdl");
    EXPECT_EQ(GetKey(Entities()[0].keys, "action"), "");
    Placed(ModelRecord().Text(60, "abcdefghi.mdl"));
    EXPECT_EQ(GetKey(Entities()[0].keys, "file"), "abcdefghi.mdl");
    Placed(ModelRecord().Text(60, "abcdefghijklm").Text(73, std::string(20, 'n')));
    EXPECT_EQ(GetKey(Entities()[0].keys, "file"), "abcdefghijklm" + std::string(20, 'n'));
}

TEST_F(PlaceObjectsTest, ExtendedHasAllItsFields) {
    Record record(7, 372);
    record.Vector(4, 1, 2, 3).Vector(16, 90, 0, 0).Vector(28, 1, 1, 2).Text(40, "guard").Text(73, "guard.mdl");
    record.Text(106, "walk").Put(140 + 19 * 4, 20.0F).Put<uint32_t>(220, 0x12345).Put(224, -20.0F).Put(228, 75.0F);
    record.Put<int32_t>(232, 3).Put<int32_t>(236, -4);
    record.Text(240, "one").Text(273, "two").Text(306, "three").Text(339, std::string(33, 'x'));
    const CEntity& entity = Placed(record);
    std::string skills;
    for (int i = 0; i < 19; ++i) skills += "0.000000 ";
    EXPECT_EQ(Keys(), (Pairs{{"type", "extended"},
                             {"origin", "1.000000 2.000000 3.000000"},
                             {"mangle", "90.000000 0.000000 0.000000"},
                             {"scale", "1.000000 1.000000 2.000000"},
                             {"name", "guard"},
                             {"file", "guard.mdl"},
                             {"action", "walk"},
                             {"skills", skills + "20.000000"},
                             {"flags", "00000000000000010010001101000101"},
                             {"ambient", "-20.000000"},
                             {"albedo", "75.000000"},
                             {"ent1", "3"},
                             {"ent2", "-4"},
                             {"names1", "one"},
                             {"names2", "two"},
                             {"names3", "three"},
                             {"names4", std::string(33, 'x')}}));
    EXPECT_EQ(entity.flags, 0x12345U);
    EXPECT_STREQ(entity.typeName.data(), "extended");
}

TEST_F(PlaceObjectsTest, SoundHasAWholeNumberBehindItsVolume) {
    const CEntity& entity = Placed(Record(4, 72)
                                       .Vector(4, 1, 2, 3)
                                       .Vector(16, 50, 0, 1)
                                       .Put<int32_t>(28, 400)
                                       .Put<uint32_t>(32, 1)
                                       .Text(36, "drop.wav"));
    EXPECT_EQ(Keys(), (Pairs{{"type", "sound"},
                             {"origin", "1.000000 2.000000 3.000000"},
                             {"file", "drop.wav"},
                             {"flags", "00000001"},
                             {"volume", "50.000000 0.000000 1.000000 400"}}));
    EXPECT_EQ(entity.origin, (Vec3{1, 2, 3}));
    EXPECT_EQ(entity.angle, 0);
    EXPECT_EQ(entity.lightRange, 0);
}

TEST_F(PlaceObjectsTest, SunHasAnglesAndFlagsInBothForms) {
    const Pairs expected{{"type", "sun"}, {"sun_azm", "270.000000"}, {"sun_elv", "60.000000"}, {"flags", "00100010"}};
    Placed(Record(5, 60).Put(16, 270.0F).Put(20, 60.0F).Put<uint32_t>(24, 0x22));
    EXPECT_EQ(Keys(), expected);
    EXPECT_EQ(Entities()[0].origin, (Vec3{}));
    EXPECT_STREQ(Entities()[0].typeName.data(), "sun");
    Placed(Record(5, 56).Put(16, 270.0F).Put(20, 60.0F));
    EXPECT_EQ(Keys()[3].second, "00000000");
}

TEST_F(PlaceObjectsTest, PathHasAnOriginForEachPoint) {
    Record record(6, 68);
    record.Text(4, "patrol").Put(24, 5.0F).Put<int32_t>(40, 2).Vector(44, 1, 2, 3).Vector(56, 4, 5, 6);
    const CEntity& entity = Placed(record);
    EXPECT_EQ(Keys(), (Pairs{{"type", "path"},
                             {"name", "patrol"},
                             {"ambient", "5.000000"},
                             {"range", "2"},
                             {"origin", "1.000000 2.000000 3.000000"},
                             {"origin", "4.000000 5.000000 6.000000"}}));
    EXPECT_EQ(entity.origin, (Vec3{1, 2, 3}));
    EXPECT_EQ(entity.rawRange, 0);  // a path is no light
}

TEST_F(PlaceObjectsTest, PathWithoutPointsStandsAtZero) {
    EXPECT_EQ(Placed(Record(6, 44)).origin, (Vec3{}));
    EXPECT_EQ(Placed(Record(6, 44).Put<int32_t>(40, -3)).keys.size(), 4U);
}

Record LightRecordOf(float red, float green, float blue, float range) {
    return Record(2, 36).Vector(4, 1, 2, 3).Vector(16, red, green, blue).Put(28, range).Put<uint32_t>(32, 3);
}

TEST_F(PlaceObjectsTest, LightIsMadeReadyForLighting) {
    const CEntity& entity = Placed(LightRecordOf(100, 200, 50, 600));
    EXPECT_EQ(Keys(), (Pairs{{"type", "light"},
                             {"origin", "1.000000 2.000000 3.000000"},
                             {"brightness", "100.000000 200.000000 50.000000 600.000000"},
                             {"flags", "00000011"}}));
    EXPECT_EQ(entity.origin, (Vec3{1, 2, 3}));
    EXPECT_EQ(entity.angle, 0);
    EXPECT_EQ(entity.flags, 3U);
    EXPECT_EQ(entity.rawRange, 600);
    EXPECT_EQ(entity.lightRange, 600);
    EXPECT_EQ(entity.lightColor, (Vec3{0.5, 1, 0.25}));
    EXPECT_EQ(entity.lightValue, 0);
    EXPECT_STREQ(entity.typeName.data(), "light");
}

TEST_F(PlaceObjectsTest, LightWithoutRangeTakesTwiceTheSumOfItsColours) {
    const CEntity& entity = Placed(LightRecordOf(255, 255, 255, 0));
    EXPECT_EQ(entity.rawRange, 0);
    EXPECT_EQ(entity.lightRange, 1530);
    EXPECT_EQ(entity.lightColor, (Vec3{0.5, 0.5, 0.5}));
}

TEST_F(PlaceObjectsTest, LightIsRoundedOnceWhereItIsStored) {
    const Vec3 colour{103.8F, 195.4F, 128.9F};
    const float range = 329.1F;
    EXPECT_EQ(Placed(LightRecordOf(colour[0], colour[1], colour[2], range)).lightColor[0],
              static_cast<float>(colour[0] * 3.0 / range));
    const double sum = static_cast<double>(colour[0]) + colour[1] + colour[2];
    EXPECT_EQ(Placed(LightRecordOf(colour[0], colour[1], colour[2], 0)).lightRange, static_cast<float>(2 * sum));
}

TEST_F(PlaceObjectsTest, LightRangeIsAtLeastOne) {
    EXPECT_EQ(Placed(LightRecordOf(100, 0, 0, 0.5)).lightRange, 1);
    EXPECT_EQ(Entities()[0].rawRange, 0.5);
    EXPECT_EQ(Placed(LightRecordOf(100, 0, 0, -600)).lightRange, 1);
    EXPECT_EQ(Placed(LightRecordOf(0.125, 0.125, 0.125, 0)).lightRange, 1);
}

TEST_F(PlaceObjectsTest, LightOfFourZerosIsGrey50WithRange300) {
    const CEntity& entity = Placed(LightRecordOf(0, 0, 0, 0));
    EXPECT_EQ(entity.lightRange, 300);
    EXPECT_EQ(entity.lightColor, (Vec3{0.5, 0.5, 0.5}));
}

TEST_F(PlaceObjectsTest, SingleNumberIsAGrey) {
    EXPECT_EQ(Placed(LightRecordOf(0, 0, 1, 150)).lightColor, (Vec3{1, 1, 1}));
    EXPECT_EQ(Placed(LightRecordOf(0, 0, 100, 300)).lightColor, (Vec3{1, 1, 1}));
    EXPECT_EQ(Placed(LightRecordOf(0, 1, 100, 300)).lightColor, (Vec3{0, 0.01F, 1}));
}

TEST_F(PlaceObjectsTest, MonoTakesTheLargestColour) {
    Options().mono = true;
    const CEntity& entity = Placed(LightRecordOf(100, 200, 50, 0));
    EXPECT_EQ(entity.lightRange, 1200);
    EXPECT_EQ(entity.lightColor, (Vec3{0.5, 0.5, 0.5}));
    EXPECT_EQ(GetKey(entity.keys, "brightness"), "100.000000 200.000000 50.000000 0.000000");
}

TEST_F(PlaceObjectsTest, SpotlightPutsDirectionAndConeIntoFurtherOrigins) {
    Record record(8, 52);
    record.Vector(4, 1, 2, 3).Vector(16, 100, 200, 50).Put(28, 600.0F).Put(36, 45.0F).Vector(40, 0, 0, -1);
    const CEntity& entity = Placed(record);
    EXPECT_EQ(Keys(), (Pairs{{"type", "spotlight"},
                             {"origin", "1.000000 2.000000 3.000000"},
                             {"brightness", "100.000000 200.000000 50.000000 600.000000"},
                             {"flags", "00000000"},
                             {"origin", "0.000000 0.000000 -1.000000"},
                             {"origin", "45.000000"}}));
    EXPECT_EQ(GetKey(entity.keys, "origin"), "1.000000 2.000000 3.000000");
    EXPECT_EQ(entity.lightColor, (Vec3{0.5, 1, 0.25}));
}

TEST_F(PlaceObjectsTest, PassesOverTheLevelAndUnknownTypesAndEmptyEntries) {
    SetRecords({Record(0, 8), Record(9, 8), Record(0xFFFFFFFF, 8), Record(5, 60)});
    PlaceObjects();
    EXPECT_EQ(Entities().size(), 1U);
    EntityRecords().block[4 + 12] = 0;  // the sun's offset
    EntityRecords().block[4 + 13] = 0;
    PlaceObjects();
    EXPECT_TRUE(Entities().empty());
}

TEST_F(PlaceObjectsTest, CountsWhatItPlacesUnlessQuiet) {
    SetRecords({Record(5, 60), Record(1, 56)});
    PlaceObjects();
    EXPECT_EQ(TakeLoggedText(), " \nPlacing 2 objects ..... ok");
    Options().quiet = true;
    PlaceObjects();
    EXPECT_EQ(TakeLoggedText(), "");
    EXPECT_EQ(Entities().size(), 2U);
}

TEST_F(PlaceObjectsTest, EmptyChunkGivesAnEmptyTable) {
    NewEntity();
    PlaceObjects();
    EXPECT_TRUE(Entities().empty());
    EXPECT_EQ(TakeLoggedText(), " \nPlacing 0 objects ..... ok");
}

TEST_F(PlaceObjectsTest, TakesNoMoreThanTheTableHolds) {
    std::vector<Record> records(static_cast<size_t>(MaxEntities), Record(5, 60));
    SetRecords(records);
    PlaceObjects();
    EXPECT_EQ(Entities().size(), static_cast<size_t>(MaxEntities));
    records.emplace_back(5, 60);
    SetRecords(records);
    ExpectFatal([] { PlaceObjects(); }, "E011: Map size - too many objects");
}

TEST_F(PlaceObjectsTest, RefusesRecordsThatEndEarly) {
    const std::array<size_t, 9> sizes{4, 56, 36, 136, 72, 28, 44, 372, 52};
    for (uint32_t type = 1; type < sizes.size(); ++type) {
        for (size_t size = 4; size < sizes[type]; ++size) {
            SetRecords({Record(type, 400)});
            EntityRecords().block.resize(8 + size);
            // The last bytes of some records are reserved and not looked at.
            try {
                PlaceObjects();
            } catch (const FatalStop& stop) {
                EXPECT_STREQ(stop.what(), " \nInvalid KLV file format");
            }
        }
        SetRecords({Record(type, 4)});
        ExpectFatal([] { PlaceObjects(); }, " \nInvalid KLV file format");
    }
}

TEST_F(PlaceObjectsTest, RefusesPathsWithMorePointsThanTheChunkHolds) {
    SetRecords({Record(6, 56).Put<int32_t>(40, 2)});
    ExpectFatal([] { PlaceObjects(); }, " \nInvalid KLV file format");
    SetRecords({Record(6, 56).Put<int32_t>(40, 2147483647)});
    ExpectFatal([] { PlaceObjects(); }, " \nInvalid KLV file format");
}

TEST_F(PlaceObjectsTest, RefusesOnePathThatStandsForThousands) {
    const Record path = Record(6, 44 + 12 * 1000).Put<int32_t>(40, 1000);
    SetRecords(std::vector<Record>(4, path));
    for (size_t entry = 1; entry < 4; ++entry) {
        std::memcpy(EntityRecords().block.data() + 4 + 4 * entry, EntityRecords().block.data() + 4, 4);
    }
    PlaceObjects();
    EXPECT_EQ(Entities().size(), 4U);
    EntityRecords().block.resize(4 + 16 + path.bytes.size());
    ExpectFatal([] { PlaceObjects(); }, " \nInvalid KLV file format");
}

TEST_F(PlaceObjectsTest, GivesBackWhatTheMapHad) {
    Options().nod3dlmaps = true;  // keeps the order of the map
    Read(
        "version 711\n{\n0 a\nb\n}\n{\n1 1 2 3\n90 0 0\nfirst\n}\n{\n2 1 2 3\n0 0 0\n255 128 0 300\n01\n}\n"
        "{\n4 1 2 3\n0 0 0\ndrop.wav\n1\n50 0 0 400\n}\n{\n6 patrol\n0\n2\n1 2 3\n4 5 6\n}\n");
    BuildEntityChunk(EntityKeyLists());
    PlaceObjects();
    ASSERT_EQ(Entities().size(), 4U);
    EXPECT_EQ(GetKey(Entities()[0].keys, "name"), "first");
    EXPECT_EQ(GetKeyVector(Entities()[0].keys, "mangle"), (Vec3{90, 0, 0}));
    EXPECT_EQ(Entities()[1].lightColor, (Vec3{2.55F, 1.28F, 0}));
    EXPECT_EQ(GetKey(Entities()[2].keys, "volume"), "50.000000 0.000000 0.000000 400");
    EXPECT_EQ(Entities()[3].keys.back().value, "4.000000 5.000000 6.000000");
}

}  // namespace

}  // namespace k2k::test
