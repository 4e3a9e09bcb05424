#include <gtest/gtest.h>
#include <sched.h>

#include <algorithm>
#include <array>
#include <tuple>
#include <utility>

#include "driver/build_options.h"
#include "driver/option_table.h"
#include "support/build_state.h"

namespace k2k {
namespace {

using test::ExpectFatal;
using test::ExpectProgramExit;
using test::Logged;

class Parsing : public test::BuildState {
  protected:
    const BuildOptions& o = Options();
};

TEST_F(Parsing, NeedsAMapAndAPalette) {
    EXPECT_FALSE(ParseOptions(""));
    EXPECT_FALSE(ParseOptions("map"));
    EXPECT_FALSE(OptionsValid);
    EXPECT_TRUE(ParseOptions("-pal game.pcx"));
    EXPECT_TRUE(OptionsValid);
}

TEST_F(Parsing, ReadsWordsInAnyCase) {
    ParseOptions("map -VERBOSE -Pal x.RAW");
    EXPECT_TRUE(o.verbose);
    EXPECT_EQ(o.palpath, "x.RAW");
}

TEST_F(Parsing, StopsAtAnUnknownOption) {
    EXPECT_FALSE(ParseOptions("map -pal x -nobsp --help -verbose"));
    EXPECT_FALSE(OptionsValid);
    EXPECT_FALSE(o.verbose);
    EXPECT_TRUE(o.nobsp) << "the options are not settled after an unknown word";
}

TEST_F(Parsing, SetsEveryFlag) {
    for (const OptionRow& row : OptionTable()) {
        if (const Flag* flag = std::get_if<Flag>(&row.target)) {
            Options().*flag->member = false;
            ParseOptions("map -pal x -mesh " + std::string(row.word));
            EXPECT_TRUE(o.*flag->member) << row.word;
        }
    }
}

TEST_F(Parsing, GivesEachFlagAMemberOfItsOwn) {
    for (const OptionRow& row : OptionTable()) {
        if (!std::holds_alternative<Flag>(row.target)) continue;
        test::BuildState::Reset();
        Options().hiprec = false;
        ParseOptions(row.word);
        const auto isOn = [&](const OptionRow& each) {
            const Flag* flag = std::get_if<Flag>(&each.target);
            return flag != nullptr && o.*flag->member;
        };
        // Without -mesh there is no -nobsp.
        EXPECT_EQ(std::ranges::count_if(OptionTable(), isOn), row.word == "-nobsp" ? 0 : 1) << row.word;
    }
}

TEST_F(Parsing, SetsTheThreeColourSpacesApart) {
    using enum ColourSpace;
    const std::pair<const char*, std::array<ColourSpace, 3>> spaces[] = {
        {"-rgb", {Rgb, None, None}},           {"-hsl", {Hsl, None, None}},
        {"-hsv", {Hsv, None, None}},           {"\"-light rgb\"", {None, Rgb, None}},
        {"\"-light hsl\"", {None, Hsl, None}}, {"\"-light hsv\"", {None, Hsv, None}},
        {"\"-shade rgb\"", {None, None, Rgb}}, {"\"-shade hsl\"", {None, None, Hsl}},
        {"\"-shade hsv\"", {None, None, Hsv}}};
    EXPECT_EQ(o.colorspace, Rgb);
    for (const auto& [word, expected] : spaces) {
        test::BuildState::Reset();
        Options().colorspace = None;
        ParseOptions(word);
        EXPECT_EQ((std::array{o.colorspace, o.lightspace, o.shadespace}), expected) << word;
    }
}

TEST_F(Parsing, TakesTheLastOfAnOptionGivenTwice) {
    ParseOptions("-gamma 2 -gamma 1.25 -hsl -hsv");
    EXPECT_EQ(o.gamma, 1.25F);
    EXPECT_EQ(o.colorspace, ColourSpace::Hsv);
}

TEST_F(Parsing, ReadsTextThatIsNoNumberAsZero) {
    ParseOptions("-gamma bright -jitter much");
    EXPECT_EQ(o.gamma, 0.0F);
    EXPECT_EQ(o.jitter, 0);
}

TEST_F(Parsing, RejectsAnOptionWithoutItsArguments) {
    ExpectFatal([] { ParseOptions("-GAMMA"); }, "Missing command-line parameter for -gamma\n");
    ExpectFatal([] { ParseOptions("-fat 1 2"); }, "Missing command-line parameter for -fat\n");
    ExpectFatal([] { ParseOptions("-pal"); }, "Missing command-line parameter for -pal\n");
}

TEST_F(Parsing, RejectsAnOpenQuote) {
    ExpectFatal([] { ParseOptions("\"my map"); }, " \nE711");
}

TEST_F(Parsing, LeavesASurfaceSizeBelow16Unchanged) {
    ParseOptions("-sizeshaded 15 -sizeflat -1");
    EXPECT_EQ(o.sizeshaded, 236);
    EXPECT_EQ(o.sizeflat, 0);
}

TEST_F(Parsing, CutsASurfaceSizeAt996) {
    ParseOptions("-sizeshaded 997 -sizeflat 16 -sizeturb 996");
    EXPECT_EQ(o.sizeshaded, 996);
    EXPECT_EQ(o.sizeflat, 16);
    EXPECT_EQ(o.sizeturb, 996);
}

TEST_F(Parsing, CutsThreadsOnlyFromAbove) {
    ParseOptions("-threads 0");
    EXPECT_EQ(o.threads, 0);
    ParseOptions("-threads 64");
    EXPECT_EQ(o.threads, 32);
    ParseOptions("-threads -1");
    EXPECT_EQ(o.threads, -1);
}

TEST_F(Parsing, ClampsLightOptions) {
    ParseOptions("-litcomp 2 -litmax 256 -litscale 7 -radsubdiv 300 -radbounce 33");
    EXPECT_EQ(o.litcomp, 1.0F);
    EXPECT_EQ(o.litmax, 255);
    EXPECT_EQ(o.litscale, 6.0F);
    EXPECT_EQ(o.radsubdiv, 255);
    EXPECT_EQ(o.radbounce, 32);
    ParseOptions("-litcomp -1 -litmax -1 -litscale -1 -radsubdiv -1 -radbounce -1 -litres -3");
    EXPECT_EQ(o.litcomp, 0.0F);
    EXPECT_EQ(o.litmax, 0);
    EXPECT_EQ(o.litscale, 0.0F);
    EXPECT_EQ(o.radsubdiv, 0);
    EXPECT_EQ(o.radbounce, 0);
    EXPECT_EQ(o.litres, -3.0F) << "the resolution has no bounds";
}

TEST_F(Parsing, ReadsTriples) {
    ParseOptions("-fat 1 2 3 -sethulls 0 2 1 -fog3 10 20 30");
    EXPECT_EQ(o.fat, (std::array{1.0F, 2.0F, 3.0F}));
    EXPECT_EQ(o.sethulls, (std::array{0, 2, 1}));
    EXPECT_EQ(o.fog[2], (std::array{10, 20, 30}));
    EXPECT_EQ(o.fogset, (std::array{false, false, true, false}));
}

TEST_F(Parsing, KeepsTheLow16BitsOfAShortValue) {
    ParseOptions("-d 65538");
    EXPECT_EQ(o.d, 2);
}

TEST_F(Parsing, TakesTheFirstOfTwoWordsThatAreTheSame) {
    ParseOptions("-b 3 -pal x");
    EXPECT_EQ(Paths().MapPath, "3.$$M");
    EXPECT_EQ(o.b, 2);
}

TEST_F(Parsing, ReadsAWordWithABlankOnlyInQuotes) {
    EXPECT_TRUE(ParseOptions("map -pal x \"-light hsl\" \"-shade hsv\""));
    EXPECT_EQ(o.lightspace, ColourSpace::Hsl);
    EXPECT_EQ(o.shadespace, ColourSpace::Hsv);
    EXPECT_FALSE(ParseOptions("map -pal x -light rgb"));
}

TEST_F(Parsing, JoinsTheWordsOfTheMapNameWithBlanks) {
    EXPECT_TRUE(ParseOptions("my map -pal x"));
    EXPECT_EQ(Paths().MapPath, "my map.$$M");
    EXPECT_EQ(Paths().LevelPath, "my map.klv");
}

TEST_F(Parsing, EndsTheMapNameAtAQuotedOption) {
    ParseOptions("map \"-light rgb\" -pal x");
    EXPECT_EQ(Paths().MapPath, "map.$$M");
    EXPECT_EQ(o.lightspace, ColourSpace::Rgb);
}

TEST_F(Parsing, KeepsTheExtensionOfTheMapName) {
    ParseOptions("maps/one.map -pal x");
    EXPECT_EQ(Paths().MapPath, "maps/one.map");
    EXPECT_EQ(Paths().LevelPath, "maps/one.klv");
}

TEST_F(Parsing, DoesNotTakeAFoldersDotForAnExtension) {
    ParseOptions("v1.2/one -pal x");
    EXPECT_EQ(Paths().MapPath, "v1.2/one.$$M");
    EXPECT_EQ(Paths().LevelPath, "v1.2/one.klv");
}

TEST_F(Parsing, ReplacesTheMapNameByALaterOne) {
    ParseOptions("one -pal x -quiet two");
    EXPECT_EQ(Paths().MapPath, "two.$$M");
    EXPECT_EQ(Paths().LevelPath, "two.klv");
}

TEST_F(Parsing, JoinsTheWordsOfAFileNameWithoutBlanks) {
    ParseOptions("map -pal my game.pcx -quiet");
    EXPECT_EQ(o.palpath, "mygame.pcx");
    EXPECT_TRUE(o.quiet);
    test::BuildState::Reset();
    ParseOptions("map -pal \"my game.pcx\"");
    EXPECT_EQ(o.palpath, "my game.pcx");
}

TEST_F(Parsing, TakesTheFirstWordOfAFileNameWhateverItIs) {
    ParseOptions("map -pal -quiet");
    EXPECT_EQ(o.palpath, "-quiet.lmp");
    EXPECT_FALSE(o.quiet);
}

TEST_F(Parsing, KeepsTheFirstPaletteAndDropsLaterOnes) {
    ParseOptions("map -pal one.pcx -pal two.bmp");
    ParseOptions("-pal three.bmp");
    EXPECT_EQ(o.palpath, "one.pcx");
    EXPECT_EQ(o.palkind, PaletteKind::Pcx);
}

TEST_F(Parsing, KeepsTheFirstPaletteOutputAndDropsLaterOnes) {
    ParseOptions("-outpal one -outpal two");
    EXPECT_EQ(o.outpal, "one");
}

TEST_F(Parsing, RejectsASecondColourMapOrMixtureTable) {
    ExpectProgramExit([] { ParseOptions("-colormap one -colormap two"); }, -1);
    EXPECT_EQ(Logged(), "Name redefinition :  two\n");
    ExpectProgramExit([] { ParseOptions("-mixtab one -mixtab two.tab"); }, -1);
    EXPECT_EQ(Logged(), "Name redefinition :  two.tab\n");
}

TEST_F(Parsing, AddsToTheOptionsThatStand) {
    ParseOptions("map -pal x -eps 0.1 -fast -verbose");
    ParseOptions("-quiet");
    EXPECT_TRUE(o.verbose && o.quiet && o.fast);
    EXPECT_EQ(o.eps, 0.1F);
    EXPECT_TRUE(OptionsValid);
}

TEST_F(Parsing, ResetTakesBackOnlySomeOptions) {
    ParseOptions("map -pal x -gamma 2 -sizeflat 50 -nh -mesh -autozoom -zoomlevel 3");
    ParseOptions("-fast -eps 0.1 -level 1 -fog1 1 2 3 -hsl -litres 2 -threads 7 -sunrgb 1 2 3 -ml -fat 1 2 3");
    Options().hiprec = false;
    ResetOptions();
    EXPECT_EQ(o.gamma, 1.5F);
    EXPECT_EQ(o.sizeflat, 0);
    EXPECT_EQ(o.zoomlevel, 1.0F);
    EXPECT_FALSE(o.nh || o.mesh || o.autozoom);
    EXPECT_TRUE(o.hiprec);

    EXPECT_TRUE(o.fast && o.ml && o.fogset[0] && o.palgiven);
    EXPECT_EQ(o.eps, 0.1F);
    EXPECT_EQ(o.level, 1);
    EXPECT_EQ(o.litres, 2.0F);
    EXPECT_EQ(o.threads, 7);
    EXPECT_EQ(o.sunrgb[2], 3.0F);
    EXPECT_EQ(o.fat[0], 1.0F);
    EXPECT_EQ(o.colorspace, ColourSpace::Hsl);
    EXPECT_EQ(Paths().MapPath, "map.$$M");
}

// The numbers that a reset takes back.
auto ResetNumbers(const BuildOptions& o) {
    return std::tie(o.lmambient, o.gamma, o.zoomlevel, o.litcomp, o.litscale, o.jitter, o.sizeshaded, o.sizeflat,
                    o.sizeturb, o.litmax, o.radsubdiv, o.radbounce);
}

TEST_F(Parsing, ResetSetsTheDefaultsOfEveryOptionThatItTakesBack) {
    BuildOptions& changed = Options();
    changed.lmambient = changed.gamma = changed.zoomlevel = changed.litcomp = changed.litscale = 9.0F;
    changed.jitter = changed.sizeshaded = changed.sizeflat = changed.sizeturb = changed.litmax = 9;
    changed.radsubdiv = changed.radbounce = 9;
    ResetOptions();
    const BuildOptions defaults;
    EXPECT_EQ(ResetNumbers(o), ResetNumbers(defaults));
}

TEST_F(Parsing, ResetTakesBackTheseFlagsAndNoOthers) {
    const std::string_view kept[] = {"-dialog", "-fast", "-ml", "-npal", "-nmixtab", "-ncolormap", "-hiprec"};
    for (const OptionRow& row : OptionTable()) {
        if (const Flag* flag = std::get_if<Flag>(&row.target)) {
            Options().*flag->member = true;
            ResetOptions();
            EXPECT_EQ(o.*flag->member, std::ranges::count(kept, row.word) == 1) << row.word;
        }
    }
}

TEST_F(Parsing, LightsOnlyWinsOverEntitiesOnly) {
    ParseOptions("map -pal x -entsonly -lightsonly");
    EXPECT_TRUE(o.lightsonly);
    EXPECT_FALSE(o.entsonly);
}

TEST_F(Parsing, TurnsOffNoBspWithoutMesh) {
    ParseOptions("map -pal x -nobsp");
    EXPECT_FALSE(o.nobsp || o.nh || o.noportals || o.nodetail);
}

TEST_F(Parsing, NoBspWithMeshTurnsOnWhatItImplies) {
    ParseOptions("map -pal x -nobsp -mesh");
    EXPECT_TRUE(o.nobsp && o.nh && o.noportals && o.nodetail);
}

TEST_F(Parsing, AMeshBlockInTheMapSettlesTheOptionsAgain) {
    Options().nobsp = true;
    EnableMesh();
    EXPECT_TRUE(o.mesh && o.nobsp && o.nh && o.noportals && o.nodetail);
}

TEST_F(Parsing, WorkersAreTheProcessorsUpTo32) {
    cpu_set_t processors;
    ASSERT_EQ(sched_getaffinity(0, sizeof processors, &processors), 0);
    EXPECT_EQ(GetWorkerCount(), std::min(CPU_COUNT(&processors), 32));
}

}  // namespace
}  // namespace k2k
