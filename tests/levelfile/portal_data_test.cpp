#include "levelfile/portal_data.h"

#include <gmock/gmock.h>

#include "levelfile/bytes.h"
#include "levelfile/level_state.h"

namespace k2k {
namespace {

using namespace test;

class PortalData : public LevelState {};

TEST_F(PortalData, TablesStandByteByByte) {
    CRegion region;
    region.contents = -128;
    region.visOffset = -1;
    region.mins = {1, 2, 3};
    region.maxs = {4, 5, -6};
    region.firstSurface = 7;
    region.surfaceCount = 8;
    CRegionNode node;
    node.plane = 1;
    node.mins = {2, 3, 4};
    node.maxs = {5, 6, 7};
    node.children = {8, -9};
    node.firstSurface = 10;
    node.surfaceCount = 11;
    CHullNode hullNode;
    hullNode.plane = 1;
    hullNode.children = {2, -256};
    Portals().regions = {region};
    Portals().nodes = {node};
    Portals().hullNodes = {hullNode};
    Portals().regionSurfaces = {3, 4};
    Portals().visibility = {5, 6, 7};
    const std::vector<uint8_t> file = Saved();
    Bytes regionRow;
    regionRow.I32(-128).I32(-1).I16(1).I16(2).I16(3).I16(4).I16(5).I16(-6).Zeros(8).U32(7).U32(8);
    EXPECT_EQ(ChunkOf(file, Chunk::Regions), regionRow.get());
    Bytes nodeRow;
    nodeRow.U32(1).Zeros(4).I16(2).I16(3).I16(4).I16(5).I16(6).I16(7).Zeros(4).I32(8).I32(-9).U32(10).U32(11);
    EXPECT_EQ(ChunkOf(file, Chunk::Nodes), nodeRow.get());
    EXPECT_EQ(ChunkOf(file, Chunk::HullNodes), Bytes().U32(1).Zeros(4).I32(2).I32(-256).get());
    EXPECT_EQ(ChunkOf(file, Chunk::RegionSurfaces), Bytes().U32(3).U32(4).get());
    EXPECT_EQ(ChunkOf(file, Chunk::Visibility), (std::vector<uint8_t>{5, 6, 7}));
}

TEST_F(PortalData, WithoutVisibilityDataChunk4IsEmpty) {
    Portals().regions.resize(1);
    const std::vector<uint8_t> file = Saved();
    EXPECT_EQ(EntryOf(file, Chunk::Visibility).offset, 0U);
    EXPECT_EQ(EntryOf(file, Chunk::Visibility).size, 0U);
}

TEST_F(PortalData, ReadsWhatItWrote) {
    Portals().regions.resize(2);
    Portals().nodes.resize(3);
    Portals().hullNodes.resize(4);
    Portals().regionSurfaces = {1, 2};
    Portals().visibility = {3};
    const std::vector<uint8_t> first = Saved();
    ResetDataSetsForTest();
    Load(first);
    EXPECT_EQ(Portals().hullNodes.size(), 4U);
    EXPECT_EQ(Portals().visibility, (std::vector<uint8_t>{3}));
    EXPECT_EQ(Saved(), first);
}

TEST_F(PortalData, AFileWithoutVisibilityEmptiesIt) {
    Portals().visibility = {3};
    Load(LevelFile('7').get());
    EXPECT_TRUE(Portals().visibility.empty());
}

TEST_F(PortalData, ClearEmptiesAllTables) {
    Portals().regions.resize(1);
    Portals().nodes.resize(1);
    Portals().hullNodes.resize(1);
    Portals().regionSurfaces.resize(1);
    Portals().visibility.resize(1);
    Portals().Clear();
    EXPECT_TRUE(Portals().regions.empty() && Portals().nodes.empty() && Portals().hullNodes.empty() &&
                Portals().regionSurfaces.empty() && Portals().visibility.empty());
}

TEST_F(PortalData, PrintsTheNumberOfRegions) {
    Portals().regions.resize(3);
    Portals().PrintStats();
    EXPECT_EQ(TakeLoggedText(), " \n3 regions");
}

TEST(RegionContents, SolidCountsWithItsMarksAside) {
    EXPECT_TRUE(IsSolid(ContentsSolid));
    EXPECT_TRUE(IsSolid(ContentsSolid | ContentsMarked | ContentsClipOnly));
    EXPECT_FALSE(IsSolid(ContentsSolid | ContentsDetail));
    EXPECT_FALSE(IsSolid(ContentsEmpty));
}

}  // namespace
}  // namespace k2k
