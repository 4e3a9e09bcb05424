#include <gtest/gtest.h>

#include "surface/mesh_lookup.h"
#include "surface_fixture.h"

namespace k2k {
namespace {

using test::Dice;
using test::MakeFace;
using test::Rectangle;

class MeshTest : public test::SurfaceTest {
  protected:
    static void NoteBlock(int32_t number, int32_t contents = ContentsSolid) {
        CBlock block;
        block.blockNumber = number;
        block.mins = {static_cast<float>(number), 0, 0};
        block.maxs = {static_cast<float>(number), 8, 8};
        block.contents = contents;
        NoteMeshBlock(block);
    }
    static void AddRegion(const std::vector<uint32_t>& surfaces) {
        CRegion region;
        region.firstSurface = static_cast<uint32_t>(Portals().regionSurfaces.size());
        region.surfaceCount = static_cast<uint32_t>(surfaces.size());
        Portals().regions.push_back(region);
        Portals().regionSurfaces.insert(Portals().regionSurfaces.end(), surfaces.begin(), surfaces.end());
    }
    static void AddMesh(const std::set<int32_t>& surfaces) { Geometry().meshes.emplace_back().surfaces = surfaces; }
};

TEST_F(MeshTest, MakesAMeshForEachBlockWithSurfacesInOrderOfBlockNumber) {
    NoteBlock(2);
    NoteBlock(9, ContentsEmpty);
    NoteBlock(4);
    for (const int32_t surface : {8, 3, 8, 5}) NoteMeshSurface(9, surface);
    NoteMeshSurface(2, 1);
    MakeMeshes();
    ASSERT_EQ(Geometry().meshes.size(), 2U) << "block 4 lost all its surfaces";
    EXPECT_EQ(Geometry().meshes[0].surfaces, (std::set<int32_t>{1}));
    EXPECT_EQ(Geometry().meshes[1].surfaces, (std::set<int32_t>{3, 5, 8}));
    EXPECT_EQ(Geometry().meshes[1].mins[0], 9);
    EXPECT_EQ(Geometry().meshes[1].maxs, (Vec3{9, 8, 8}));
    EXPECT_EQ(Geometry().meshes[1].contents, ContentsEmpty);
    EXPECT_FALSE(Geometry().meshes[1].prepared);
}

TEST_F(MeshTest, MakesNoMeshWithoutABlock) {
    NoteMeshSurface(3, 1);
    MakeMeshes();
    EXPECT_TRUE(Geometry().meshes.empty());
}

TEST_F(MeshTest, MakesNoMeshOfFacesWithoutRows) {
    NoteBlock(2);
    NoteMeshSurface(2, -1);
    MakeMeshes();
    EXPECT_TRUE(Geometry().meshes.empty());
}

TEST_F(MeshTest, ForgetsItsTables) {
    NoteBlock(2);
    NoteMeshSurface(2, 1);
    ResetMeshTables();
    MakeMeshes();
    EXPECT_TRUE(Geometry().meshes.empty());
}

TEST_F(MeshTest, FindsTheFirstMeshOfASurface) {
    AddMesh({1, 4});
    AddMesh({2, 4});
    const MeshLookup lookup(Geometry().meshes);
    EXPECT_EQ(lookup.MeshOfSurface(1), 0);
    EXPECT_EQ(lookup.MeshOfSurface(2), 1);
    EXPECT_EQ(lookup.MeshOfSurface(4), 0);
    EXPECT_EQ(lookup.MeshOfSurface(3), -1);
    EXPECT_EQ(lookup.MeshOfSurface(99), -1);
    EXPECT_EQ(lookup.MeshOfSurface(-1), -1);
}

TEST_F(MeshTest, ListsTheMeshesOfARegionOnceAndRising) {
    AddMesh({0, 1});
    AddMesh({2, 3});
    AddRegion({3, 0, 2, 1});
    AddRegion({1});
    RemapRegionLists();
    EXPECT_EQ(Portals().regionSurfaces, (std::vector<uint32_t>{0, 1, 0}));
    EXPECT_EQ(Portals().regions[0].surfaceCount, 0U);
    EXPECT_EQ(Portals().regions[1].firstSurface, 0U);
    EXPECT_EQ(Portals().regions[1].surfaceCount, 2U);
    EXPECT_EQ(Portals().regions[2].firstSurface, 2U);
    EXPECT_EQ(Portals().regions[2].surfaceCount, 1U);
}

TEST_F(MeshTest, ListsMinusOneForASurfaceOfNoMesh) {
    AddMesh({0});
    AddRegion({0, 7});
    RemapRegionLists();
    EXPECT_EQ(Portals().regionSurfaces, (std::vector<uint32_t>{0xFFFFFFFFU, 0}));
}

TEST_F(MeshTest, RemapsAsASearchThroughAllMeshesDoes) {
    Dice dice(8);
    for (int i = 0; i < 40; ++i) {
        std::set<int32_t> surfaces;
        for (int n = dice.Roll(0, 9); n > 0; --n) surfaces.insert(dice.Roll(0, 200));
        AddMesh(surfaces);
    }
    std::vector<uint32_t> expected;
    for (int i = 0; i < 50; ++i) {
        std::vector<uint32_t> surfaces;
        std::set<int32_t> meshes;
        for (int n = dice.Roll(0, 20); n > 0; --n) {
            const int32_t surface = dice.Roll(0, 220);
            surfaces.push_back(static_cast<uint32_t>(surface));
            int32_t found = -1;
            for (size_t m = Geometry().meshes.size(); m > 0; --m) {
                if (Geometry().meshes[m - 1].surfaces.count(surface) != 0) found = static_cast<int32_t>(m - 1);
            }
            meshes.insert(found);
        }
        AddRegion(surfaces);
        expected.insert(expected.end(), meshes.begin(), meshes.end());
    }
    RemapRegionLists();
    EXPECT_EQ(Portals().regionSurfaces, expected);
}

TEST_F(MeshTest, MakesAMeshOfABlockWithoutATree) {
    CBlockSet set;
    auto block = std::make_unique<CBlock>();
    block->mins = {0, 0, 0};
    block->maxs = {300, 64, 64};
    block->contents = ContentsSolid + ContentsOpen;
    block->faces.push_front(MakeFace(Floor(64), Rectangle(0, 0, 300, 64, 64), 3));
    block->faces.push_front(MakeFace(Floor(), Rectangle(0, 0, 64, 64), 3));
    set.blocks.push_front(std::move(block));
    MakeBlockMeshes(set);

    ASSERT_EQ(Geometry().meshes.size(), 1U);
    const CMesh& mesh = Geometry().meshes[0];
    EXPECT_EQ(mesh.maxs[0], 300);
    EXPECT_EQ(mesh.contents, ContentsSolid + ContentsOpen);
    EXPECT_EQ(mesh.surfaces, (std::set<int32_t>{0, 1, 2}));
    EXPECT_EQ(Geometry().surfaces.size(), 3U);
    EXPECT_EQ(Geometry().surfaces[1].blockId, 3);
    EXPECT_EQ(Geometry().planes.size(), 2U);
    EXPECT_EQ(set.blocks.front()->faces.size(), 2U);
    EXPECT_EQ(set.blocks.front()->faces.front()->contents[0], ContentsEmpty);
}

TEST_F(MeshTest, MakesNoMeshOfABlockWithoutSurfacesWithoutATree) {
    CBlockSet set;
    for (const float width : {64.0F, 0.0F}) {
        auto block = std::make_unique<CBlock>();
        block->maxs[0] = width;
        if (width > 0) block->faces.push_front(MakeFace(Floor(), Rectangle(0, 0, width, 64)));
        set.blocks.push_front(std::move(block));
    }
    auto sliver = std::make_unique<CBlock>();
    sliver->faces.push_front(MakeFace(Floor(), {{0, 0, 0}, {0, 64, 0}}));
    set.blocks.push_front(std::move(sliver));
    MakeBlockMeshes(set);
    ASSERT_EQ(Geometry().meshes.size(), 1U);
    EXPECT_EQ(Geometry().meshes[0].maxs[0], 64);
    EXPECT_EQ(Geometry().meshes[0].surfaces, (std::set<int32_t>{0}));
}

TEST_F(MeshTest, SharesEdgesBetweenBlocksWithoutATree) {
    CBlockSet set;
    for (const float x : {64.0F, 0.0F}) {
        auto block = std::make_unique<CBlock>();
        block->contents = ContentsSolid;
        block->faces.push_front(MakeFace(Floor(), Rectangle(x, 0, x + 64, 64)));
        set.blocks.push_front(std::move(block));
    }
    MakeBlockMeshes(set);
    EXPECT_EQ(Geometry().meshes.size(), 2U);
    EXPECT_EQ(Geometry().vertices.size(), 6U);
    EXPECT_EQ(Geometry().edges.size(), 8U);
}

TEST_F(MeshTest, CountsPiecesAndMarksEvery60th) {
    CBlockSet set;
    auto block = std::make_unique<CBlock>();
    for (int i = 0; i < 30; ++i) block->faces.push_front(MakeFace(Floor(), Rectangle(0, 0, 64, 64)));
    set.blocks.push_front(std::move(block));
    MakeBlockMeshes(set);
    EXPECT_EQ(TakeLoggedText(), ".");
}

}  // namespace
}  // namespace k2k
