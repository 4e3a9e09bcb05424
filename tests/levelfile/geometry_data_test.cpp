#include "levelfile/geometry_data.h"

#include <gmock/gmock.h>

#include "levelfile/bytes.h"
#include "levelfile/level_state.h"

namespace k2k {
namespace {

using namespace test;

class GeometryData : public LevelState {};

TEST_F(GeometryData, TheInfoBlockStandsByteByByte) {
    LevelInfo& info = Geometry().info;
    info.mins = {1, 2, 3};
    info.maxs = {4, 5, 6};
    info.headNodes = {7, 8, 9, 10};
    info.hullMins[0] = {11, 12, 13};
    info.hullMins[3] = {14, 15, 16};
    info.hullMaxs[0] = {17, 18, 19};
    info.visRegions = 20;
    info.firstSurface = 21;
    info.surfaceCount = 22;
    Bytes expected;
    expected.Floats({1, 2, 3, 4, 5, 6, 0, 0, 0});
    expected.I32(7).I32(8).I32(9).I32(10);
    expected.I32(11).I32(12).I32(13).Zeros(24).I32(14).I32(15).I32(16);
    expected.I32(17).I32(18).I32(19).Zeros(36);
    expected.I32(20).I32(21).I32(22);
    EXPECT_EQ(ChunkOf(Saved(), Chunk::Info), expected.get());
}

TEST_F(GeometryData, TablesStandByteByByte) {
    Geometry().vertices = {{1, 2, 3}};
    Geometry().edges = {{0, 0}, {4, 5}};
    Geometry().surfaceEdges = {1, -1};
    Geometry().planes = {{{1, 0, 0}, 16, 3}, {{0, -1, 0}, 8, -2}};
    SurfaceRecord surface;
    surface.blockId = 1;
    surface.side = 2;
    surface.firstEdge = 3;
    surface.edgeCount = 4;
    surface.texInfoId = -1;
    surface.lightShift = 5;
    surface.lightPage = 6;
    surface.lightX = 7;
    surface.lightY = 8;
    surface.lightOffset = 9;
    surface.planeNumber = 10;
    Geometry().surfaces = {surface};
    const std::vector<uint8_t> file = Saved();
    EXPECT_EQ(ChunkOf(file, Chunk::Vertices), Bytes().Floats({1, 2, 3}).get());
    EXPECT_EQ(ChunkOf(file, Chunk::Edges), Bytes().U32(0).U32(0).U32(4).U32(5).get());
    EXPECT_EQ(ChunkOf(file, Chunk::SurfaceEdges), Bytes().I32(1).I32(-1).get());
    EXPECT_EQ(ChunkOf(file, Chunk::Planes), Bytes().Floats({1, 0, 0, 16}).I32(3).Floats({0, -1, 0, 8}).I32(-2).get());
    Bytes row;
    row.U16(1).U16(2).U32(3).I16(4).I16(-1).U8(5).U8(6).U8(7).U8(8).U32(9).U32(10);
    EXPECT_EQ(ChunkOf(file, Chunk::Surfaces), row.get());
}

TEST_F(GeometryData, OnMeshLevelsTheLightOffsetHoldsTwoPositions) {
    SurfaceRecord surface;
    surface.SetMeshPosition(300, 2);
    Geometry().surfaces = {surface};
    const std::vector<uint8_t> rows = ChunkOf(Saved(), Chunk::Surfaces);
    EXPECT_EQ(ValueAt<uint16_t>(rows, 16), 300);
    EXPECT_EQ(ValueAt<uint16_t>(rows, 18), 2);
    EXPECT_EQ(surface.meshX(), 300);
    EXPECT_EQ(surface.meshY(), 2);
}

TEST_F(GeometryData, PlacesOnPagesThatAreLostStay) {
    SurfaceRecord placed;
    placed.lightShift = 4;
    placed.lightPage = 1;
    placed.lightX = placed.lightY = 9;
    placed.lightOffset = 20;
    Geometry().surfaces = {placed};
    const std::vector<uint8_t> rows = ChunkOf(Saved(), Chunk::Surfaces);
    EXPECT_EQ(std::vector<uint8_t>(rows.begin() + 12, rows.begin() + 20),
              Bytes().U8(4).U8(1).U8(9).U8(9).U32(20).get());
}

TEST_F(GeometryData, ALevelWithoutBlocksHasNoTablesButAnInfoBlock) {
    Geometry().edges.resize(1);
    const std::vector<uint8_t> file = Saved();
    for (const Chunk number : {Chunk::Vertices, Chunk::Edges, Chunk::SurfaceEdges, Chunk::Planes, Chunk::Surfaces}) {
        EXPECT_EQ(EntryOf(file, number).size, 0U);
        EXPECT_EQ(EntryOf(file, number).offset, 0U);
    }
    EXPECT_EQ(EntryOf(file, Chunk::Info).size, 160U);
}

TEST_F(GeometryData, ReadsWhatItWrote) {
    Geometry().info.visRegions = 3;
    Geometry().vertices = {{1, 2, 3}, {4, 5, 6}};
    Geometry().edges.resize(2);
    Geometry().surfaceEdges = {1};
    Geometry().planes.resize(3);
    Geometry().surfaces.resize(4);
    const std::vector<uint8_t> first = Saved();
    ResetDataSetsForTest();
    Load(first);
    EXPECT_EQ(Geometry().info.visRegions, 3);
    EXPECT_EQ(Geometry().vertices[1], (Vec3{4, 5, 6}));
    EXPECT_EQ(Geometry().surfaces.size(), 4U);
    EXPECT_EQ(Saved(), first);
}

TEST_F(GeometryData, AShortInfoBlockIsReadAsItStands) {
    Geometry().info.surfaceCount = 5;
    Load(LevelFile('7').Add(Chunk::Info, Bytes().Floats({1, 2, 3}).get()).get());
    EXPECT_EQ(Geometry().info.mins, (Vec3{1, 2, 3}));
    EXPECT_EQ(Geometry().info.surfaceCount, 5);
}

TEST_F(GeometryData, MeshesAreOnlyWrittenForMeshLevels) {
    EXPECT_EQ(EntryOf(Saved(), Chunk::Meshes).offset, 0U);
    Options().mesh = true;
    EXPECT_EQ(ChunkOf(Saved(), Chunk::Meshes), Bytes().U32(0).get());
}

TEST_F(GeometryData, AVersion5FileHoldsMeshesOnlyForMeshLevelsAndNobodyReadsThem) {
    Options().nod3dlmaps = true;
    EXPECT_EQ(EntryOf(Saved(), Chunk::Meshes).size, 0U);
    Options().mesh = true;
    Geometry().meshes.resize(1);
    const std::vector<uint8_t> file = Saved();
    EXPECT_EQ(EntryOf(file, Chunk::Meshes).size, 44U);
    ResetDataSetsForTest();
    Load(file);
    EXPECT_TRUE(Geometry().meshes.empty());
}

TEST_F(GeometryData, ClearKeepsBoundsAndHulls) {
    LevelInfo& info = Geometry().info;
    info.mins = {1, 2, 3};
    info.hullMaxs[1] = {4, 5, 6};
    info.headNodes = {7, 8, 9, 10};
    Geometry().surfaces.resize(1);
    Geometry().meshes.resize(1);
    Geometry().Clear();
    EXPECT_EQ(info.mins, (Vec3{1, 2, 3}));
    EXPECT_EQ(info.hullMaxs[1], (std::array<int32_t, 3>{4, 5, 6}));
    EXPECT_EQ(info.headNodes, (std::array<int32_t, 4>{}));
    EXPECT_EQ(info.visRegions, -1);
    EXPECT_EQ(info.firstSurface, -1);
    EXPECT_EQ(info.surfaceCount, 0);
    EXPECT_TRUE(Geometry().surfaces.empty() && Geometry().meshes.empty());
}

TEST_F(GeometryData, HiddenSurfacesAreNotCountedAsVisible) {
    Geometry().vertices.resize(8);
    Geometry().surfaces.resize(6);
    Geometry().SurfaceFaceCount = 2;
    Geometry().PrintStats();
    EXPECT_EQ(TakeLoggedText(), " \n8 vertices \n4 visible surfaces");
}

}  // namespace
}  // namespace k2k
