// The regions' visibility rows and their packing.
#include "vis/region_rows.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "levelfile/portal_data.h"
#include "support/build_state.h"
#include "vis/base_vis.h"
#include "vis/graph_text.h"
#include "vis/portal_vis.h"

namespace k2k::test {
namespace {

using testing::ElementsAre;

std::vector<uint8_t> Packed(const std::vector<uint8_t>& row) {
    std::vector<uint8_t> packed;
    PackRow(row, packed);
    return packed;
}

TEST(PackRowTest, CopiesBytesThatAreNotZero) {
    EXPECT_THAT(Packed({1, 255, 3}), ElementsAre(1, 255, 3));
}

TEST(PackRowTest, ARunOfZerosIsAZeroAndItsLength) {
    EXPECT_THAT(Packed({7, 0, 0, 0, 9}), ElementsAre(7, 0, 3, 9));
}

TEST(PackRowTest, ARunOf300ZerosTakesTwoPairs) {
    EXPECT_THAT(Packed(std::vector<uint8_t>(300)), ElementsAre(0, 255, 0, 45));
}

TEST(PackRowTest, ARunOf255ZerosTakesOnePair) {
    EXPECT_THAT(Packed(std::vector<uint8_t>(255)), ElementsAre(0, 255));
    EXPECT_THAT(Packed(std::vector<uint8_t>(256)), ElementsAre(0, 255, 0, 1));
}

TEST(PackRowTest, AZeroAtTheEndHasItsLengthToo) {
    EXPECT_THAT(Packed({5, 0}), ElementsAre(5, 0, 1));
}

TEST(PackRowTest, AnEmptyRowPacksToNothing) {
    EXPECT_THAT(Packed({}), ElementsAre());
}

class RegionRowsTest : public BuildState {
  protected:
    // A graph whose portals are done, and see what they might see.
    static VisGraph Finished(int32_t regionCount, const std::string& portals, int32_t portalCount) {
        VisGraph graph = ReadGraph(
            regionCount, "PORT\n" + std::to_string(regionCount) + "\n" + std::to_string(portalCount) + "\n" + portals);
        BasePortalVis(graph, 0.05F);
        FastPortalVis(graph);
        TakeLoggedText();
        return graph;
    }

    void MakeRows(const VisGraph& graph) {
        rows.assign(static_cast<size_t>(graph.regionCount()) + 1, CRegion{});
        MakeRegionRows(graph, rows, visibility);
    }

    std::vector<CRegion> rows;
    std::vector<uint8_t> visibility;
};

const std::string Opening = " (64 0 64 ) (64 64 64 ) (64 64 0 ) (64 0 0 ) \n";

TEST_F(RegionRowsTest, ARegionWithoutPortalsSeesItself) {
    MakeRows(Finished(10, "", 0));
    // Two bytes a row: regions 0 to 7 are in the first, 8 and 9 in the second.
    EXPECT_THAT(std::vector<uint8_t>(visibility.begin(), visibility.begin() + 3), ElementsAre(1, 0, 1));
    EXPECT_THAT(std::vector<uint8_t>(visibility.end() - 3, visibility.end()), ElementsAre(0, 1, 2));
}

TEST_F(RegionRowsTest, RowsFollowEachOtherAndTheirRegionsKnowWhere) {
    MakeRows(Finished(10, "", 0));
    for (size_t region = 0; region < 10; ++region) {
        EXPECT_EQ(rows[region + 1].visOffset, static_cast<int32_t>(3 * region));
    }
    EXPECT_EQ(rows[0].visOffset, 0) << "the solid region has no row";
}

TEST_F(RegionRowsTest, ARowIsWhatAllPortalsOfTheRegionSee) {
    MakeRows(Finished(3, "4 0 1" + Opening + "4 0 2" + Opening, 2));
    EXPECT_THAT(visibility, ElementsAre(7, 3, 5));
}

TEST_F(RegionRowsTest, BitsBeyondTheLastRegionAreZeroAndBytesBeyondThemNotStored) {
    MakeRows(Finished(3, "", 0));
    EXPECT_THAT(visibility, ElementsAre(1, 2, 4));
}

// A portal from region 1 back into region 1.
const std::string Misplaced = "4 1 1" + Opening;

TEST_F(RegionRowsTest, WarnsOfARegionThatSeesItselfThroughItsPortals) {
    MakeRows(Finished(2, Misplaced, 1));
    EXPECT_EQ(TakeLoggedText(), " \nWARNING W110: Misplaced portal!");
    EXPECT_EQ(WarnCount, 1);
    EXPECT_THAT(visibility, ElementsAre(1, 2));
}

TEST_F(RegionRowsTest, WarnsOnceOfMisplacedPortals) {
    MakeRows(Finished(2, Misplaced + "4 0 0" + Opening, 2));
    EXPECT_EQ(TakeLoggedText(), " \nWARNING W110: Misplaced portal!");
    EXPECT_EQ(WarnCount, 2);
}

TEST_F(RegionRowsTest, WarnsOfEveryMisplacedPortalWhenVerbose) {
    Options().verbose = true;
    MakeRows(Finished(2, Misplaced + "4 0 0" + Opening, 2));
    EXPECT_EQ(TakeLoggedText(), " \nWARNING W110: Misplaced portal! \nWARNING W110: Misplaced portal!");
}

TEST_F(RegionRowsTest, CountsMisplacedPortalsWhenQuiet) {
    Options().quiet = true;
    MakeRows(Finished(2, Misplaced, 1));
    EXPECT_EQ(TakeLoggedText(), "");
    EXPECT_EQ(WarnCount, 1);
}

TEST_F(RegionRowsTest, RejectsAPortalThatIsNotDone) {
    VisGraph graph = Finished(2, "4 0 1" + Opening, 1);
    graph.portal(1).status = PortalStatus::Working;
    ExpectFatal([&] { MakeRows(graph); }, "E113");
}

TEST_F(RegionRowsTest, StopsBeforeTheRowsOverrunTheirSpace) {
    const VisGraph graph = Finished(2, "", 0);
    visibility.resize(static_cast<size_t>(MaxVisibilitySize) - 2);
    MakeRows(graph);
    EXPECT_EQ(visibility.size(), static_cast<size_t>(MaxVisibilitySize));
    visibility.resize(static_cast<size_t>(MaxVisibilitySize) - 1);
    ExpectFatal([&] { MakeRows(graph); }, " \nE111: Map size - Visibility list overrun");
}

TEST_F(RegionRowsTest, StopsBeforeTheWorkOnRowsThatCannotFit) {
    RequireRowSpace(92000);
    ExpectFatal([] { RequireRowSpace(94000); }, " \nE111: Map size - Visibility list overrun");
    ExpectFatal([] { RequireRowSpace(2147483647); }, " \nE111: Map size - Visibility list overrun");
}

}  // namespace
}  // namespace k2k::test
