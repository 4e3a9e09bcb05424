// The cheap upper bound of what each portal can see.
#include "vis/base_vis.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/build_state.h"
#include "vis/graph_text.h"
#include "vis/room_grid.h"

namespace k2k::test {
namespace {

class BaseVisTest : public BuildState {};

constexpr float Eps = 0.05F;

std::vector<int32_t> RegionsIn(const Word* row, int32_t regionCount) {
    std::vector<int32_t> regions;
    for (int32_t region = 0; region < regionCount; ++region) {
        if (TestBit(row, region)) regions.push_back(region);
    }
    return regions;
}

std::string Square(int32_t a, int32_t b, double x, double y = 0) {
    RoomOpening opening{a, b, {{x, y, 0}, {x, y + 64, 0}, {x, y + 64, 64}, {x, y, 64}}};
    const std::string text = PortalFileText(0, {opening});
    return text.substr(text.find("4 "));
}

// Rooms 0, 1, 2 ... in a row along x, with a portal at each multiple of 64.
std::string Row(int32_t rooms) {
    std::string text = "PORT\n" + std::to_string(rooms) + "\n" + std::to_string(rooms - 1) + "\n";
    for (int32_t room = 0; room + 1 < rooms; ++room) text += Square(room, room + 1, 64.0 * (room + 1));
    return text;
}

TEST_F(BaseVisTest, FloodsThroughThePortalsInFront) {
    VisGraph graph = ReadGraph(5, Row(5));
    BasePortalVis(graph, Eps);
    EXPECT_THAT(RegionsIn(graph.portal(2).mightSee, 5), testing::ElementsAre(2, 3, 4));
    EXPECT_EQ(graph.portal(2).mightSeeCount, 3);
    EXPECT_THAT(RegionsIn(graph.portal(3).mightSee, 5), testing::ElementsAre(0, 1));
    EXPECT_EQ(graph.portal(3).mightSeeCount, 2);
}

// Portal 1 turns back to where portal 0 came from, a little more or less than the tolerance in front of it.
std::vector<int32_t> SeenPast(double distance) {
    VisGraph graph = ReadGraph(3, "PORT\n3\n2\n" + Square(0, 1, 64) + "3 1 2 (63 100 0 ) (63 200 0 ) (" +
                                      std::to_string(64 + distance) + " 100 64 ) \n");
    BasePortalVis(graph, Eps);
    return RegionsIn(graph.portal(0).mightSee, 3);
}

TEST_F(BaseVisTest, APortalWithAllPointsWithinTheToleranceLiesBehind) {
    EXPECT_THAT(SeenPast(0.04), testing::ElementsAre(1));
    EXPECT_THAT(SeenPast(0.06), testing::ElementsAre(1, 2));
}

TEST_F(BaseVisTest, APortalThatLooksBackAtTheBaseIsNotSeen) {
    // The second portal leads towards -x, so the base lies in front of it.
    VisGraph graph = ReadGraph(3, "PORT\n3\n2\n" + Square(0, 1, 64) + Square(2, 1, 128));
    BasePortalVis(graph, Eps);
    EXPECT_THAT(RegionsIn(graph.portal(0).mightSee, 3), testing::ElementsAre(1));
}

TEST_F(BaseVisTest, PrintsADotForEach120thPortal) {
    VisGraph graph = ReadGraph(62, Row(62));
    TakeLoggedText();
    BasePortalVis(graph, Eps);
    EXPECT_EQ(TakeLoggedText(), ". ok");
    EXPECT_EQ(ProgressDone, 122);
}

TEST_F(BaseVisTest, RejectsRecordNumbersAbove131072) {
    // 65,537 portals are records up to 131,073; all of them are used.
    std::string text = "PORT\n1024\n65537\n";
    for (int32_t i = 0; i < 65537; ++i)
        text += "3 " + std::to_string(i % 512) + " " + std::to_string(512 + i % 512) + " (0 0 0 ) (0 9 0 ) (0 9 9 ) \n";
    VisGraph graph = ReadGraph(1024, text);
    ExpectFatal([&] { BasePortalVis(graph, Eps); }, "E079: Map size - too many portals!");
}

}  // namespace
}  // namespace k2k::test
