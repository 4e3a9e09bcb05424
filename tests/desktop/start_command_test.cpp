#include "desktop/start_command.h"

#include <gtest/gtest.h>

#include "driver/build_options.h"
#include "support/build_state.h"
#include "support/files.h"

namespace k2k {
namespace {

namespace fs = std::filesystem;

bool LeftOpen(std::vector<const char*> arguments) {
    return LeavesFilesOpen(arguments);
}

TEST(TheArguments, LeaveFilesOpenWithoutAWordOrWithAMapAlone) {
    EXPECT_TRUE(LeftOpen({}));
    EXPECT_TRUE(LeftOpen({"/maps/house.$$M"}));
    EXPECT_FALSE(LeftOpen({"-dialog"}));
    EXPECT_FALSE(LeftOpen({"house", "-pal", "x"}));
    EXPECT_FALSE(LeftOpen({"house", "-quiet"}));
}

class ACommandOfFiles : public test::BuildState {
  protected:
    // What the parser makes of the command string of two files in the test's folder.
    void Parse(const std::string& map, const std::string& palette) {
        const fs::path here = folder_.path();
        command_ = CommandOfFiles(
            {QString::fromStdString((here / map).string()), QString::fromStdString((here / palette).string())});
        EXPECT_TRUE(ParseOptions(command_)) << command_;
        EXPECT_TRUE(Options().dialog);
    }

    std::string command_;
    test::InTempDir folder_;
};

TEST_F(ACommandOfFiles, NamesThemFromTheFolderOfTheMap) {
    fs::create_directory("maps");
    Parse("maps/house.$$M", "maps/game.pcx");
    EXPECT_EQ(command_, "house.$$M -pal game.pcx -dialog");
    EXPECT_EQ(fs::current_path(), fs::canonical(folder_.path() / "maps"));
}

TEST_F(ACommandOfFiles, NamesAPaletteElsewhereInFull) {
    fs::create_directory("maps");
    Parse("maps/house.$$M", "game.pcx");
    EXPECT_EQ(Options().palpath, folder_.File("game.pcx"));
}

TEST_F(ACommandOfFiles, QuotesBlanks) {
    fs::create_directory("my maps");
    Parse("my maps/a house.$$M", "my maps/a game.pcx");
    EXPECT_EQ(Paths().MapPath, "a house.$$M");
    EXPECT_EQ(Options().palpath, "a game.pcx");
}

TEST_F(ACommandOfFiles, TakesNoNameForAnOption) {
    Parse("-house.$$M", "-game.pcx");
    EXPECT_EQ(Paths().MapPath, "./-house.$$M");
    EXPECT_EQ(Options().palpath, "./-game.pcx");
}

TEST_F(ACommandOfFiles, NamesAPaletteFarAway) {
    fs::create_directory("maps");
    // As long as the options allow, with what would be an option where a token's length ends.
    std::string name = folder_.path().string() + '/';
    name.append(120 - name.size(), 'd').append(60, '-').append("game.pcx");
    Parse("maps/house.$$M", fs::path(name).filename().string());
    EXPECT_EQ(Options().palpath, name);
}

TEST_F(ACommandOfFiles, WorksWhereTheMapsFolderIsGone) {
    Parse("gone/house.$$M", "game.pcx");
    EXPECT_EQ(fs::current_path(), fs::canonical(folder_.path()));
    EXPECT_EQ(Paths().MapPath, "gone/house.$$M");
}

}  // namespace
}  // namespace k2k
