// Blocks of dialect 5.0: what the lines may look like, and what they mean.
#include "map_text.h"
#include "mapread/file_map50.h"

namespace k2k::test {

namespace {

class Block50 : public MapTest {
  protected:
    // The texinfo of a face with this text behind its points, as the map's first block has it.
    const Texinfo& Mapped(const std::string& behind) {
        Read(Level(Box50(0, 64, behind)));
        return TexinfoOf(Blocks().at(0)->faces.at(0));
    }
    void ExpectFatalFace(const std::string& face, const std::string& message) {
        ExpectFatalRead("{\n" + Box50(0, 64) + "{\n{ 0 }\n" + face + "\n}\n}\n", message);
    }
};

// Lines before the face of ExpectFatalFace.
const std::string FaceLine = "13";

TEST_F(Block50, HasFacesWithTheLastInFront) {
    Read(Level(Box50(0, 64)));
    const MapBlock& block = *Blocks().at(0);
    ASSERT_EQ(block.faces.size(), 6U);
    EXPECT_EQ(block.faces.front().normal, (Vec3{0, 0, 1}));
    EXPECT_EQ(block.faces.back().normal, (Vec3{-1, 0, 0}));
    EXPECT_EQ(block.faces.front().dist, 64);
    EXPECT_EQ(block.faces.front().planeType, 2);
    EXPECT_EQ(block.faces.back().planeType, -3);
    EXPECT_EQ(block.faces.front().block, 1);
    EXPECT_EQ(block.faces.front().planeNumber, 0);
    EXPECT_FALSE(block.fromVertices);
    EXPECT_TRUE(block.faces.front().polygon.empty());
}

TEST_F(Block50, HasTheBoundsOfItsFaces) {
    Read(Level(Box50(-16, 64)));
    const MapBlock& block = *Blocks().at(0);
    EXPECT_EQ(block.mins, (Vec3{-16, -16, -16}));
    EXPECT_EQ(block.maxs, (Vec3{64, 64, 64}));
    EXPECT_EQ(block.faces.front().mins, (Vec3{-16, -16, 64}));
    EXPECT_EQ(block.faces.front().maxs, (Vec3{64, 64, 64}));
}

TEST_F(Block50, TakesItsFlagsFromTheFirstTokenOfTheFirstGroup) {
    const auto flagsOf = [this](const std::string& groups) {
        Read(Level("{\n" + groups + BoxFaces50(0, 64) + "}\n"));
        return Blocks().at(0)->flags;
    };
    EXPECT_EQ(flagsOf("{ 00000101 1111 ndef }\n"), 5U);
    EXPECT_EQ(flagsOf("{ 1 }\n{ 110 }\n"), 1U);
    EXPECT_EQ(flagsOf("{ }\n{ 110 }\n"), 0U);
    EXPECT_EQ(flagsOf(""), 0U);
}

TEST_F(Block50, CountsGroupsInsideAGroup) {
    Read(Level("{\n{ 10 { 1 { 1 } } 1 }\n" + BoxFaces50(0, 64) + "}\n"));
    ASSERT_EQ(Blocks().size(), 1U);
    EXPECT_EQ(Blocks()[0]->flags, 2U);
    EXPECT_EQ(Blocks()[0]->faces.size(), 6U);
}

TEST_F(Block50, ReadsDeepGroupsWithoutEnd) {
    std::string open, close;
    for (int i = 0; i < 200000; ++i) open += "{ ", close += "} ";
    Read(Level("{\n" + open + close + "\n" + BoxFaces50(0, 64) + "}\n"));
    EXPECT_EQ(Blocks().size(), 1U);
    ExpectFatalRead("{\n{\n" + open + "\n", " \nE715");
}

TEST_F(Block50, PointsMayStandOnLinesOfTheirOwn) {
    std::string text = Box50(0, 64);
    for (size_t at = text.find(" ) ( "); at != std::string::npos; at = text.find(" ) ( ", at)) text[at + 2] = '\n';
    Read(Level(text));
    EXPECT_EQ(Blocks().size(), 1U);
}

TEST_F(Block50, NumbersOfAPointShareItsLine) {
    ExpectFatalFace("( 1 0\n0 ) ( 0 0 0 ) ( 0 1 0 ) WALL 0 0 0 1 1", " \nInvalid line " + FaceLine);
    ExpectFatalFace("( 1 0 0\n) ( 0 0 0 ) ( 0 1 0 ) WALL 0 0 0 1 1", " \nInvalid line " + FaceLine);
}

TEST_F(Block50, BracketsOfAPointMustBeThere) {
    const std::string message = "Block 1 invalid syntax\n";
    ExpectFatalFace("[ 1 0 0 ) ( 0 0 0 ) ( 0 1 0 ) WALL 0 0 0 1 1", message);
    ExpectFatalFace("( 1 0 0 ] ( 0 0 0 ) ( 0 1 0 ) WALL 0 0 0 1 1", message);
    ExpectFatalFace("( 1 0 0 ) 0 0 0 ) ( 0 1 0 ) WALL 0 0 0 1 1", message);
    ExpectFatalFace("( 1 0 0 ) ( 0 0 0 ) ( 0 1 0 0 ) WALL 0 0 0 1 1", message);
    ExpectFatalRead("{\n{\n( 1 0 0 ) \n", "Block 0 invalid syntax\n");
}

TEST_F(Block50, PointsMustBeNumbers) {
    const std::string message = "Invalid plane, block 1 line " + FaceLine + "\n";
    const std::string behind = " WALL 0 0 0 1 1";
    for (const char* bad : {"nan", "-nan", "inf", "-inf", "1e39", "-1e39"}) {
        for (const char* points : {"( X 0 0 ) ( 0 0 0 ) ( 0 1 0 )", "( 1 0 0 ) ( 0 X 0 ) ( 0 1 0 )",
                                   "( 1 0 0 ) ( 0 0 0 ) ( 0 1 X )", "( 1 0 X ) ( 0 0 X ) ( 0 1 X )"}) {
            std::string face = points + behind;
            for (size_t at = face.find('X'); at != std::string::npos; at = face.find('X')) face.replace(at, 1, bad);
            ExpectFatalFace(face, message);
        }
    }
    Options().hiprec = false;
    ExpectFatalFace("( nan 0 0 ) ( 0 0 0 ) ( 0 1 0 )" + behind, message);
}

TEST_F(Block50, PlanesMustHaveADistance) {
    ExpectFatalFace("( 3e38 1e38 3e38 ) ( 3e38 3e38 1e38 ) ( 1e38 3e38 3e38 ) WALL 0 0 0 1 1",
                    "Invalid plane, block 1 line " + FaceLine + "\n");
}

TEST_F(Block50, FarOutsideTheWorldEnclosesNoVolume) {
    Read(Level(Box50(0, 1e30) + Box50(1e30, 2e30) + Box50(-1e30, 1e30) + Box50(0, 64)));
    EXPECT_EQ(Blocks().size(), 1U);
    EXPECT_EQ(TakeLoggedText(), "\nWARNING W075: Invalid brush 0 - not a volume !\n");
    EXPECT_EQ(WarnCount, 3);
}

TEST_F(Block50, MappingSharesTheLineOfTheLastPoint) {
    const std::string points = "( 1 0 0 ) ( 0 0 0 ) ( 0 1 0 )";
    ExpectFatalFace(points + "\nWALL 0 0 0 1 1", " \nInvalid line " + FaceLine);
    ExpectFatalFace(points + " WALL 0 0 0\n1 1", " \nInvalid line " + FaceLine);
}

TEST_F(Block50, MapsByShiftsRotationAndScales) {
    const Texinfo& texinfo = Mapped("WALL 8.9 -16 0 2 0.5");  // the face looks up
    EXPECT_EQ(texinfo.vecS, (Vec3{0.5, 0, 0}));
    EXPECT_EQ(texinfo.vecT, (Vec3{0, -2, 0}));
    EXPECT_EQ(texinfo.shiftS, 8);
    EXPECT_EQ(texinfo.shiftT, -16);
}

TEST_F(Block50, MapsByTheNormalOfEachFace) {
    Read(Level(Box50(0, 64, "WALL 0 0 90 0 1")));
    const MapBlock& block = *Blocks().at(0);
    EXPECT_EQ(TexinfoOf(block.faces[0]).vecS, (Vec3{0, 1, 0}));  // +z
    EXPECT_EQ(TexinfoOf(block.faces[0]).vecT, (Vec3{1, 0, 0}));
    EXPECT_EQ(TexinfoOf(block.faces[4]).vecS, (Vec3{0, 0, 1}));  // +x
    EXPECT_EQ(TexinfoOf(block.faces[4]).vecT, (Vec3{0, 1, 0}));
}

TEST_F(Block50, RotationIsAWholeNumber) {
    EXPECT_EQ(Mapped("WALL 0 0 90.7 1 1").vecS, (Vec3{0, 1, 0}));
}

TEST_F(Block50, WithoutATailHasNoAmbientAndAlbedo50) {
    const Texinfo& texinfo = Mapped("WALL 0 0 0 1 1");
    EXPECT_EQ(texinfo.ambient, 0);
    EXPECT_EQ(texinfo.albedo, 50);
    EXPECT_EQ(texinfo.flags, 0U);
    EXPECT_EQ(texinfo.material[0], '\0');
}

TEST_F(Block50, TailSetsAmbientAndAlbedoAsBytes) {
    const Texinfo& texinfo = Mapped("WALL 0 0 0 1 1 : 0 -1 300 0");
    EXPECT_EQ(texinfo.ambient, 255);
    EXPECT_EQ(texinfo.albedo, 44);
    EXPECT_EQ(texinfo.flags, 0U);
}

TEST_F(Block50, TailMayBeginOnALaterLine) {
    EXPECT_EQ(Mapped("WALL 0 0 0 1 1\n\n: 0 7 60 0").ambient, 7);
    EXPECT_EQ(Blocks().at(0)->faces.size(), 6U);
}

TEST_F(Block50, TailStaysOnTheLineOfItsMark) {
    ExpectFatalFace("( 1 0 0 ) ( 0 0 0 ) ( 0 1 0 ) WALL 0 0 0 1 1 : 0 0\n50 0", " \nInvalid line " + FaceLine);
}

TEST_F(Block50, TailFlagsReplaceThoseOfTheName) {
    EXPECT_EQ(Mapped("*WATER 0 0 0 1 1 : 0100 0 50 0").flags, 5U);
    EXPECT_EQ(Mapped("*WATER 0 0 0 1 1 : 10000 0 50 0").flags, 17U);
}

TEST_F(Block50, TailFlagsOfZeroLeaveThoseOfTheName) {
    EXPECT_EQ(Mapped("*WATER 0 0 0 1 1 : 0000 0 50 0").flags, 73U);
}

TEST_F(Block50, SecondFlagsGoIntoTheHighHalf) {
    EXPECT_EQ(Mapped("WALL 0 0 0 1 1 : 0010 0 50 0 x y 101").flags, 0x50003U);
    EXPECT_EQ(Mapped("SKY 0 0 0 1 1 : 0 0 50 0 x y 1").flags, 0x10005U);
}

TEST_F(Block50, SecondFlagsNeedThreeItems) {
    ExpectFatalFace("( 1 0 0 ) ( 0 0 0 ) ( 0 1 0 ) WALL 0 0 0 1 1 : 0 0 50 0 x", " \nInvalid line " + FaceLine);
    ExpectFatalFace("( 1 0 0 ) ( 0 0 0 ) ( 0 1 0 ) WALL 0 0 0 1 1 : 0 0 50 0 x y", " \nInvalid line " + FaceLine);
}

TEST_F(Block50, TailMayEndTheText) {
    ExpectFatalRead("{\n{\n( 1 0 0 ) ( 0 0 0 ) ( 0 1 0 ) WALL 0 0 0 1 1\n", " \nE715");
    ExpectFatalRead("{\n{\n( 1 0 0 ) ( 0 0 0 ) ( 0 1 0 ) WALL 0 0 0 1 1 : 0 0 50 0\n", " \nE715");
}

TEST_F(Block50, KnowsNoZoomAndNoBoundary) {
    Options().zoomlevel = 2;
    Options().bound = 200;
    Read(Level(Box50(-100, 100)));
    EXPECT_EQ(Blocks().at(0)->faces[0].dist, 100);
    Options().zoomlevel = 1;
    std::string far = Box50(0, 64);
    far.replace(far.find("( 0.000000 0.000000 1.000000 )"), 30, "( 0 0 100000 )");
    Read(Level(far));
    EXPECT_EQ(Blocks().size(), 1U);
}

class MappingProbe : public CFileMap50 {
  public:
    using CFileMap50::ReadTextureMapping;
};

TEST_F(Block50, MappingNeedsAFace) {
    MappingProbe reader;
    Texinfo texinfo;
    ExpectFatal([&] { reader.ReadTextureMapping(texinfo, nullptr, 3); }, "Null pointer in line 1\n");
}

}  // namespace

}  // namespace k2k::test
