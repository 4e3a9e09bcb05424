#include "driver/file_options.h"

#include <gtest/gtest.h>

#include "driver/build_options.h"
#include "support/build_state.h"

namespace k2k {
namespace {

using test::ExpectProgramExit;
using test::Logged;

class FileOptions : public test::BuildState {
  protected:
    static PaletteKind KindOf(std::string_view name) {
        Options().palpath.clear();
        SetPalettePath(name);
        return Options().palkind;
    }

    // Whether a range is taken; the program ends when it is not.
    static bool Takes(std::string_view range) {
        try {
            AddRange(range);
            return true;
        } catch (const ProgramExit& exit) {
            EXPECT_EQ(exit.status, -1);
            EXPECT_EQ(Logged(), "Invalid option :  -r " + std::string(range) + "\n");
            return false;
        }
    }
};

TEST_F(FileOptions, APaletteWithoutExtensionGetsOne) {
    EXPECT_EQ(KindOf("game"), PaletteKind::Raw);
    EXPECT_EQ(Options().palpath, "game.lmp");
}

TEST_F(FileOptions, TheExtensionTellsTheKindOfPalette) {
    EXPECT_EQ(KindOf("x.PCX"), PaletteKind::Pcx);
    EXPECT_EQ(KindOf("x.bmp"), PaletteKind::Bmp);
    EXPECT_EQ(KindOf("x.Lbm"), PaletteKind::Lbm);
    EXPECT_EQ(KindOf("x.RAW"), PaletteKind::Raw);
    EXPECT_EQ(KindOf("x.dat"), PaletteKind::Raw);
    EXPECT_EQ(KindOf("x.pcx.old"), PaletteKind::Raw);
}

TEST_F(FileOptions, TheSearchForAnExtensionStopsAtABackslashOnly) {
    KindOf("v1.2\\game");
    EXPECT_EQ(Options().palpath, "v1.2\\game.lmp");
    KindOf("v1.2/game");
    EXPECT_EQ(Options().palpath, "v1.2/game");
    KindOf(".game");
    EXPECT_EQ(Options().palpath, ".game.lmp");
}

TEST_F(FileOptions, AnEmptyPaletteNameHasNoExtensionEvenThen) {
    ExpectProgramExit([] { SetPalettePath(""); }, -1);
    EXPECT_EQ(Logged(), "Invalid palette file extention !\n");
}

TEST_F(FileOptions, ASecondPaletteNameEndsTheProgram) {
    SetPalettePath("one.pcx");
    ExpectProgramExit([] { SetPalettePath("two.pcx"); }, -1);
    EXPECT_EQ(Logged(), "Name redefinition :  two.pcx\n");
}

TEST_F(FileOptions, ANameOf261CharactersIsTooLong) {
    const std::string name(261, 'x');
    for (const auto set : {SetPalettePath, SetColormapPath, SetMixtabPath, SetPaletteOutput}) {
        ExpectProgramExit([&] { set(name); }, -1);
        EXPECT_EQ(Logged(), "Too long name :  " + name + "\n");
    }
    SetPalettePath(name.substr(1));
    EXPECT_EQ(Options().palpath, name.substr(1) + ".lmp");
}

TEST_F(FileOptions, ColourMapAndMixtureTableGetAnExtensionToo) {
    SetColormapPath("shade");
    SetMixtabPath("mix.tab");
    EXPECT_EQ(Options().colormappath, "shade.lmp");
    EXPECT_EQ(Options().mixtabpath, "mix.tab");
}

TEST_F(FileOptions, ARangeLiesWithinThePalette) {
    EXPECT_TRUE(Takes("0,256"));
    EXPECT_FALSE(Takes("1,256"));
    EXPECT_TRUE(Takes("255,1"));
    EXPECT_FALSE(Takes("255,2"));
    EXPECT_FALSE(Takes("256,0"));
    EXPECT_FALSE(Takes("0,257"));
    EXPECT_FALSE(Takes("-1,5"));
    EXPECT_EQ(Options().rangecount, 2);
    EXPECT_EQ(Options().ranges[1].start, 255);
    EXPECT_EQ(Options().ranges[1].length, 1);
}

TEST_F(FileOptions, ARangeIsTwoNumbersAndAComma) {
    EXPECT_FALSE(Takes(""));
    EXPECT_FALSE(Takes("5"));
    EXPECT_FALSE(Takes("5 6"));
    EXPECT_FALSE(Takes("5,"));
    EXPECT_FALSE(Takes("5;6"));
    EXPECT_TRUE(Takes("5,6more"));
}

TEST_F(FileOptions, TheTwentyFifthRangeIsOneTooMany) {
    for (int i = 0; i < 24; ++i) AddRange("0,1");
    ExpectProgramExit([] { AddRange("0,1"); }, -1);
    EXPECT_EQ(Logged(), "\tToo many ranges. Maximum is 24\n");
}

TEST_F(FileOptions, TheWordsOfARangeAreJoined) {
    ParseOptions("-r 16 ,32 -r 1,2");
    EXPECT_EQ(Options().rangecount, 2);
    EXPECT_EQ(Options().ranges[0].start, 16);
    EXPECT_EQ(Options().ranges[0].length, 32);
}

}  // namespace
}  // namespace k2k
