#include "texture/find_file.h"

#include <gtest/gtest.h>

#include "support/files.h"

namespace k2k {
namespace {

using namespace test;

class FindMapFileIn : public ::testing::Test {
  protected:
    void Make(const std::string& name) {
        std::filesystem::create_directories((folder_.path() / name).parent_path());
        WriteFile(folder_.File(name), "x");
    }
    std::string Find(const std::string& name) const { return FindMapFile(name, folder_.File("maps/level.$$M")); }

    InTempDir folder_;  // also the working folder
};

TEST_F(FindMapFileIn, AFileIsTakenAsItIsNamed) {
    Make("a\\b.$$w");
    Make("a/b.$$w");
    EXPECT_EQ(Find("a\\b.$$w"), "a\\b.$$w");
    EXPECT_EQ(Find(folder_.File("a/b.$$w")), folder_.File("a/b.$$w"));
}

TEST_F(FindMapFileIn, BackslashesCountAsSlashes) {
    Make("a/b.$$w");
    EXPECT_EQ(Find("a\\b.$$w"), "a/b.$$w");
}

TEST_F(FindMapFileIn, TheLastComponentIsLookedForBesideTheMap) {
    Make("maps/b.$$w");
    EXPECT_EQ(Find("C:\\work\\b.$$w"), folder_.File("maps/b.$$w"));
    EXPECT_EQ(Find("/work/b.$$w"), folder_.File("maps/b.$$w"));
    EXPECT_EQ(Find("b.$$w"), folder_.File("maps/b.$$w"));
}

TEST_F(FindMapFileIn, AMapWithoutAFolderLiesInTheWorkingFolder) {
    Make("b.$$w");
    EXPECT_EQ(FindMapFile("C:\\work\\b.$$w", "level.$$M"), "b.$$w");
    EXPECT_EQ(FindMapFile("C:\\work\\B.$$W", "level.$$M"), "b.$$w");
}

TEST_F(FindMapFileIn, EachPlaceIsAlsoSearchedWithoutRegardToCase) {
    Make("Gfx/Walls.$$W");
    EXPECT_EQ(Find("gfx/walls.$$w"), "Gfx/Walls.$$W");
    EXPECT_EQ(Find("gfx\\walls.$$w"), "Gfx/Walls.$$W");
    Make("maps/STONE.$$w");
    EXPECT_EQ(Find("D:\\x\\stone.$$W"), folder_.File("maps/STONE.$$w"));
}

TEST_F(FindMapFileIn, AnExactNameIsPreferred) {
    Make("B.$$w");
    Make("b.$$w");
    EXPECT_EQ(Find("b.$$w"), "b.$$w");
    EXPECT_EQ(Find("B.$$w"), "B.$$w");
}

TEST_F(FindMapFileIn, AFolderThatMatchesOnlyByItsNameIsLeftAgain) {
    Make("gfx/other.$$w");
    Make("GFX/walls.$$w");
    EXPECT_EQ(Find("gfx/walls.$$w"), "GFX/walls.$$w");
}

TEST_F(FindMapFileIn, OfSeveralOtherCasesTheFirstInOrderIsTaken) {
    Make("bA.$$w");
    Make("Ba.$$w");
    EXPECT_EQ(Find("ba.$$w"), "Ba.$$w");
}

TEST_F(FindMapFileIn, AFolderIsNoFile) {
    std::filesystem::create_directory("b.$$w");
    EXPECT_EQ(Find("b.$$w"), "");
}

TEST_F(FindMapFileIn, AFileThatIsNowhereIsTheEmptyString) {
    EXPECT_EQ(Find("b.$$w"), "");
    EXPECT_EQ(Find("no/such/b.$$w"), "");
}

}  // namespace
}  // namespace k2k
