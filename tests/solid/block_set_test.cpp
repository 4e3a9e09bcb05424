#include <cmath>

#include "solid/block.h"
#include "solid/block_faces.h"
#include "solid_support.h"

namespace k2k {
namespace {

using test::AddTextureWithFlags;
using test::BoxBlock;
using test::Logged;
using test::MapFaceOf;
using test::SetOf;

class BlockSetTest : public test::SolidTest {
  protected:
    BlockSetTest() { ComputeHullBoxes(); }

    static int32_t Contents(uint32_t blockFlags, uint32_t textureFlags, int32_t hull) {
        auto block = BoxBlock({0, 0, 0}, {64, 64, 64}, 1, blockFlags);
        block->faces.front().texinfo = AddTextureWithFlags(textureFlags);
        const CBlockSet set = SetOf(std::move(block), hull);
        return set.blocks.empty() ? 0 : set.blocks.front()->contents;
    }
    static std::vector<int32_t> Numbers(const CBlockSet& set) {
        std::vector<int32_t> numbers;
        for (const CBlock& block : set.blocks) numbers.push_back(block.blockNumber);
        return numbers;
    }
};

TEST_F(BlockSetTest, BuildsTheFacesOfABox) {
    const CBlockSet set = SetOf(BoxBlock({0, 0, 0}, {64, 32, 16}, 9));
    ASSERT_EQ(set.blocks.size(), 1U);
    const CBlock& block = *set.blocks.front();
    EXPECT_EQ(block.mins, (Vec3{0, 0, 0}));
    EXPECT_EQ(block.maxs, (Vec3{64, 32, 16}));
    EXPECT_EQ(block.contents, ContentsSolid);
    EXPECT_EQ(block.blockNumber, 9);
    ASSERT_EQ(block.faces.size(), 6U);
    // The last side comes first: the floor, seen from below.
    const CBlockFace& floor = *block.faces.front();
    EXPECT_EQ(FaceNormal(floor)[2], -1.0F);
    EXPECT_EQ(floor.sourceBlock, 9);
    EXPECT_EQ(floor.numpoints(), 4);
    for (const CBlockFace& face : block.faces) {
        const CPlane plane = PolygonPlane(*PolygonOfFace(face));
        EXPECT_EQ(plane.normal, FaceNormal(face)) << "points run clockwise as seen from the front";
    }
}

TEST_F(BlockSetTest, CountsAllBlocksOffered) {
    std::vector<std::unique_ptr<MapBlock>> blocks;
    blocks.push_back(BoxBlock({0, 0, 0}, {64, 64, 64}, 1, BlockInvisible));
    blocks.push_back(BoxBlock({-8, 80, 0}, {64, 90, 64}, 2));
    const CBlockSet set = SetOf(std::move(blocks));
    EXPECT_EQ(set.count, 2);
    EXPECT_EQ(set.blocks.size(), 1U);
    EXPECT_EQ(set.mins, (Vec3{-8, 80, 0}));
    EXPECT_EQ(set.maxs, (Vec3{64, 90, 64}));
    EXPECT_EQ(ProgressTotal, 2);
    EXPECT_EQ(ProgressDone, 2);
}

TEST_F(BlockSetTest, AnEmptySetHasInvertedBounds) {
    const CBlockSet set = SetOf(std::vector<std::unique_ptr<MapBlock>>{});
    EXPECT_EQ(set.mins[0], 9999999.0F);
    EXPECT_EQ(set.maxs[2], -9999999.0F);
}

TEST_F(BlockSetTest, OrdersNonSolidBlocksForwardThenSolidBlocksBackward) {
    std::vector<std::unique_ptr<MapBlock>> blocks;
    const std::array<uint32_t, 6> flags{0, BlockPassable, BlockMarked, BlockDetail, 0, BlockPassable};
    for (int32_t i = 0; i < 6; ++i)
        blocks.push_back(BoxBlock({0, 0, 0}, {8, 8, 8}, i + 1, flags[static_cast<size_t>(i)]));
    // Detail counts as non-solid for the order, the mark does not.
    EXPECT_EQ(Numbers(SetOf(std::move(blocks))), (std::vector<int32_t>{2, 4, 6, 5, 3, 1}));
}

TEST_F(BlockSetTest, TakesContentsFromBlockFlags) {
    EXPECT_EQ(Contents(0, 0, 0), -128);
    EXPECT_EQ(Contents(BlockMarked, 0, 0), -127);
    EXPECT_EQ(Contents(BlockMarkedToo, 0, 0), -127);
    EXPECT_EQ(Contents(BlockPassable, 0, 0), -126);
    EXPECT_EQ(Contents(BlockDetail, 0, 0), -112);
    EXPECT_EQ(Contents(BlockMarked | BlockPassable | BlockDetail, 0, 0), -109);
}

TEST_F(BlockSetTest, TakesContentsFromTheFirstSidesTexture) {
    EXPECT_EQ(Contents(0, TexturePassable, 0), -126);
    EXPECT_EQ(Contents(0, TextureDetail, 0), -112);
    EXPECT_EQ(Contents(0, TextureClipOnly, 0), 0) << "absent";
    EXPECT_EQ(Contents(0, TextureClipOnly, 1), -128);
    EXPECT_EQ(Contents(0, TextureSky | TextureNoLightmap, 0), -126);
    Options().solidsky = true;
    EXPECT_EQ(Contents(0, TextureSky | TextureNoLightmap, 0), -128);
}

TEST_F(BlockSetTest, AnInvisibleBlockIsInTheCollisionHullsOnly) {
    EXPECT_EQ(Contents(BlockInvisible, 0, 0), 0);
    EXPECT_EQ(Contents(BlockInvisible, 0, 1), -128);
    EXPECT_EQ(Contents(BlockInvisible, 0, 2), -128);
}

TEST_F(BlockSetTest, CollisionHullsKnowNoDetailAndNoMarks) {
    EXPECT_EQ(Contents(BlockDetail | BlockMarked, TextureDetail, 1), -128);
    EXPECT_EQ(Contents(BlockDetail | BlockPassable, 0, 2), -126);
}

TEST_F(BlockSetTest, TheVisualHullIsTheFirstSethullsValue) {
    Options().sethulls = {1, 0, 2};
    ComputeHullBoxes();
    EXPECT_EQ(Contents(BlockInvisible, 0, 1), 0) << "hull 1 is the visual one";
    EXPECT_EQ(Contents(BlockDetail, 0, 1), -112) << "and keeps detail";
    EXPECT_EQ(Contents(BlockInvisible | BlockMarked, 0, 0), -123) << "hull argument 0 keeps all bits";
}

TEST_F(BlockSetTest, CollisionHullsHaveTextureZero) {
    auto block = BoxBlock({0, 0, 0}, {64, 64, 64});
    const int32_t texinfo = AddTextureWithFlags(2);
    for (MapFace& face : block->faces) face.texinfo = texinfo;
    IntrusiveList<MapBlock> list;
    list.push_front(std::move(block));
    const CBlockSet visual = BuildBlockSet(list, 0);
    for (const CBlockFace& face : visual.blocks.front()->faces) EXPECT_EQ(face.texinfo, texinfo);
    const CBlockSet narrow = BuildBlockSet(list, 1);
    for (const CBlockFace& face : narrow.blocks.front()->faces) EXPECT_EQ(face.texinfo, 0);
}

TEST_F(BlockSetTest, ACubeGrowsByTheNarrowBox) {
    const CBlockSet set = SetOf(BoxBlock({0, 0, 0}, {64, 64, 64}), 1);
    EXPECT_EQ(set.blocks.front()->mins, (Vec3{-16, -16, -16}));
    EXPECT_EQ(set.blocks.front()->maxs, (Vec3{80, 80, 80}));
    EXPECT_EQ(set.blocks.front()->faces.size(), 6U);
}

TEST_F(BlockSetTest, ACubeGrowsByTheFatBox) {
    const CBlockSet set = SetOf(BoxBlock({0, 0, 0}, {64, 64, 64}), 2);
    EXPECT_EQ(set.blocks.front()->mins, (Vec3{-32, -32, -32}));
    EXPECT_EQ(set.blocks.front()->maxs, (Vec3{96, 96, 80}));
}

TEST_F(BlockSetTest, StandsAnyHullArgument) {
    for (const int32_t hull : {-7, 3, 1000}) {
        const CBlockSet set = SetOf(BoxBlock({0, 0, 0}, {64, 64, 64}), hull);
        EXPECT_EQ(set.blocks.front()->maxs, (Vec3{64, 64, 64}));
    }
}

TEST_F(BlockSetTest, SnapsCoordinatesThatAreNearlyWhole) {
    const CBlockSet set = SetOf(BoxBlock({0, 0, 0}, {63.9995F, 63.99F, 64.0009F}));
    EXPECT_EQ(set.blocks.front()->maxs, (Vec3{64, 63.99F, 64}));
    const CBlockSet outside = SetOf(BoxBlock({0, 0, 0}, {63.9989F, 64.0011F, 63.9991F}));
    EXPECT_EQ(outside.blocks.front()->maxs, (Vec3{63.9989F, 64.0011F, 64}));
}

TEST_F(BlockSetTest, AConcaveBlockNeedsTheMeshOption) {
    for (const int32_t hull : {0, 1, 2}) {
        const CBlockSet set = SetOf(BoxBlock({0, 0, 0}, {64, 64, 64}, 5, BlockMesh), hull);
        EXPECT_TRUE(set.blocks.empty());
        EXPECT_EQ(Logged(), " \nWARNING: block 4 is concave. Enable -mesh option to allow concave blocks.\n");
    }
}

TEST_F(BlockSetTest, ASideThatTheOthersCutAwayKeepsWhatItLastWas) {
    // The plane z = 200 lies above the top: nothing of it is in the block, and it keeps what it last was.
    auto block = BoxBlock({0, 0, 0}, {64, 64, 64}, 3);
    block->faces.push_back(MapFaceOf({0, 0, 1}, 200));
    const CBlockSet set = SetOf(std::move(block));
    EXPECT_EQ(set.blocks.front()->faces.size(), 7U);
    EXPECT_EQ(set.blocks.front()->maxs[2], 200.0F);
    EXPECT_EQ(Logged(), "");
}

// A prism around the z axis.
std::unique_ptr<MapBlock> Prism(int sides, int32_t number) {
    auto block = std::make_unique<MapBlock>();
    block->number = number;
    const int32_t texinfo = AddTextureWithFlags(0);
    block->faces.push_back(MapFaceOf({0, 0, 1}, 64, texinfo));
    block->faces.push_back(MapFaceOf({0, 0, -1}, 64, texinfo));
    for (int i = 0; i < sides; ++i) {
        const double angle = 2 * M_PI * i / sides;
        Vec3 normal = Narrow({std::cos(angle), std::sin(angle), 0});
        Normalize(normal);
        block->faces.push_back(MapFaceOf(normal, 1000, texinfo));
    }
    return block;
}

TEST_F(BlockSetTest, AFaceHasAtMost40Points) {
    const CBlockSet set = SetOf(Prism(40, 1));
    EXPECT_EQ(set.blocks.front()->faces.size(), 42U);
    test::ExpectFatal([] { SetOf(Prism(41, 7)); }, "E09E - block 6 has too many edges");
}

TEST_F(BlockSetTest, CoordinatesBeyond999999AreFatal) {
    Options().bound = 4000000;
    test::ExpectFatal([] { SetOf(BoxBlock({0, 0, 0}, {1000001, 64, 64}, 8)); }, "E007: Block 7 out of range");
    EXPECT_EQ(SetOf(BoxBlock({0, 0, -999999}, {999999, 64, 64}, 8)).blocks.size(), 1U);
}

TEST_F(BlockSetTest, MarksProgressAtEvery61stBlockBuilt) {
    for (int i = 0; i < 60; ++i) SetOf(BoxBlock({0, 0, 0}, {8, 8, 8}));
    EXPECT_EQ(Logged(), "");
    SetOf(BoxBlock({0, 0, 0}, {8, 8, 8}));
    EXPECT_EQ(Logged(), ".");
    // Collision hulls build their blocks twice.
    for (int i = 0; i < 30; ++i) SetOf(BoxBlock({0, 0, 0}, {8, 8, 8}), 1);
    EXPECT_EQ(Logged(), "");
    SetOf(BoxBlock({0, 0, 0}, {8, 8, 8}), 1);
    EXPECT_EQ(Logged(), ".");
}

class CheckFaceTest : public BlockSetTest {
  protected:
    static std::unique_ptr<CBlockFace> Floor(std::vector<Vec3> points) {
        auto face = test::MakeFloorFace(std::move(points));
        face->sourceBlock = 5;
        return face;
    }
    static std::unique_ptr<CBlockFace> Bent() { return Floor({{-8, 8, 2.5F}, {8, 8, 0}, {8, -8, 0}, {-8, -8, 0}}); }
    static std::unique_ptr<CBlockFace> WithNullEdge() {
        return Floor({{-8, 8, 0}, {8, 8, 0}, {8, 7.995F, 0}, {8, -8, 0}, {-8, -8, 0}});
    }
    static std::unique_ptr<CBlockFace> Dented() {
        return Floor({{-8, 8, 0}, {8, 8, 0}, {0, 0, 0}, {8, -8, 0}, {-8, -8, 0}});
    }
};

TEST_F(CheckFaceTest, AcceptsAClockwiseSquare) {
    CheckFace(*Floor({{-8, 8, 0}, {8, 8, 0}, {8, -8, 0}, {-8, -8, 0}}), 0);
    EXPECT_EQ(Logged(), "");
    EXPECT_EQ(WarnCount, 0);
}

TEST_F(CheckFaceTest, NeedsThreePoints) {
    test::ExpectFatal([] { CheckFace(*Floor({{-8, 8, 0}, {8, 8, 0}}), 0); }, " \nSurface: 2 vertices");
}

TEST_F(CheckFaceTest, RefusesCoordinatesThatAreNoNumbers) {
    for (const float bad : {NAN, INFINITY, -INFINITY, 1000000.0F, -1000000.0F}) {
        for (size_t axis = 0; axis < 3; ++axis) {
            auto face = Floor({{-8, 8, 0}, {8, 8, 0}, {8, -8, 0}, {-8, -8, 0}});
            face->points[2][axis] = bad;
            test::ExpectFatal([&] { CheckFace(*face, 0); }, "E007: Block 4 out of range");
        }
    }
}

TEST_F(CheckFaceTest, W010ShowsTheInternalNumberAndW011TheEditors) {
    CheckFace(*Bent(), 0);
    EXPECT_EQ(Logged(), " \nWARNING W010: block 5 - vertex out of plane!\n");
    CheckFace(*WithNullEdge(), 0);
    EXPECT_EQ(Logged(), " \nWARNING W011: block 4 - null length edge!\n");
    EXPECT_EQ(WarnCount, 2);
}

TEST_F(CheckFaceTest, AVertexTwoUnitsOffThePlaneIsAccepted) {
    CheckFace(*Floor({{-8, 8, 2}, {8, 8, -2}, {8, -8, 0}, {-8, -8, 0}}), 0);
    EXPECT_EQ(WarnCount, 0);
}

TEST_F(CheckFaceTest, AnEdgeOfAHundredthIsNoNullEdge) {
    const auto warnings = [](float length) {
        WarnCount = 0;
        CheckFace(*Floor({{-8, 8, 0}, {8, 8, 0}, {8, 8 - length, 0}, {8, -8, 0}, {-8, -8, 0}}), 0);
        return WarnCount.load();
    };
    EXPECT_EQ(warnings(0.0101F), 0);
    EXPECT_EQ(warnings(0.0099F), 1);
}

TEST_F(CheckFaceTest, AVertexMayLieBeyondAnEdgeByTheTolerance) {
    // The ends of the dented edge lie twice as far beyond its halves as the dent is deep.
    const auto warnings = [](float dent) {
        WarnCount = 0;
        CheckFace(*Floor({{-8, 8, 0}, {0, 8 - dent, 0}, {8, 8, 0}, {8, -8, 0}, {-8, -8, 0}}), 0);
        return WarnCount.load();
    };
    EXPECT_EQ(warnings(0.024F), 0);
    EXPECT_EQ(warnings(0.026F), 2);
}

TEST_F(CheckFaceTest, WarnsForEachVertexBeyondEachEdge) {
    CheckFace(*Dented(), 0);
    // Two edges run into the dent; each has one vertex beyond it.
    EXPECT_EQ(WarnCount, 2);
    EXPECT_EQ(Logged(), " \nWARNING W012: block 4 non-convex!\n");
}

TEST_F(CheckFaceTest, LooksFromTheFacesSide) {
    auto face = Floor({{-8, -8, 0}, {8, -8, 0}, {8, 8, 0}, {-8, 8, 0}});
    face->planeside = 1;
    CheckFace(*face, 0);
    EXPECT_EQ(WarnCount, 0);
    face->planeside = 0;
    CheckFace(*face, 0);
    EXPECT_EQ(WarnCount, 8);
}

TEST_F(CheckFaceTest, AWarningPrintsOnceForEachHull) {
    for (int i = 0; i < 3; ++i) CheckFace(*Bent(), 0);
    CheckFace(*Bent(), 1);
    CheckFace(*Bent(), 1);
    CheckFace(*Bent(), 17);
    CheckFace(*Bent(), 17);
    const std::string text = " \nWARNING W010: block 5 - vertex out of plane!\n";
    EXPECT_EQ(Logged(), text + text + text);
    EXPECT_EQ(WarnCount, 7);
}

TEST_F(CheckFaceTest, VerbosePrintsEveryWarning) {
    Options().verbose = true;
    for (const int32_t hull : {0, 0, -4, -4}) CheckFace(*WithNullEdge(), hull);
    const std::string text = " \nWARNING W011: block 4 - null length edge!\n";
    EXPECT_EQ(Logged(), text + text + text + text);
}

TEST_F(CheckFaceTest, QuietPrintsNoneAndUsesUpTheFirst) {
    Options().quiet = true;
    for (const int32_t hull : {0, 8}) CheckFace(*Dented(), hull);
    EXPECT_EQ(Logged(), "");
    EXPECT_EQ(WarnCount, 4);
    Options().quiet = false;
    for (const int32_t hull : {0, 8}) CheckFace(*Dented(), hull);
    EXPECT_EQ(Logged(), "");
}

}  // namespace
}  // namespace k2k
