// Entities as the file's outer shape.
#include "map_text.h"

namespace k2k::test {

namespace {

class EntityFrame : public MapTest {};

TEST_F(EntityFrame, MustBeginWithABrace) {
    ExpectFatalRead("x\n", " \nE714");
    ExpectFatalRead("{\n}\n5\n", " \nE714");
}

TEST_F(EntityFrame, MustEndBeforeTheText) {
    ExpectFatalRead("{\n", " \nE715");
    ExpectFatalRead("{\n5 0 45\n", " \nE715");
    ExpectFatalRead("{\n{\n{ 0 }\n", " \nE715");
    ExpectFatalRead("{\n{\n{ 0\n", " \nE715");
    ExpectFatalRead("{\n1 0 0 0\n0 0 0\n", " \nE715");
}

TEST_F(EntityFrame, LosesAFinalBraceThatTouchesTheEndOfTheFile) {
    ExpectFatalRead("{\n}", " \nE715");
}

TEST_F(EntityFrame, TakesNoMoreThanTheTableHolds) {
    std::string text;
    for (int32_t i = 0; i < MaxEntities; ++i) text += "{\n}\n";
    Read(text);
    EXPECT_EQ(Entities().size(), static_cast<size_t>(MaxEntities));
    ExpectFatalRead(text + "{\n}\n", " \nE604: Map size - too many entities");
}

TEST_F(EntityFrame, TakesPairsAndBlocksInAnyOrder) {
    Read("{\n" + Box50(0, 64) + "0 textures.$$w\npalette.raw\n" + Box50(128, 192) + "5 0 45\n}\n");
    EXPECT_EQ(Blocks().size(), 2U);
    EXPECT_EQ(GetKey(Entities()[0].keys, "wad"), "textures.$$w");
    EXPECT_EQ(GetKey(Entities()[0].keys, "sun_elv"), "45");
}

TEST_F(EntityFrame, ChainsBlocksWithTheLastReadInFront) {
    Read(Level(Box50(0, 64) + Box50(128, 192)));
    EXPECT_EQ(Entities()[0].blocks.front()->number, 2);
    EXPECT_EQ(Entities()[0].blocks.front()->next->number, 1);
}

TEST_F(EntityFrame, NumbersBlocksThroughAllEntities) {
    Read(Level(Box50(0, 64)) + Level(Box50(128, 192)));
    EXPECT_EQ(Blocks(0)[0]->number, 1);
    EXPECT_EQ(Blocks(1)[0]->number, 2);
}

TEST_F(EntityFrame, SkipsBlocksWhenOnlyEntitiesAreWanted) {
    Read(Level(Box50(0, 64)) + "{\n5 10 45\n}\n", true);
    ASSERT_EQ(Entities().size(), 2U);
    EXPECT_TRUE(Entities()[0].blocks.empty());
    EXPECT_EQ(GetKey(Entities()[1].keys, "sun_azm"), "10");
    EXPECT_TRUE(Textures().names.empty());
}

TEST_F(EntityFrame, SkipsABlockByTwoClosingBraces) {
    // A block without its inner group takes the entity's brace with it.
    SetMap("{\n{\n" + BoxFaces50(0, 64) + "}\n}\n");
    ExpectFatal([] { ReadMap(true); }, " \nE715");
}

TEST_F(EntityFrame, ReadsAComment) {
    Read("// made by hand\n{ // the level\n0 textures.$$w\npalette.raw\n} // end\n");
    EXPECT_EQ(GetKey(Entities()[0].keys, "palette"), "palette.raw");
}

TEST_F(EntityFrame, StartsARepeatedReadFromAnEmptyTable) {
    const std::string text = Level(Box50(0, 64)) + "{\n5 10 45\n}\n";
    Read(text);
    Read(text);
    ASSERT_EQ(Entities().size(), 2U);
    EXPECT_EQ(Blocks(0).size(), 1U);
    EXPECT_EQ(Entities()[0].keys.size(), 3U);
    EXPECT_EQ(Textures().texinfos.size(), 4U);  // the neutral row and one mapping for each axis
}

}  // namespace

}  // namespace k2k::test
