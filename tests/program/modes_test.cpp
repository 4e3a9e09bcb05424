// The modes of a build: what each of them renews in a level, and what it leaves alone.
#include <gmock/gmock.h>

#include "program/compile.h"
#include "program/level_bytes.h"
#include "texture/wad_bytes.h"

namespace k2k::test {
namespace {

using levelcheck::LevelView;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

SmallMap DimRoom() {
    return LitRoom({20, 100, 50});
}

// The room of LitRoom with another block and another light in it.
SmallMap ChangedRoom() {
    return DimRoom().Add({{96, 96, 0}, {128, 128, 64}, "PILLAR"});
}

using Modes = SmallMapTest;

TEST_F(Modes, EntsonlyRenewsTheEntitiesAlone) {
    const LevelView before = Compile(LitRoom()).level;
    const auto [text, after] = Compile(ChangedRoom(), {"-entsonly"});
    EXPECT_THAT(DifferentChunks(before, after), ElementsAre(levelcheck::ChunkEntities));
    EXPECT_EQ(ValueIn<float>(EntityRecord(after, 2), 16), 20) << "red of the light";
    EXPECT_THAT(text, HasSubstr("\nUpdating 3 objects...\n"));
    for (const char* stage : {"Building", "Generating", "Calculating", "Placing"})
        EXPECT_THAT(text, Not(HasSubstr(stage)));
}

TEST_F(Modes, EntsonlyKnowsNoGammaTable) {
    EXPECT_EQ(SunRecord(Compile(LitRoom()).level).firstGammaValue(), 2);
    EXPECT_EQ(SunRecord(Compile({"-entsonly"}).level).firstGammaValue(), 0);
}

TEST_F(Modes, EntsonlyLeavesInterimFilesAlone) {
    Compile(LitRoom());
    for (const char* name : {"level.$$p", "level.$$v", "level.$$e"}) WriteFile(name, "old");
    Compile({"-entsonly"});
    for (const char* name : {"level.$$p", "level.$$v", "level.$$e"}) EXPECT_EQ(ReadFile(name), "old");
}

TEST_F(Modes, EntsonlyMakesALevelOfEntitiesWhereThereIsNone) {
    const LevelView level = Compile(LitRoom(), {"-entsonly"}).level;
    EXPECT_THAT(level.vertices, IsEmpty());
    EXPECT_EQ(ValueIn<uint32_t>(ChunkBytes(level, levelcheck::ChunkEntities), 0), 3U);
}

TEST_F(Modes, TexsonlyRenewsTheImagesAlone) {
    const LevelView before = Compile(LitRoom()).level;
    Wad wad;
    for (const char* name : {"wall", "floor", "ceiling"}) wad.Add(name, 68, Image(name, 32, 32, 100));
    WriteFile("textures.$$w", wad.Bytes());
    const auto [text, after] = Compile({"-texsonly"});
    EXPECT_THAT(DifferentChunks(before, after), ElementsAre(levelcheck::ChunkTextures));
    EXPECT_EQ(after.Chunk(levelcheck::ChunkTextures).size(), 4 + 3 * 4 + 3 * (24 + 100U));
    EXPECT_THAT(text, HasSubstr(" \n3 textures"));
    EXPECT_THAT(text, Not(HasSubstr("W022")));
    for (const char* stage : {"Building", "Generating", "Calculating", "Placing"})
        EXPECT_THAT(text, Not(HasSubstr(stage)));
}

TEST_F(Modes, TexsonlyAsksForARebuildWhenTheMapHasOtherTextures) {
    Compile(LitRoom());
    const auto [text, after] = Compile(ChangedRoom(), {"-texsonly"});
    EXPECT_THAT(text, HasSubstr(" \nWARNING W022: Map must be rebuilt!\n"));
    EXPECT_EQ(after.surfaces.size(), 16U) << "the room's, without the pillar's";
}

TEST_F(Modes, UpdatesTellWhatTheyDoUnderQuietToo) {
    Compile(LitRoom());
    Write(ChangedRoom());
    EXPECT_THAT(Compile({"-texsonly", "-quiet"}).text, HasSubstr(" \nWARNING W022: Map must be rebuilt!\n"));
    EXPECT_THAT(Compile({"-entsonly", "-quiet"}).text, HasSubstr("\nUpdating 3 objects...\n"));
}

TEST_F(Modes, LightsonlyRelightsTheLevelAsItStands) {
    Compile(LitRoom());
    const auto [text, relit] = Compile(DimRoom(), {"-lightsonly"});
    EXPECT_THAT(text, HasSubstr("\nUpdating 3 objects...\n"));
    EXPECT_THAT(text, HasSubstr("Generating lightmaps"));
    EXPECT_THAT(text, Not(HasSubstr("Building")));
    EXPECT_THAT(text, Not(HasSubstr("portals")));
    EXPECT_THAT(DifferentChunks(Compile().level, relit), IsEmpty()) << "as if built with that light at once";
}

TEST_F(Modes, LightsonlyKeepsTheBlocks) {
    const LevelView before = Compile(LitRoom()).level;
    const LevelView after = Compile(ChangedRoom(), {"-lightsonly"}).level;
    EXPECT_THAT(DifferentChunks(before, after), ElementsAre(levelcheck::ChunkEntities, levelcheck::ChunkPages));
}

TEST_F(Modes, LightsonlyWinsOverEntsonly) {
    Compile(LitRoom());
    Compile(DimRoom(), {"-lightsonly"});
    const std::string alone = ReadFile("level.klv");
    Compile(LitRoom());
    Compile(DimRoom(), {"-lightsonly", "-entsonly"});
    EXPECT_TRUE(ReadFile("level.klv") == alone);
}

TEST_F(Modes, PreviewMarksTheLevelAndTakesOneSampleATexel) {
    const LevelView full = Compile(LitRoom()).level;
    const auto [text, preview] = Compile({"-preview"});
    EXPECT_EQ(SunRecord(full).flags() & SunRecord::Preview, 0U);
    EXPECT_EQ(SunRecord(preview).flags() & SunRecord::Preview, SunRecord::Preview);
    EXPECT_THAT(text, Not(HasSubstr("Calculating visibility")));
    EXPECT_THAT(DifferentChunks(full, preview), ElementsAre(levelcheck::ChunkEntities, levelcheck::ChunkPages));
}

class VisibilityModes : public SmallMapTest {
  protected:
    // Two rooms with a doorway between them.
    static SmallMap TwoRooms() {
        SmallMap map;
        map.AddRoom({0, 0, 0}, {512, 256, 128}).Start({64, 64, 40}).Sun();
        map.Add({{240, 0, 0}, {256, 96, 128}}).Add({{240, 160, 0}, {256, 256, 128}});
        return map.Add({{240, 96, 96}, {256, 160, 128}});
    }
};

TEST_F(VisibilityModes, NoportalsIsTheFastBuildOfLevelTwo) {
    const auto [text, level] = Compile(TwoRooms(), {"-noportals"});
    EXPECT_THAT(text, HasSubstr("portals ... ok"));
    EXPECT_THAT(text, Not(HasSubstr("Calculating visibility")));
    EXPECT_EQ(level.bytes, Compile({"-fast", "-level", "2"}).level.bytes);
    EXPECT_EQ(level.bytes, Compile({"-noportals", "-level", "0"}).level.bytes);
}

TEST_F(VisibilityModes, NoportalsWithPreviewMakesNoRows) {
    const auto [text, level] = Compile(TwoRooms(), {"-noportals", "-preview"});
    EXPECT_THAT(text, Not(HasSubstr(" portals ")));
    EXPECT_THAT(level.Chunk(levelcheck::ChunkVis), IsEmpty());
    ASSERT_GT(level.regions.size(), 2U);
    for (size_t i = 1; i < level.regions.size(); ++i) EXPECT_EQ(level.regions[i].visOffset, -1);
}

TEST_F(VisibilityModes, NoportalsWithPreviewDividesByTheZoom) {
    const LevelView plain = Compile(TwoRooms(), {"-noportals", "-preview"}).level;
    const LevelView zoomed = Compile({"-noportals", "-preview", "-zoomlevel", "4"}).level;
    EXPECT_EQ(ChunkBytes(zoomed, levelcheck::ChunkVertices), ChunkBytes(plain, levelcheck::ChunkVertices));
    EXPECT_THAT(zoomed.Chunk(levelcheck::ChunkVis), IsEmpty());
}

TEST_F(Modes, NotablesWritesNoPalette) {
    const auto [text, level] = Compile(LitRoom(), {"-notables"});
    EXPECT_THAT(level.Chunk(levelcheck::ChunkPalette), IsEmpty());
    EXPECT_THAT(text, Not(HasSubstr("Writing KLV file")));
    EXPECT_EQ(Compile().level.Chunk(levelcheck::ChunkPalette).size(), 784U);
}

TEST_F(Modes, NotablesLeavesThePaletteAsItStands) {
    const LevelView before = Compile(LitRoom()).level;
    WriteFile("palette.raw", std::string(768, 'x'));
    const LevelView kept = Compile({"-entsonly", "-notables"}).level;
    EXPECT_EQ(ChunkBytes(kept, levelcheck::ChunkPalette), ChunkBytes(before, levelcheck::ChunkPalette));
    const LevelView renewed = Compile({"-entsonly"}).level;
    EXPECT_NE(ChunkBytes(renewed, levelcheck::ChunkPalette), ChunkBytes(before, levelcheck::ChunkPalette));
}

TEST_F(Modes, AMapWithoutBlocksIsAPreviewWithoutPortals) {
    const auto [text, level] = Compile(SmallMap().Sun().Start({0, 0, 0}));
    EXPECT_THAT(text, Not(HasSubstr(" portals ")));
    EXPECT_THAT(text, Not(HasSubstr("Generating lightmaps")));
    EXPECT_THAT(level.vertices, IsEmpty());
    EXPECT_EQ(SunRecord(level).flags(), SunRecord::Always | SunRecord::Preview | SunRecord::NoNodes | 2U);
}

}  // namespace
}  // namespace k2k::test
