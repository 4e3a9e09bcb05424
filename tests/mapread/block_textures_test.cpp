// From names and flags to texinfo records.
#include "map_text.h"

namespace k2k::test {

namespace {

class BlockTextures : public MapTest {
  protected:
    uint32_t FlagsOf(const std::string& name, const std::string& blockFlags = "0") {
        Read(Level(Box50(0, 64, name + " 0 0 0 1 1", blockFlags)));
        return TexinfoOf(Blocks().at(0)->faces.at(0)).flags;
    }
    static std::vector<std::string> Names() {
        std::vector<std::string> names;
        for (const TextureName& name : Textures().names) {
            names.emplace_back(name.data(), strnlen(name.data(), name.size()));
        }
        return names;
    }
};

TEST_F(BlockTextures, NamesStandForFlags) {
    EXPECT_EQ(FlagsOf("*WATER"), 73U);
    EXPECT_EQ(FlagsOf("CITYSKY1"), 5U);
    EXPECT_EQ(FlagsOf("WALL_OUT"), 3U);
    EXPECT_EQ(FlagsOf("SKY_OUT"), 5U);
    EXPECT_EQ(FlagsOf("*SKY_OUT"), 73U);
    EXPECT_EQ(FlagsOf("WALL"), 0U);
    EXPECT_EQ(FlagsOf("WALL*"), 0U);
}

TEST_F(BlockTextures, NamesStandForFlagsInAnyCase) {
    EXPECT_EQ(FlagsOf("citySky1"), 5U);
    EXPECT_EQ(FlagsOf("wall_out"), 3U);
}

TEST_F(BlockTextures, NamesAreLookedAtInFullAndStoredInUpperCaseUpTo16Characters) {
    EXPECT_EQ(FlagsOf("abcdefghijklmnop_out"), 3U);
    EXPECT_EQ(Names(), (std::vector<std::string>{"ABCDEFGHIJKLMNOP"}));
}

TEST_F(BlockTextures, NamesAreNumberedInTheOrderOfTheFileDroppedBlocksIncluded) {
    Read(Level("{\n{ 0 }\n" + Face50(0, 1, 0, "LOST 0 0 0 1 1") + "}\n" + Box50(0, 64, "first 0 0 0 1 1") +
               Box50(100, 164, "FIRST 0 0 0 1 1") + Box50(200, 264, "second 0 0 0 1 1")));
    EXPECT_EQ(Names(), (std::vector<std::string>{"LOST", "FIRST", "SECOND"}));
}

TEST_F(BlockTextures, TexinfosAreNumberedFromTheLastFaceToTheFirst) {
    std::string faces;
    for (int axis = 0; axis < 3; ++axis) {
        for (int sign = -1; sign < 2; sign += 2) {
            const int shift = 2 * axis + (sign + 1) / 2;
            faces += Face50(axis, sign, sign < 0 ? 0 : 64, "WALL " + std::to_string(shift) + " 0 0 1 1");
        }
    }
    Read(Level("{\n{ 0 }\n" + faces + "}\n"));
    const CTextureData& textures = Textures();
    ASSERT_EQ(textures.texinfos.size(), 7U);
    for (size_t row = 1; row < 7; ++row) EXPECT_EQ(textures.texinfos[row].shiftS, static_cast<float>(6 - row));
    EXPECT_EQ(Blocks().at(0)->faces[0].texinfo, 1);
    EXPECT_EQ(Blocks().at(0)->faces[5].texinfo, 6);
}

TEST_F(BlockTextures, DeletedFacesAndDroppedBlocksLeaveNoTexinfo) {
    Read(Level("{\n{ 0 }\n" + BoxFaces50(0, 64) + Face50(2, 1, 64, "DOUBLE 7 7 0 1 1") + "}\n" + "{\n{ 0 }\n" +
               Face50(2, 1, 0, "OPEN 8 8 0 1 1") + "}\n"));
    EXPECT_EQ(Textures().names.size(), 3U);
    EXPECT_EQ(Textures().texinfos.size(), 4U);
    for (const Texinfo& texinfo : Textures().texinfos) EXPECT_EQ(texinfo.texture, 0U);
}

TEST_F(BlockTextures, TexinfoOfACulledVertexFaceGoesWithIt) {
    std::string faces = BoxCorners[0] + " : CULLED ( 9 0 0 0 ) ( 0 9 0 0 )\n" + BoxFaces51("WALL " + Vectors);
    Read("version 511\n" + Level("{\n" + BoxHead51(0, 64, 7) + "{ 0 ndef }\n" + faces + "}\n"));
    ASSERT_EQ(Blocks().size(), 1U);
    EXPECT_EQ(Textures().texinfos.size(), 2U);
    for (const MapFace& face : Blocks()[0]->faces) EXPECT_EQ(TexinfoOf(face).vecS[0], 1);
}

TEST_F(BlockTextures, DetailBlocksAreCountedAndFlagged) {
    EXPECT_EQ(FlagsOf("WALL", "10000"), 16U);
    EXPECT_EQ(DetailCount, 1);
    EXPECT_EQ(Blocks()[0]->flags, BlockDetail);
    EXPECT_EQ(FlagsOf("WALL_OUT", "10000"), 19U);
    EXPECT_EQ(FlagsOf("WALL", "0"), 0U);
    EXPECT_EQ(DetailCount, 0);
}

TEST_F(BlockTextures, DetailBlocksArePlainWithNodetail) {
    Options().nodetail = true;
    EXPECT_EQ(FlagsOf("WALL", "10000"), 0U);
    EXPECT_EQ(DetailCount, 0);
    EXPECT_EQ(Blocks()[0]->flags, 0U);
}

TEST_F(BlockTextures, DetailBlocksThatWereRejectedArePlain) {
    Geometry().DetailReject = {2};
    Read(Level(Box50(0, 64, "WALL 0 0 0 1 1", "10000") + Box50(100, 164, "WALL 0 0 0 1 1", "10000")));
    EXPECT_EQ(Blocks()[0]->flags, BlockDetail);
    EXPECT_EQ(Blocks()[1]->flags, 0U);
    EXPECT_EQ(TexinfoOf(Blocks()[1]->faces[0]).flags, 0U);
    EXPECT_EQ(DetailCount, 1);
}

TEST_F(BlockTextures, PassableBlocksArePassedUnlessTheyAreDetail) {
    EXPECT_EQ(FlagsOf("WALL", "10"), 64U);
    EXPECT_EQ(FlagsOf("WALL", "10010"), 16U);
    Options().nodetail = true;
    EXPECT_EQ(FlagsOf("WALL", "10010"), 64U);
}

TEST_F(BlockTextures, InvisibleBlocksBecomeNone) {
    EXPECT_EQ(FlagsOf("WALL", "100"), 0U);
    EXPECT_EQ(Blocks()[0]->flags, BlockInvisible);
    Options().invisibletonone = true;
    EXPECT_EQ(FlagsOf("WALL", "111"), 11U);
    EXPECT_EQ(Blocks()[0]->flags, 3U);
    EXPECT_EQ(FlagsOf("WALL", "11"), 64U);
    for (const char* version : {"version 511\n", "version 711\n"}) {
        Read(version + Level(Box51(0, 64, "*WATER " + Vectors, "100 ndef")));
        for (const MapFace& face : Blocks().at(0)->faces) EXPECT_EQ(TexinfoOf(face).flags, 11U);
        EXPECT_EQ(Blocks()[0]->flags, 0U);
    }
}

TEST_F(BlockTextures, InvisibleDetailBlocksOnlyLoseTheirFlag) {
    Options().invisibletonone = true;
    EXPECT_EQ(FlagsOf("WALL", "10100"), 16U);
    EXPECT_EQ(Blocks()[0]->flags, BlockDetail);
}

TEST_F(BlockTextures, UnnamedFaceIsFatal) {
    ExpectFatalRead("{\n{\n( 1 0 0 ) ( 0 0 0 ) ( 0 1 0 )\n", " \nInvalid line 3");
}

}  // namespace

}  // namespace k2k::test
