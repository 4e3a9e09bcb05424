#include "levelfile/texture_data.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <random>
#include <thread>

#include "levelfile/bytes.h"
#include "levelfile/level_state.h"

namespace k2k {
namespace {

using namespace test;

class TextureData : public LevelState {
  protected:
    static Texinfo Record(uint32_t texture, std::string_view material = "") {
        Texinfo record;
        record.vecS = {1, 0, 0};
        record.vecT = {0, -1, 0};
        record.texture = texture;
        std::copy(material.begin(), material.end(), record.material.begin());
        return record;
    }
    // A sun record first in chunk 15, so that lightmap pages are read back.
    static std::vector<uint8_t> SunChunk(uint8_t sizeCode) {
        Bytes chunk;
        chunk.U32(1).U32(8).U32(5).Zeros(20).U32(1).F32(7.01F).U8(0).U8(sizeCode).Zeros(26);
        return chunk.get();
    }
};

// ---- Bytes

TEST_F(TextureData, ATexinfoStandsByteByByte) {
    Texinfo record;
    record.vecS = {1, 2, 3};
    record.shiftS = 4;
    record.vecT = {5, 6, 7};
    record.shiftT = 8;
    record.texture = 9;
    record.flags = 10;
    record.ambient = 11;
    record.albedo = 12;
    record.material = {'S', 'T', 'O', 'N', 'E'};
    Textures().texinfos = {record};
    Bytes expected;
    expected.Floats({1, 2, 3, 4, 5, 6, 7, 8}).U32(9).U32(10).Zeros(2).U8(11).U8(12).Text("STONE", 20);
    EXPECT_EQ(ChunkOf(Saved(), Chunk::Texinfos), expected.get());
}

TEST_F(TextureData, BlobAndPaletteStandAsTheyAre) {
    Textures().blob = {1, 2, 3};
    Textures().paletteLump = {4, 5};
    const std::vector<uint8_t> file = Saved();
    EXPECT_EQ(ChunkOf(file, Chunk::TextureBlob), (std::vector<uint8_t>{1, 2, 3}));
    EXPECT_EQ(ChunkOf(file, Chunk::Palette), (std::vector<uint8_t>{4, 5}));
}

TEST_F(TextureData, Chunk8IsAlwaysWrittenEmpty) {
    WriteFile(LevelPath(), LevelFile('7').Add(Chunk::Unused8, {1, 2, 3, 4}).get());
    CFileKLV file(LevelPath());
    ASSERT_TRUE(file.Open(false) && file.Load() && file.Save());
    EXPECT_EQ(file.GetChunkSize(Chunk::Unused8), 0U);
}

TEST_F(TextureData, ReadingKeepsWhatTheFileDoesNotHold) {
    Textures().AddTexinfo(Record(1));
    Textures().paletteLump = {1};
    Textures().blob = {2};
    Load(LevelFile('7').get());
    EXPECT_EQ(Textures().texinfos.size(), 2U);
    EXPECT_EQ(Textures().paletteLump.size(), 1U);
    EXPECT_TRUE(Textures().blob.empty());
}

// ---- Lightmap pages

TEST_F(TextureData, ASinglePageStaysInMemoryOnly) {
    Textures().pages.assign(1, std::vector<uint8_t>(SmallestPageBytes));
    EXPECT_FALSE(Textures().WritesLightmapPages());
    EXPECT_EQ(EntryOf(Saved(), Chunk::LightmapPages).size, 0U);
    Options().litmapsonly = true;
    EXPECT_TRUE(Textures().WritesLightmapPages());
    EXPECT_EQ(EntryOf(Saved(), Chunk::LightmapPages).size, SmallestPageBytes);
}

TEST_F(TextureData, NoPagesAreWrittenForVersion5) {
    Textures().pages.assign(2, std::vector<uint8_t>(SmallestPageBytes));
    Options().nod3dlmaps = true;
    EXPECT_EQ(EntryOf(Saved(), Chunk::LightmapPages).size, 0U);
}

TEST_F(TextureData, PagesStandOneBehindTheOther) {
    Textures().pages = {std::vector<uint8_t>(SmallestPageBytes, 1), std::vector<uint8_t>(SmallestPageBytes, 2)};
    const std::vector<uint8_t> chunk = ChunkOf(Saved(), Chunk::LightmapPages);
    ASSERT_EQ(chunk.size(), 393216U);
    EXPECT_EQ(chunk[196607], 1);
    EXPECT_EQ(chunk[196608], 2);
}

TEST_F(TextureData, ReadsPagesOfTheSunsSizeCode) {
    std::vector<uint8_t> chunk(2 * 786432, 1);
    chunk.back() = 9;
    Textures().pages.resize(5);
    Load(LevelFile('7').Add(Chunk::Entities, SunChunk(1)).Add(Chunk::LightmapPages, chunk).get());
    ASSERT_EQ(Textures().pages.size(), 2U);
    EXPECT_EQ(Textures().pages[0].size(), 786432U);
    EXPECT_EQ(Textures().pages[1].back(), 9);
}

TEST_F(TextureData, PagesWhoseSizeIsNoMultipleOfAPageAreIgnoredInFull) {
    const std::vector<uint8_t> chunk(SmallestPageBytes + 4);
    Load(LevelFile('7').Add(Chunk::Entities, SunChunk(0)).Add(Chunk::LightmapPages, chunk).get());
    EXPECT_TRUE(Textures().pages.empty());
    const std::vector<uint8_t> smallPages(2 * SmallestPageBytes);
    Load(LevelFile('7').Add(Chunk::Entities, SunChunk(1)).Add(Chunk::LightmapPages, smallPages).get());
    EXPECT_TRUE(Textures().pages.empty());
}

TEST_F(TextureData, ASizeCodeBeyondAllFilesMeansNoPages) {
    const std::vector<uint8_t> chunk(SmallestPageBytes);
    for (const int sizeCode : {7, 8, 16, 31, 32, 255}) {
        Load(LevelFile('7')
                 .Add(Chunk::Entities, SunChunk(static_cast<uint8_t>(sizeCode)))
                 .Add(Chunk::LightmapPages, chunk)
                 .get());
        EXPECT_TRUE(Textures().pages.empty()) << sizeCode;
    }
}

// ---- Statistics and clearing

TEST_F(TextureData, PrintsTexturesAndSpace) {
    Textures().blob = Bytes().U32(1).I32(-1).Zeros(1024).get();
    Textures().pages.assign(2, std::vector<uint8_t>(4 * SmallestPageBytes));
    Textures().lightmapSizeCode = 1;
    Textures().PrintStats();
    EXPECT_EQ(TakeLoggedText(), " \n1 textures \nTexture\tspace 2 Kb \nLightmap space 384 Kb");
}

TEST_F(TextureData, PrintsTexturesWithoutImagesToo) {
    Textures().blob = std::vector<uint8_t>(1024);
    Textures().blob[0] = 255;
    Textures().PrintStats();
    EXPECT_EQ(TakeLoggedText(), " \n255 textures \nTexture\tspace 1 Kb");
}

TEST_F(TextureData, PrintsNothingThatIsNotWritten) {
    Textures().pages.resize(1);
    Textures().PrintStats();
    EXPECT_EQ(TakeLoggedText(), "");
}

TEST_F(TextureData, ClearKeepsTexinfosAndPalette) {
    Textures().AddTexinfo(Record(1));
    Textures().FindTextureName("STONE");
    Textures().paletteLump = {1};
    Textures().blob = {1};
    Textures().pages.resize(1);
    Textures().Clear();
    EXPECT_EQ(Textures().texinfos.size(), 2U);
    EXPECT_EQ(Textures().paletteLump.size(), 1U);
    EXPECT_TRUE(Textures().names.empty() && Textures().blob.empty() && Textures().pages.empty());
    EXPECT_EQ(Textures().AddTexinfo(Record(1)), 1);
    EXPECT_EQ(Textures().FindTextureName("WOOD"), 0);
}

// ---- Names

TEST_F(TextureData, FindsNamesOverAll16Characters) {
    EXPECT_EQ(Textures().FindTextureName("ABCDEFGHIJKLMNOP"), 0);
    EXPECT_EQ(Textures().FindTextureName("ABCDEFGHIJKLMNO"), 1);
    EXPECT_EQ(Textures().FindTextureName("ABCDEFGHIJKLMNOPQ"), 0);
    EXPECT_EQ(Textures().names[0][15], 'P');
}

TEST_F(TextureData, TheTable4096NamesLongIsFull) {
    for (int32_t i = 0; i < MaxTextureNames; ++i) Textures().FindTextureName(std::to_string(i));
    EXPECT_EQ(Textures().FindTextureName("4095"), 4095);
    ExpectFatal([] { Textures().FindTextureName("4096"); }, "E019: Texture size overrun");
}

TEST_F(TextureData, NamesAreFoundAsByALinearSearch) {
    std::mt19937 random(1);
    std::vector<std::string> plain;
    for (int i = 0; i < 5000; ++i) {
        std::string name;
        for (uint32_t length = random() % 4; length > 0; --length) name += static_cast<char>('A' + random() % 4);
        auto found = std::find(plain.begin(), plain.end(), name);
        if (found == plain.end()) found = plain.insert(plain.end(), name);
        ASSERT_EQ(Textures().FindTextureName(name), found - plain.begin());
    }
}

// ---- Texinfos

TEST_F(TextureData, TheFirstTexinfoMakesTwoRows) {
    Texinfo record = Record(7, "STONE");
    record.flags = 8;
    record.ambient = 3;
    record.albedo = 4;
    EXPECT_EQ(Textures().AddTexinfo(record), 1);
    ASSERT_EQ(Textures().texinfos.size(), 2U);
    const Texinfo& neutral = Textures().texinfos[0];
    EXPECT_EQ(&Textures().GetTexinfo(0), &neutral);
    EXPECT_EQ(&Textures().GetTexinfo(-1), &neutral);
    EXPECT_EQ(neutral.texture, 7U);
    EXPECT_EQ(neutral.vecS, record.vecS);
    EXPECT_EQ(neutral.material, record.material);
    EXPECT_EQ(neutral.flags, 0U);
    EXPECT_EQ(neutral.ambient, 0);
    EXPECT_EQ(neutral.albedo, 50);
}

TEST_F(TextureData, NoSearchFindsRow0) {
    const Texinfo record = Record(7);  // equals its neutral copy
    EXPECT_EQ(Textures().AddTexinfo(record), 1);
    EXPECT_EQ(Textures().AddTexinfo(record), 1);
}

TEST_F(TextureData, EqualMappingsShareARow) {
    Textures().AddTexinfo(Record(1));
    EXPECT_EQ(Textures().AddTexinfo(Record(2)), 2);
    EXPECT_EQ(Textures().AddTexinfo(Record(2)), 2);
}

TEST_F(TextureData, ADifferenceInTheLastBitMakesTwoRows) {
    Texinfo record = Record(1);
    EXPECT_EQ(Textures().AddTexinfo(record), 1);
    record.vecT[1] = std::nextafter(record.vecT[1], 0.0F);
    EXPECT_EQ(Textures().AddTexinfo(record), 2);
}

TEST_F(TextureData, EveryFieldButTheReservedOnesCounts) {
    int32_t rows = 0;
    const auto expectNew = [&](auto change) {
        Texinfo record = Record(1, "A");
        change(record);
        EXPECT_EQ(Textures().AddTexinfo(record), ++rows);
    };
    expectNew([](Texinfo&) {});
    expectNew([](Texinfo& r) { r.texture = 2; });
    expectNew([](Texinfo& r) { r.flags = 1; });
    expectNew([](Texinfo& r) { r.ambient = 1; });
    expectNew([](Texinfo& r) { r.albedo = 1; });
    expectNew([](Texinfo& r) { r.material[0] = 'B'; });
    expectNew([](Texinfo& r) { r.vecS[2] = 1; });
    expectNew([](Texinfo& r) { r.shiftS = 1; });
    expectNew([](Texinfo& r) { r.vecT[0] = 1; });
    expectNew([](Texinfo& r) { r.shiftT = 1; });
    Texinfo same = Record(1, "A");
    same.reserved = {1, 2};
    same.material[5] = 'X';  // behind the terminator
    same.shiftS = -0.0F;
    EXPECT_EQ(Textures().AddTexinfo(same), 1);
}

TEST_F(TextureData, ANaNEqualsNoRow) {
    Texinfo record = Record(1);
    record.shiftS = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(Textures().AddTexinfo(record), 1);
    EXPECT_EQ(Textures().AddTexinfo(record), 2);
}

TEST_F(TextureData, TheTable32767TexinfosLongIsFull) {
    for (uint32_t i = 1; i < MaxTexinfos; ++i) Textures().AddTexinfo(Record(i));
    ASSERT_EQ(Textures().texinfos.size(), 32767U);
    EXPECT_EQ(Textures().AddTexinfo(Record(32766)), 32766);
    ExpectFatal([] { Textures().AddTexinfo(Record(40000)); }, "E020: Texture size overrun");
    EXPECT_EQ(Textures().texinfos.size(), 32767U);
}

TEST_F(TextureData, TheIndexFollowsATableThatWasRead) {
    Textures().AddTexinfo(Record(1));
    Textures().AddTexinfo(Record(2));
    const std::vector<uint8_t> file = Saved();
    ResetDataSetsForTest();
    Textures().AddTexinfo(Record(3));
    Textures().AddTexinfo(Record(4));
    Load(file);
    EXPECT_EQ(Textures().AddTexinfo(Record(2)), 2);
    EXPECT_EQ(Textures().AddTexinfo(Record(4)), 3);
}

TEST_F(TextureData, OfEqualRowsInAFileTheFirstIsFound) {
    Textures().texinfos = {Record(9), Record(9), Record(9)};
    const std::vector<uint8_t> file = Saved();
    ResetDataSetsForTest();
    Load(file);
    EXPECT_EQ(Textures().AddTexinfo(Record(9)), 1);
}

TEST_F(TextureData, ClearedTexinfosAreNumberedAfresh) {
    Textures().AddTexinfo(Record(1));
    Textures().AddTexinfo(Record(2));
    Textures().ClearTexinfos();
    EXPECT_EQ(Textures().AddTexinfo(Record(2)), 1);
}

TEST_F(TextureData, ClearedTexinfosTakeTheirAliasesAlong) {
    TexinfoAlias alias{.key = 4};
    Textures().AddTexinfo(Record(1), &alias);
    Textures().ClearTexinfos();
    EXPECT_TRUE(Textures().aliases.empty());
}

// The plain form: a linear search with exact comparisons.
int32_t AddPlainly(std::vector<Texinfo>& rows, const Texinfo& record) {
    if (rows.empty()) {
        rows.push_back(record);
    } else {
        for (size_t i = 1; i < rows.size(); ++i) {
            const Texinfo& row = rows[i];
            bool same = row.texture == record.texture && row.flags == record.flags && row.ambient == record.ambient &&
                        row.albedo == record.albedo && std::string(row.material.data()) == record.material.data();
            for (size_t axis = 0; axis < 3; ++axis) {
                same = same && row.vecS[axis] == record.vecS[axis] && row.vecT[axis] == record.vecT[axis];
            }
            if (same && row.shiftS == record.shiftS && row.shiftT == record.shiftT) return static_cast<int32_t>(i);
        }
    }
    rows.push_back(record);
    return static_cast<int32_t>(rows.size()) - 1;
}

TEST_F(TextureData, TexinfosAreFoundAsByALinearSearch) {
    constexpr float floats[] = {0.0F, -0.0F, 1.0F, std::numeric_limits<float>::quiet_NaN()};
    constexpr std::string_view materials[] = {"", "A", {"A\0X", 3}, "B"};
    std::mt19937 random(2);
    std::vector<Texinfo> plain;
    for (int i = 0; i < 4000; ++i) {
        Texinfo record;
        const auto pick = [&] { return floats[random() % 40 == 0 ? 3 : random() % 3]; };
        record.vecS = {pick(), 0, 0};
        record.shiftS = pick();
        record.vecT = {0, 0, pick()};
        record.shiftT = pick();
        record.texture = random() % 2;
        record.flags = random() % 2;
        const std::string_view material = materials[random() % 4];
        std::copy(material.begin(), material.end(), record.material.begin());
        record.reserved = {static_cast<uint8_t>(random() % 2), 0};
        ASSERT_EQ(Textures().AddTexinfo(record), AddPlainly(plain, record));
    }
}

// ---- Ids and aliases

TEST_F(TextureData, AnAliasGivesANegativeIdThatLeadsToTheRow) {
    TexinfoAlias alias{.key = 4};
    EXPECT_EQ(Textures().AddTexinfo(Record(1), &alias), -2);
    EXPECT_EQ(alias.texinfo, 1U);
    EXPECT_EQ(Textures().AddTexinfo(Record(1), &alias), -2);
    TexinfoAlias other{.key = 5, .first = 1};
    EXPECT_EQ(Textures().AddTexinfo(Record(2), &other), -3);
    EXPECT_EQ(Textures().GetTexinfo(-1).texture, 1U);
    EXPECT_EQ(Textures().GetTexinfo(-2).texture, 1U);
    EXPECT_EQ(Textures().GetTexinfo(-3).texture, 2U);
}

TEST_F(TextureData, WithBit0OfTheKeyTheFloatsOfAnAliasCount) {
    TexinfoAlias first{.key = 1, .first = 1}, second{.key = 1, .first = 2};
    Textures().AddTexinfo(Record(1), &first);
    EXPECT_EQ(Textures().AddTexinfo(Record(1), &second), 1);  // no such alias, but the row is there
    TexinfoAlias even{.key = 2, .first = 1}, evenToo{.key = 2, .first = 2};
    EXPECT_EQ(Textures().AddTexinfo(Record(2), &even), -3);
    EXPECT_EQ(Textures().AddTexinfo(Record(2), &evenToo), -3);
}

TEST_F(TextureData, AnIdThatLeadsNowhereIsFatal) {
    for (const int32_t id : {0, -1, -2, 5, std::numeric_limits<int32_t>::min()}) {
        ExpectFatal([id] { Textures().GetTexinfo(id); }, " \nInvalid KLV file format");
    }
}

TEST_F(TextureData, ManyThreadsReadTexinfos) {
    for (uint32_t i = 1; i <= 100; ++i) Textures().AddTexinfo(Record(i));
    std::vector<std::thread> threads;
    std::array<uint64_t, 4> sums{};
    for (uint64_t& sum : sums) {
        threads.emplace_back([&sum] {
            for (int32_t id = 1; id <= 100; ++id) sum += Textures().GetTexinfo(id).texture;
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_THAT(sums, testing::Each(5050U));
}

// ---- The blob

TEST_F(TextureData, AnImagesSizeStandsBehindItsName) {
    Bytes blob;
    blob.U32(2).I32(-1).I32(12).Text("STONE", 16).U32(64).U32(32).Zeros(16);
    Textures().blob = blob.get();
    EXPECT_EQ(Textures().BlobTextureCount(), 2U);
    EXPECT_EQ(Textures().ImageSize(1), (std::array<uint32_t, 2>{64, 32}));
    EXPECT_EQ(Textures().ImageSize(0), (std::array<uint32_t, 2>{1, 1}));
    EXPECT_EQ(Textures().ImageSize(2), (std::array<uint32_t, 2>{1, 1}));
}

TEST_F(TextureData, AnEmptyImageCountsAs1x1) {
    Textures().blob = Bytes().U32(1).I32(8).Zeros(16).U32(0).U32(32).get();
    EXPECT_EQ(Textures().ImageSize(0), (std::array<uint32_t, 2>{1, 1}));
}

TEST_F(TextureData, AnyBlobIsSafeToAsk) {
    std::mt19937 random(3);
    for (int i = 0; i < 3000; ++i) {
        Textures().blob.resize(random() % 64);
        const uint32_t limit = i % 3 == 0 ? 256 : 16;
        for (uint8_t& byte : Textures().blob) byte = static_cast<uint8_t>(random() % limit);
        if (Textures().blob.size() > 4 && i % 2 == 0) std::fill_n(Textures().blob.begin() + 1, 3, uint8_t{0});
        const uint32_t count = Textures().BlobTextureCount();
        EXPECT_LE(uint64_t{count} * 4, Textures().blob.size());
        for (const uint32_t texture : {0U, count - 1, count, 0xFFFFFFFFU}) Textures().ImageSize(texture);
    }
}

}  // namespace
}  // namespace k2k
