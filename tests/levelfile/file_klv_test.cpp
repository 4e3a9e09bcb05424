#include "levelfile/file_klv.h"

#include <gmock/gmock.h>

#include "levelfile/bytes.h"
#include "levelfile/entity_data.h"
#include "levelfile/geometry_data.h"
#include "levelfile/level_state.h"
#include "levelfile/portal_data.h"
#include "levelfile/texture_data.h"

namespace k2k {
namespace {

using namespace test;
using testing::ElementsAre;

constexpr const char* InvalidFormat = " \nInvalid KLV file format";

class FileKlv : public LevelState {
  protected:
    // A chunk 15 with one record of 36 bytes, whose words at 24 and 28 and byte at 33 are given.
    static std::vector<uint8_t> OneRecord(uint32_t type, uint32_t flags, float version, uint8_t sizeCode) {
        Bytes chunk;
        chunk.U32(1).U32(8).U32(type).Zeros(20).U32(flags).F32(version).U8(0).U8(sizeCode).Zeros(2);
        return chunk.get();
    }
    bool LoadsLightmaps(const std::vector<uint8_t>& bytes) {
        WriteFile(LevelPath(), bytes);
        CFileKLV file(LevelPath());
        EXPECT_TRUE(file.Open(false) && file.Load());
        return file.HasLightmaps();
    }
};

// ---- Opening and closing

TEST_F(FileKlv, DoesNotOpenWithoutAName) {
    CFileKLV file("");
    EXPECT_FALSE(file.Open(false));
}

TEST_F(FileKlv, CreatesAMissingFileWithoutReadingIt) {
    CFileKLV file(LevelPath());
    EXPECT_TRUE(file.Open(false));
    EXPECT_TRUE(std::filesystem::exists(LevelPath()));
    EXPECT_TRUE(file.Load());
}

TEST_F(FileKlv, AMissingFileIsFatalForAReadOnlyOpen) {
    CFileKLV file(LevelPath());
    ExpectFatal([&] { file.Open(true); }, "Can't open " + LevelPath() + " - No such file or directory");
}

TEST_F(FileKlv, AFolderThatIsMissingIsFatalForAWritingOpen) {
    const std::string path = folder_.File("no/level.klv");
    CFileKLV file(path);
    ExpectFatal([&] { file.Open(false); }, "Can't open " + path + " - No such file or directory");
}

TEST_F(FileKlv, AFileTooShortForAHeaderDoesNotOpen) {
    WriteFile(LevelPath(), std::string(155, 'x'));
    CFileKLV file(LevelPath());
    EXPECT_FALSE(file.Open(false));
}

TEST_F(FileKlv, ACreatedLevelHoldsNothingOfTheFileThatStoodThere) {
    WriteFile(LevelPath(), LevelFile('7').Add(Chunk::Nodes, std::vector<uint8_t>(4000, 0xAA)).get());
    CFileKLV file(LevelPath());
    ASSERT_TRUE(file.Create());
    ASSERT_TRUE(file.Save() && file.Close());
    EXPECT_EQ(ReadBytes(LevelPath()), Saved());
}

TEST_F(FileKlv, IsNotCreatedWithoutANameAndFatallyWithoutItsFolder) {
    EXPECT_FALSE(CFileKLV("").Create());
    const std::string path = folder_.File("no/level.klv");
    ExpectFatal([&] { CFileKLV(path).Create(); }, "Can't open " + path + " - No such file or directory");
}

TEST_F(FileKlv, CloseIsTrueWhenNothingIsOpen) {
    CFileKLV file(LevelPath());
    EXPECT_TRUE(file.Close());
}

TEST_F(FileKlv, CloseZeroesTheHeader) {
    WriteFile(LevelPath(), LevelFile('7').Add(Chunk::Palette, {1, 2, 3, 4}).get());
    CFileKLV file(LevelPath());
    ASSERT_TRUE(file.Open(true));
    EXPECT_EQ(file.GetChunkSize(Chunk::Palette), 4U);
    EXPECT_TRUE(file.Close());
    EXPECT_EQ(file.GetChunkSize(Chunk::Palette), 0U);
}

TEST_F(FileKlv, LoadWithoutAStreamIsFalse) {
    CFileKLV file(LevelPath());
    EXPECT_FALSE(file.Load());
}

// ---- Read only

TEST_F(FileKlv, AReadOnlyFileIsNotWritten) {
    const std::vector<uint8_t> bytes = LevelFile('6').get();
    WriteFile(LevelPath(), bytes);
    CFileKLV file(LevelPath());
    ASSERT_TRUE(file.Open(true));
    EXPECT_FALSE(file.Save());
    EXPECT_FALSE(file.WriteAt(0, 1, "x"));
    file.WriteHeader();
    file.SetChunkSize(Chunk::Palette, 5);
    file.SetChunkOffset(Chunk::Palette, 5);
    EXPECT_EQ(file.GetChunkSize(Chunk::Palette), 0U);
    EXPECT_EQ(file.GetChunkOffset(Chunk::Palette), 0U);
    EXPECT_TRUE(file.Close());
    EXPECT_EQ(ReadBytes(LevelPath()), bytes);
}

TEST_F(FileKlv, TableEntriesIgnoreNegativeValuesAndClosedFiles) {
    CFileKLV file(LevelPath());
    file.SetChunkSize(Chunk::Palette, 5);
    EXPECT_EQ(file.GetChunkSize(Chunk::Palette), 0U);
    ASSERT_TRUE(file.Open(false));
    file.SetChunkSize(Chunk::Palette, 5);
    file.SetChunkSize(Chunk::Palette, -1);
    file.SetChunkOffset(Chunk::Palette, -1);
    EXPECT_EQ(file.GetChunkSize(Chunk::Palette), 5U);
    EXPECT_EQ(file.GetChunkOffset(Chunk::Palette), 0U);
}

// ---- Writing

TEST_F(FileKlv, AnEmptyLevelIsAHeaderAndTheInfoBlock) {
    const std::vector<uint8_t> bytes = Saved();
    ASSERT_EQ(bytes.size(), 156U + 160U);
    EXPECT_THAT(std::span(bytes).first(4), ElementsAre('K', 'L', 'V', '7'));
    for (int number = 0; number < ChunkCount; ++number) {
        const ChunkEntry entry = EntryOf(bytes, static_cast<Chunk>(number));
        const bool isInfo = number == 14;
        EXPECT_EQ(entry.offset, isInfo ? 156U : 0U) << number;
        EXPECT_EQ(entry.size, isInfo ? 160U : 0U) << number;
    }
}

TEST_F(FileKlv, WithoutTrueColourLightmapsTheVersionIs5) {
    Options().nod3dlmaps = true;
    EXPECT_EQ(Saved()[3], '5');
}

TEST_F(FileKlv, AChunkOf5BytesIsPaddedTo8) {
    Textures().paletteLump = {1, 2, 3, 4, 5};
    EntityRecords().block = {9};
    const std::vector<uint8_t> bytes = Saved();
    const ChunkEntry palette = EntryOf(bytes, Chunk::Palette);
    EXPECT_EQ(palette.size, 5U);
    EXPECT_EQ(EntryOf(bytes, Chunk::Entities).offset, palette.offset + 8);
    EXPECT_THAT(std::span(bytes).subspan(palette.offset, 8), ElementsAre(1, 2, 3, 4, 5, 0, 0, 0));
    EXPECT_EQ(bytes.size(), palette.offset + 8 + 4);
}

TEST_F(FileKlv, WritesTheChunksInTheOrderOfTheDataSets) {
    Geometry().vertices.resize(1);
    Geometry().edges.resize(2);
    Geometry().surfaceEdges.resize(1);
    Geometry().planes.resize(1);
    Geometry().surfaces.resize(1);
    Textures().texinfos.resize(1);
    Textures().blob.resize(4);
    Textures().paletteLump.resize(4);
    Textures().pages.assign(2, std::vector<uint8_t>(SmallestPageBytes));
    Portals().regions.resize(1);
    Portals().nodes.resize(1);
    Portals().hullNodes.resize(1);
    Portals().regionSurfaces.resize(1);
    Portals().visibility.resize(4);
    EntityRecords().block.resize(8);
    Options().mesh = true;
    const std::vector<uint8_t> bytes = Saved();
    uint32_t expected = 156;
    for (const int number : {14, 3, 12, 13, 1, 7, 17, 6, 2, 0, 16, 10, 5, 9, 11, 4, 15}) {
        const ChunkEntry entry = EntryOf(bytes, static_cast<Chunk>(number));
        EXPECT_EQ(entry.offset, expected) << number;
        EXPECT_GT(entry.size, 0U) << number;
        expected = entry.offset + entry.size;
    }
    EXPECT_EQ(bytes.size(), expected);
}

TEST_F(FileKlv, AnEmptyTableLeavesItsOldEntryAlone) {
    WriteFile(LevelPath(),
              LevelFile('7').SetEntry(Chunk::Vertices, 156, 12).SetEntry(Chunk::TextureBlob, 156, 12).get());
    CFileKLV file(LevelPath());
    ASSERT_TRUE(file.Open(false));
    ASSERT_TRUE(file.Save());
    EXPECT_EQ(file.GetChunkSize(Chunk::Vertices), 12U);
    EXPECT_EQ(file.GetChunkOffset(Chunk::Vertices), 156U);
    // A chunk of bytes has no such helper.
    EXPECT_EQ(file.GetChunkSize(Chunk::TextureBlob), 0U);
    EXPECT_EQ(file.GetChunkOffset(Chunk::TextureBlob), 0U);
}

TEST_F(FileKlv, AFileThatShrinksKeepsItsOldTail) {
    WriteFile(LevelPath(), LevelFile('7').Add(Chunk::Unused18, std::vector<uint8_t>(1000, 0xAA)).get());
    CFileKLV file(LevelPath());
    ASSERT_TRUE(file.Open(false));
    ASSERT_TRUE(file.Save());
    ASSERT_TRUE(file.Close());
    const std::vector<uint8_t> bytes = ReadBytes(LevelPath());
    EXPECT_EQ(bytes.size(), 1156U);
    EXPECT_EQ(bytes[155 + 160], 0);
    EXPECT_EQ(bytes[156 + 160], 0xAA);
}

TEST_F(FileKlv, AChunkThatEndsBehind4GiBIsFatalBeforeItIsWritten) {
    const std::vector<uint8_t> mebibyte(1 << 20);
    const std::vector<std::span<const uint8_t>> parts(4096, mebibyte);
    CFileKLV file(LevelPath());
    ASSERT_TRUE(file.Open(false));
    ExpectFatal([&] { file.WriteChunk(Chunk::LightmapPages, parts); }, "E005 - can't write file " + LevelPath());
    EXPECT_EQ(std::filesystem::file_size(LevelPath()), 0U);
}

TEST_F(FileKlv, AFullDiskIsFatal) {
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP();
    std::filesystem::create_symlink("/dev/full", LevelPath());
    CFileKLV file(LevelPath());
    // The device has no length, so it does not open as a level; but its stream is there.
    EXPECT_FALSE(file.Open(false));
    ExpectFatal([&] { file.Save(); }, "E005 - can't write file " + LevelPath());
}

// ---- Reading

TEST_F(FileKlv, SavedTwiceTheBytesAreTheSame) {
    Geometry().vertices = {{1, 2, 3}};
    Textures().blob = {0, 0, 0, 0};
    EntityRecords().block = OneRecord(5, 0, 7.01F, 0);
    const std::vector<uint8_t> first = Saved();
    ResetDataSetsForTest();
    Load(first);
    EXPECT_EQ(Saved(), first);
}

TEST_F(FileKlv, AVersion6FileLoadsAs6AndIsSavedAs7) {
    WriteFile(LevelPath(), LevelFile('6').Add(Chunk::Entities, OneRecord(5, 1, 7.01F, 1)).get());
    CFileKLV file(LevelPath());
    ASSERT_TRUE(file.Open(false));
    EXPECT_EQ(file.GetVersion(), -1);
    ASSERT_TRUE(file.Load());
    EXPECT_EQ(file.GetVersion(), 6);
    EXPECT_TRUE(file.HasLightmaps());
    ASSERT_TRUE(file.Save() && file.Close());
    EXPECT_EQ(ReadBytes(LevelPath())[3], '7');
}

TEST_F(FileKlv, BelowVersion6ThereAreNoLightmapsAndSmallPages) {
    Textures().lightmapSizeCode = 2;
    EXPECT_FALSE(LoadsLightmaps(LevelFile('5').Add(Chunk::Entities, OneRecord(5, 1, 7.01F, 1)).get()));
    EXPECT_EQ(Textures().lightmapSizeCode, 0);
}

TEST_F(FileKlv, TheFirstRecordGivesTheSettingsWhateverItsType) {
    EXPECT_TRUE(LoadsLightmaps(LevelFile('7').Add(Chunk::Entities, OneRecord(2, 1, 0, 2)).get()));
    EXPECT_EQ(Textures().lightmapSizeCode, 2);
    EXPECT_FALSE(LoadsLightmaps(LevelFile('7').Add(Chunk::Entities, OneRecord(2, 2, 0, 0)).get()));
}

TEST_F(FileKlv, MeshesNeedACompilerOfAtLeast7) {
    for (const auto& [version, expected] : {std::pair{6.99F, false}, {7.0F, true}, {7.01F, true}}) {
        WriteFile(LevelPath(), LevelFile('7').Add(Chunk::Entities, OneRecord(5, 0, version, 0)).get());
        CFileKLV file(LevelPath());
        ASSERT_TRUE(file.Open(false) && file.Load());
        EXPECT_EQ(file.HasMeshes(), expected) << version;
    }
}

TEST_F(FileKlv, ALevelWithoutRecordsHasNeitherLightmapsNorMeshes) {
    EXPECT_FALSE(LoadsLightmaps(LevelFile('7').Add(Chunk::Entities, Bytes().U32(0).U32(0).get()).get()));
}

TEST_F(FileKlv, ALevelWithoutASunLosesItsLightmapPages) {
    Textures().pages.assign(2, std::vector<uint8_t>(SmallestPageBytes, 1));
    Bytes start;
    start.U32(1).U32(8).U32(1).Zeros(52);
    EntityRecords().block = start.get();
    const std::vector<uint8_t> first = Saved();
    EXPECT_EQ(EntryOf(first, Chunk::LightmapPages).size, 2 * SmallestPageBytes);
    ResetDataSetsForTest();
    Load(first);
    EXPECT_EQ(EntryOf(Saved(), Chunk::LightmapPages).size, 0U);
}

// ---- Broken files

TEST_F(FileKlv, ASizeThatIsNoMultipleOfTheRecordSizeIsFatal) {
    const auto bytes = LevelFile('7').Add(Chunk::Planes, std::vector<uint8_t>(21)).get();
    ExpectFatal([&] { Load(bytes); }, InvalidFormat);
}

TEST_F(FileKlv, AChunkBehindTheEndOfTheFileIsFatal) {
    for (const Chunk number : {Chunk::Info, Chunk::Vertices, Chunk::TextureBlob, Chunk::Visibility, Chunk::Entities}) {
        const auto bytes = LevelFile('7').SetEntry(number, 156 - 120 + 12, 120).get();
        ExpectFatal([&] { Load(bytes); }, InvalidFormat);
    }
}

TEST_F(FileKlv, AnOffsetThatWrapsAroundIsFatal) {
    const auto bytes = LevelFile('7').SetEntry(Chunk::Vertices, 0xFFFFFFF0U, 0x18).get();
    ExpectFatal([&] { Load(bytes); }, InvalidFormat);
}

TEST_F(FileKlv, TablesLargerThanTheirBlockInMemoryAreFatal) {
    const auto info = LevelFile('7').Add(Chunk::Info, std::vector<uint8_t>(161)).get();
    ExpectFatal([&] { Load(info); }, InvalidFormat);
    const auto entities = LevelFile('5').Add(Chunk::Entities, std::vector<uint8_t>(MaxEntityChunk + 1)).get();
    ExpectFatal([&] { Load(entities); }, InvalidFormat);
    const auto visibility = LevelFile('7').Add(Chunk::Visibility, std::vector<uint8_t>(MaxVisibilitySize + 1)).get();
    ExpectFatal([&] { Load(visibility); }, InvalidFormat);
}

TEST_F(FileKlv, AFirstRecordTooShortForTheSettingsIsFatal) {
    const auto bytes = LevelFile('7').Add(Chunk::Entities, Bytes().U32(1).U32(8).U32(5).Zeros(29).get()).get();
    ExpectFatal([&] { Load(bytes); }, InvalidFormat);
}

TEST_F(FileKlv, AReadBehindTheEndIsFatal) {
    WriteFile(LevelPath(), LevelFile('7').get());
    CFileKLV file(LevelPath());
    ASSERT_TRUE(file.Open(true));
    std::array<char, 10> buffer;
    ExpectFatal([&] { file.ReadAt(150, 10, buffer.data()); }, "E004 - can't read file");
}

// ---- Statistics

TEST_F(FileKlv, PrintsTheLevelSizeRoundedDownToTens) {
    Geometry().levelExtent = 1239;
    CFileKLV(LevelPath()).PrintStats();
    EXPECT_EQ(TakeLoggedText(), " \nLevel size 1230 units \n0 vertices \n0 visible surfaces \n0 regions");
}

TEST_F(FileKlv, DividesTheLevelSizeByTheZoom) {
    Geometry().levelExtent = 1239;
    Options().zoomlevel = 2;
    CFileKLV(LevelPath()).PrintStats();
    EXPECT_THAT(TakeLoggedText(), testing::StartsWith(" \nLevel size 610 units"));
    Options().zoomlevel = 0;
    CFileKLV(LevelPath()).PrintStats();
    EXPECT_THAT(TakeLoggedText(), testing::StartsWith(" \nLevel size 1230 units"));
}

TEST_F(FileKlv, PrintsNoStatisticsWithQuiet) {
    Geometry().levelExtent = 1239;
    Options().quiet = true;
    CFileKLV(LevelPath()).PrintStats();
    EXPECT_EQ(TakeLoggedText(), "");
}

// ---- Clearing

TEST_F(FileKlv, ClearDataSetsEmptiesAllFour) {
    Geometry().vertices.resize(1);
    Textures().blob.resize(1);
    EntityRecords().block.resize(1);
    Portals().visibility.resize(1);
    ClearDataSets();
    EXPECT_TRUE(Geometry().vertices.empty() && Textures().blob.empty() && EntityRecords().block.empty() &&
                Portals().visibility.empty());
}

}  // namespace
}  // namespace k2k
