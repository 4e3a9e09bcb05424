// Blocks of dialect 5.1: vertex lists, faces, mapping by vectors.
#include "map_text.h"
#include "mapread/file_map51.h"

namespace k2k::test {

namespace {

const std::string Head = "version 511\n{\n";

class Block51 : public MapTest {
  protected:
    void ReadBlocks(const std::string& blocks) { Read("version 511\n" + Level(blocks)); }
    const Texinfo& Mapped(const std::string& behind) {
        ReadBlocks(Box51(0, 64, behind));
        return TexinfoOf(Blocks().at(0)->faces.at(0));
    }
    // The second block of a map, behind the vertices of a box.
    void ExpectFatalFace(const std::string& face, const std::string& message, int faces = 6) {
        ExpectFatalRead(Head + Box51(0, 64) + "{\n" + BoxHead51(0, 64, faces) + "{ 0 ndef }\n" + face + "\n}\n}\n",
                        message);
    }
    void ExpectFatalBlock(const std::string& text, const std::string& message) {
        ExpectFatalRead(Head + Box51(0, 64) + "{\n" + text, message);
    }
};

// Where the face of ExpectFatalFace stands.
const std::string FaceLine = "34";

TEST_F(Block51, HasFacesWithTheLastInFront) {
    ReadBlocks(Box51(0, 64));
    const MapBlock& block = *Blocks().at(0);
    ASSERT_EQ(block.faces.size(), 6U);
    EXPECT_TRUE(block.fromVertices);
    EXPECT_EQ(block.faces.front().planeNumber, 6);
    EXPECT_EQ(block.faces.front().normal, (Vec3{1, 0, 0}));
    EXPECT_EQ(block.faces.back().planeNumber, 1);
    EXPECT_EQ(block.faces.back().normal, (Vec3{0, 0, -1}));
    EXPECT_EQ(block.mins, (Vec3{0, 0, 0}));
    EXPECT_EQ(block.maxs, (Vec3{64, 64, 64}));
}

TEST_F(Block51, KeepsTheCornersOfEachFace) {
    ReadBlocks(Box51(0, 64));
    const MapFace& face = Blocks().at(0)->faces.back();
    EXPECT_EQ(face.polygon, (std::vector<Vec3>{{0, 0, 0}, {64, 0, 0}, {64, 64, 0}, {0, 64, 0}}));
    EXPECT_EQ(face.points, (std::array<Vec3, 3>{{{0, 0, 0}, {64, 0, 0}, {64, 64, 0}}}));
}

TEST_F(Block51, BeginsWithItsVertexCount) {
    ExpectFatalBlock("faces 6\n", "Version count missing, block 1 line 23\n");
    ExpectFatalBlock("vertices\n8\nfaces 6\n", " \nInvalid line 23");
    ExpectFatalBlock("", "Version count missing, block 1 line 23\n");
}

TEST_F(Block51, HasAtLeastOneVertex) {
    for (const char* count : {"0", "-8", "357913942", "x", "99999999999"}) {
        ExpectFatalBlock("vertices " + std::string(count) + "\nfaces 6\n", "Illegal vertex count, block 1\n");
    }
}

TEST_F(Block51, ReservesNoMoreThanItsTextCanHold) {
    ExpectFatalBlock("vertices 357913941\nfaces 6\n0 0 0\n", "Invalid vertex list, block 1 line 26\n");
}

TEST_F(Block51, NamesItsFaceCount) {
    ExpectFatalBlock("vertices 8\n0 0 0\n", "Face tag missing, block 1\n");
    ExpectFatalBlock("vertices 8\n", "Face tag missing, block 1\n");
    ExpectFatalBlock("vertices 8\nfaces\n6\n", " \nInvalid line 24");
}

TEST_F(Block51, FaceTagMayStandAnywhereBehind) {
    std::string text = Box51(0, 64);
    text.replace(text.find("\nfaces"), 1, " \n\n ");
    ReadBlocks(text);
    EXPECT_EQ(Blocks().size(), 1U);
    text.replace(text.find(" \n\n faces"), 9, " faces");
    ReadBlocks(text);
    EXPECT_EQ(Blocks().size(), 1U);
}

TEST_F(Block51, WithNoFacesIsReadAndDroppedWithoutAWord) {
    for (int count : {0, -1}) {
        ReadBlocks("{\n" + BoxHead51(0, 64, count) + "{ 0 ndef }\n}\n" + Box51(0, 64));
        EXPECT_EQ(Blocks().size(), 1U);
        EXPECT_EQ(Blocks()[0]->number, 1);
        EXPECT_EQ(WarnCount, 0);
        EXPECT_EQ(TakeLoggedText(), "");
    }
}

TEST_F(Block51, WithoutFacesIsDroppedWhateverItPromises) {
    ReadBlocks("{\n" + BoxHead51(0, 64, 6) + "{ 0 ndef }\n}\n");
    EXPECT_TRUE(Blocks().empty());
    EXPECT_EQ(WarnCount, 0);
}

TEST_F(Block51, VerticesMayBreakTheirLinesAnywhere) {
    std::string text = Box51(0, 64);
    const size_t begin = text.find("0.0"), end = text.find("{ 0000");
    for (size_t i = begin; i < end; ++i) {
        if (text[i] == ' ') text[i] = '\n';
    }
    ReadBlocks(text);
    EXPECT_EQ(Blocks().size(), 1U);
}

TEST_F(Block51, VerticesMayNotRunOut) {
    ExpectFatalBlock("vertices 8\nfaces 6\n0 0 0\n1 1\n", "Invalid vertex list, block 1 line 27\n");
}

TEST_F(Block51, VerticesMustBeNumbers) {
    const std::string head = "vertices 8\nfaces 6\n0 0 0\n";
    for (const char* vertex : {"nan 0 0\n", "0 -nan 0\n", "0 0 nan\n"}) {
        ExpectFatalBlock(head + vertex, "Invalid vertex list, block 1 line 26\n");
    }
    const std::string outside = "Block outside level boundaries !\nUse -bound XXX to increase size !\n";
    for (const char* vertex : {"inf 0 0\n", "0 -inf 0\n", "0 0 1e39\n", "1e30 0 0\n"}) {
        ExpectFatalBlock(head + vertex, outside);
    }
    Options().bound = std::numeric_limits<float>::infinity();
    ExpectFatalRead(Head + "{\n" + head + "inf 0 0\n", "Invalid vertex list, block 0 line 7\n");
}

TEST_F(Block51, PlanesMustHaveADistance) {
    Options().bound = 3e38F;
    const std::string vertices = "vertices 3\nfaces 4\n3e38 1e38 3e38\n3e38 3e38 1e38\n1e38 3e38 3e38\n";
    for (const char* flags : {"0", "100000"}) {
        const std::string group = std::string("{ ") + flags + " ndef }\n";
        ExpectFatalBlock(vertices + group + "3 0 1 2 : WALL " + Vectors + "\n}\n", "Invalid plane, block 1 line 30\n");
    }
}

TEST_F(Block51, VerticesAreZoomed) {
    Options().zoomlevel = 1.5F;
    ReadBlocks(Box51(0, 64));
    const MapFace& face = Blocks().at(0)->faces.front();
    EXPECT_EQ(face.dist, 96);
    EXPECT_EQ(face.points[0][0], 96);
    EXPECT_EQ(face.polygon[0][0], 96);
    EXPECT_EQ(TexinfoOf(face).vecS, (Vec3{1, 0, 0}));
}

TEST_F(Block51, VerticesMustLieWithinTheBoundary) {
    const std::string message = "Block outside level boundaries !\nUse -bound XXX to increase size !\n";
    Options().bound = 64;
    ReadBlocks(Box51(-63, 63));
    EXPECT_EQ(Blocks().size(), 1U);
    EXPECT_NO_THROW(ReadBlocks(Box51(-64, 64)));
    ExpectFatalRead(Head + Box51(-64.5, 0) + "}\n", message);
    Options().zoomlevel = 2;
    ExpectFatalRead(Head + Box51(0, 33) + "}\n", message);
}

TEST_F(Block51, GroupTokensAreFlagsAndMaterialThroughAllGroups) {
    const auto read = [this](const std::string& groups) -> const MapBlock& {
        ReadBlocks("{\n" + BoxHead51(0, 64) + groups + BoxFaces51("WALL " + Vectors) + "}\n");
        return *Blocks().at(0);
    };
    EXPECT_EQ(read("{ 1 stone 11 }\n{ 110 wood }\n").flags, 1U);
    EXPECT_STREQ(Blocks()[0]->material.data(), "stone");
    EXPECT_EQ(read("{ }\n{ 1 }\n{ wood }\n").flags, 1U);
    EXPECT_STREQ(Blocks()[0]->material.data(), "wood");
    EXPECT_EQ(read("").flags, 0U);
    EXPECT_STREQ(Blocks()[0]->material.data(), "");
}

TEST_F(Block51, MaterialIsCutTo19Characters) {
    ReadBlocks(Box51(0, 64, "WALL " + Vectors, "0 abcdefghijklmnopqrstuvwxyz"));
    EXPECT_STREQ(Blocks().at(0)->material.data(), "abcdefghijklmnopqrs");
}

TEST_F(Block51, GroupMayStandBehindFaces) {
    ReadBlocks("{\n" + BoxHead51(0, 64) + BoxFaces51("WALL " + Vectors) + "{ 1 }\n}\n");
    EXPECT_EQ(Blocks().at(0)->flags, 1U);
}

TEST_F(Block51, MayHaveFewerFacesThanItsHeaderSays) {
    ReadBlocks("{\n" + BoxHead51(0, 64, 8) + "{ 0 ndef }\n" + BoxFaces51("WALL " + Vectors) + "}\n");
    EXPECT_EQ(Blocks().size(), 1U);
}

TEST_F(Block51, MayNotHaveMoreFacesThanItsHeaderSays) {
    const std::string faces = "{ 0 ndef }\n" + BoxFaces51("WALL " + Vectors) + "}\n";
    ExpectFatalBlock(BoxHead51(0, 64, 5) + faces, "More faces than expected, block 1");
    ExpectFatalBlock(BoxHead51(0, 64, 0) + faces, "More faces than expected, block 1");
}

TEST_F(Block51, FaceHasAtLeastThreeCorners) {
    for (const char* count : {"2 0 1", "0", "-1", "1073741823 0 1 2", "x"}) {
        ExpectFatalFace(std::string(count) + " : WALL " + Vectors, "Invalid face definition, line " + FaceLine);
    }
}

TEST_F(Block51, FaceIndicesShareTheLineOfTheirCount) {
    ExpectFatalFace("4 0 1\n3 2 : WALL " + Vectors, " \nInvalid line " + FaceLine);
    ExpectFatalFace("1073741822 0 1 3 2", " \nInvalid line " + FaceLine);
}

TEST_F(Block51, FaceIndicesNameVertices) {
    ExpectFatalFace("4 0 1 3 8 : WALL " + Vectors, "Index out of bounds, line " + FaceLine + "\n");
    ExpectFatalFace("4 0 1 3 -1 : WALL " + Vectors, "Index out of bounds, line " + FaceLine + "\n");
}

TEST_F(Block51, FaceHasASeparatorThatMayStandOnALaterLine) {
    ReadBlocks("{\n" + BoxHead51(0, 64) + "{ 0 ndef }\n4 0 1 3 2\n\n: WALL " + Vectors + "\n4 4 6 7 5 : WALL " +
               Vectors + "\n4 0 4 5 1 : WALL " + Vectors + "\n4 2 3 7 6 : WALL " + Vectors + "\n4 0 2 6 4 : WALL " +
               Vectors + "\n4 1 5 7 3 : WALL " + Vectors + "\n}\n");
    EXPECT_EQ(Blocks().size(), 1U);
    ExpectFatalFace("4 0 1 3 2 WALL " + Vectors, "Separator ':' missing, line " + FaceLine);
}

TEST_F(Block51, SeparatorMissingAtTheEndOfTheText) {
    ExpectFatalBlock(BoxHead51(0, 64) + "4 0 1 3 2\n", "Separator ':' missing, line 34");
}

TEST_F(Block51, TextureNameSharesTheLineOfTheSeparator) {
    ExpectFatalFace("4 0 1 3 2 :\nWALL " + Vectors, " \nInvalid line " + FaceLine);
}

TEST_F(Block51, MappingVectorsAreTakenAsTheyStand) {
    const Texinfo& texinfo = Mapped("WALL ( 0.5 0 0.25 8 ) ( 0 -2 0 -16.5 )");
    EXPECT_EQ(texinfo.vecS, (Vec3{0.5, 0, 0.25}));
    EXPECT_EQ(texinfo.shiftS, 8);
    EXPECT_EQ(texinfo.vecT, (Vec3{0, -2, 0}));
    EXPECT_EQ(texinfo.shiftT, -16.5);
}

TEST_F(Block51, MappingVectorsMayBeginOnLaterLines) {
    EXPECT_EQ(Mapped("WALL\n( 1 2 3 4 )\n( 5 6 7 8 )").vecT, (Vec3{5, 6, 7}));
}

TEST_F(Block51, MappingVectorsKeepTheirNumbersOnALine) {
    ExpectFatalFace("4 0 1 3 2 : WALL ( 1 0\n0 0 ) ( 0 -1 0 0 )", " \nInvalid line " + FaceLine);
}

TEST_F(Block51, MappingVectorsHaveBrackets) {
    const std::string face = "4 0 1 3 2 : WALL ";
    ExpectFatalFace(face + "0 0 0 1 1", "Separator '(' missing, line " + FaceLine);
    ExpectFatalFace(face + "( 1 0 0 0 0 ) ( 0 -1 0 0 )", "Separator ')' missing, line " + FaceLine);
    ExpectFatalFace(face + "( 1 0 0 0 ) 0 -1 0 0 )", "Separator '(' missing, line " + FaceLine);
    ExpectFatalFace(face + "( 1 0 0 0 ) ( 0 -1 0 0 ]", "Separator ')' missing, line " + FaceLine);
    ExpectFatalBlock(BoxHead51(0, 64) + face + "\n", "Separator '(' missing, line 34");
}

TEST_F(Block51, PlainMappingIsThatOfAFloorOnEveryFace) {
    Read("version 510\n" + Level(Box51(0, 64, "WALL 1 2 90 2 4")));
    for (const MapFace& face : Blocks().at(0)->faces) {
        EXPECT_EQ(TexinfoOf(face).vecS, (Vec3{0, 0.5, 0}));
        EXPECT_EQ(TexinfoOf(face).vecT, (Vec3{0.25, 0, 0}));
        EXPECT_EQ(TexinfoOf(face).shiftS, 1);
        EXPECT_EQ(TexinfoOf(face).shiftT, 2);
    }
}

TEST_F(Block51, WithoutATailHasNoAmbientAndAlbedo50) {
    const Texinfo& texinfo = Mapped("*WATER " + Vectors);
    EXPECT_EQ(texinfo.ambient, 0);
    EXPECT_EQ(texinfo.albedo, 50);
    EXPECT_EQ(texinfo.flags, 73U);
}

TEST_F(Block51, TailSetsAmbientAndAlbedoAsBytes) {
    const Texinfo& texinfo = Mapped("WALL " + Vectors + "\n: 0 -1 300 granite");
    EXPECT_EQ(texinfo.ambient, 255);
    EXPECT_EQ(texinfo.albedo, 44);
    EXPECT_STREQ(texinfo.material.data(), "");
}

TEST_F(Block51, TailFlagsJoinThoseOfTheName) {
    EXPECT_EQ(Mapped("WALL " + Vectors + " : 0010 0 50 0").flags, 3U);
    EXPECT_EQ(Mapped("WALL " + Vectors + " : 0100 0 50 0").flags, 5U);
    EXPECT_EQ(Mapped("WALL " + Vectors + " : 1000 0 50 0").flags, 9U);
    EXPECT_EQ(Mapped("WALL " + Vectors + " : 10000 0 50 0").flags, 16U);
    EXPECT_EQ(Mapped("*WATER " + Vectors + " : 0100 0 50 0").flags, 77U);
    EXPECT_EQ(Mapped("SKY " + Vectors + " : 100000000000000 0 50 0").flags, 0x4005U);
}

TEST_F(Block51, TailStaysOnTheLineOfItsMark) {
    ExpectFatalFace("4 0 1 3 2 : WALL " + Vectors + " : 0 0 50\nx", " \nInvalid line " + FaceLine);
}

TEST_F(Block51, ExtendedEntitiesAreReadAsSuch) {
    Read("version 510\n{\n7 1 2 3 0 0 0 1 1 1 m.mdl\nname\nndef\n1 2 3 4 5 6 7 8 9 10 1 2 3 4 5 6 7 8 9 10\n0\n}\n");
    EXPECT_EQ(GetKey(Entities()[0].keys, "type"), "extended");
}

}  // namespace

}  // namespace k2k::test
