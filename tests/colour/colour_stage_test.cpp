#include "colour/colour_stage.h"

#include <gtest/gtest.h>

#include "driver/build_log.h"
#include "levelfile/file_klv.h"
#include "levelfile/geometry_data.h"
#include "levelfile/texture_data.h"
#include "support/build_state.h"
#include "support/files.h"

namespace k2k {
namespace {

using Bytes = std::vector<uint8_t>;

class TheColourStage : public test::BuildState {
  protected:
    TheColourStage() {
        ResetDataSetsForTest();
        test::WriteFile("game.lmp", Bytes(768, 7));
    }
    ~TheColourStage() override { ResetDataSetsForTest(); }

    // A level with a palette lump of some size and one vertex.
    static void SaveLevel(const Bytes& lump) {
        ResetDataSetsForTest();
        Textures().paletteLump = lump;
        Geometry().vertices = {{1.0F, 2.0F, 3.0F}};
        CFileKLV file("map.klv");
        ASSERT_TRUE(file.Open(false) && file.Save() && file.Close());
        ResetDataSetsForTest();
    }

    // The palette lump in the file.
    static Bytes SavedLump() {
        ResetDataSetsForTest();
        CFileKLV file("map.klv");
        EXPECT_TRUE(file.Open(false) && file.Load());
        EXPECT_EQ(Geometry().vertices.size(), 1U) << "the rest of the level stays";
        return Textures().paletteLump;
    }

    static Bytes NewLump() {
        Bytes lump(16, 0);
        lump.insert(lump.end(), 768, 7);
        return lump;
    }

    test::InTempDir folder_;
};

TEST_F(TheColourStage, PutsThePaletteIntoTheLevel) {
    SaveLevel({});
    ParseOptions("map -pal game");
    EXPECT_EQ(RunColourStage(), 0);
    EXPECT_EQ(SavedLump(), NewLump());
    EXPECT_EQ(test::Logged(), "\nWriting KLV file ... ok\n");
}

TEST_F(TheColourStage, ReplacesALongerLumpOfOlderTools) {
    SaveLevel(Bytes(82704, 1));
    ParseOptions("map -pal game");
    RunColourStage();
    EXPECT_EQ(SavedLump(), NewLump());
}

TEST_F(TheColourStage, SaysNoOkWhereTheLevelCannotBeRead) {
    test::WriteFile("map.klv", Bytes{'K', 'L', 'V'});
    ParseOptions("map -pal game");
    EXPECT_EQ(RunColourStage(), 0);
    EXPECT_EQ(test::Logged(), "\nWriting KLV file ...");
}

TEST_F(TheColourStage, MakesNoLevelWhereTheOldOneHasGone) {
    ParseOptions("map -pal game");
    test::ExpectFatal([] { RunColourStage(); }, "Can't open map.klv - No such file or directory");
    EXPECT_FALSE(std::filesystem::exists("map.klv"));
}

TEST_F(TheColourStage, LeavesThePaletteAloneWithNoTables) {
    SaveLevel({1, 2, 3});
    ParseOptions("map -pal missing -notables");
    EXPECT_EQ(RunColourStage(), 0);
    EXPECT_EQ(SavedLump(), (Bytes{1, 2, 3}));
    EXPECT_EQ(test::Logged(), "");
    EXPECT_EQ(Options().rangecount, 0);
}

TEST_F(TheColourStage, EndsTheProgramWithoutAPalette) {
    SaveLevel({1, 2, 3});
    ParseOptions("map -pal missing");
    test::ExpectProgramExit([] { RunColourStage(); }, -1);
    EXPECT_EQ(test::Logged(), "\n\nFatal error ->   could not open file :  missing.lmp\n");
    EXPECT_EQ(SavedLump(), (Bytes{1, 2, 3}));
}

TEST_F(TheColourStage, ReadsThePaletteByItsKind) {
    SaveLevel({});
    for (const std::string name : {"x.pcx", "x.bmp", "x.lbm"}) {
        test::WriteFile(name, Bytes(768, 7));
        Reset();
        ParseOptions("map -pal " + name);
        test::ExpectProgramExit([] { RunColourStage(); }, -1);
        EXPECT_EQ(test::Logged(), "\n\nFatal error ->   not valid image file :  " + name + "\n");
    }
}

TEST_F(TheColourStage, TakesTheWholePaletteForARange) {
    SaveLevel({});
    ParseOptions("map -pal game");
    RunColourStage();
    EXPECT_EQ(Options().rangecount, 1);
    EXPECT_EQ(Options().ranges[0].start, 0);
    EXPECT_EQ(Options().ranges[0].length, 256);
}

TEST_F(TheColourStage, KeepsTheRangesThatWereGiven) {
    SaveLevel({});
    ParseOptions("map -pal game -r 5,6");
    RunColourStage();
    EXPECT_EQ(Options().rangecount, 1);
    EXPECT_EQ(Options().ranges[0].start, 5);
}

TEST_F(TheColourStage, TakesMissingColourSpacesFromTheFirst) {
    SaveLevel({});
    ParseOptions("map -pal game -hsv \"-light hsl\"");
    RunColourStage();
    EXPECT_EQ(Options().lightspace, ColourSpace::Hsl);
    EXPECT_EQ(Options().shadespace, ColourSpace::Hsv);
}

TEST_F(TheColourStage, ClearsTheLevelInWork) {
    Geometry().vertices = {{1.0F, 2.0F, 3.0F}};
    ParseOptions("map -pal game -notables");
    RunColourStage();
    EXPECT_TRUE(Geometry().vertices.empty());
}

TEST_F(TheColourStage, WritesAPaletteFileWithoutALevel) {
    ParseOptions("-pal game -outpal out.pal");
    RunColourStage();
    EXPECT_EQ(test::ReadBytes("out.pal"), Bytes(768, 7));
    EXPECT_EQ(test::Logged(), "Writing palette ... ok\n");
}

TEST_F(TheColourStage, WritesThePaletteOfAnImageUnderANameOfItsOwn) {
    Bytes pcx(128, 0);
    pcx[0] = 10;
    pcx[3] = 8;
    pcx.insert(pcx.end(), 768, 9);
    test::WriteFile("x.pcx", pcx);
    ParseOptions("-pal x.pcx");
    RunColourStage();
    EXPECT_EQ(test::ReadBytes("palette.lmp"), Bytes(768, 9));
}

TEST_F(TheColourStage, WritesNoSecondRawPaletteUnasked) {
    ParseOptions("-pal game");
    RunColourStage();
    EXPECT_FALSE(std::filesystem::exists("palette.lmp"));
    EXPECT_EQ(test::Logged(), "");
}

TEST_F(TheColourStage, WritesNoPaletteFileWhenToldSo) {
    ParseOptions("-pal game -outpal out.pal -npal");
    RunColourStage();
    EXPECT_FALSE(std::filesystem::exists("out.pal"));
    EXPECT_EQ(test::Logged(), "");
}

}  // namespace
}  // namespace k2k
