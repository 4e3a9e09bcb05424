// Entities of a map into a level that is there.
#include "levelfile/file_klv.h"
#include "map_text.h"

namespace k2k::test {

namespace {

class UpdateObjectsTest : public MapTest {
  protected:
    UpdateObjectsTest() { Paths().LevelPath = folder_.File("level.klv"); }
};

TEST_F(UpdateObjectsTest, RewritesTheEntityChunkAndLeavesTheRest) {
    Geometry().vertices = {{1, 2, 3}, {4, 5, 6}};
    EntityRecords().block.assign(8, 0);
    CFileKLV level(Paths().LevelPath);
    ASSERT_TRUE(level.Open(false));
    ASSERT_TRUE(level.Save());
    level.Close();
    ClearDataSets();

    Read("{\n0 a\nb\n}\n{\n1 1 2 3\n90 0 0\nfirst\n}\n", true);
    TakeLoggedText();
    UpdateObjects();
    EXPECT_EQ(TakeLoggedText(), "\nUpdating 1 objects...\n");

    ClearDataSets();
    ASSERT_TRUE(level.Open(false));
    ASSERT_TRUE(level.Load());
    EXPECT_EQ(Geometry().vertices.size(), 2U);
    PlaceObjects();
    ASSERT_EQ(Entities().size(), 1U);
    EXPECT_EQ(GetKey(Entities()[0].keys, "name"), "first");
}

TEST_F(UpdateObjectsTest, MakesALevelThatIsMissing) {
    Read("{\n0 a\nb\n}\n{\n5 0 45\n}\n", true);
    UpdateObjects();
    EXPECT_TRUE(std::filesystem::exists(Paths().LevelPath));
}

TEST_F(UpdateObjectsTest, PrintsUnderQuiet) {
    Options().quiet = true;
    Read("{\n0 a\nb\n}\n", true);
    UpdateObjects();
    EXPECT_EQ(TakeLoggedText(), "\nUpdating 0 objects...\n");
}

TEST_F(UpdateObjectsTest, LinksEntitiesToTheirBlocks) {
    Read("{\n5 0 45\n}\n" + Level(Box50(0, 64)) + "{\n1 0 0 0\n0 0 0\na\n" + Box50(100, 164) +
         "}\n{\n1 0 0 0\n0 0 0\nb\n}\n" + "{\n1 0 0 0\n0 0 0\nc\n" + Box50(200, 264) + "}\n");
    UpdateObjects();
    std::vector<std::string> models;
    for (const CEntity& entity : Entities()) models.push_back(GetKey(entity.keys, "model"));
    std::sort(models.begin(), models.end());
    EXPECT_EQ(models, (std::vector<std::string>{"", "", "", "*1", "*2"}));
    EXPECT_EQ(GetKey(Entities()[2].keys, "model"), "*1");
    EXPECT_EQ(Entities()[2].keys.front().name, "model");
    EXPECT_EQ(GetKey(Entities()[4].keys, "model"), "*2");
}

TEST_F(UpdateObjectsTest, NeedsALevelPath) {
    Paths().LevelPath.clear();
    ExpectFatal([] { UpdateObjects(); }, "\nCouldn´t read KLV file \n");
}

TEST_F(UpdateObjectsTest, NeedsALevelThatCanBeRead) {
    WriteFile(Paths().LevelPath, "KLV7");
    ExpectFatal([] { UpdateObjects(); }, "\nCouldn´t read KLV file " + Paths().LevelPath + "\n");
}

}  // namespace

}  // namespace k2k::test
