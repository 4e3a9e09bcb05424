#include <gtest/gtest.h>

#include "surface_fixture.h"

namespace k2k {
namespace {

using test::AddFace;
using test::MakeFace;
using test::MakeLeaf;
using test::MakeNode;
using test::Rectangle;

class RegionTest : public test::SurfaceTest {
  protected:
    static std::vector<uint32_t> SurfacesOf(size_t region) {
        const CRegion& row = Portals().regions[region];
        const auto first = Portals().regionSurfaces.begin() + row.firstSurface;
        return {first, first + row.surfaceCount};
    }
    // Numbers stand for surfaces that were emitted.
    static std::unique_ptr<CBlockFace> Emitted(int32_t outputIndex) {
        auto face = MakeFace(0, {}, outputIndex + 100);
        face->outputIndex = outputIndex;
        return face;
    }
};

TEST_F(RegionTest, SqueezesBoundsBeyond29000) {
    EXPECT_EQ(SqueezeBound(29000), 29000);
    EXPECT_EQ(SqueezeBound(30024), 29001);
    EXPECT_EQ(SqueezeBound(30023), 29000);
    EXPECT_EQ(SqueezeBound(-29000), -29000);
    EXPECT_EQ(SqueezeBound(-30023), -29000);
    EXPECT_EQ(SqueezeBound(-30024), -29001);
    EXPECT_EQ(SqueezeBound(56025), 29026);
}

TEST_F(RegionTest, CutsBoundsTowardZeroFirst) {
    EXPECT_EQ(SqueezeBound(12.9F), 12);
    EXPECT_EQ(SqueezeBound(-12.9F), -12);
    EXPECT_EQ(SqueezeBound(29000.9F), 29000);
}

TEST_F(RegionTest, BearsBoundsThatAreNoNumbers) {
    SqueezeBound(std::numeric_limits<float>::quiet_NaN());
    SqueezeBound(1e30F);
    SqueezeBound(-1e30F);
}

TEST_F(RegionTest, WritesNodesAndRegionsInPreOrder) {
    // root: front is a node of two open leaves, back an open leaf
    auto root = MakeNode(0, MakeNode(0, MakeLeaf(ContentsEmpty), MakeLeaf(ContentsSolid + ContentsOpen)),
                         MakeLeaf(ContentsEmpty + ContentsMarked));
    root->outputPlane = 5;
    root->firstFace = 3;
    root->numFaces = 2;
    root->mins = {-64, -30024, 1.5F};
    root->maxs = {64, 30024, 90};
    root->children[0]->outputPlane = 6;
    WriteRegions(*root);

    const auto& nodes = Portals().nodes;
    ASSERT_EQ(nodes.size(), 2U);
    EXPECT_EQ(nodes[0].plane, 5U);
    EXPECT_EQ(nodes[0].firstSurface, 3U);
    EXPECT_EQ(nodes[0].surfaceCount, 2U);
    EXPECT_EQ(nodes[0].mins, (std::array<int16_t, 3>{-64, -29001, 1}));
    EXPECT_EQ(nodes[0].maxs, (std::array<int16_t, 3>{64, 29001, 90}));
    EXPECT_EQ(nodes[0].children, (std::array<int32_t, 2>{1, -4}));
    EXPECT_EQ(nodes[1].plane, 6U);
    EXPECT_EQ(nodes[1].children, (std::array<int32_t, 2>{-2, -3}));
    const auto& regions = Portals().regions;
    ASSERT_EQ(regions.size(), 4U);
    EXPECT_EQ(regions[1].contents, ContentsEmpty);
    EXPECT_EQ(regions[2].contents, ContentsSolid + ContentsOpen);
    EXPECT_EQ(regions[3].contents, ContentsEmpty + ContentsMarked);
    EXPECT_EQ(regions[1].visOffset, -1);
    EXPECT_EQ(Geometry().info.visRegions, 3);
    EXPECT_EQ(Geometry().info.headNodes[0], 0);
}

TEST_F(RegionTest, SharesOneRegionForSolidLeaves) {
    auto root = MakeNode(0, MakeNode(0, MakeLeaf(ContentsSolid), MakeLeaf(ContentsSolid + ContentsMarked)),
                         MakeLeaf(ContentsSolid + ContentsDetail));
    WriteRegions(*root);
    EXPECT_EQ(Portals().nodes[0].children, (std::array<int32_t, 2>{1, -1}));
    EXPECT_EQ(Portals().nodes[1].children, (std::array<int32_t, 2>{-1, -1}));
    EXPECT_EQ(Portals().regions.size(), 1U);
    EXPECT_EQ(Geometry().info.visRegions, 0);
}

TEST_F(RegionTest, GivesAClipOnlySolidLeafARegionOfItsOwn) {
    auto root = MakeNode(0, MakeLeaf(ContentsSolid + ContentsClipOnly));
    WriteRegions(*root);
    EXPECT_EQ(Portals().nodes[0].children[0], -2);
}

TEST_F(RegionTest, MakesOneRegionAndNoNodeOfASingleLeaf) {
    Portals().nodes.resize(4);
    auto root = MakeLeaf(ContentsEmpty);
    WriteRegions(*root);
    EXPECT_EQ(Portals().regions.size(), 2U);
    EXPECT_EQ(Portals().nodes.size(), 4U);
    EXPECT_EQ(Geometry().info.headNodes[0], 4);
}

TEST_F(RegionTest, TakesANodeThatDetailFellBackOnForANode) {
    auto root = MakeNode(0);
    root->contents |= ContentsDetail;
    WriteRegions(*root);
    EXPECT_EQ(Portals().nodes.size(), 1U);
}

TEST_F(RegionTest, StoresTheBoundsOfTheBlocks) {
    auto root = MakeNode(0);
    root->mins = {-89, -153.5F, -25};
    root->maxs = {89, 153.5F, 25};
    WriteRegions(*root);
    EXPECT_EQ(Geometry().info.mins, (Vec3{-64, -128.5F, 0}));
    EXPECT_EQ(Geometry().info.maxs, (Vec3{64, 128.5F, 0}));
}

TEST_F(RegionTest, CountsTheSurfacesOfEachModel) {
    auto root = MakeNode(0);
    Geometry().surfaces.resize(7);
    WriteRegions(*root);
    EXPECT_EQ(Geometry().info.firstSurface, 0);
    EXPECT_EQ(Geometry().info.surfaceCount, 7);
    Geometry().surfaces.resize(12);
    WriteRegions(*root);
    EXPECT_EQ(Geometry().info.firstSurface, 7);
    EXPECT_EQ(Geometry().info.surfaceCount, 5);
    EXPECT_EQ(Geometry().info.headNodes[0], 1);
}

TEST_F(RegionTest, ListsTheSurfacesOfALeaf) {
    const auto a = Emitted(4);
    const auto b = Emitted(2);
    auto root = MakeNode(0, MakeLeaf(ContentsEmpty, {a.get(), b.get()}), MakeLeaf(ContentsEmpty, {b.get()}));
    WriteRegions(*root);
    EXPECT_EQ(SurfacesOf(1), (std::vector<uint32_t>{4, 2}));
    EXPECT_EQ(SurfacesOf(2), (std::vector<uint32_t>{2}));
    EXPECT_EQ(Portals().regions[2].firstSurface, 2U);
}

TEST_F(RegionTest, EndsAListAtItsFirstNull) {
    const auto a = Emitted(4);
    const auto b = Emitted(2);
    auto root = MakeLeaf(ContentsEmpty, {a.get(), nullptr, b.get()});
    WriteRegions(*root);
    EXPECT_EQ(SurfacesOf(1), (std::vector<uint32_t>{4}));
}

TEST_F(RegionTest, ListsAllPiecesOfAFaceInChainOrder) {
    const auto last = Emitted(1);
    const auto middle = Emitted(7);
    const auto face = Emitted(3);
    face->leafCopy = middle.get();
    middle->leafCopy = last.get();
    auto root = MakeLeaf(ContentsEmpty, {face.get()});
    WriteRegions(*root);
    EXPECT_EQ(SurfacesOf(1), (std::vector<uint32_t>{3, 7, 1}));
}

TEST_F(RegionTest, ListsTheMergedFaceInPlaceOfAFaceAndFollowsItsChain) {
    const auto piece = Emitted(6);
    const auto lost = Emitted(7);
    const auto merged = Emitted(5);
    const auto face = Emitted(3);
    face->surfaceOut = merged.get();
    face->leafCopy = lost.get();
    merged->leafCopy = piece.get();
    auto root = MakeLeaf(ContentsEmpty, {face.get()});
    WriteRegions(*root);
    EXPECT_EQ(SurfacesOf(1), (std::vector<uint32_t>{5, 6}));
}

TEST_F(RegionTest, NotesTheBlocksOfSurfacesOnlyWithMesh) {
    const auto face = Emitted(3);
    auto root = MakeLeaf(ContentsEmpty, {face.get()});
    WriteRegions(*root);
    EXPECT_TRUE(State().MeshSurfaceTable.empty());
    Options().mesh = true;
    WriteRegions(*root);
    EXPECT_EQ(State().MeshSurfaceTable[103], std::set<int32_t>{3});
}

TEST_F(RegionTest, ListsFinishedSurfacesThroughTheWholeRoad) {
    const int32_t floor = Floor();
    auto root = MakeNode(floor);
    CBlockFace& face = AddFace(*root, MakeFace(floor, Rectangle(0, 0, 64, 64)));
    AddFace(*root, MakeFace(floor, Rectangle(64, 0, 128, 64)));
    root->children[0]->markFaces = {root->faces.front()->next, &face};
    MapPlanes(*root);
    MakeSurfaces(*root);
    WriteRegions(*root);
    EXPECT_EQ(SurfacesOf(1), (std::vector<uint32_t>{1, 0}));
}

}  // namespace
}  // namespace k2k
