#include "bsp/tree_build.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "bsp/test_blocks.h"
#include "solid/csg.h"

namespace k2k {
namespace {

using test::Box;
using test::BoxSet;
using test::ListOf;
using test::Square;
using test::SurfaceOf;
using testing::ElementsAre;

class TreeBuilding : public test::TreeTest {
  protected:
    TreeBuilding() {
        plain_ = test::AddTexture(TextureNoLightmap);
        detail_ = test::AddTexture(TextureNoLightmap | TextureDetail);
    }

    std::unique_ptr<CBlockFace> Face(const Vec3& normal, const Vec3& middle, float half = 8) const {
        return Square(normal, middle, half, plain_);
    }
    std::unique_ptr<CBspNode> TreeOf(SurfaceList list, bool midSplit = true) const {
        CBlockSet set;
        set.mins = {-100, -100, -100};
        set.maxs = {100, 100, 100};
        return SolidBsp(std::move(list), midSplit, 0, set);
    }

    int32_t plain_ = 0, detail_ = 0;
};

TEST_F(TreeBuilding, BoundsAreTheSetsAndAMargin) {
    const auto root = TreeOf({});
    EXPECT_EQ(root->mins, (Vec3{-124, -124, -124}));
    EXPECT_EQ(root->maxs, (Vec3{124, 124, 124}));
}

TEST_F(TreeBuilding, NoSurfacesGiveASolidLeafOrAnEmptyOneWithoutBsp) {
    auto root = TreeOf({});
    EXPECT_EQ(root->planenum, LeafPlane);
    EXPECT_EQ(root->contents, ContentsSolid);
    Options().nobsp = true;
    EXPECT_EQ(TreeOf({})->contents, ContentsEmpty);
}

TEST_F(TreeBuilding, ASingleBlockHasItsFacesOnTheNodesAndOneSolidLeafInside) {
    const CBlockSet set = BoxSet({{{-8, -8, -8}, {8, 8, 8}, ContentsSolid, plain_}});
    auto root = SolidBsp(CSGFaces(set, false), true, 0, set);
    size_t nodeFaces = 0;
    for (CBspNode* node = root.get(); node->contents == 0;) {
        nodeFaces += node->faces.size();
        const bool frontIsLeaf = node->children[0]->contents != 0;
        node = node->children[frontIsLeaf ? 1 : 0].get();
    }
    EXPECT_EQ(nodeFaces, 6U);
    const auto leaves = test::LeavesOf(*root);
    ASSERT_EQ(leaves.size(), 7U);
    EXPECT_EQ(std::count_if(leaves.begin(), leaves.end(), [](auto* leaf) { return leaf->contents == ContentsSolid; }),
              1);
    CBspNode& inside = PointInLeaf(*root, {0, 0, 0});
    EXPECT_EQ(inside.contents, ContentsSolid);
    EXPECT_TRUE(inside.markFaces.empty());
    EXPECT_EQ(PointInLeaf(*root, {9, 0, 0}).contents, ContentsEmpty);
}

TEST_F(TreeBuilding, APointOnANodePlaneGoesToTheBackChild) {
    auto root = TreeOf(ListOf(SurfaceOf(Face({1, 0, 0}, {0, 0, 0}))));
    EXPECT_EQ(&PointInLeaf(*root, {0, 0, 0}), root->children[1].get());
    EXPECT_EQ(&PointInLeaf(*root, {0.001F, 0, 0}), root->children[0].get());
}

TEST_F(TreeBuilding, FacesOfOneSideLeaveTheOtherChildATemporaryFace) {
    auto root = TreeOf(ListOf(SurfaceOf(Face({1, 0, 0}, {0, 0, 0}))));
    EXPECT_EQ(root->children[0]->contents, ContentsEmpty);
    EXPECT_EQ(root->children[0]->markFaces.size(), 1U);
    // What is behind the face fills the other child, which lists no face.
    EXPECT_EQ(root->children[1]->contents, ContentsSolid);
    EXPECT_TRUE(root->children[1]->markFaces.empty());
}

TEST_F(TreeBuilding, TheTemporaryFaceTellsTheContentsBehind) {
    auto face = Face({-1, 0, 0}, {0, 0, 0});
    face->contents = {ContentsEmpty, ContentsSolid + ContentsOpen};
    auto root = TreeOf(ListOf(SurfaceOf(std::move(face))));
    EXPECT_EQ(root->children[0]->contents, ContentsSolid + ContentsOpen);
    EXPECT_EQ(root->children[1]->contents, ContentsEmpty);
}

TEST_F(TreeBuilding, LeavesListTheNodesCopiesInReverse) {
    auto root = TreeOf(ListOf(SurfaceOf(Face({1, 0, 0}, {0, 0, 0}), Face({1, 0, 0}, {0, 40, 0}))));
    std::vector<CBlockFace*> copies;
    for (CBlockFace& face : root->faces) copies.push_back(&face);
    ASSERT_EQ(copies.size(), 2U);
    EXPECT_THAT(root->children[0]->markFaces, ElementsAre(copies[1], copies[0]));
}

TEST_F(TreeBuilding, DifferentContentsInALeafMakeItSolidAndWarnOnce) {
    const auto inconsistent = [this] {
        auto open = Face({1, 0, 0}, {0, 40, 0});
        open->contents[0] = ContentsSolid + ContentsOpen;
        return TreeOf(ListOf(SurfaceOf(Face({1, 0, 0}, {0, 0, 0}), std::move(open))));
    };
    EXPECT_EQ(inconsistent()->children[0]->contents, ContentsSolid);
    inconsistent();
    EXPECT_EQ(TakeLoggedText(), " \nWARNING W064: Block with\tinconsistent surfaces\n");
    Options().verbose = true;
    inconsistent();
    EXPECT_EQ(TakeLoggedText(), " \nWARNING W064: Block with\tinconsistent surfaces\n");
    EXPECT_EQ(WarnCount, 0);
}

TEST_F(TreeBuilding, DetailFacesHaveNoSayInTheContents) {
    auto detail = Square({1, 0, 0}, {0, 40, 0}, 8, detail_);
    detail->contents[0] = ContentsSolid + ContentsOpen;
    auto root = TreeOf(ListOf(SurfaceOf(std::move(detail), Face({1, 0, 0}, {0, 0, 0}))));
    EXPECT_EQ(root->children[0]->contents, ContentsEmpty);
    EXPECT_EQ(root->children[0]->markFaces.size(), 2U);
    EXPECT_EQ(TakeLoggedText(), "");
}

TEST_F(TreeBuilding, ALeafOfPositiveContentsIsFatal) {
    TreeBuild build;
    CBspNode leaf;
    auto surface = SurfaceOf(Face({1, 0, 0}, {0, 0, 0}));
    surface->faces.front()->contents[0] = 1;
    test::ExpectFatal([&] { LinkLeafFaces(build, ListOf(std::move(surface)), leaf); }, "E065");
}

TEST_F(TreeBuilding, ATemporaryFaceBesideRealOnesIsFatal) {
    TreeBuild build;
    CBspNode leaf;
    auto temporary = Face({1, 0, 0}, {0, 0, 0});
    temporary->sourceBlock = TemporaryBlock;
    auto list = ListOf(SurfaceOf(std::move(temporary)), SurfaceOf(Face({0, 1, 0}, {0, 0, 0})));
    test::ExpectFatal([&] { LinkLeafFaces(build, std::move(list), leaf); }, "E065a: Invalid temporary face");
}

TEST_F(TreeBuilding, AFaceWithoutCopyHidesTheFacesBehindIt) {
    TreeBuild build;
    CBspNode leaf;
    CBlockFace copy;
    auto first = Face({1, 0, 0}, {0, 0, 0});
    auto third = Face({1, 0, 0}, {0, 40, 0});
    first->leafCopy = third->leafCopy = &copy;
    auto list = ListOf(SurfaceOf(std::move(first), Face({1, 0, 0}, {0, 20, 0}), std::move(third)));
    LinkLeafFaces(build, std::move(list), leaf);
    EXPECT_THAT(leaf.markFaces, ElementsAre(&copy));
}

TEST_F(TreeBuilding, ASurfaceOnThePlanePartsByFaceSideAndKeepsOrder) {
    auto a = Face({1, 0, 0}, {0, 0, 0});
    auto b = Face({-1, 0, 0}, {0, 20, 0});
    auto c = Face({1, 0, 0}, {0, 40, 0});
    auto d = Face({-1, 0, 0}, {0, 60, 0});
    const std::array<CBlockFace*, 4> faces{a.get(), b.get(), c.get(), d.get()};
    auto surface = SurfaceOf(std::move(a), std::move(b), std::move(c), std::move(d));
    const CPlane plane = TablePlane(surface->planenum);
    const SurfacePieces pieces = DivideSurface(std::move(surface), plane);
    EXPECT_TRUE(pieces.front->onNode);
    EXPECT_TRUE(pieces.back->onNode);
    EXPECT_EQ(pieces.front->faces.front(), faces[0]);
    EXPECT_EQ(pieces.front->faces.front()->next, faces[2]);
    EXPECT_EQ(pieces.back->faces.front(), faces[1]);
    EXPECT_EQ(pieces.back->faces.front()->next, faces[3]);
}

TEST_F(TreeBuilding, ParallelSurfacesGoWholeToTheirSide) {
    const CPlane plane{{1, 0, 0}, 10, 0};
    EXPECT_NE(DivideSurface(SurfaceOf(Face({-1, 0, 0}, {11, 0, 0})), plane).front, nullptr);
    EXPECT_NE(DivideSurface(SurfaceOf(Face({1, 0, 0}, {9, 0, 0})), plane).back, nullptr);
    // Nearer than any epsilon, but not equal.
    EXPECT_NE(DivideSurface(SurfaceOf(Face({1, 0, 0}, {10.001F, 0, 0})), plane).front, nullptr);
}

TEST_F(TreeBuilding, NormalsWithinAHundredthAreParallel) {
    const auto pieces = [this](float tilt) {
        const Vec3 normal{std::sqrt(1 - tilt * tilt), tilt, 0};
        return DivideSurface(SurfaceOf(Face(normal, {10, 0, 0})), {{1, 0, 0}, 10, 0});
    };
    const SurfacePieces whole = pieces(0.0099F);
    EXPECT_NE(whole.front == nullptr, whole.back == nullptr);
    const SurfacePieces cut = pieces(-0.0101F);  // the other way, so that it is no plane of before
    EXPECT_NE(cut.front, nullptr);
    EXPECT_NE(cut.back, nullptr);
}

TEST_F(TreeBuilding, CutFacesComeInReverseAndBoundsAreTakenAnewOnlyWhenBothSidesHoldFaces) {
    auto surface = SurfaceOf(Face({0, 0, 1}, {-20, 0, 0}), Face({0, 0, 1}, {0, 0, 0}), Face({0, 0, 1}, {40, 0, 0}));
    auto cut = DivideSurface(std::move(surface), {{1, 0, 0}, 4, 0});
    EXPECT_EQ(cut.front->mins[0], 4);
    EXPECT_EQ(cut.front->maxs[0], 48);
    EXPECT_EQ(cut.back->mins[0], -28);
    EXPECT_EQ(cut.back->maxs[0], 4);
    EXPECT_EQ(cut.front->faces.front()->points[0][0] >= 32, true);
    EXPECT_EQ(cut.back->faces.front()->points[0][0] >= -8, true);
    cut.back->maxs[0] = 77;
    EXPECT_EQ(DivideSurface(std::move(cut.back), {{0, 1, 0}, 50, 1}).back->maxs[0], 77);
}

TEST_F(TreeBuilding, ASurfaceThatLosesAllFacesIsFatal) {
    auto sliver = Face({0, 0, 1}, {0, 0, 0});
    sliver->points = {{0, 0, 0}, {0.005F, 8, 0}, {0.009F, 0, 0}};
    auto list = ListOf(SurfaceOf(Face({1, 0, 0}, {0, 40, 0})), SurfaceOf(std::move(sliver)));
    list.front()->next->onNode = true;
    test::ExpectFatal([&] { TreeOf(std::move(list)); }, "E066");
}

TEST_F(TreeBuilding, OnlyAxialPlanesDivideTheBounds) {
    CBspNode node;
    node.mins = {-10, -10, -10};
    node.maxs = {10, 10, 10};
    for (auto& child : node.children) child = std::make_unique<CBspNode>();
    DivideNodeBounds(node, {{0, 1, 0}, 4, 1});
    EXPECT_EQ(node.children[0]->mins, (Vec3{-10, 4, -10}));
    EXPECT_EQ(node.children[0]->maxs, node.maxs);
    EXPECT_EQ(node.children[1]->mins, node.mins);
    EXPECT_EQ(node.children[1]->maxs, (Vec3{10, 4, 10}));
    DivideNodeBounds(node, {{0, 0, -1}, -4, -1});
    EXPECT_EQ(node.children[0]->mins, (Vec3{-10, -10, -4}));
    DivideNodeBounds(node, {{0.6F, 0.8F, 0}, 4, 4});
    EXPECT_EQ(node.children[0]->mins, node.mins);
    EXPECT_EQ(node.children[1]->maxs, node.maxs);
}

TEST_F(TreeBuilding, ProgressCountsNodesOutOfTwiceTheSurfaces) {
    TreeOf(ListOf(SurfaceOf(Face({1, 0, 0}, {0, 0, 0})), SurfaceOf(Face({1, 0, 0}, {20, 0, 0})),
                  SurfaceOf(Face({1, 0, 0}, {40, 0, 0}))));
    EXPECT_EQ(ProgressTotal, 6);
    EXPECT_EQ(ProgressDone, 3);
}

TEST_F(TreeBuilding, ADotIsPrintedEvery300Nodes) {
    SurfaceList list;
    for (int i = 0; i < 700; ++i) list.push_front(SurfaceOf(Face({1, 0, 0}, {static_cast<float>(i), 0, 0})));
    TreeOf(std::move(list));
    EXPECT_EQ(TakeLoggedText(), "..");
}

TEST_F(TreeBuilding, ATreeMayBeAsDeepAsItHasPlanes) {
    constexpr int Depth = 5000;
    SurfaceList list;
    for (int i = 0; i < Depth; ++i) {
        const auto at = static_cast<float>(Depth - i);
        list.push_front(SurfaceOf(Face({0.6F, 0.8F, 0}, {0.6F * at, 0.8F * at, 0})));
    }
    // No plane is axial, so the first one is taken: the lowest and, as lists turn round at each node, the highest in
    // turn.
    const auto root = TreeOf(std::move(list));
    int depth = 0;
    for (const CBspNode* node = root.get(); node->contents == 0;) {
        ++depth;
        node = node->children[node->children[0]->contents == 0 ? 0 : 1].get();
    }
    EXPECT_EQ(depth, Depth);
}

TEST_F(TreeBuilding, ResetLeavesTheDummyEdgeAndTheSolidRegion) {
    Geometry().edges.resize(7);
    Portals().regions.resize(5);
    ResetTreeTables();
    ASSERT_EQ(Geometry().edges.size(), 1U);
    EXPECT_EQ(Geometry().edges[0].first, 0U);
    ASSERT_EQ(Portals().regions.size(), 1U);
    EXPECT_EQ(Portals().regions[0].contents, ContentsSolid);
}

}  // namespace
}  // namespace k2k
