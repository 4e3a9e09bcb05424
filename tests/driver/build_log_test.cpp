#include "driver/build_log.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <thread>
#include <vector>

#include "driver/build_options.h"
#include "support/build_state.h"
#include "support/files.h"

namespace k2k {
namespace {

using test::ExpectFatal;
using test::Logged;

class Logging : public test::BuildState {};

TEST_F(Logging, FormatsAndShowsText) {
    EXPECT_EQ(BuildLog("%i textures", 3), 1);
    EXPECT_EQ(Logged(), "3 textures");
}

TEST_F(Logging, PiecesOfALineMakeOneLine) {
    BuildLog(" \nBuilding BSP tree ...");
    BuildLog(" ok\n");
    EXPECT_EQ(Logged(), " \nBuilding BSP tree ... ok\n");
}

TEST_F(Logging, TellsWhenThereIsNoView) {
    SetLogView(nullptr);
    EXPECT_EQ(BuildLog("lost"), -1);
}

TEST_F(Logging, CutsAMessageAt512Characters) {
    BuildLog("%s", std::string(600, 'x').c_str());
    EXPECT_EQ(Logged(), std::string(512, 'x'));
}

TEST_F(Logging, DoesNotTestQuiet) {
    Options().quiet = true;
    BuildLog("shown");
    EXPECT_EQ(Logged(), "shown");
}

TEST_F(Logging, WritesNoFileUnlessAsked) {
    const test::InTempDir folder;
    BuildLog("shown");
    EXPECT_FALSE(std::filesystem::exists("buildlog.txt"));
}

TEST_F(Logging, AppendsToTheLogFile) {
    const test::InTempDir folder;
    Options().writelog = true;
    BuildLog("one\n");
    BuildLog("two");
    LogFile("three");
    EXPECT_EQ(test::ReadFile("buildlog.txt"), "one\ntwothree");
    EXPECT_EQ(Logged(), "one\ntwo") << "LogFile shows nothing";
}

TEST_F(Logging, FormatsTextForTheFileASecondTime) {
    const test::InTempDir folder;
    Options().writelog = true;
    LogFile("50%% of 100% %d %");
    EXPECT_EQ(test::ReadFile("buildlog.txt"), "50% of 100% %d %");
}

TEST_F(Logging, LosesTextWhereNoFileCanBeOpened) {
    const test::InTempDir folder;
    std::filesystem::create_directory("buildlog.txt");
    Options().writelog = true;
    EXPECT_EQ(BuildLog("shown"), 1);
    EXPECT_EQ(Logged(), "shown");
}

TEST_F(Logging, ShowsAFatalErrorInFullUnderQuiet) {
    Options().quiet = true;
    ExpectFatal([] { FatalError("E051: %d", 7); }, "E051: 7");
    EXPECT_EQ(Logged(), "\n------ CRITICAL ERROR ------\nE051: 7\nPress any key... \n");
}

TEST_F(Logging, CutsAFatalErrorAt128Characters) {
    const std::string text(200, 'x');
    ExpectFatal([&] { FatalError("%s", text.c_str()); }, text.substr(0, 128));
    EXPECT_EQ(Logged(), "\n------ CRITICAL ERROR ------\n" + text.substr(0, 128) + "\nPress any key... \n");
}

TEST_F(Logging, AFatalErrorStopsTheTick) {
    TickOn = true;
    ExpectFatal([] { FatalError("E051"); }, "E051");
    EXPECT_FALSE(TickOn);
}

TEST_F(Logging, ShowsOneFatalErrorOfManyThreads) {
    std::vector<std::thread> workers;
    for (int i = 0; i < 4; ++i)
        workers.emplace_back([] {
            try {
                FatalError("E118");
            } catch (const FatalStop&) {
            }
        });
    for (std::thread& worker : workers) worker.join();
    EXPECT_EQ(Logged(), "\n------ CRITICAL ERROR ------\nE118\nPress any key... \n");
}

TEST_F(Logging, RecordsAnErrorForLater) {
    EXPECT_FALSE(HasPendingError());
    RecordError(" not valid palette file", "game.lmp");
    EXPECT_TRUE(HasPendingError());
    EXPECT_EQ(Logged(), "");
    ShowPendingError();
    EXPECT_EQ(Logged(), "\n\nFatal error ->   not valid palette file :  game.lmp\n");
}

TEST_F(Logging, StartsProgressAtNothingDone) {
    ProgressDone = 5;
    StartProgress(40);
    EXPECT_EQ(ProgressTotal, 40);
    EXPECT_EQ(ProgressDone, 0);
}

TEST_F(Logging, PrintsOneWarningOfAFamily) {
    EXPECT_TRUE(WarnOnce(WarnFamily::W071));
    EXPECT_FALSE(WarnOnce(WarnFamily::W071));
    EXPECT_TRUE(WarnOnce(WarnFamily::W073)) << "each family for itself";
}

TEST_F(Logging, PrintsEveryWarningUnderVerbose) {
    Options().verbose = true;
    EXPECT_TRUE(WarnOnce(WarnFamily::W071));
    EXPECT_TRUE(WarnOnce(WarnFamily::W071));
}

TEST_F(Logging, PrintsNoWarningUnderQuiet) {
    Options().quiet = Options().verbose = true;
    EXPECT_FALSE(WarnOnce(WarnFamily::W071));
}

TEST_F(Logging, AWarningThatWasNotPrintedCountsAsTheFirst) {
    Options().quiet = true;
    WarnOnce(WarnFamily::W071);
    Options().quiet = false;
    EXPECT_FALSE(WarnOnce(WarnFamily::W071));
}

}  // namespace
}  // namespace k2k
