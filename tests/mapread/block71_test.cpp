// What dialect 7.1 adds: texture coordinates in front of the vectors, materials.
#include "map_text.h"

namespace k2k::test {

namespace {

class Block71 : public MapTest {
  protected:
    const Texinfo& Mapped(const std::string& behind, const std::string& group = "0 ndef") {
        Read("version 711\n" + Level(Box51(0, 64, behind, group)));
        return TexinfoOf(Blocks().at(0)->faces.at(0));
    }
    void ExpectFatalFace(const std::string& behind, const std::string& message) {
        ExpectFatalRead("version 711\n{\n{\n" + BoxHead51(0, 64) + "4 0 1 3 2 : WALL " + behind + "\n", message);
    }
};

TEST_F(Block71, PassesOverCornerCoordinates) {
    const std::string pairs = "[ 0 0 1 0 1 1 0 1 ]";
    EXPECT_EQ(Mapped("WALL " + pairs + " ( 1 2 3 4 ) ( 5 6 7 8 )").vecS, (Vec3{1, 2, 3}));
    EXPECT_EQ(TexinfoOf(Blocks().at(0)->faces.at(0)).vecT, (Vec3{5, 6, 7}));
}

TEST_F(Block71, CornerCoordinatesStandInPairs) {
    EXPECT_EQ(Mapped("WALL\n[\n0 0\n1 0\n1 1\n0 1\n]\n( 1 2 3 4 )\n( 5 6 7 8 )").vecS, (Vec3{1, 2, 3}));
    ExpectFatalFace("[ 0\n0 1 0 1 1 0 1 ] " + Vectors, " \nInvalid line 14");
}

TEST_F(Block71, CornerCoordinatesHaveABracketBehindThem) {
    ExpectFatalFace("[ 0 0 1 0 1 1 0 1 ) " + Vectors, "Separator ')' missing, line 14");
    ExpectFatalFace("[ 0 0 1 0 1 1 0 1 2 2 ] " + Vectors, "Separator ')' missing, line 14");
    ExpectFatalFace("[ 0 0 1 0 1 1 0 1", "Separator ')' missing, line 15");
}

TEST_F(Block71, VectorsFollowTheCornerCoordinates) {
    ExpectFatalFace("[ 0 0 1 0 1 1 0 1 ] 1 0 0 0 )", "Separator '(' missing, line 14");
    ExpectFatalFace("1 0 0 0 )", "Separator '(' missing, line 14");
}

TEST_F(Block71, MappingMissingAtTheEndOfTheText) {
    ExpectFatalFace("", "Separator '(' or '[' missing, line 15");
}

TEST_F(Block71, MaterialIsInUpperCase) {
    EXPECT_STREQ(Mapped("WALL " + Vectors + " : 0 7 60 granite").material.data(), "GRANITE");
    EXPECT_EQ(TexinfoOf(Blocks().at(0)->faces.at(0)).ambient, 7);
    EXPECT_EQ(TexinfoOf(Blocks().at(0)->faces.at(0)).albedo, 60);
}

TEST_F(Block71, MaterialIsCutTo19Characters) {
    EXPECT_STREQ(Mapped("WALL " + Vectors + " : 0 0 50 abcdefghijklmnopqrstuvwxyz").material.data(),
                 "ABCDEFGHIJKLMNOPQRS");
}

TEST_F(Block71, WithoutATailHasNoMaterial) {
    EXPECT_STREQ(Mapped("WALL " + Vectors, "0 stone").material.data(), "");
}

TEST_F(Block71, UndefinedMaterialIsThatOfTheBlock) {
    for (const char* undefined : {"ndef", "NDEF", "nDef"}) {
        const std::string face = "WALL " + Vectors + " : 0 0 50 " + undefined;
        EXPECT_STREQ(Mapped(face, "0 stone").material.data(), "stone");
        EXPECT_STREQ(Mapped(face, "0 Ndef").material.data(), "");
        EXPECT_STREQ(Mapped(face, "0").material.data(), "");
    }
}

TEST_F(Block71, DefinedMaterialStaysWhateverTheBlockSays) {
    EXPECT_STREQ(Mapped("WALL " + Vectors + " : 0 0 50 wood", "0 stone").material.data(), "WOOD");
}

TEST_F(Block71, TailFlagsJoinThoseOfTheName) {
    EXPECT_EQ(Mapped("WALL " + Vectors + " : 0010 0 50 ndef").flags, 3U);
    EXPECT_EQ(Mapped("*WATER " + Vectors + " : 0100 0 50 ndef").flags, 77U);
}

}  // namespace

}  // namespace k2k::test
