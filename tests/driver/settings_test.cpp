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

constexpr const char* Defaults = "-solidsky -litmapsonly -mergeacross -mesh -hiprec -quiet";

// A settings file with nothing else in it.
std::string FileOf(std::string_view settings) {
    return "[Map Compiler]\nCommandline=" + std::string(settings) + "\n";
}

class Settings : public ::testing::Test {
  protected:
    static void SetFile(std::string_view text) { WriteFile("K2K.ini", text); }
    static std::string File() { return ReadFile("K2K.ini"); }

    // Anybody may make files in the folder; the settings file has these permissions.
    static void Allow(int permissions) {
        fs::permissions(".", fs::perms::all);
        fs::permissions("K2K.ini", static_cast<fs::perms>(permissions));
    }

    // What a user loads who may do no more than this with the file. Saves settings too, which are to be lost.
    static std::string LoadAndSaveWith(int permissions) {
        Allow(permissions);
        const AsPlainUser user;
        const std::string loaded = LoadSettings();
        SaveSettings("-fast");
        return loaded;
    }

    test::InTempDir folder_;
};

TEST_F(Settings, AreTheDefaultsWithoutAFile) {
    EXPECT_EQ(LoadSettings(), Defaults);
}

TEST_F(Settings, AreTheDefaultsWithoutAValue) {
    SetFile(FileOf(""));
    EXPECT_EQ(LoadSettings(), Defaults);
}

TEST_F(Settings, BelongToTheirSection) {
    SetFile("[Other]\nCommandline=-mesh\n[Map Compiler]\nFont=8\n[Third]\nCommandline=-fast\n");
    EXPECT_EQ(LoadSettings(), Defaults);
}

TEST_F(Settings, AreReadInAnyCaseAndSpacing) {
    SetFile("; by hand\r\n [map compiler] \r\n commandLINE =  -mesh -fast \r\n");
    EXPECT_EQ(LoadSettings(), "-mesh -fast");
}

TEST_F(Settings, AreReadUpTo511Characters) {
    SaveSettings(std::string(510, 'x') + "y");
    EXPECT_EQ(LoadSettings(), std::string(510, 'x') + "y");
    SaveSettings(std::string(511, 'x') + "y");
    EXPECT_EQ(LoadSettings(), std::string(511, 'x'));
}

TEST_F(Settings, AreWrittenToAFileOfTheirOwn) {
    SaveSettings("map -pal x");
    EXPECT_EQ(File(), FileOf("map -pal x"));
    EXPECT_EQ(LoadSettings(), "map -pal x");
}

TEST_F(Settings, ReplaceTheOldOnes) {
    SaveSettings("-mesh");
    SaveSettings("-fast -quiet");
    EXPECT_EQ(File(), FileOf("-fast -quiet"));
}

TEST_F(Settings, KeepOtherSectionsAndKeys) {
    const std::string before = "; note\n[Editor]\nCommandline=-x\n\n[Map Compiler]\nFont=8\n";
    const std::string behind = "[Last]\na=b\n";
    SetFile(before + "Commandline=-mesh\n" + behind);
    SaveSettings("-fast");
    EXPECT_EQ(File(), before + "Commandline=-fast\n" + behind);
}

TEST_F(Settings, JoinTheirSection) {
    SetFile("[Map Compiler]\nFont=8\n[Last]\na=b");
    SaveSettings("-fast");
    EXPECT_EQ(File(), FileOf("-fast") + "Font=8\n[Last]\na=b\n");
}

TEST_F(Settings, KeepTheLineEndsOfTheFile) {
    SetFile("[Last]\r\na=b\r\n");
    SaveSettings("-fast");
    EXPECT_EQ(File(), "[Last]\r\na=b\r\n[Map Compiler]\r\nCommandline=-fast\r\n");
    EXPECT_EQ(LoadSettings(), "-fast");
}

TEST_F(Settings, KeepQuotesAtBothEnds) {
    SaveSettings("\"my map\" -pal \"my game.pcx\"");
    EXPECT_EQ(LoadSettings(), "\"my map\" -pal \"my game.pcx\"");
}

TEST_F(Settings, LoseOnePairOfQuotesAroundThem) {
    SetFile(FileOf("\"-mesh -fast\""));
    EXPECT_EQ(LoadSettings(), "-mesh -fast");
}

TEST_F(Settings, AreOneLine) {
    SaveSettings("map\n[Other]");
    EXPECT_EQ(File(), FileOf("map [Other]"));
}

TEST_F(Settings, AreKeptInFullLength) {
    const std::string lengthy(2000, 'x');
    SetFile("[Last]\na=" + lengthy + "\n");
    SaveSettings(lengthy);
    EXPECT_EQ(File(), "[Last]\na=" + lengthy + "\n" + FileOf(lengthy));
}

TEST_F(Settings, KeepTheBytesOfADamagedFile) {
    using namespace std::string_literals;
    const std::string damage = "\xFF\xFE[\0=\n[[Map Compiler\n=x\n\r\r[]\nCommandline\n"s;
    SetFile(damage);
    EXPECT_EQ(LoadSettings(), Defaults);
    SaveSettings("-fast");
    EXPECT_EQ(File(), damage + FileOf("-fast"));
    EXPECT_EQ(LoadSettings(), "-fast");
}

TEST_F(Settings, TakeTheFirstOfTwoSections) {
    SetFile(FileOf("-mesh") + FileOf("-fast"));
    EXPECT_EQ(LoadSettings(), "-mesh");
    SaveSettings("-quiet");
    EXPECT_EQ(File(), FileOf("-quiet") + FileOf("-fast"));
}

TEST_F(Settings, LeaveAReadOnlyFileAsItIs) {
    SetFile(FileOf("-mesh"));
    EXPECT_EQ(LoadAndSaveWith(0444), "-mesh");
    EXPECT_EQ(File(), FileOf("-mesh"));
}

TEST_F(Settings, LeaveAFileThatCannotBeReadAsItIs) {
    SetFile(FileOf("-mesh"));
    EXPECT_EQ(LoadAndSaveWith(0222), Defaults);
    Allow(0444);
    EXPECT_EQ(File(), FileOf("-mesh"));
}

TEST_F(Settings, KeepThePermissionsOfTheFile) {
    SetFile("[Last]\na=b\n");
    Allow(0640);
    SaveSettings("-fast");
    EXPECT_EQ(fs::status("K2K.ini").permissions(), fs::perms{0640});
}

TEST_F(Settings, AreWrittenBehindALink) {
    WriteFile("shared.ini", "[Last]\na=b\n");
    fs::create_symlink("shared.ini", "K2K.ini");
    SaveSettings("-fast");
    EXPECT_TRUE(fs::is_symlink("K2K.ini"));
    EXPECT_EQ(ReadFile("shared.ini"), "[Last]\na=b\n" + FileOf("-fast"));
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
