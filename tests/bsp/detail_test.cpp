#include "bsp/detail.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "bsp/pipeline.h"
#include "bsp/test_blocks.h"
#include "bsp/tree_build.h"
#include "solid/csg.h"

namespace k2k {
namespace {

using test::Box;
using test::BoxSet;
using test::Square;
using test::SurfaceOf;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<int32_t> NumbersOf(const CBlockSet& set) {
    std::vector<int32_t> numbers;
    for (const CBlock& block : set.blocks) numbers.push_back(block.blockNumber);
    return numbers;
}

class Detail : public test::TreeTest {
  protected:
    Detail() {
        ResetTreeTables();
        plain_ = test::AddTexture(0);
        detail_ = test::AddTexture(TextureDetail);
        Options().sizeshaded = 996;
    }

    // A floor of 400 x 400 at z = 0, as the only structural surface of the level tables.
    void EmitFloor(int32_t texinfo) {
        BeginSurfaceTables();
        auto floor = Square({0, 0, 1}, {0, 0, 0}, 200, texinfo);
        EmitSingleSurface(*floor);
    }

    int32_t plain_ = 0, detail_ = 0;
};

TEST_F(Detail, SplittingMovesDetailBlocksToTheHeadOfTheNewSet) {
    CBlockSet set = BoxSet({{{0, 0, 0}, {8, 8, 8}, ContentsSolid + ContentsDetail},
                            {{20, 0, 0}, {28, 8, 8}},
                            {{40, 0, 0}, {48, 8, 8}, ContentsSolid + ContentsDetail},
                            {{60, 0, 0}, {68, 8, 8}}});
    const CBlockSet detail = SplitDetailBlocks(set);
    EXPECT_THAT(NumbersOf(detail), ElementsAre(3, 1));
    EXPECT_THAT(NumbersOf(set), ElementsAre(2, 4));
    EXPECT_EQ(detail.count, 2);
    EXPECT_EQ(set.count, 4);
    EXPECT_EQ(detail.maxs, set.maxs);
}

TEST_F(Detail, TakingAllLeavesNothingAndNoDetail) {
    CBlockSet set = BoxSet({{{0, 0, 0}, {8, 8, 8}, ContentsSolid + ContentsDetail}, {{20, 0, 0}, {28, 8, 8}}});
    const CBlockSet all = TakeAllBlocks(set);
    EXPECT_THAT(NumbersOf(all), ElementsAre(1, 2));
    EXPECT_EQ(all.count, 2);
    EXPECT_THAT(NumbersOf(set), IsEmpty());
    EXPECT_EQ(set.count, 0);
    for (const CBlock& block : all.blocks) EXPECT_EQ(block.contents, ContentsSolid);
}

TEST_F(Detail, FacesAreTakenInSurfaceAndFaceOrder) {
    auto a = Square({1, 0, 0}, {0, 0, 0}, 8);
    auto b = Square({1, 0, 0}, {0, 40, 0}, 8);
    auto c = Square({0, 1, 0}, {0, 0, 0}, 8);
    const std::array<CBlockFace*, 3> expected{a.get(), b.get(), c.get()};
    const FaceList faces =
        TakeDetailFaces(test::ListOf(SurfaceOf(std::move(a), std::move(b)), SurfaceOf(std::move(c))));
    std::vector<CBlockFace*> taken;
    for (CBlockFace& face : faces) taken.push_back(&face);
    EXPECT_THAT(taken, testing::ElementsAreArray(expected));
    EXPECT_TRUE(TakeDetailFaces({}).empty());
}

TEST_F(Detail, EmittedFacesCountProgress) {
    FaceList faces;
    for (int i = 0; i < 301; ++i) faces.push_front(Square({0, 0, 1}, {0, 0, static_cast<float>(i)}, 8, detail_));
    BeginSurfaceTables();
    StartProgress(1000);
    EmitDetailFaces(faces);
    EXPECT_EQ(ProgressDone, 301);
    EXPECT_EQ(TakeLoggedText(), ".");
    EXPECT_EQ(Geometry().surfaces.size(), 301U);
}

// A tree of one vertical wall's plane at x = 0, whose final plane is not the first row of the table.
class FilteredDetail : public Detail {
  protected:
    FilteredDetail() {
        Geometry().planes.emplace_back();
        SurfaceList list;
        list.push_front(SurfaceOf(Square({1, 0, 0}, {0, 0, 0}, 8, plain_), Square({-1, 0, 0}, {0, 0, 0}, 8, plain_)));
        CBlockSet set;
        set.mins = {-100, -100, -100};
        set.maxs = {100, 100, 100};
        root_ = SolidBsp(std::move(list), true, 1, set);
        MapPlanes(*root_);
    }

    void Filter(std::unique_ptr<CBlockFace> face) {
        faces_.push_front(std::move(face));
        FilterDetailFaces(faces_, *root_);
    }
    CBspNode& front() { return *root_->children[0]; }
    CBspNode& back() { return *root_->children[1]; }
    bool Lists(const CBspNode& leaf) { return !leaf.markFaces.empty() && leaf.markFaces.back() == faces_.front(); }

    std::unique_ptr<CBspNode> root_;
    FaceList faces_;
};

TEST_F(FilteredDetail, AFaceIsListedBehindTheOthersOfEachLeafItReaches) {
    const size_t before = front().markFaces.size();
    Filter(Square({0, 0, 1}, {0, 0, 50}, 20, detail_));
    EXPECT_TRUE(Lists(front()));
    EXPECT_TRUE(Lists(back()));
    EXPECT_EQ(front().markFaces.size(), before + 1);
    EXPECT_EQ(front().contents, ContentsEmpty | ContentsDetail);
    EXPECT_EQ(faces_.front()->contents, (std::array<int32_t, 2>{ContentsEmpty, ContentsSolid}));
    EXPECT_EQ(root_->contents, 0);
}

TEST_F(FilteredDetail, APieceReachesTheLeafOnItsSideOnly) {
    Filter(Square({0, 0, 1}, {30, 0, 50}, 20, detail_));
    EXPECT_TRUE(Lists(front()));
    EXPECT_FALSE(Lists(back()));
}

TEST_F(FilteredDetail, AFaceThatFindsNoOpenLeafGoesToTheRoot) {
    front().contents = ContentsSolid;
    back().contents = ContentsSolid + ContentsDetail;
    Filter(Square({0, 0, 1}, {0, 0, 50}, 20, detail_));
    EXPECT_TRUE(Lists(*root_));
    EXPECT_FALSE(Lists(front()));
    EXPECT_EQ(root_->contents, ContentsDetail);
}

TEST_F(FilteredDetail, ANodeOnFinalPlaneZeroCountsAsALeaf) {
    Geometry().planes.clear();
    MapPlanes(*root_);
    ASSERT_EQ(root_->outputPlane, 0);
    Filter(Square({0, 0, 1}, {0, 0, 50}, 20, detail_));
    EXPECT_TRUE(Lists(*root_));
    EXPECT_FALSE(Lists(front()));
    EXPECT_EQ(root_->contents, ContentsDetail);
}

TEST_F(Detail, CutEdgesMoveHalfAUnitOffThePlane) {
    // The part behind x = 0 is 0.4 wide, so what stands for it lies between -0.5 and -0.4.
    CBspNode root;
    const auto addChildren = [](CBspNode& node, float x) -> CBspNode& {
        node.outputPlane = static_cast<int32_t>(Geometry().planes.size());
        FinalPlaneRecord& plane = Geometry().planes.emplace_back();
        plane.normal = {1, 0, 0};
        plane.dist = x;
        for (auto& child : node.children) {
            child = std::make_unique<CBspNode>();
            child->contents = ContentsEmpty;
        }
        return *node.children[1];
    };
    Geometry().planes.emplace_back();
    CBspNode& behind = addChildren(root, 0);
    behind.contents = 0;
    addChildren(behind, -0.42F);
    FaceList faces;
    faces.push_front(Square({0, 0, 1}, {19.6F, 0, 0}, 20, detail_));
    FilterDetailFaces(faces, root);
    EXPECT_EQ(root.children[0]->markFaces.size(), 1U);
    EXPECT_EQ(behind.children[0]->markFaces.size(), 0U);
    EXPECT_EQ(behind.children[1]->markFaces.size(), 1U);
}

TEST_F(Detail, TheCheckMarksProgressAtEvery30thBlock) {
    const CBlockSet set = BoxSet(std::vector<test::Box>(61, {{0, 0, 0}, {8, 8, 8}, ContentsSolid, detail_}));
    StartProgress(61);
    std::vector<int32_t> listed;
    EXPECT_TRUE(CheckDetailMidpoints(set, listed));
    EXPECT_EQ(TakeLoggedText(), "..");
}

TEST_F(Detail, ASurfaceWithItsMiddleInsideAndAVertexOutsideListsTheBlock) {
    EmitFloor(plain_);
    const CBlockSet set = BoxSet({{{-50, -50, 0}, {50, 50, 20}, ContentsSolid, detail_}});
    std::vector<int32_t> listed;
    EXPECT_FALSE(CheckDetailMidpoints(set, listed));
    EXPECT_THAT(listed, ElementsAre(1));
}

TEST_F(Detail, ABlockIsListedOnceAndTheCheckGoesOn) {
    EmitFloor(plain_);
    EmitFloor(plain_);
    const CBlockSet set = BoxSet({{{-50, -50, 0}, {50, 50, 20}, ContentsSolid, detail_},
                                  {{100, 100, 0}, {150, 150, 20}, ContentsSolid, detail_},
                                  {{-10, -10, -8}, {10, 10, 8}, ContentsSolid, detail_}});
    std::vector<int32_t> listed;
    StartProgress(3);
    CheckDetailMidpoints(set, listed);
    EXPECT_THAT(listed, ElementsAre(1, 3));
    EXPECT_EQ(ProgressDone, 3);
}

TEST_F(Detail, ASurfaceWhollyInsideIsNotCut) {
    EmitFloor(plain_);
    const CBlockSet set = BoxSet({{{-250, -250, -8}, {250, 250, 20}, ContentsSolid, detail_}});
    std::vector<int32_t> listed;
    EXPECT_TRUE(CheckDetailMidpoints(set, listed));
}

TEST_F(Detail, TheMiddleLiesOneUnitInFrontOfTheSurface) {
    EmitFloor(plain_);
    std::vector<int32_t> listed;
    // The block ends below the floor's front; the box test takes its own bounds in.
    EXPECT_TRUE(CheckDetailMidpoints(BoxSet({{{-50, -50, -20}, {50, 50, 0.5F}, ContentsSolid, detail_}}), listed));
    EXPECT_FALSE(CheckDetailMidpoints(BoxSet({{{-50, -50, -20}, {50, 50, 1}, ContentsSolid, detail_}}), listed));
}

TEST_F(Detail, SurfacesThatLookDownHaveTheirMiddleBelow) {
    BeginSurfaceTables();
    auto ceiling = Square({0, 0, -1}, {0, 0, 0}, 200, plain_);
    EmitSingleSurface(*ceiling);
    std::vector<int32_t> listed;
    EXPECT_TRUE(CheckDetailMidpoints(BoxSet({{{-50, -50, 0.5F}, {50, 50, 20}, ContentsSolid, detail_}}), listed));
    EXPECT_FALSE(CheckDetailMidpoints(BoxSet({{{-50, -50, -20}, {50, 50, 0}, ContentsSolid, detail_}}), listed));
}

TEST_F(Detail, SurfacesOfSpecialTexturesAreNotLookedAt) {
    for (const uint32_t flag : {1U, 2U, 4U, 8U, 32U, 128U}) EmitFloor(test::AddTexture(flag));
    const CBlockSet set = BoxSet({{{-50, -50, 0}, {50, 50, 20}, ContentsSolid, detail_}});
    std::vector<int32_t> listed;
    EXPECT_TRUE(CheckDetailMidpoints(set, listed));
    for (const uint32_t flag : {16U, 64U}) EmitFloor(test::AddTexture(flag));
    EXPECT_FALSE(CheckDetailMidpoints(set, listed));
}

TEST_F(Detail, APointNearAFacePlaneIsJudgedByTheOtherFaces) {
    const CBlockSet set = BoxSet({{{0, 0, 0}, {8, 8, 8}}});
    const CBlock& block = *set.blocks.front();
    EXPECT_TRUE(PointInsideBlock({4, 4, 4}, block));
    EXPECT_TRUE(PointInsideBlock({8.09F, 4, 4}, block));
    EXPECT_FALSE(PointInsideBlock({8.11F, 4, 4}, block));
    EXPECT_TRUE(PointInsideBlock({8, 8, 8}, block));
    EXPECT_FALSE(PointInsideBlock({8, 8, 9}, block));
}

TEST_F(Detail, APointOnTheSameSideOfAllFacesPasses) {
    CBlock block;
    block.faces.push_front(Square({1, 0, 0}, {0, 0, 0}, 8));
    block.faces.push_front(Square({0, 1, 0}, {0, 0, 0}, 8));
    EXPECT_TRUE(PointInsideBlock({5, 5, 0}, block));
    EXPECT_TRUE(PointInsideBlock({-5, -5, 0}, block));
    EXPECT_FALSE(PointInsideBlock({-5, 5, 0}, block));
}

}  // namespace
}  // namespace k2k
