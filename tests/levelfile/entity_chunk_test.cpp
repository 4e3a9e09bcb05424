#include <gmock/gmock.h>

#include <cmath>

#include "levelfile/bytes.h"
#include "levelfile/entity_data.h"
#include "levelfile/level_state.h"
#include "levelfile/portal_data.h"
#include "levelfile/texture_data.h"

namespace k2k {
namespace {

using namespace test;

KeyList Keys(std::initializer_list<EntityKey> keys) {
    return keys;
}

class EntityChunk : public LevelState {
  protected:
    // The chunk made of these entities.
    static const std::vector<uint8_t>& Build(std::vector<KeyList> entities) {
        std::vector<KeyList*> pointers;
        for (KeyList& keys : entities) pointers.push_back(&keys);
        BuildEntityChunk(pointers);
        return EntityRecords().block;
    }
    // The bytes of the record that a single entity makes; the offset table takes 8.
    static std::vector<uint8_t> RecordOf(const KeyList& keys) {
        const std::vector<uint8_t>& chunk = Build({keys});
        EXPECT_EQ(ValueAt<uint32_t>(chunk, 0), 1U);
        EXPECT_EQ(ValueAt<uint32_t>(chunk, 4), 8U);
        return {chunk.begin() + 8, chunk.end()};
    }
    static std::string TextAt(const std::vector<uint8_t>& record, size_t offset, size_t size) {
        return {record.begin() + static_cast<std::ptrdiff_t>(offset),
                record.begin() + static_cast<std::ptrdiff_t>(offset + size)};
    }
};

// ---- The table

TEST_F(EntityChunk, ALevelEntityAloneHasNoRecord) {
    EXPECT_EQ(Build({Keys({{"type", "level"}, {"wad", "a"}})}), Bytes().U32(0).U32(0).get());
}

TEST_F(EntityChunk, WithoutEntitiesTheTableStillTakes8Bytes) {
    EXPECT_EQ(Build({}).size(), 8U);
}

TEST_F(EntityChunk, OffsetsStandInOrderAndEntriesBehindTheCountAreZero) {
    const KeyList level = Keys({{"type", "level"}});
    const KeyList light = Keys({{"type", "light"}, {"brightness", "1 2 3 4"}});
    const KeyList start = Keys({{"type", "start"}});
    const std::vector<uint8_t>& chunk = Build({level, light, Keys({{"type", "what"}}), start});
    Bytes head;
    head.U32(2).U32(20).U32(56).U32(0).U32(0);
    EXPECT_TRUE(std::equal(head.get().begin(), head.get().end(), chunk.begin()));
    EXPECT_EQ(chunk.size(), 20U + 36U + 56U);
    EXPECT_EQ(ValueAt<uint32_t>(chunk, 20), 2U);
    EXPECT_EQ(ValueAt<uint32_t>(chunk, 56), 1U);
}

TEST_F(EntityChunk, RecordsFollowEachOtherWithoutAlignment) {
    const KeyList path = Keys({{"type", "path"}, {"range", "0"}});
    EXPECT_EQ(Build({path, path}).size(), 12U + 2 * 44U);
}

TEST_F(EntityChunk, TheFirstTypeKeyThatIsKnownDecides) {
    const auto record = RecordOf(Keys({{"type", "what"}, {"type", "light"}, {"type", "start"}}));
    EXPECT_EQ(record.size(), 36U);
}

TEST_F(EntityChunk, ASpotlightIsFatal) {
    ExpectFatal([] { Build({Keys({{"type", "spotlight"}})}); }, "E02B: Can´t write Unknown entity type");
}

// ---- Records

TEST_F(EntityChunk, AStartStandsByteByByte) {
    const auto record =
        RecordOf(Keys({{"type", "start"}, {"origin", "1 2 3"}, {"mangle", "4 5 6"}, {"angle", "7"}, {"name", "HERE"}}));
    EXPECT_EQ(record, Bytes().U32(1).Floats({1, 2, 3, 7, 5, 6}).Zeros(8).Text("HERE", 20).get());
}

TEST_F(EntityChunk, ALightStandsByteByByte) {
    const auto record =
        RecordOf(Keys({{"type", "light"}, {"origin", "1 2 3"}, {"brightness", "4 5 6 7"}, {"flags", "101"}}));
    EXPECT_EQ(record, Bytes().U32(2).Floats({1, 2, 3, 4, 5, 6, 7}).U32(5).get());
}

TEST_F(EntityChunk, AModelStandsByteByByte) {
    const auto record = RecordOf(Keys({{"type", "model"},
                                       {"origin", "1 2 3"},
                                       {"mangle", "4 5 6"},
                                       {"scale", "7 8 9"},
                                       {"file", "box.mdl"},
                                       {"name", "BOX"},
                                       {"action", "spin"},
                                       {"skills", "1 2 3 4 5 6 7 8"},
                                       {"flags", "11"},
                                       {"ambient", "0.5"}}));
    Bytes expected;
    expected.U32(3).Floats({1, 2, 3, 4, 5, 6, 7, 8, 9}).Text("BOX", 20).Text("box.mdl", 13).Text("spin", 20).Zeros(3);
    expected.Floats({1, 2, 3, 4, 5, 6, 7, 8}).U32(3).F32(0.5F);
    EXPECT_EQ(record, expected.get());
}

TEST_F(EntityChunk, AnExtendedModelStandsByteByByte) {
    const auto record = RecordOf(Keys({{"type", "extended"},
                                       {"origin", "1 2 3"},
                                       {"mangle", "4 5 6"},
                                       {"scale", "7 8 9"},
                                       {"file", std::string(40, 'f')},
                                       {"name", "BOX"},
                                       {"action", "spin"},
                                       {"skills", "1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20"},
                                       {"flags", "10"},
                                       {"ambient", "1"},
                                       {"albedo", "2"},
                                       {"ent1", "3"},
                                       {"ent2", "-4"},
                                       {"names1", "A"},
                                       {"names2", "B"},
                                       {"names3", "C"},
                                       {"names4", "D"}}));
    Bytes expected;
    expected.U32(7).Floats({1, 2, 3, 4, 5, 6, 7, 8, 9}).Text("BOX", 33).Text(std::string(32, 'f'), 33);
    expected.Text("spin", 33).Zeros(1);
    expected.Floats({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20});
    expected.U32(2).Floats({1, 2}).I32(3).I32(-4).Text("A", 33).Text("B", 33).Text("C", 33).Text("D", 33);
    ASSERT_EQ(expected.get().size(), 372U);
    EXPECT_EQ(record, expected.get());
}

TEST_F(EntityChunk, ASoundStandsByteByByte) {
    const auto record = RecordOf(Keys({{"type", "sound"},
                                       {"origin", "1 2 3"},
                                       {"volume", "0.5 5 6 70.9"},
                                       {"flags", "1"},
                                       {"file", "wind_and_rain.wav"}}));
    Bytes expected;
    expected.U32(4).Floats({1, 2, 3, 0.5F, 5, 6}).I32(70).U32(1).Text("wind_and_rai", 13).Zeros(23);
    EXPECT_EQ(record, expected.get());
}

TEST_F(EntityChunk, AVolumeThatEndsEarlyLeavesTheRestZero) {
    const auto record = RecordOf(Keys({{"type", "sound"}, {"volume", "1 x 3 4"}}));
    EXPECT_EQ(record, Bytes().U32(4).Zeros(12).Floats({1, 0, 0}).I32(0).Zeros(40).get());
}

TEST_F(EntityChunk, APathHoldsItsPointsInListOrder) {
    const auto record = RecordOf(Keys({{"type", "path"},
                                       {"name", "WAY"},
                                       {"ambient", "2"},
                                       {"range", "2"},
                                       {"origin", "1 2 3"},
                                       {"origin", "4 5 6"}}));
    Bytes expected;
    expected.U32(6).Text("WAY", 20).F32(2).Zeros(12).I32(2).Floats({1, 2, 3, 4, 5, 6});
    EXPECT_EQ(record, expected.get());
}

TEST_F(EntityChunk, APathHasRoomForItsRangeAndNoMore) {
    EXPECT_EQ(RecordOf(Keys({{"type", "path"}, {"range", "3"}, {"origin", "1 2 3"}})).size(), 44U + 36U);
    EXPECT_EQ(RecordOf(Keys({{"type", "path"}, {"range", "1"}, {"origin", "1 2 3"}, {"origin", "4 5 6"}})).size(), 56U);
    EXPECT_EQ(RecordOf(Keys({{"type", "path"}, {"range", "-2"}, {"origin", "1 2 3"}})).size(), 44U);
}

TEST_F(EntityChunk, ARepeatedNameOverwrites) {
    const auto record =
        RecordOf(Keys({{"type", "light"}, {"origin", "1 2 3"}, {"origin", "4 5"}, {"flags", "1"}, {"flags", "10"}}));
    EXPECT_EQ(record, Bytes().U32(2).Floats({4, 5, 3}).Zeros(16).U32(2).get());
}

TEST_F(EntityChunk, KeysCountByTheirExactName) {
    EXPECT_EQ(RecordOf(Keys({{"type", "light"}, {"Origin", "1 2 3"}, {"origin2", "1 2 3"}})),
              Bytes().U32(2).Zeros(32).get());
}

// ---- Strings

TEST_F(EntityChunk, StringsAreCutToOneLessThanTheField) {
    const auto record = RecordOf(Keys({{"type", "start"}, {"name", std::string(20, 'n')}}));
    EXPECT_EQ(TextAt(record, 36, 20), std::string(19, 'n') + '\0');
}

TEST_F(EntityChunk, AModelFileOf12CharactersIsTerminatedAndLeavesTheActionAlone) {
    const auto record = RecordOf(Keys({{"type", "model"}, {"action", "spin"}, {"file", "abcdefgh.mdl"}}));
    EXPECT_EQ(TextAt(record, 60, 13), std::string("abcdefgh.mdl\0", 13));
    EXPECT_EQ(TextAt(record, 73, 5), std::string("spin\0", 5));
}

TEST_F(EntityChunk, AModelFileOf13CharactersFillsItsFieldAndUsesTheActionForAnEmptyRest) {
    const auto record = RecordOf(Keys({{"type", "model"}, {"action", "spin"}, {"file", "abcdefghi.mdl"}}));
    EXPECT_EQ(TextAt(record, 60, 13), "abcdefghi.mdl");
    EXPECT_EQ(TextAt(record, 73, 20), std::string(20, '\0'));
}

TEST_F(EntityChunk, ALongModelFileRunsOnIntoTheActionField) {
    const auto record = RecordOf(Keys({{"type", "model"}, {"file", "0123456789abcdefghijklmnopqrstuvwxyz"}}));
    EXPECT_EQ(TextAt(record, 60, 33), std::string("0123456789abcdefghijklmnopqrstuv\0", 33));
    EXPECT_EQ(TextAt(record, 93, 3), std::string(3, '\0'));
}

TEST_F(EntityChunk, WhicheverOfALongFileAndAnActionComesLaterWritesTheActionField) {
    const EntityKey file{"file", "0123456789abcdefgh"}, action{"action", "go"};
    EXPECT_EQ(TextAt(RecordOf(Keys({{"type", "model"}, file, action})), 60, 20),
              std::string("0123456789abcgo\0\0\0\0\0", 20));
    EXPECT_EQ(TextAt(RecordOf(Keys({{"type", "model"}, action, file})), 60, 20),
              std::string("0123456789abcdefgh\0\0", 20));
}

// ---- The sun

TEST_F(EntityChunk, TheLongSunStandsByteByByte) {
    Options().sunrgb = {100, 50.9F, 10};
    Options().ambrgb = {1, 2, 3};
    Options().fog[0] = {100, 0, 99};
    Options().fog[3] = {7, 8, 9};
    Textures().lightmapSizeCode = 2;
    FirstGammaValue = 3;
    Portals().nodes.resize(1);
    const auto record = RecordOf(Keys({{"type", "sun"}, {"sun_azm", "30"}, {"sun_elv", "60"}}));
    Bytes expected;
    expected.U32(5).Zeros(12).Floats({30, 60}).U32(32).F32(7.01F).U8(3).U8(2).Zeros(2);
    expected.U8(25).U8(127).U8(255).U8(0).U8(7).U8(5).U8(2).U8(0);
    expected.U8(252).U8(0).U8(255).U8(0).Zeros(8).U8(22).U8(20).U8(17).U8(0);
    ASSERT_EQ(expected.get().size(), 60U);
    EXPECT_EQ(record, expected.get());
}

TEST_F(EntityChunk, AColourCountsTheLowByteOfItsPercentAndOfTheResult) {
    Options().sunrgb = {200, 300.5F, -1};
    Options().ambrgb = {NAN, -INFINITY, 0.999F};
    const auto record = RecordOf(Keys({{"type", "sun"}}));
    EXPECT_EQ(TextAt(record, 36, 4), std::string("\x8A\x70\xFE\0", 4)) << "255 * 255 / 100, 44 * 255 / 100, 510";
    EXPECT_EQ(record[40], 0);
    EXPECT_EQ(record[42], 0);
}

TEST_F(EntityChunk, TheShortSunHoldsAnglesOnly) {
    Options().nod3dlmaps = true;
    Options().sunrgb = {100, 100, 100};
    const auto record = RecordOf(Keys({{"type", "sun"}, {"sun_azm", "30"}, {"flags", "1"}}));
    EXPECT_EQ(record, Bytes().U32(5).Zeros(12).Floats({30, 45}).Zeros(32).get());
}

TEST_F(EntityChunk, ASunsAnglesAre0And45ByDefault) {
    const auto record = RecordOf(Keys({{"type", "sun"}}));
    EXPECT_EQ(ValueAt<float>(record, 16), 0.0F);
    EXPECT_EQ(ValueAt<float>(record, 20), 45.0F);
}

TEST_F(EntityChunk, ASunWithFlags10HasBits1And5Set) {
    Portals().nodes.resize(1);
    EXPECT_EQ(ValueAt<uint32_t>(RecordOf(Keys({{"type", "sun"}, {"flags", "10"}})), 24), 0x22U);
}

TEST_F(EntityChunk, TheSunsFlagsTellOfPagesNodesAndPreview) {
    const KeyList sun = Keys({{"type", "sun"}});
    EXPECT_EQ(ValueAt<uint32_t>(RecordOf(sun), 24), 0x24U);
    Portals().nodes.resize(1);
    Options().preview = true;
    EXPECT_EQ(ValueAt<uint32_t>(RecordOf(sun), 24), 0x30U);
    Textures().pages.resize(1);
    EXPECT_EQ(ValueAt<uint32_t>(RecordOf(sun), 24), 0x30U);  // a single page is not written
    Textures().pages.resize(2);
    EXPECT_EQ(ValueAt<uint32_t>(RecordOf(sun), 24), 0x31U);
}

TEST_F(EntityChunk, TheSunComesFirstAndTheLevelTakesItsPlaceForGood) {
    KeyList level = Keys({{"type", "level"}}), start = Keys({{"type", "start"}}), sun = Keys({{"type", "sun"}});
    const std::vector<KeyList*> entities{&level, &start, &sun};
    BuildEntityChunk(entities);
    const auto views = EntityRecordViews(EntityRecords().block);
    ASSERT_EQ(views.size(), 2U);
    EXPECT_EQ(views[0].type, 5);
    EXPECT_EQ(views[1].type, 1);
    EXPECT_EQ(GetKey(level, "type"), "sun");
    EXPECT_EQ(GetKey(sun, "type"), "level");
}

TEST_F(EntityChunk, TheShortSunStaysWhereItIs) {
    Options().nod3dlmaps = true;
    Build({Keys({{"type", "level"}}), Keys({{"type", "start"}}), Keys({{"type", "sun"}})});
    const auto views = EntityRecordViews(EntityRecords().block);
    EXPECT_EQ(views[0].type, 1);
    EXPECT_EQ(views[1].type, 5);
}

TEST_F(EntityChunk, WithoutASunTheFirstRecordIsAnotherType) {
    Build({Keys({{"type", "level"}}), Keys({{"type", "light"}})});
    EXPECT_EQ(EntityRecordViews(EntityRecords().block).front().type, 2);
}

// ---- The limit

TEST_F(EntityChunk, AChunkOf1MiBIsFullAndOneByteMoreIsFatal) {
    // The table takes 8 bytes and a path 44 + 12 n.
    EXPECT_EQ(Build({Keys({{"type", "path"}, {"range", "87377"}})}).size(), 1048576U);
    ExpectFatal([&] { Build({Keys({{"type", "path"}, {"range", "87378"}})}); }, "E011: Map size - too many objects");
}

TEST_F(EntityChunk, ARangeThatNoChunkCanHoldIsFatal) {
    ExpectFatal(
        [&] {
            Build({Keys({{"type", "path"}, {"range", "2147483647"}})});
        },
        "E011: Map size - too many objects");
}

// ---- Reading records

TEST_F(EntityChunk, AnEntryWithOffset0HasNoRecord) {
    const auto views = EntityRecordViews(Bytes().U32(2).U32(0).U32(12).U32(6).get());
    ASSERT_EQ(views.size(), 2U);
    EXPECT_EQ(views[0].type, -1);
    EXPECT_TRUE(views[0].bytes.empty());
    EXPECT_EQ(views[1].type, 6);
    EXPECT_EQ(views[1].bytes.size(), 4U);
}

TEST_F(EntityChunk, ATableOrARecordOutsideTheChunkIsFatal) {
    for (const auto& chunk : {Bytes().U16(1).get(), Bytes().U32(1).get(), Bytes().U32(0xFFFFFFFF).U32(0).get(),
                              Bytes().U32(1).U32(5).get(), Bytes().U32(1).U32(0xFFFFFFFE).get()}) {
        ExpectFatal([&] { EntityRecordViews(chunk); }, " \nInvalid KLV file format");
    }
}

TEST_F(EntityChunk, AnEmptyChunkHasNoRecords) {
    EXPECT_TRUE(EntityRecordViews({}).empty());
}

TEST_F(EntityChunk, TheDataSetWritesItsBlockAndForgetsAnOldOne) {
    Build({Keys({{"type", "light"}})});
    const std::vector<uint8_t> file = Saved();
    EXPECT_EQ(ChunkOf(file, Chunk::Entities), EntityRecords().block);
    Load(LevelFile('5').get());
    EXPECT_TRUE(EntityRecords().block.empty());
}

}  // namespace
}  // namespace k2k
