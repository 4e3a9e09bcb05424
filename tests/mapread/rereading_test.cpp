// The second pass over blocks that need precise planes; it takes place when -hiprec is off.
#include "map_text.h"

namespace k2k::test {

namespace {

class Rereading : public MapTest {
  protected:
    Rereading() { Options().hiprec = false; }
};

// Rounded to whole numbers it is flat: 0.5 and 1.4 both become 1.
const std::string Thin = Box50(0.5, 1.4);
const std::string Solid = Box50(100, 164);
const std::string HiPrec = "\n--Invalid blocks detected- recompiling with HiPrec--\n";

TEST_F(Rereading, SavesABlockThatRoundingFlattens) {
    Read(Level(Thin + Solid));
    EXPECT_EQ(TakeLoggedText(), HiPrec);
    EXPECT_EQ(WarnCount, 0);
    ASSERT_EQ(Blocks().size(), 2U);
    EXPECT_EQ(Blocks()[0]->maxs, (Vec3{1, 1, 1}));
    EXPECT_EQ(Blocks()[0]->mins, (Vec3{0.5, 0.5, 0.5}));
    EXPECT_EQ(Blocks()[1]->number, 2);
}

TEST_F(Rereading, LeavesNothingOfTheFirstPass) {
    Read(Level(Thin + Solid) + "{\n5 0 45\n}\n");
    ASSERT_EQ(Entities().size(), 2U);
    EXPECT_EQ(Entities()[0].keys.size(), 3U);
    EXPECT_EQ(Entities()[1].keys.size(), 3U);
}

TEST_F(Rereading, IsQuietUnderQuiet) {
    Options().quiet = true;
    Read(Level(Thin + Solid));
    EXPECT_EQ(TakeLoggedText(), "");
    EXPECT_EQ(Blocks().size(), 2U);
}

TEST_F(Rereading, TellsItsMarksWithVerbose) {
    Options().verbose = true;
    Read(Level(Thin + Solid));
    const std::string narrow = " WARNING W071a: block 0 - Narrow planes!\n Marked for rereading...\n";
    const std::string open = " WARNING W075a: block 0 - not a volume !\n Marked for rereading...\n";
    EXPECT_EQ(TakeLoggedText(), narrow + narrow + narrow + open + HiPrec);
}

TEST_F(Rereading, DoesNotTakePlaceWithHiprec) {
    Options().hiprec = true;
    Read(Level(Thin + Solid));
    EXPECT_EQ(TakeLoggedText(), "");
    EXPECT_EQ(Blocks().size(), 2U);
}

TEST_F(Rereading, DoesNotTakePlaceWhenNoBlockHasAMarkedNumber) {
    Read(Level(Solid + Thin));
    EXPECT_EQ(TakeLoggedText(), "");
    EXPECT_EQ(WarnCount, 0);
    EXPECT_EQ(Blocks().size(), 1U);
}

TEST_F(Rereading, IsNoHelpForMeshBlocks) {
    // A mesh block has precise planes in the first pass.
    const std::string mesh = "{\n" + BoxHead51(0, 64, 7) + "{ 100000 ndef }\n" + BoxFaces51("WALL " + Vectors) +
                             "3 1 5 7 : WALL " + Vectors + "\n}\n";
    Read("version 511\n" + Level(mesh));
    EXPECT_EQ(TakeLoggedText(), "");
    EXPECT_EQ(WarnCount, 0);
    EXPECT_EQ(Blocks().at(0)->faces.size(), 7U);
}

TEST_F(Rereading, WarnsAsUsualInTheSecondPass) {
    Read(Level(Box50(0, 64) + "{\n{ 0 }\n}\n" + Thin + Solid));
    // The empty block is marked as number 2, which the thin one needs.
    EXPECT_EQ(TakeLoggedText(), HiPrec + "\nWARNING W075: Invalid brush 1 - not a volume !\n");
    EXPECT_EQ(WarnCount, 1);
    EXPECT_EQ(Blocks().size(), 3U);
}

TEST_F(Rereading, SavesVertexBlocksToo) {
    std::string plate = "{\nvertices 8\nfaces 6\n";
    for (const char* height : {" 0.5\n", " 1.4\n"}) {
        for (const char* corner : {"0 0", "64 0", "0 64", "64 64"}) plate += std::string(corner) + height;
    }
    plate += "{ 0 ndef }\n" + BoxFaces51("WALL " + Vectors) + "}\n";
    Read("version 511\n" + Level(plate + Box51(100, 164)));
    EXPECT_EQ(Blocks().size(), 2U);
    EXPECT_EQ(Blocks()[0]->mins[2], 0.5F);
    EXPECT_NE(TakeLoggedText().find(HiPrec), std::string::npos);
}

TEST_F(Rereading, TellsOfFacesWithoutANormalInTheFirstPass) {
    Read("version 511\n" + Level(Box51(0.5, 1.4) + Box51(100, 164)));
    EXPECT_EQ(TakeLoggedText(), " \nWARNING W072: block 0 - plane 6 too narrow!\n" + HiPrec);
    EXPECT_EQ(Blocks().size(), 2U);
}

}  // namespace

}  // namespace k2k::test
