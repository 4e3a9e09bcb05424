#include "driver/run_program.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <clocale>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include "driver/build_log.h"
#include "driver/build_options.h"
#include "driver/settings.h"
#include "noted_stages.h"
#include "support/build_state.h"
#include "support/files.h"
#include "support/recording_display.h"

namespace k2k {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

using test::ran;

int Fail() {
    FatalError("E051");
}

class ARun : public test::BuildState {
  protected:
    ARun() { ran.clear(); }

    int Run(std::string_view command) { return RunProgram(command, stages_, display_); }

    StageEntries stages_ = test::NotedStages;
    test::RecordingDisplay display_;
    test::InTempDir folder_;
};

constexpr const char* Usage =
    "\n Usage: MAPFILE -pal PALFILE [OPTIONS]\n\nMAPFILE: filename.$$M\n"
    "PALFILE: filename.<PCX, RAW, BMP, LBM, or LMP>\nOPTIONS:\n"
    "-dialog: displays a dialog window for configuring options\n\n ";

TEST_F(ARun, DoesTheFourStagesInOrder) {
    EXPECT_EQ(Run("map -pal x"), 0);
    EXPECT_EQ(ran, "gvlc");
}

TEST_F(ARun, LightsWithRadiosityWhenAsked) {
    Run("map -pal x -litv2");
    EXPECT_EQ(ran, "gvrc");
}

TEST_F(ARun, PrintsItsBannerAndItsTime) {
    Run("map -pal x -threads 3");
    EXPECT_EQ(display_.text,
              "KMS to KLV Compiler V7.01 (KLV6 BSP) [CPUs: 3]\n Report mode: DEFAULT\n \nTime:   0.0 sec\n\n ");
    EXPECT_EQ(display_.beeps, 1);
}

TEST_F(ARun, TakesTheDescriptorsOfClosedStandardStreams) {
    const int kept = dup(STDIN_FILENO);
    close(STDIN_FILENO);
    Run("map -pal x");
    test::WriteFile("level", "");
    const int file = open("level", O_RDONLY);
    EXPECT_GT(file, STDERR_FILENO);
    close(file);
    if (kept < 0) return;
    dup2(kept, STDIN_FILENO);
    close(kept);
}

TEST_F(ARun, BearsAFileThatPassesTheSystemsLimit) {
    std::signal(SIGXFSZ, SIG_DFL);
    Run("map -pal x");
    EXPECT_EQ(std::signal(SIGXFSZ, SIG_DFL), SIG_IGN);
}

TEST_F(ARun, ReadsAndWritesNumbersWithAPointInAnyLocale) {
    test::WriteFile("comma", "LC_NUMERIC\ndecimal_point \",\"\nthousands_sep \"\"\ngrouping -1\nEND LC_NUMERIC\n");
    [[maybe_unused]] const int status = std::system("localedef -c -i comma -f UTF-8 ./xx_XX.UTF-8 >/dev/null 2>&1");
    setenv("LOCPATH", folder_.path().c_str(), 1);
    if (std::setlocale(LC_NUMERIC, "xx_XX.UTF-8") == nullptr) GTEST_SKIP() << "no locale can be made here";
    ASSERT_EQ(std::strtod("1.5", nullptr), 1);
    Run("map -pal x -zoomlevel 1.5");
    std::setlocale(LC_ALL, "C");
    unsetenv("LOCPATH");
    EXPECT_EQ(Options().zoomlevel, 1.5F);
    EXPECT_THAT(display_.text, HasSubstr("Time:   0.0 sec"));
}

TEST_F(ARun, StartsFromTheDefaults) {
    Run("map -pal x -mesh");
    Run("map -pal x");
    EXPECT_FALSE(Options().mesh);
}

TEST_F(ARun, StartsWithTheProcessorsOfTheMachine) {
    Run("map -pal x");
    EXPECT_THAT(display_.text, HasSubstr("[CPUs: " + std::to_string(GetWorkerCount()) + "]\n "));
}

TEST_F(ARun, NamesTheMeshFormatInItsBanner) {
    Run("map -pal x -mesh");
    EXPECT_THAT(display_.text, HasSubstr("V7.01 (KLV7 BSP) [CPUs"));
}

TEST_F(ARun, NamesALevelWithoutBspInItsBanner) {
    Run("map -pal x -nobsp -mesh");
    EXPECT_THAT(display_.text, HasSubstr("V7.01 (KLV7) [CPUs"));
}

TEST_F(ARun, ShowsBspWhereNoBspWasTurnedOff) {
    Run("map -pal x -nobsp");
    EXPECT_THAT(display_.text, HasSubstr("V7.01 (KLV6 BSP) [CPUs"));
}

TEST_F(ARun, ShowsNoBspAsGivenBehindAnUnknownOption) {
    Run("map -pal x -nobsp -what");
    EXPECT_THAT(display_.text, HasSubstr("V7.01 (KLV6) [CPUs"));
}

TEST_F(ARun, NamesItsReportMode) {
    Run("map -pal x -quiet");
    EXPECT_THAT(display_.text, HasSubstr("Report mode: QUIET\n"));
    Run("map -pal x -quiet -verbose");
    EXPECT_THAT(display_.text, HasSubstr("Report mode: VERBOSE\n"));
}

TEST_F(ARun, RepeatsTheCommandStringUnderVerbose) {
    Run("map -pal x -verbose");
    EXPECT_THAT(display_.text, HasSubstr("VERBOSE\nmap -pal x -verbose \nTime:"));
}

TEST_F(ARun, BreaksTheCommandStringAtEvery60thPosition) {
    const std::string start = "map -pal x -verbose ";
    const std::string word(40, 'y');
    Run(start + word + std::string(30, 'z'));
    EXPECT_THAT(display_.text, HasSubstr("VERBOSE\n" + start + word + "\n" + std::string(30, 'z') + " \nTime"));
    test::BuildState::Reset();
    display_.text.clear();
    Run(start + word);
    EXPECT_THAT(display_.text, HasSubstr("VERBOSE\n" + start + word + " \nTime")) << "nothing is added at the end";
}

TEST_F(ARun, RepeatsAtMost250CharactersWithTheirBreaks) {
    const std::string command =
        "map -verbose -pal " + std::string(90, 'x') + ' ' + std::string(90, 'y') + ' ' + std::string(60, 'z');
    Run(command);
    std::string shown = command.substr(0, 60) + '\n' + command.substr(60, 59) + '\n' + command.substr(119, 59) + '\n' +
                        command.substr(178, 59) + '\n' + command.substr(237, 9);
    ASSERT_EQ(shown.size(), 250U);
    EXPECT_THAT(display_.text, HasSubstr("VERBOSE\n" + shown + " \nTime"));
}

TEST_F(ARun, WithoutAMapShowsTheUsage) {
    EXPECT_EQ(Run("-pal x"), 0);
    EXPECT_THAT(display_.text, EndsWith(std::string("Report mode: DEFAULT\n") + Usage));
    EXPECT_EQ(display_.beeps, 1);
    EXPECT_THAT(ran, IsEmpty());
}

TEST_F(ARun, WithoutAPaletteShowsTheUsage) {
    EXPECT_EQ(Run("map"), 0);
    EXPECT_THAT(display_.text, EndsWith(Usage));
}

TEST_F(ARun, WithAnUnknownOptionShowsTheUsage) {
    EXPECT_EQ(Run("map -pal x --help"), 0);
    EXPECT_THAT(display_.text, EndsWith(Usage));
}

TEST_F(ARun, EndsWithOkOnButtonAndCaption) {
    Run("map -pal x");
    EXPECT_EQ(display_.events, (std::vector<std::string>{"button Ok", "caption Ok"}));
    display_.events.clear();
    Run("");
    EXPECT_EQ(display_.events, (std::vector<std::string>{"button Ok", "caption Ok"}));
}

TEST_F(ARun, ShowsTheLastStateOfItsProgressAtTheEnd) {
    stages_.colours = [] {
        StartProgress(8);
        ProgressDone = 6;
        return 0;
    };
    Run("map -pal x");
    EXPECT_EQ(display_.events,
              (std::vector<std::string>{"range 8", "caption colors", "done 6", "button Ok", "caption Ok"}));
}

TEST_F(ARun, ShowsProgressWhileAStageRuns) {
    stages_.visibility = [] {
        StartProgress(10);
        ProgressDone = 4;
        std::this_thread::sleep_for(std::chrono::milliseconds(1200));
        return 0;
    };
    Run("map -pal x");
    EXPECT_THAT(display_.events, Contains("caption portals (6)"));
    EXPECT_GE(display_.activity.size(), 3U) << "two ticks and the one at the end";
}

TEST_F(ARun, StopsAtAFatalError) {
    stages_.visibility = Fail;
    EXPECT_EQ(Run("map -pal x"), 1);
    EXPECT_EQ(ran, "g");
    EXPECT_THAT(display_.text, EndsWith("\n------ CRITICAL ERROR ------\nE051\nPress any key... \n"));
    EXPECT_EQ(display_.beeps, 1);
}

TEST_F(ARun, ShowsItsFatalErrorWhateverTheRunBefore) {
    stages_.visibility = Fail;
    Run("map -pal x");
    display_.text.clear();
    Run("map -pal x");
    EXPECT_THAT(display_.text, EndsWith("\n------ CRITICAL ERROR ------\nE051\nPress any key... \n"));
}

TEST_F(ARun, ShowsAFullBarAndErrorAfterAFatalError) {
    stages_.lighting = [] {
        StartProgress(12);
        return Fail();
    };
    Run("map -pal x");
    EXPECT_EQ(display_.events, (std::vector<std::string>{"done 12", "caption Error"}));
    EXPECT_THAT(display_.activity, IsEmpty()) << "a fatal error stops the tick";
}

TEST_F(ARun, FailsWhenTheCommandStringIsBroken) {
    EXPECT_EQ(Run("map -pal x -gamma"), 1);
    EXPECT_EQ(display_.text,
              "\n------ CRITICAL ERROR ------\nMissing command-line parameter for -gamma\n\nPress any key... \n");
    EXPECT_THAT(ran, IsEmpty());
}

TEST_F(ARun, EndsWithMinusOneAtABadOptionValue) {
    EXPECT_EQ(Run("map -pal x -r 1,256"), -1);
    EXPECT_EQ(display_.text, "Invalid option :  -r 1,256\n");
}

TEST_F(ARun, EndsUnfinishedWithItsWorker) {
    stages_.colours = []() -> int { throw ProgramExit(-1); };
    EXPECT_EQ(Run("map -pal x"), 0);
    EXPECT_EQ(ran, "gvl");
    EXPECT_THAT(display_.text, Not(HasSubstr("Time:")));
    EXPECT_THAT(display_.events, IsEmpty());
}

TEST_F(ARun, ShowsHowFarItCameWhenItEndsWithItsWorker) {
    stages_.colours = []() -> int {
        StartProgress(4);
        ProgressDone = 3;
        throw ProgramExit(-1);
    };
    Run("map -pal x");
    EXPECT_THAT(display_.events, ElementsAre("range 4", "caption colors", "done 3"));
}

TEST_F(ARun, KeepsTheCommandStringAsSettings) {
    Run("map -pal x -fast");
    EXPECT_EQ(LoadSettings(), "map -pal x -fast");
}

TEST_F(ARun, KeepsNoSettingsWhenItCannotBegin) {
    Run("map -gamma");
    EXPECT_EQ(LoadSettings(), DefaultSettings);
}

TEST_F(ARun, LogsTheCommandStringToTheFileOnly) {
    Run("map -pal x -writelog");
    EXPECT_THAT(test::ReadFile("buildlog.txt"), StartsWith("map -pal x -writelog\nKMS to KLV"));
    EXPECT_THAT(display_.text, StartsWith("KMS to KLV"));
}

TEST_F(ARun, WithADialogTakesTheSettings) {
    SaveSettings("-mesh -writelog");
    EXPECT_EQ(Run("map -pal x -dialog"), 0);
    EXPECT_THAT(display_.text, HasSubstr("(KLV7 BSP)"));
    EXPECT_EQ(ran, "gvlc");
    const std::string composed = LoadSettings();
    EXPECT_THAT(composed, StartsWith("-hiprec -writelog -mesh -threads "));
    EXPECT_THAT(test::ReadFile("buildlog.txt"), StartsWith("\nmap -pal x -dialog" + composed));
}

TEST_F(ARun, ShowsTheDialogThatItWasGiven) {
    EXPECT_EQ(RunProgram("map -pal x -dialog", stages_, display_,
                         [](DialogControls& controls) {
                             controls[Slider::Warnings] = 2;
                             return DialogAnswer::Ok;
                         }),
              0);
    EXPECT_THAT(display_.text, HasSubstr("Report mode: VERBOSE\n"));
    EXPECT_EQ(ran, "gvlc");
}

TEST_F(ARun, EndsWithoutAWordWhenTheDialogIsCancelled) {
    EXPECT_EQ(RunProgram("map -pal x -dialog", stages_, display_, [](DialogControls&) { return DialogAnswer::Cancel; }),
              0);
    EXPECT_EQ(display_.text, "");
    EXPECT_EQ(ran, "");
    EXPECT_FALSE(std::filesystem::exists("K2K.ini"));
}

TEST_F(ARun, FindsTheDialogWordInsideAFileNameToo) {
    SaveSettings("-mesh");
    Run("my-dialog-map -pal x");
    EXPECT_TRUE(Options().mesh);
    EXPECT_EQ(Paths().MapPath, "my-dialog-map.$$M");
}

TEST_F(ARun, LeavesNoViewBehind) {
    Run("map -pal x");
    EXPECT_EQ(BuildLog("lost"), -1);
}

}  // namespace
}  // namespace k2k
