#include <gtest/gtest.h>

#include "surface/table_limits.h"
#include "surface_fixture.h"

namespace k2k {
namespace {

using test::AddFace;
using test::ExpectFatal;
using test::MakeFace;
using test::MakeLeaf;
using test::MakeNode;
using test::PointsOfSurface;
using test::Rectangle;

class MakeSurfacesTest : public test::SurfaceTest {
  protected:
    static void MapAndMake(CBspNode& root) {
        MapPlanes(root);
        MakeSurfaces(root);
    }
};

TEST_F(MakeSurfacesTest, StartsWithADummyEdgeAndASolidRegion) {
    EXPECT_EQ(Geometry().edges.size(), 1U);
    EXPECT_EQ(Geometry().edges[0].second, 0U);
    ASSERT_EQ(Portals().regions.size(), 1U);
    EXPECT_EQ(Portals().regions[0].contents, ContentsSolid);
    EXPECT_EQ(Portals().regions[0].visOffset, 0);
}

TEST_F(MakeSurfacesTest, FillsARowFromTheFace) {
    const int32_t other = AddPlane({0, 0, 1}, 32);
    auto root = MakeNode(other, MakeLeaf(ContentsEmpty), MakeNode(Floor()));
    CBlockFace& face = AddFace(*root->children[1], MakeFace(Floor(), Rectangle(0, 0, 64, 64), 0x12345));
    face.planeside = 1;
    face.texinfo = 7;
    MapAndMake(*root);

    ASSERT_EQ(Geometry().surfaces.size(), 1U);
    const SurfaceRecord& row = Geometry().surfaces[0];
    EXPECT_EQ(row.blockId, 0x2345);
    EXPECT_EQ(row.side, 1);
    EXPECT_EQ(row.firstEdge, 0U);
    EXPECT_EQ(row.edgeCount, 4);
    EXPECT_EQ(row.texInfoId, 7);
    EXPECT_EQ(row.lightShift + row.lightPage + row.lightX + row.lightY, 0);
    EXPECT_EQ(row.lightOffset, 0xFFFFFFFFU);
    EXPECT_EQ(row.planeNumber, 1U);
    EXPECT_EQ(face.outputIndex, 0);
    EXPECT_EQ(PointsOfSurface(row), face.points);
}

TEST_F(MakeSurfacesTest, CopiesPlanesOfTheMapInPreOrder) {
    const int32_t floor = Floor();
    const int32_t slope = AddPlane({0.6F, 0, 0.8F}, 12);
    auto root = MakeNode(slope, MakeNode(floor), MakeNode(slope));
    MapPlanes(*root);
    EXPECT_EQ(root->outputPlane, 0);
    EXPECT_EQ(root->children[0]->outputPlane, 1);
    EXPECT_EQ(root->children[1]->outputPlane, 0);
    EXPECT_EQ(root->children[1]->children[0]->outputPlane, 0);
    ASSERT_EQ(Geometry().planes.size(), 2U);
    EXPECT_EQ(Geometry().planes[0].normal, (Vec3{0.6F, 0, 0.8F}));
    EXPECT_EQ(Geometry().planes[0].dist, 12);
    EXPECT_EQ(Geometry().planes[0].type, 5);
    EXPECT_EQ(Geometry().planes[1].type, 2);
}

TEST_F(MakeSurfacesTest, GivesTwoModelsTwoRowsForOnePlane) {
    auto root = MakeNode(Floor());
    MapPlanes(*root);
    MapPlanes(*root);
    EXPECT_EQ(root->outputPlane, 1);
    EXPECT_EQ(Geometry().planes.size(), 2U);
}

TEST_F(MakeSurfacesTest, RefusesAPlaneThatIsNotInTheTable) {
    ExpectFatal([] { FinalPlane(-1); }, "E013: Map size - too many surfaces");
    ExpectFatal([] { FinalPlane(1000); }, "E013: Map size - too many surfaces");
}

TEST_F(MakeSurfacesTest, GivesNodesContiguousRangesInPreOrder) {
    const int32_t floor = Floor();
    auto root = MakeNode(floor, MakeNode(floor), MakeNode(floor));
    AddFace(*root, MakeFace(floor, Rectangle(0, 0, 64, 64)));
    AddFace(*root, MakeFace(floor, Rectangle(64, 0, 128, 64)));
    AddFace(*root->children[1], MakeFace(floor, Rectangle(128, 0, 192, 64)));
    MapAndMake(*root);
    EXPECT_EQ(root->firstFace, 0);
    EXPECT_EQ(root->numFaces, 2);
    EXPECT_EQ(root->children[0]->firstFace, 2);
    EXPECT_EQ(root->children[0]->numFaces, 0);
    EXPECT_EQ(root->children[1]->firstFace, 2);
    EXPECT_EQ(root->children[1]->numFaces, 1);
    EXPECT_EQ(root->faces.front()->outputIndex, 0);
    EXPECT_EQ(root->faces.front()->next->outputIndex, 1);
}

TEST_F(MakeSurfacesTest, SkipsLeaves) {
    auto leaf = MakeLeaf(ContentsEmpty);
    AddFace(*leaf, MakeFace(Floor(), Rectangle(0, 0, 64, 64)));
    leaf->firstFace = 77;
    MapAndMake(*leaf);
    EXPECT_TRUE(Geometry().surfaces.empty());
    EXPECT_TRUE(Geometry().planes.empty());
    EXPECT_EQ(leaf->firstFace, 77);
}

TEST_F(MakeSurfacesTest, KeepsARowForAFaceThatWasMergedAway) {
    auto root = MakeNode(Floor());
    const auto merged = MakeFace(Floor(), Rectangle(0, 0, 128, 64));
    AddFace(*root, MakeFace(Floor(), Rectangle(0, 0, 64, 64))).surfaceOut = merged.get();
    AddFace(*root, MakeFace(Floor(), Rectangle(64, 0, 128, 64)));
    Geometry().SurfaceFaceCount = 9;
    MapAndMake(*root);
    ASSERT_EQ(Geometry().surfaces.size(), 2U);
    EXPECT_EQ(Geometry().surfaces[0].texInfoId, -1);
    EXPECT_EQ(Geometry().surfaces[0].edgeCount, 4);
    EXPECT_EQ(Geometry().surfaces[1].texInfoId, 0);
    EXPECT_EQ(Geometry().SurfaceFaceCount, 1);
}

TEST_F(MakeSurfacesTest, EmitsASingleFaceWithItsFinalPlane) {
    Floor(16);
    auto face = MakeFace(Floor(), Rectangle(0, 0, 64, 64), 3);
    const auto replacement = MakeFace(0, {});
    face->surfaceOut = replacement.get();
    EmitSingleSurface(*face);
    ASSERT_EQ(Geometry().surfaces.size(), 1U);
    EXPECT_EQ(face->planenum, 0);
    EXPECT_EQ(face->outputIndex, 0);
    EXPECT_EQ(Geometry().surfaces[0].planeNumber, 0U);
    EXPECT_EQ(Geometry().surfaces[0].edgeCount, 4);
    EXPECT_EQ(Geometry().surfaces[0].texInfoId, 0) << "single faces are not looked at for merges";
    EXPECT_EQ(Geometry().planes[0].dist, 0);
}

TEST_F(MakeSurfacesTest, EmitsNoRowForAFaceOfTwoVertices) {
    auto face = MakeFace(Floor(), {{0, 0, 0}, {64, 0, 0}});
    EmitSingleSurface(*face);
    EXPECT_TRUE(Geometry().surfaces.empty());
    EXPECT_TRUE(Geometry().planes.empty());
    EXPECT_EQ(face->outputIndex, -1);
    EXPECT_EQ(face->edges, (std::vector<int32_t>{1, -1}));
    EXPECT_EQ(Geometry().edges.size(), 2U);
}

TEST_F(MakeSurfacesTest, AnnouncesNodesAndLeavesAndMarksEvery300thNode) {
    auto root = MakeNode(Floor());
    for (int i = 1; i < 600; ++i) root = MakeNode(Floor(), std::move(root));
    MapAndMake(*root);
    EXPECT_EQ(ProgressTotal, 1201);
    EXPECT_EQ(ProgressDone, 600);
    EXPECT_EQ(TakeLoggedText(), "..");
}

TEST_F(MakeSurfacesTest, WalksTreesOfAnyDepth) {
    auto root = MakeNode(Floor());
    for (int i = 0; i < 300000; ++i) root = MakeNode(Floor(), MakeLeaf(ContentsSolid), std::move(root));
    MapAndMake(*root);
    RepairJunctions(*root, {-64, -64, -64}, {64, 64, 64});
    MergeAcross(*root);
    WriteRegions(*root);
    EXPECT_EQ(Portals().nodes.size(), 300001U);
}

TEST_F(MakeSurfacesTest, FindsTheFirstEqualFinalPlane) {
    const FinalPlaneRecord floor{{0, 0, 1}, 8, 2};
    const FinalPlaneRecord wall{{1, 0, 0}, 8, 0};
    Geometry().planes = {wall, floor, floor};
    EXPECT_EQ(FindOrAddFinalPlane(floor), 1U);
    EXPECT_EQ(FindOrAddFinalPlane({{0, -0.0F, 1}, 8, 2}), 1U);
    EXPECT_EQ(Geometry().planes.size(), 3U);
}

TEST_F(MakeSurfacesTest, AppendsAFinalPlaneThatDiffersInAnything) {
    Geometry().planes = {{{0, 0, 1}, 8, 2}};
    EXPECT_EQ(FindOrAddFinalPlane({{0, 0, 1}, 8, 5}), 1U);
    EXPECT_EQ(FindOrAddFinalPlane({{0, 0, 1}, 8.001F, 2}), 2U);
    EXPECT_EQ(FindOrAddFinalPlane({{0, 1e-7F, 1}, 8, 2}), 3U);
    EXPECT_EQ(FindOrAddFinalPlane({{0, 0, 1}, 8.001F, 2}), 2U);
}

TEST_F(MakeSurfacesTest, FindsFinalPlanesAsALinearSearchDoes) {
    test::Dice dice(3);
    for (int i = 0; i < 2000; ++i) {
        const FinalPlaneRecord plane{
            {static_cast<float>(dice.Roll(-1, 1)), 0, 1}, static_cast<float>(dice.Roll(0, 20)), dice.Roll(2, 3)};
        const std::vector<FinalPlaneRecord>& planes = Geometry().planes;
        size_t expected = 0;
        while (expected < planes.size() &&
               !(planes[expected].type == plane.type && planes[expected].dist == plane.dist &&
                 planes[expected].normal == plane.normal)) {
            ++expected;
        }
        ASSERT_EQ(FindOrAddFinalPlane(plane), expected);
        if (dice.Roll(0, 9) == 0) Geometry().planes.push_back(plane);  // rows from elsewhere
    }
}

TEST(TableLimits, EndInTheirMessages) {
    const std::vector<std::pair<TableLimit, std::string>> limits = {
        {SurfaceLimit, "E017: Map size - too many surfaces"},
        {SurfaceEdgeLimit, "E024: Map size - too many edges"},
        {MappedPlaneLimit, "E013: Map size - too many surfaces"},
        {JoinedPlaneLimit, "E011: Map size - too many surfaces!"},
        {VertexLimit, "E015: Map size - too many vertices"},
        {EdgeLimit, "E023: Map size - too many edges"},
        {NodeLimit, "E014: Map size - too many regions"},
        {RegionLimit, "E017: Map size - too many regions"},
        {RegionSurfaceLimit, "E018: Map size - too many surfaces"},
        {JunctionEdgeLimit, "E101: Map size - too many edges!"},
        {JunctionPointLimit, "E103: Map size - too many edge vertices!"}};
    for (const auto& [limit, message] : limits) {
        RequireRoom(limit.rows - 1, limit);
        ExpectFatal([&limit = limit] { RequireRoom(limit.rows, limit); }, message);
    }
}

TEST(TableLimits, AreWhatTheRowsOfFourGigabytesAllow) {
    EXPECT_EQ(SurfaceLimit.rows, 0x100000000U / 24);
    EXPECT_EQ(SurfaceEdgeLimit.rows, 1073741823U);
    EXPECT_EQ(MappedPlaneLimit.rows, 0x100000000U / 20);
    EXPECT_EQ(VertexLimit.rows, 0x100000000U / 12);
    EXPECT_EQ(EdgeLimit.rows, 536870911U);
    EXPECT_EQ(NodeLimit.rows, 0x100000000U / 40);
    EXPECT_EQ(RegionLimit.rows, 0x100000000U / 36);
    EXPECT_EQ(RegionSurfaceLimit.rows, 1073741823U);
}

}  // namespace
}  // namespace k2k
