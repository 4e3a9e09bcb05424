// Options of what a run prints and keeps, and those that change nothing in a level.
#include <gmock/gmock.h>

#include <filesystem>

#include "program/compile.h"
#include "program/level_bytes.h"

namespace k2k::test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

// Two plates whose sides fall together: each of them is worth a warning.
SmallMap TwoBadPlates() {
    return OneRoom().Add({{96, 96, 10}, {160, 160, 10.3}}).Add({{96, 96, 20}, {160, 160, 20.3}});
}

size_t Count(const std::string& text, const std::string& part) {
    size_t count = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
    return count;
}

using Report = SmallMapTest;

TEST_F(Report, OfADefaultRun) {
    const std::string text = Compile(LitRoom(), {"-threads", "2", "-nh"}).text;
    EXPECT_THAT(text, StartsWith("KMS to KLV Compiler V7.01 (KLV6 BSP) [CPUs: 2]\n Report mode: DEFAULT\n"
                                 " \nBuilding collision hull ... ok"
                                 " \nBuilding BSP tree ... ok"
                                 " \nTesselating surfaces ... ok\nChecking midpoints ... ok"
                                 " \nGenerating 0 portals ... ok"
                                 " \nCalculating visibility ... ok"
                                 " \nPlacing 3 objects ..... ok"
                                 " \nGenerating lightmaps ...... ok"
                                 " \nLevel size 280 units"
                                 " \n18 vertices \n16 visible surfaces"
                                 " \n7 textures \nTexture\tspace 1 Kb \nLightmap space 384 Kb"
                                 " \n2 regions"
                                 "\nWriting KLV file ... ok\n \nTime: "));
}

TEST_F(Report, NamesAKindOfWarningOnceByDefault) {
    const std::string text = Compile(TwoBadPlates()).text;
    EXPECT_THAT(text, HasSubstr(" \nWARNING W071: block 6 - duplicate planes 1 and 5!\n"));
    EXPECT_EQ(Count(text, "WARNING W071"), 1U);
}

TEST_F(Report, NamesEveryWarningWithVerboseAndShowsTheCommand) {
    const std::string text = Compile(TwoBadPlates(), {"-verbose"}).text;
    EXPECT_THAT(text, HasSubstr("\n Report mode: VERBOSE\nlevel -pal palette.raw -verbose"));
    EXPECT_GT(Count(text, "WARNING W071"), 1U);
}

TEST_F(Report, BreaksTheCommandAfterSixtyCharacters) {
    const std::string name(70, 'x');
    Write(LitRoom());
    std::filesystem::rename("level.$$M", name + ".$$M");
    const std::string text = CompileLevel(name, {"-verbose"}).text;
    EXPECT_THAT(text,
                HasSubstr("VERBOSE\n" + std::string(60, 'x') + "\n" + std::string(10, 'x') + " -pal palette.raw"));
}

TEST_F(Report, IsSilentWithQuiet) {
    const std::string text = Compile(TwoBadPlates(), {"-quiet"}).text;
    EXPECT_THAT(text, HasSubstr("\n Report mode: QUIET\n"));
    for (const char* part : {"WARNING", "Placing", "vertices", "textures", "regions", "Level size"})
        EXPECT_THAT(text, Not(HasSubstr(part)));
}

TEST_F(Report, IsVerboseWithBoth) {
    EXPECT_THAT(Compile(LitRoom(), {"-quiet", "-verbose"}).text, HasSubstr("Report mode: VERBOSE\n"));
}

TEST_F(Report, OfAFatalErrorIsWholeWithQuiet) {
    WriteFile("level.$$M", "nonsense\n");
    EXPECT_EQ(FailureOf({"-quiet"}), " \nE714");
}

TEST_F(Report, GoesToALogWithWritelogAndTheLogGrows) {
    Write(LitRoom());
    const std::string text = Compile({"-writelog"}).text;
    const std::string once = ReadFile("buildlog.txt");
    EXPECT_EQ(once, "level -pal palette.raw -writelog\n" + text);
    Compile();
    EXPECT_EQ(ReadFile("buildlog.txt"), once) << "without the option";
    Compile({"-writelog"});
    EXPECT_THAT(ReadFile("buildlog.txt"), StartsWith(once + "level -pal"));
}

class ColourOptions : public SmallMapTest {
  protected:
    ColourOptions() { Write(LitRoom()); }
};

TEST_F(ColourOptions, LeaveTheLevelAsItIs) {
    const std::vector<uint8_t> plain = Compile().level.bytes;
    const std::vector<std::vector<std::string>> options{{"-rgb"},
                                                        {"-hsl"},
                                                        {"-hsv"},
                                                        {"-light rgb"},
                                                        {"-light hsl"},
                                                        {"-light hsv"},
                                                        {"-shade rgb"},
                                                        {"-shade hsl"},
                                                        {"-shade hsv"},
                                                        {"-npal", "-nmixtab", "-ncolormap"},
                                                        {"-colormap", "none.pcx"},
                                                        {"-mixtab", "none"},
                                                        {"-r", "0,256"},
                                                        {"-r", "0,16", "-r", "240,16"}};
    for (const auto& words : options) EXPECT_EQ(Compile(words).level.bytes, plain) << words[0];
}

TEST_F(ColourOptions, OfSpacesAreKnownInQuotesOnly) {
    const ProcessResult result = RunK2k({"level", "-pal", "palette.raw", "-light", "rgb"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.out, HasSubstr("\n Usage: MAPFILE -pal PALFILE [OPTIONS]\n"));
    EXPECT_FALSE(std::filesystem::exists("level.klv"));
}

TEST_F(ColourOptions, TellBadRanges) {
    for (const char* range : {"1,256", "255,2", "256,1", "x", "12"}) {
        const ProcessResult result = RunK2k({"level", "-pal", "palette.raw", "-r", range});
        EXPECT_EQ(result.status, 255) << range;
        EXPECT_EQ(result.out, std::string("Invalid option :  -r ") + range + "\n");
    }
}

TEST_F(ColourOptions, TellTooManyRanges) {
    std::vector<std::string> options;
    for (int i = 0; i < 24; ++i) options.insert(options.end(), {"-r", "0,1"});
    Compile(options);
    options.insert(options.begin(), {"level", "-pal", "palette.raw", "-r", "0,1"});
    const ProcessResult result = RunK2k(options);
    EXPECT_EQ(result.status, 255);
    EXPECT_EQ(result.out, "\tToo many ranges. Maximum is 24\n");
}

TEST_F(ColourOptions, TellASecondTableFile) {
    const ProcessResult result = RunK2k({"level", "-pal", "palette.raw", "-colormap", "one", "-colormap", "two"});
    EXPECT_EQ(result.status, 255);
    EXPECT_EQ(result.out, "Name redefinition :  two\n");
}

// A build with a map puts its palette into the level and nowhere else.
TEST_F(ColourOptions, OfAPaletteToWriteWriteNone) {
    const std::vector<uint8_t> plain = Compile().level.bytes;
    EXPECT_EQ(Compile({"-outpal", "made.lmp"}).level.bytes, plain);
    EXPECT_FALSE(std::filesystem::exists("made.lmp"));
    EXPECT_FALSE(std::filesystem::exists("palette.lmp"));
}

TEST_F(ColourOptions, OfAPaletteToWriteNeedAName) {
    const ProcessResult result = RunK2k({"level", "-pal", "palette.raw", "-outpal"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.out, HasSubstr("\nMissing command-line parameter for -outpal\n\n"));
}

TEST_F(ColourOptions, OfTheFirstPaletteCount) {
    const std::vector<uint8_t> plain = Compile().level.bytes;
    EXPECT_EQ(Compile({"-pal", "none.pcx"}).level.bytes, plain);
}

class Palettes : public ::testing::Test {
  protected:
    InTempDir folder_;
};

TEST_F(Palettes, OfAllFormatsAreTheSameInTheLevel) {
    TakeExample("", "room");
    std::vector<uint8_t> first;
    for (const char* palette : {"palette.raw", "palette.lmp", "palette.pcx", "palette.bmp", "palette.lbm", "palette"}) {
        EXPECT_EQ(RunK2k({"room", "-pal", palette}).status, 0);
        const std::vector<uint8_t> lump = ChunkBytes(LoadLevel("room.klv"), levelcheck::ChunkPalette);
        ASSERT_EQ(lump.size(), 784U) << palette;
        if (first.empty()) first = lump;
        EXPECT_EQ(lump, first) << palette;
    }
    const std::string raw = ReadFile("palette.raw");
    EXPECT_EQ(std::string(first.begin() + 16, first.end()), raw);
}

TEST_F(Palettes, AndTexturesOfBothFormsGiveOneLevel) {
    TakeExample("", "room");
    const std::vector<uint8_t> level = CompileLevel("room").level.bytes;
    std::filesystem::rename("textures7.$$w", "textures.$$w");
    EXPECT_EQ(CompileLevel("room").level.bytes, level);
}

using UnusedOptions = SmallMapTest;

TEST_F(UnusedOptions, ChangeNothing) {
    const std::vector<uint8_t> plain = Compile(LitRoom()).level.bytes;
    EXPECT_EQ(Compile({"-v",  "-l", "-g",  "-b", "-hiprec", "-draw", "-noclip", "-ml", "-f1",    "2",
                       "-f2", "3",  "-f3", "4",  "-dist",   "9",     "-d",      "7",   "-close", "-nobsp"})
                  .level.bytes,
              plain);
}

}  // namespace
}  // namespace k2k::test
