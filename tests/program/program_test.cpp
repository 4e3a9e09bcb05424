// The console program from outside: what it prints where, and the status that it ends with.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <csignal>
#include <filesystem>

#include "program/compile.h"

namespace k2k {
namespace {

using test::Process;
using test::ProcessResult;
using test::RunK2k;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::Not;
using ::testing::StartsWith;

constexpr const char* Usage =
    "\n Usage: MAPFILE -pal PALFILE [OPTIONS]\n\nMAPFILE: filename.$$M\n"
    "PALFILE: filename.<PCX, RAW, BMP, LBM, or LMP>\nOPTIONS:\n"
    "-dialog: displays a dialog window for configuring options\n\n ";

class TheProgram : public ::testing::Test {
  protected:
    // A level without any block, which builds in no time.
    static void WriteMap(const std::string& name) {
        test::WriteFile(name, "version 711\n{\n0 textures.$$w\ngame.lmp\n}\n");
        test::WriteFile("textures.$$w", std::string("WAD2\0\0\0\0\14\0\0\0", 12));
        test::WriteFile("game.lmp", std::string(768, '\7'));
    }

    test::InTempDir folder_;
};

TEST_F(TheProgram, ShowsItsUsageWithoutArguments) {
    const ProcessResult result = RunK2k({});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.out, MatchesRegex("KMS to KLV Compiler V7\\.01 \\(KLV6 BSP\\) \\[CPUs: [0-9]+\\]\n"
                                         " Report mode: DEFAULT\n(.|\n)*"));
    EXPECT_THAT(result.out, EndsWith(std::string("DEFAULT\n") + Usage));
}

TEST_F(TheProgram, ShowsItsUsageForUnknownOptions) {
    const ProcessResult result = RunK2k({"--help"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.out, EndsWith(Usage));
}

TEST_F(TheProgram, ShowsItsUsageWithoutAMapOrAPalette) {
    WriteMap("map.$$M");
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"map"}, {"-pal", "game"}, {"map", "-pal", "game", "--fast"}}) {
        const ProcessResult result = RunK2k(arguments);
        EXPECT_EQ(result.status, 0);
        EXPECT_THAT(result.out, EndsWith(Usage));
    }
    EXPECT_FALSE(std::filesystem::exists("map.klv"));
}

TEST_F(TheProgram, EndsWithOneWhenTheCommandIsBroken) {
    const ProcessResult result = RunK2k({"map", "-gamma"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out,
              "\n------ CRITICAL ERROR ------\nMissing command-line parameter for -gamma\n\nPress any key... \n");
}

TEST_F(TheProgram, EndsWith255AtAnOptionValueOfNoUse) {
    const ProcessResult result = RunK2k({"map", "-pal", "x", "-r", "1,256"});
    EXPECT_EQ(result.status, 255);
    EXPECT_EQ(result.out, "Invalid option :  -r 1,256\n");
}

TEST_F(TheProgram, EndsWithOneWithoutTheMap) {
    const ProcessResult result = RunK2k({"none", "-pal", "x"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.out, EndsWith("\nPress any key... \n"));
}

TEST_F(TheProgram, BuildsALevel) {
    WriteMap("map.$$M");
    const ProcessResult result = RunK2k({"map", "-pal", "game", "-threads", "2"});
    EXPECT_EQ(result.status, 0) << result.out;
    EXPECT_THAT(result.out, StartsWith("KMS to KLV Compiler V7.01 (KLV6 BSP) [CPUs: 2]\n Report mode: DEFAULT\n"));
    EXPECT_THAT(result.out, MatchesRegex("(.|\n)*\nWriting KLV file \\.\\.\\. ok\n \nTime: +[0-9]+\\.0 sec\n\n "));
    EXPECT_TRUE(std::filesystem::exists("map.klv"));
}

TEST_F(TheProgram, TakesArgumentsWithBlanksWhole) {
    WriteMap("my map.$$M");
    std::filesystem::rename("game.lmp", "my game.lmp");
    EXPECT_EQ(RunK2k({"my map", "-pal", "my game", "-light rgb"}).status, 0);
    EXPECT_TRUE(std::filesystem::exists("my map.klv"));
    EXPECT_EQ(test::ReadFile("K2K.ini"), "[Map Compiler]\nCommandline=\"my map\" -pal \"my game\" \"-light rgb\"\n");
}

TEST_F(TheProgram, EndsWithZeroAtAPaletteThatCannotBeRead) {
    WriteMap("map.$$M");
    const ProcessResult result = RunK2k({"map", "-pal", "none"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.out, EndsWith("\n\nFatal error ->   could not open file :  none.lmp\n"));
    EXPECT_THAT(result.out, Not(HasSubstr("Time:")));
    EXPECT_TRUE(std::filesystem::exists("map.klv"));
}

TEST_F(TheProgram, RunsWhereItsSettingsCannotBeKept) {
    WriteMap("map.$$M");
    std::filesystem::create_directory("K2K.ini");
    EXPECT_EQ(RunK2k({"map", "-pal", "game"}).status, 0);
}

TEST_F(TheProgram, TakesItsOptionsFromTheSettingsWithDialog) {
    WriteMap("map.$$M");
    test::WriteFile("K2K.ini", "[Map Compiler]\nCommandline=-mesh -threads 1\n");
    const ProcessResult result = RunK2k({"map", "-pal", "game", "-dialog"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.out, StartsWith("KMS to KLV Compiler V7.01 (KLV7 BSP) [CPUs: 1]\n"));
    EXPECT_THAT(test::ReadFile("K2K.ini"), StartsWith("[Map Compiler]\nCommandline=-hiprec -mesh -threads 1 -gamma"));
}

TEST_F(TheProgram, PrintsToStandardOutputOnly) {
    WriteMap("map.$$M");
    const ProcessResult result = RunK2k({"map", "-pal", "game"});
    EXPECT_EQ(result.err, "");
    EXPECT_THAT(result.out, Not(HasSubstr("\a"))) << "there is nobody to hear a beep";
    EXPECT_THAT(result.out, Not(HasSubstr("\033")));
}

TEST_F(TheProgram, WipesItsProgressLineOffATerminal) {
    WriteMap("map.$$M");
    const ProcessResult result = test::RunOnTerminal(test::K2kCommand({"map", "-pal", "game"}));
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.out, HasSubstr("\a"));
    EXPECT_THAT(result.out, EndsWith("] Ok\033[K\033[A\033[2G\r\n\r\033[K\033[A\033[2G"));
}

class ASignal : public TheProgram {
  protected:
    // The status of a program that a signal reached in its first stage, where it waits for its map.
    static int StatusAfter(int signal) {
        mkfifo("map.$$M", 0600);
        Process program(test::K2kCommand({"map", "-pal", "game"}));
        EXPECT_TRUE(program.WaitForOutput("Report mode"));
        program.Signal(signal);
        return program.Wait().status;
    }
};

TEST_F(ASignal, InterruptsTheRun) {
    EXPECT_EQ(StatusAfter(SIGINT), 130);
}

TEST_F(ASignal, TerminatesTheRun) {
    EXPECT_EQ(StatusAfter(SIGTERM), 143);
}

}  // namespace
}  // namespace k2k
