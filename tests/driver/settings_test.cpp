#include "driver/settings.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/files.h"

namespace k2k {
namespace {

using test::ReadFile;
using test::WriteFile;

class Settings : public ::testing::Test {
  protected:
    test::InTempDir folder_;
};

constexpr const char* Defaults = "-solidsky -litmapsonly -mergeacross -mesh -hiprec -quiet";

TEST_F(Settings, AreTheDefaultsWithoutAFile) {
    EXPECT_EQ(LoadSettings(), Defaults);
}

TEST_F(Settings, AreTheDefaultsWithoutAValue) {
    WriteFile("K2K.ini", "[Map Compiler]\nCommandline=\n");
    EXPECT_EQ(LoadSettings(), Defaults);
}

TEST_F(Settings, BelongToTheirSection) {
    WriteFile("K2K.ini", "[Other]\nCommandline=-mesh\n[Map Compiler]\nFont=8\n[Third]\nCommandline=-fast\n");
    EXPECT_EQ(LoadSettings(), Defaults);
}

TEST_F(Settings, AreReadInAnyCaseAndSpacing) {
    WriteFile("K2K.ini", "; by hand\r\n [map compiler] \r\n commandLINE =  -mesh -fast \r\n");
    EXPECT_EQ(LoadSettings(), "-mesh -fast");
}

TEST_F(Settings, AreReadUpTo511Characters) {
    WriteFile("K2K.ini", "[Map Compiler]\nCommandline=" + std::string(600, 'x') + "\n");
    EXPECT_EQ(LoadSettings(), std::string(511, 'x'));
}

TEST_F(Settings, AreWrittenToAFileOfTheirOwn) {
    SaveSettings("map -pal x");
    EXPECT_EQ(ReadFile("K2K.ini"), "[Map Compiler]\nCommandline=map -pal x\n");
    EXPECT_EQ(LoadSettings(), "map -pal x");
}

TEST_F(Settings, ReplaceTheOldOnes) {
    SaveSettings("-mesh");
    SaveSettings("-fast -quiet");
    EXPECT_EQ(ReadFile("K2K.ini"), "[Map Compiler]\nCommandline=-fast -quiet\n");
}

TEST_F(Settings, KeepOtherSectionsAndKeys) {
    WriteFile("K2K.ini",
              "; note\n[Editor]\nCommandline=-x\n\n[Map Compiler]\nFont=8\nCommandline=-mesh\n[Last]\na=b\n");
    SaveSettings("-fast");
    EXPECT_EQ(ReadFile("K2K.ini"),
              "; note\n[Editor]\nCommandline=-x\n\n[Map Compiler]\nFont=8\nCommandline=-fast\n[Last]\na=b\n");
}

TEST_F(Settings, JoinTheirSection) {
    WriteFile("K2K.ini", "[Map Compiler]\nFont=8\n[Last]\na=b");
    SaveSettings("-fast");
    EXPECT_EQ(ReadFile("K2K.ini"), "[Map Compiler]\nCommandline=-fast\nFont=8\n[Last]\na=b\n");
}

TEST_F(Settings, KeepTheLineEndsOfTheFile) {
    WriteFile("K2K.ini", "[Last]\r\na=b\r\n");
    SaveSettings("-fast");
    EXPECT_EQ(ReadFile("K2K.ini"), "[Last]\r\na=b\r\n[Map Compiler]\r\nCommandline=-fast\r\n");
    EXPECT_EQ(LoadSettings(), "-fast");
}

TEST_F(Settings, KeepQuotesAtBothEnds) {
    SaveSettings("\"my map\" -pal \"my game.pcx\"");
    EXPECT_EQ(LoadSettings(), "\"my map\" -pal \"my game.pcx\"");
}

TEST_F(Settings, LoseOnePairOfQuotesAroundThem) {
    WriteFile("K2K.ini", "[Map Compiler]\nCommandline=\"-mesh -fast\"\n");
    EXPECT_EQ(LoadSettings(), "-mesh -fast");
}

TEST_F(Settings, AreOneLine) {
    SaveSettings("map\n[Other]");
    EXPECT_EQ(ReadFile("K2K.ini"), "[Map Compiler]\nCommandline=map [Other]\n");
}

TEST_F(Settings, AreLostWithoutAWordWhereNothingCanBeWritten) {
    std::filesystem::create_directory("K2K.ini");
    SaveSettings("-mesh");
    EXPECT_EQ(LoadSettings(), Defaults);
}

}  // namespace
}  // namespace k2k
