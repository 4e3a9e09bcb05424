// Blocks that are repaired or dropped, and what is said about them.
#include <cmath>
#include <limits>

#include "map_text.h"

namespace k2k::test {

namespace {

const std::string V51 = "version 511\n";
const std::string V71 = "version 711\n";

class BlockChecks : public MapTest {
  protected:
    void Read51(const std::string& blocks) { Read(V51 + Level(blocks)); }
    // A box of dialect 5.1 with other faces.
    static std::string Block51(const std::string& faces, const std::string& flags = "0") {
        return "{\n" + BoxHead51(0, 64, 100) + "{ " + flags + " ndef }\n" + faces + "}\n";
    }
    static std::string Face51(const std::string& corners) { return corners + " : WALL " + Vectors + "\n"; }
};

const std::string Box50Faces = BoxFaces50(0, 64);
const std::string Box51Faces = BoxFaces51("WALL " + Vectors);
const std::string Collinear50 = "( 10 10 10 ) ( 20 20 20 ) ( 30 30 30 ) WALL 0 0 0 1 1\n";

std::string Block50(const std::string& faces) {
    return "{\n{ 0 }\n" + faces + "}\n";
}

std::string DuplicatePlanes(int block, int plane, int counter) {
    return " \nWARNING W071: block " + std::to_string(block) + " - duplicate planes " + std::to_string(plane) +
           " and " + std::to_string(counter) + "!\n";
}

std::string TooNarrow(int block, int plane) {
    return " \nWARNING W072: block " + std::to_string(block) + " - plane " + std::to_string(plane) + " too narrow!\n";
}

std::string NotAVolume(int block) {
    return "\nWARNING W075: Invalid brush " + std::to_string(block) + " - not a volume !\n";
}

TEST_F(BlockChecks, NarrowFaceIsDeletedAndTheOthersDecide) {
    Read(Level(Block50(Box50Faces + Collinear50)));
    EXPECT_EQ(TakeLoggedText(), TooNarrow(0, 7));
    EXPECT_EQ(WarnCount, 1);
    ASSERT_EQ(Blocks().size(), 1U);
    EXPECT_EQ(Blocks()[0]->faces.size(), 6U);
}

TEST_F(BlockChecks, NarrowFaceInPlaceOfAGoodOneLeavesTheBlockOpen) {
    const std::string faces = Collinear50 + Box50Faces.substr(Box50Faces.find('\n') + 1);
    Read(Level(Block50(faces)));
    EXPECT_EQ(TakeLoggedText(), TooNarrow(0, 1) + NotAVolume(0));
    EXPECT_EQ(WarnCount, 2);
    EXPECT_TRUE(Blocks().empty());
}

TEST_F(BlockChecks, DoublePlaneIsDeletedAndCountedFromTheLastFace) {
    Read(Level(Block50(Box50Faces + Face50(2, 1, 64) + Face50(0, -1, 0))));
    Options().verbose = true;
    EXPECT_EQ(TakeLoggedText(), DuplicatePlanes(0, 7, 1));
    Read(Level(Block50(Box50Faces + Face50(2, 1, 64) + Face50(0, -1, 0))));
    EXPECT_EQ(TakeLoggedText(), DuplicatePlanes(0, 7, 1) + DuplicatePlanes(0, 8, 6));
    EXPECT_EQ(Blocks().at(0)->faces.size(), 6U);
}

TEST_F(BlockChecks, DoublePlaneIsFoundFromEitherSide) {
    Read(Level(Block50(Box50Faces + Face50(2, -1, 64))));
    EXPECT_EQ(TakeLoggedText(), DuplicatePlanes(0, 7, 1));
    EXPECT_EQ(Blocks().size(), 1U);
}

TEST_F(BlockChecks, OfTwoDoubleFacesInAVertexBlockTheLaterStays) {
    Read51(Block51(Box51Faces + "4 1 5 7 3 : OTHER " + Vectors + "\n"));
    EXPECT_EQ(TakeLoggedText(), DuplicatePlanes(0, 6, 1));
    const MapBlock& block = *Blocks().at(0);
    ASSERT_EQ(block.faces.size(), 6U);
    EXPECT_EQ(block.faces[0].planeNumber, 7);
    EXPECT_STREQ(Textures().names[TexinfoOf(block.faces[0]).texture].data(), "OTHER");
    EXPECT_STREQ(Textures().names[TexinfoOf(block.faces[1]).texture].data(), "WALL");
}

TEST_F(BlockChecks, NarrowFaceReadFirstIsDeletedAlone) {
    // Corners 0 and 7 share no plane of the box.
    Read51(Block51(Face51("3 0 7 7") + Box51Faces));
    EXPECT_EQ(TakeLoggedText(), TooNarrow(0, 1));
    EXPECT_EQ(Blocks().at(0)->faces.size(), 6U);
}

TEST_F(BlockChecks, NarrowFaceReadLastTakesTheOthersAlong) {
    // Its plane has no normal, so the points of all faces lie in it.
    Options().verbose = true;
    Read51(Block51(Box51Faces + Face51("3 0 7 7")));
    std::string expected;
    for (int plane = 6; plane > 0; --plane) expected += DuplicatePlanes(0, plane, 1);
    EXPECT_EQ(TakeLoggedText(), expected + TooNarrow(0, 7));
    EXPECT_TRUE(Blocks().empty());
    EXPECT_EQ(WarnCount, 7);
}

TEST_F(BlockChecks, NarrowFaceWithANormalIsDeletedSilentlyUnlessTheBlockIsAMesh) {
    const auto block = [](const std::string& flags) {
        std::string head = BoxHead51(0, 64, 7);
        head.replace(0, std::string("vertices 8").size(), "vertices 11");
        head += "32.0083666 31.9916334 32\n32 32 32\n32 32.0083666 31.9916334\n";
        return "{\n" + head + "{ " + flags + " ndef }\n" + Face51("3 8 9 10") + Box51Faces + "}\n";
    };
    Read51(block("0"));
    EXPECT_EQ(Blocks().at(0)->faces.size(), 6U);
    EXPECT_EQ(WarnCount, 0);
    Read51(block("100000"));
    EXPECT_EQ(Blocks().at(0)->faces.size(), 7U);
    EXPECT_EQ(TakeLoggedText(), "");
}

TEST_F(BlockChecks, VertexBlockWithFewerThanFourFacesLeftIsDroppedSilently) {
    Read51(Block51(Face51(BoxCorners[0]) + Face51(BoxCorners[2]) + Face51(BoxCorners[4])) + Box51(0, 64));
    EXPECT_EQ(TakeLoggedText(), "");
    EXPECT_EQ(WarnCount, 0);
    ASSERT_EQ(Blocks().size(), 1U);
    EXPECT_EQ(Blocks()[0]->number, 1);
}

TEST_F(BlockChecks, CubeWithoutOneFaceIsNoVolume) {
    const std::string faces = Box50Faces.substr(Box50Faces.find('\n') + 1);
    Read(Level(Block50(faces)));
    EXPECT_EQ(TakeLoggedText(), NotAVolume(0));
    EXPECT_TRUE(Blocks().empty());
    EXPECT_EQ(WarnCount, 1);
    ResetLogForTest();
    Read51(Box51(100, 164) + Block51(Box51Faces.substr(Box51Faces.find('\n') + 1)));
    EXPECT_EQ(TakeLoggedText(), NotAVolume(1));
    EXPECT_EQ(Blocks().size(), 1U);
}

TEST_F(BlockChecks, FewerThanFourFacesAreNoVolume) {
    Read(Level(Block50("") + Block50(Face50(0, 1, 64) + Face50(1, 1, 64) + Face50(2, 1, 64))));
    EXPECT_EQ(TakeLoggedText(), NotAVolume(0));
    EXPECT_EQ(WarnCount, 2);
    EXPECT_TRUE(Blocks().empty());
}

TEST_F(BlockChecks, WedgeOfFourFacesIsAVolume) {
    Read(Level(Block50(Face50(0, -1, 0) + Face50(1, -1, 0) + Face50(2, -1, 0) +
                       "( 64 0 0 ) ( 0 64 0 ) ( 0 0 64 ) WALL 0 0 0 1 1\n")));
    EXPECT_TRUE(Blocks().empty());  // the slope looks inwards
    Read(Level(Block50(Face50(0, -1, 0) + Face50(1, -1, 0) + Face50(2, -1, 0) +
                       "( 0 0 64 ) ( 0 64 0 ) ( 64 0 0 ) WALL 0 0 0 1 1\n")));
    ASSERT_EQ(Blocks().size(), 1U);
    // The slope is put on the half unit below: 36.95 becomes 36.5.
    EXPECT_EQ(Blocks()[0]->faces[0].dist, 36.5F);
    EXPECT_FLOAT_EQ(Blocks()[0]->maxs[0], 36.5F * std::sqrt(3.0F));
}

TEST_F(BlockChecks, BlocksWithEqualPlanesInAnyOrderAreDuplicates) {
    std::string reversed;
    for (int axis = 2; axis >= 0; --axis) reversed += Face50(axis, 1, 64) + Face50(axis, -1, 0);
    Read(Level(Box50(100, 164) + Block50(Box50Faces) + Block50(reversed)));
    EXPECT_EQ(TakeLoggedText(), " \nWARNING W074: Duplicate blocks 1 and 2!\n");
    EXPECT_EQ(Blocks().size(), 2U);
    EXPECT_EQ(WarnCount, 1);
}

TEST_F(BlockChecks, DuplicatesAreFoundThroughAllEntities) {
    Read(V51 + Level(Box51(0, 64)) + Level(Box51(0, 64)));
    EXPECT_EQ(TakeLoggedText(), " \nWARNING W074: Duplicate blocks 0 and 1!\n");
    EXPECT_TRUE(Blocks(1).empty());
}

TEST_F(BlockChecks, DuplicateIsNamedByTheFirstOfItsKind) {
    Options().verbose = true;
    Read(Level(Box50(0, 64) + Box50(100, 164) + Box50(0, 64) + Box50(0, 64)));
    const std::string text = " \nWARNING W074: Duplicate blocks 0 and 2!\n";
    EXPECT_EQ(TakeLoggedText(), text + text);
}

TEST_F(BlockChecks, TextureAxesTooShortDropABlockOfPlainFaces) {
    Read(Level(Box50(0, 64, "WALL 0 0 0 200 200") + Box50(0, 64, "WALL 0 0 0 99 99")));
    EXPECT_EQ(TakeLoggedText(), " \nWARNING W073: removed block 0 - plane too narrow!\n");
    EXPECT_EQ(Blocks().size(), 1U);
    EXPECT_EQ(WarnCount, 1);
}

TEST_F(BlockChecks, TextureAxesOfVertexBlocksAreTakenAsTheyAre) {
    Read51(Box51(0, 64, "WALL ( 0 0 0 0 ) ( 0 0 0 0 )"));
    EXPECT_EQ(Blocks().size(), 1U);
    EXPECT_EQ(WarnCount, 0);
}

TEST_F(BlockChecks, StopAtTheFirstThatFails) {
    Read(Level(Box50(0, 64) + Box50(0, 64, "WALL 0 0 0 200 200")));
    EXPECT_EQ(TakeLoggedText(), " \nWARNING W074: Duplicate blocks 0 and 1!\n");
    EXPECT_EQ(WarnCount, 1);
    ResetLogForTest();
    Read(Level(Block50(Face50(0, 1, 64, "WALL 0 0 0 200 200"))));
    EXPECT_EQ(TakeLoggedText(), NotAVolume(0));
}

TEST_F(BlockChecks, PrintEachKindOnceAndCountAll) {
    const std::string map = Level(Block50("") + Block50("") + Block50(""));
    Read(map);
    EXPECT_EQ(TakeLoggedText(), NotAVolume(0));
    EXPECT_EQ(WarnCount, 3);
    Read(map);
    EXPECT_EQ(TakeLoggedText(), "");
    EXPECT_EQ(WarnCount, 3);
}

TEST_F(BlockChecks, PrintAllWithVerboseAndNoneWithQuiet) {
    const std::string map = Level(Block50("") + Block50(""));
    Options().verbose = true;
    Read(map);
    EXPECT_EQ(TakeLoggedText(), NotAVolume(0) + NotAVolume(0));
    Options().quiet = true;
    Read(map);
    EXPECT_EQ(TakeLoggedText(), "");
    EXPECT_EQ(WarnCount, 2);
}

TEST_F(BlockChecks, NarrowFacesPrintOnceInEachDialect) {
    const std::string vertexMap = Level(Block51(Face51("3 0 7 7") + Box51Faces));
    Read(Level(Block50(Box50Faces + Collinear50)));
    EXPECT_EQ(TakeLoggedText(), TooNarrow(0, 7));
    Read(V51 + vertexMap);
    EXPECT_EQ(TakeLoggedText(), TooNarrow(0, 1));
    Read(V71 + vertexMap);
    EXPECT_EQ(TakeLoggedText(), TooNarrow(0, 1));
    Read(V71 + vertexMap);
    EXPECT_EQ(TakeLoggedText(), "");
}

TEST_F(BlockChecks, DroppedBlocksLeaveTheirNumberToTheNext) {
    Read(Level(Block50("") + Box50(0, 64)));
    EXPECT_EQ(Blocks().at(0)->number, 1);
    EXPECT_EQ(Blocks().at(0)->faces[0].block, 1);
}

TEST_F(BlockChecks, PreciseObliquePlanesArePutOnTheHalfUnitBelow) {
    Read(Level(Block50(Box50Faces + "( 40.3 60 0 ) ( 60.3 40 0 ) ( 60.3 40 10 ) WALL 0 0 0 1 1\n")));
    ASSERT_EQ(Blocks().size(), 1U);
    const MapFace& slope = Blocks()[0]->faces[0];
    EXPECT_NEAR(slope.normal[0], std::sqrt(0.5F), 1e-6);
    EXPECT_EQ(slope.dist, 70.5F);  // of 70.92
}

TEST_F(BlockChecks, FaceThatTheOthersCutOffLeavesTheBlockOpen) {
    // The slope passes in front of the faces at 64, so nothing of them is left, and what lies behind a plane is not
    // cut.
    Read(Level(Block50(Box50Faces + "( 0 30.3 0 ) ( 30.3 0 0 ) ( 30.3 0 10 ) WALL 0 0 0 1 1\n")));
    EXPECT_EQ(TakeLoggedText(), NotAVolume(0));
    EXPECT_TRUE(Blocks().empty());
}

TEST_F(BlockChecks, WithoutHiprecPointsAreRounded) {
    Options().hiprec = false;
    Read(Level(Box50(0.3, 63.6)));
    EXPECT_EQ(Blocks().at(0)->faces[0].dist, 64);
    EXPECT_EQ(Blocks().at(0)->faces[1].dist, 0);
    Options().hiprec = true;
    Read(Level(Box50(0.3, 63.6)));
    EXPECT_EQ(Blocks().at(0)->faces[0].dist, 63.5F);
    EXPECT_EQ(Blocks().at(0)->faces[1].dist, -0.5F);
}

TEST_F(BlockChecks, MeshBlockKeepsItsPointsAndItsFaces) {
    Options().hiprec = false;
    const std::string mesh = "{\n" + BoxHead51(0.25, 63.75, 100) + "{ 100000 ndef }\n" + Box51Faces +
                             Face51("3 1 5 7") + Face51("3 0 7 7") + "}\n";
    Read51(mesh);
    ASSERT_EQ(Blocks().size(), 1U);
    EXPECT_EQ(Blocks()[0]->faces.size(), 7U);  // only the face without a normal is gone
    EXPECT_EQ(Blocks()[0]->faces[0].planeNumber, 7);
    EXPECT_EQ(Blocks()[0]->faces[0].points[0][0], 63.75F);
    EXPECT_TRUE(Options().mesh);
}

TEST_F(BlockChecks, MeshBlockNeedsOneFaceAndNoVolume) {
    Read51(Block51(Face51(BoxCorners[0]), "100000"));
    ASSERT_EQ(Blocks().size(), 1U);
    EXPECT_EQ(WarnCount, 0);
    EXPECT_EQ(Blocks()[0]->mins[0], std::numeric_limits<float>::max());
    Read51(Block51(Face51("3 0 7 7"), "100000"));
    EXPECT_TRUE(Blocks().empty());
    EXPECT_EQ(WarnCount, 0);
}

TEST_F(BlockChecks, MeshBlockTurnsOnMesh) {
    Read51(Box51(0, 64));
    EXPECT_FALSE(Options().mesh);
    Options().nobsp = true;
    Read51(Box51(0, 64, "WALL " + Vectors, "100000 ndef"));
    EXPECT_TRUE(Options().mesh);
    EXPECT_TRUE(Options().nh);  // -nobsp stands now, with what it brings
}

TEST_F(BlockChecks, MeshBlockOfFlaggedTexturesDoesNotTurnOnMesh) {
    Read51(Box51(0, 64, "SKY " + Vectors, "100000 ndef"));
    EXPECT_EQ(Blocks().size(), 1U);
    EXPECT_FALSE(Options().mesh);
}

bool HasBounds(const MapBlock& block) {
    return block.mins[0] != std::numeric_limits<float>::max();
}

TEST_F(BlockChecks, VertexBlocksOfFlaggedTexturesHaveNoBounds) {
    Read51(Box51(0, 64, "SKY " + Vectors));
    EXPECT_FALSE(HasBounds(*Blocks().at(0)));
    EXPECT_EQ(Blocks()[0]->maxs[2], std::numeric_limits<float>::lowest());
    Read51(Box51(0, 64));
    EXPECT_TRUE(HasBounds(*Blocks().at(0)));
    Read(Level(Box50(0, 64, "SKY 0 0 0 1 1")));
    EXPECT_TRUE(HasBounds(*Blocks().at(0)));
}

TEST_F(BlockChecks, FlatVertexBlocksHaveBoundsWithSizeflat) {
    Read51(Box51(0, 64, "WALL_OUT " + Vectors));
    EXPECT_FALSE(HasBounds(*Blocks().at(0)));
    Options().sizeflat = 64;
    Read51(Box51(0, 64, "WALL_OUT " + Vectors));
    EXPECT_TRUE(HasBounds(*Blocks().at(0)));
}

TEST_F(BlockChecks, FirstFlaggedFaceInTheListDecidesOnBounds) {
    Options().sizeflat = 64;
    const auto faces = [](const std::string& fifth, const std::string& sixth) {
        std::string text;
        for (size_t i = 0; i < 4; ++i) text += BoxCorners[i] + " : WALL " + Vectors + "\n";
        return text + BoxCorners[4] + " : " + fifth + " " + Vectors + "\n" + BoxCorners[5] + " : " + sixth + " " +
               Vectors + "\n";
    };
    Read51(Block51(faces("SKY", "WALL_OUT")));
    EXPECT_TRUE(HasBounds(*Blocks().at(0)));
    Read51(Block51(faces("WALL_OUT", "SKY")));
    EXPECT_FALSE(HasBounds(*Blocks().at(0)));
    Read51(Block51(faces("WALL_OUT", "WALL")));
    EXPECT_TRUE(HasBounds(*Blocks().at(0)));
}

}  // namespace

}  // namespace k2k::test
