#include "driver/run_stats.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>

#include "support/build_state.h"
#include "support/files.h"

namespace k2k::test {
namespace {

using ::testing::EndsWith;
using ::testing::MatchesRegex;

class RunStats : public BuildState {
  protected:
    RunStats() { ResetRunStats(); }
    ~RunStats() override {
        ResetRunStats();
        unsetenv("K2K_STATS");
    }
};

TEST_F(RunStats, OfNoRunAreEmpty) {
    EXPECT_EQ(RunStatsJson(), "{\"stages\": [], \"counts\": {}}\n");
}

TEST_F(RunStats, CountersAddUpAndStandByName) {
    AddStat("rays", 5);
    AddStat("portals", 20);
    AddStat("rays", 3000000000);
    EXPECT_THAT(RunStatsJson(), EndsWith("\"counts\": {\"portals\": 20, \"rays\": 3000000005}}\n"));
    ResetRunStats();
    EXPECT_THAT(RunStatsJson(), EndsWith("\"counts\": {}}\n"));
}

TEST_F(RunStats, EachStageThatRanHasItsCosts) {
    const std::string costs = "\"wall\": [0-9]+\\.[0-9]+, \"cpu\": [0-9]+\\.[0-9]+, \"peak_kib\": [1-9][0-9]+";
    BeginStageStats(3);
    EndStageStats(3);
    BeginStageStats(1);
    EndStageStats(1);
    EXPECT_THAT(RunStatsJson(), MatchesRegex("\\{\"stages\": \\[\\{\"stage\": 1, " + costs + "\\}, \\{\"stage\": 3, " +
                                             costs + "\\}\\], \"counts\": \\{\\}\\}\n"));
}

TEST_F(RunStats, TheTimeOfWorkIsCounted) {
    BeginStageStats(2);
    const std::clock_t begun = std::clock();
    while (std::clock() - begun < CLOCKS_PER_SEC / 5) {
    }
    EndStageStats(2);
    double wall = 0, cpu = 0;
    ASSERT_EQ(
        std::sscanf(RunStatsJson().c_str(), "{\"stages\": [{\"stage\": 2, \"wall\": %lf, \"cpu\": %lf,", &wall, &cpu),
        2);
    EXPECT_GE(cpu, 0.15);
    EXPECT_LT(cpu, 2);
    EXPECT_GE(wall, 0.15);
}

TEST_F(RunStats, AreWrittenOnlyToTheFileThatTheEnvironmentNames) {
    const InTempDir folder;
    AddStat("rays", 1);
    WriteRunStats();
    EXPECT_TRUE(std::filesystem::is_empty("."));
    setenv("K2K_STATS", "stats.json", 1);
    WriteRunStats();
    EXPECT_EQ(ReadFile("stats.json"), RunStatsJson());
}

}  // namespace
}  // namespace k2k::test
