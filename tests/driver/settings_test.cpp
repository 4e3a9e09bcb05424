#include "driver/settings.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "support/files.h"

namespace k2k {
namespace {

namespace fs = std::filesystem;
using test::ReadFile;
using test::WriteFile;

// Gives up the rights of the administrator, whom no permission stops, until it goes out of scope.
class AsPlainUser {
  public:
    AsPlainUser() {
        if (administrator_) Become(Nobody);
    }
    ~AsPlainUser() {
        if (administrator_) Become(0);
    }
    AsPlainUser(const AsPlainUser&) = delete;
    AsPlainUser& operator=(const AsPlainUser&) = delete;

  private:
    static constexpr uid_t Nobody = 65534;
    static void Become(uid_t user) { EXPECT_EQ(seteuid(user), 0); }
    const bool administrator_ = geteuid() == 0;
};

class Settings : public ::testing::Test {
  protected:
    // Anybody may make files in the folder; the settings file has these permissions.
    static void Allow(int permissions) {
        fs::permissions(".", fs::perms::all);
        fs::permissions("K2K.ini", static_cast<fs::perms>(permissions));
    }

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

TEST_F(Settings, AreKeptInFullLength) {
    const std::string lengthy(2000, 'x');
    WriteFile("K2K.ini", "[Last]\na=" + lengthy + "\n");
    SaveSettings(lengthy);
    EXPECT_EQ(ReadFile("K2K.ini"), "[Last]\na=" + lengthy + "\n[Map Compiler]\nCommandline=" + lengthy + "\n");
    EXPECT_EQ(LoadSettings(), lengthy.substr(0, 511));
}

TEST_F(Settings, OfExactly511CharactersAreReadWhole) {
    SaveSettings(std::string(510, 'x') + "y");
    EXPECT_EQ(LoadSettings(), std::string(510, 'x') + "y");
}

TEST_F(Settings, KeepTheBytesOfADamagedFile) {
    using namespace std::string_literals;
    const std::string damage = "\xFF\xFE[\0=\n[[Map Compiler\n=x\n\r\r[]\nCommandline\n"s;
    WriteFile("K2K.ini", damage);
    EXPECT_EQ(LoadSettings(), Defaults);
    SaveSettings("-fast");
    EXPECT_EQ(ReadFile("K2K.ini"), damage + "[Map Compiler]\nCommandline=-fast\n");
    EXPECT_EQ(LoadSettings(), "-fast");
}

TEST_F(Settings, TakeTheFirstOfTwoSections) {
    WriteFile("K2K.ini", "[Map Compiler]\nCommandline=-mesh\n[Map Compiler]\nCommandline=-fast\n");
    EXPECT_EQ(LoadSettings(), "-mesh");
    SaveSettings("-quiet");
    EXPECT_EQ(ReadFile("K2K.ini"), "[Map Compiler]\nCommandline=-quiet\n[Map Compiler]\nCommandline=-fast\n");
}

TEST_F(Settings, LeaveAReadOnlyFileAsItIs) {
    WriteFile("K2K.ini", "[Map Compiler]\nCommandline=-mesh\n");
    Allow(0444);
    {
        const AsPlainUser user;
        EXPECT_EQ(LoadSettings(), "-mesh");
        SaveSettings("-fast");
    }
    EXPECT_EQ(ReadFile("K2K.ini"), "[Map Compiler]\nCommandline=-mesh\n");
}

TEST_F(Settings, LeaveAFileThatCannotBeReadAsItIs) {
    WriteFile("K2K.ini", "[Last]\na=b\n");
    Allow(0222);
    {
        const AsPlainUser user;
        EXPECT_EQ(LoadSettings(), Defaults);
        SaveSettings("-fast");
    }
    Allow(0444);
    EXPECT_EQ(ReadFile("K2K.ini"), "[Last]\na=b\n");
}

TEST_F(Settings, KeepThePermissionsOfTheFile) {
    WriteFile("K2K.ini", "[Last]\na=b\n");
    Allow(0640);
    SaveSettings("-fast");
    EXPECT_EQ(fs::status("K2K.ini").permissions(), fs::perms{0640});
}

TEST_F(Settings, AreWrittenBehindALink) {
    WriteFile("shared.ini", "[Last]\na=b\n");
    fs::create_symlink("shared.ini", "K2K.ini");
    SaveSettings("-fast");
    EXPECT_TRUE(fs::is_symlink("K2K.ini"));
    EXPECT_EQ(ReadFile("shared.ini"), "[Last]\na=b\n[Map Compiler]\nCommandline=-fast\n");
}

TEST_F(Settings, LeaveNoOtherFileBehind) {
    SaveSettings("-mesh");
    SaveSettings("-fast");
    EXPECT_EQ(std::distance(fs::directory_iterator("."), {}), 1);
}

TEST_F(Settings, AreLostWithoutAWordWhereNothingCanBeWritten) {
    fs::create_directory("K2K.ini");
    SaveSettings("-mesh");
    EXPECT_EQ(LoadSettings(), Defaults);
}

}  // namespace
}  // namespace k2k
