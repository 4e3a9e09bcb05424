// The cheap upper bound of what each portal can see.
#include "vis/base_vis.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/build_state.h"
#include "vis/graph_text.h"
#include "vis/vis_rows.h"

namespace k2k::test {
namespace {

using testing::ElementsAre;

class BaseVisTest : public BuildState {
  protected:
    static constexpr float Eps = 0.05F;

    static std::vector<int32_t> MightSee(VisGraph& graph, int32_t portal, float eps = Eps) {
        BasePortalVis(graph, eps);
        return RegionsIn(graph.portal(portal).mightSee, graph.regionCount());
    }
};

TEST_F(BaseVisTest, FloodsThroughThePortalsInFront) {
    VisGraph graph = ReadGraph(5, CorridorText(5));
    EXPECT_THAT(MightSee(graph, 2), ElementsAre(2, 3, 4));
    EXPECT_EQ(graph.portal(2).mightSeeCount, 3);
    EXPECT_THAT(MightSee(graph, 3), ElementsAre(0, 1));
    EXPECT_EQ(graph.portal(3).mightSeeCount, 2);
}

// A portal from region 0 to 1 that looks along x, and one from 1 to 2 with one point past the first one's plane.
VisGraph WithPointPast(double distance) {
    const RoomOpening past{1, 2, {{63, 200, 0}, {63, 100, 0}, {64 + distance, 100, 64}}};
    return ReadGraph(3, PortalFileText(3, {SlotOpening(0, 1, {64}), past}));
}

TEST_F(BaseVisTest, APortalWithNoPointFurtherThanTheToleranceInFrontLiesBehind) {
    VisGraph near = WithPointPast(0.046875);
    EXPECT_THAT(MightSee(near, 0), ElementsAre(1));
    VisGraph far = WithPointPast(0.0625);
    EXPECT_THAT(MightSee(far, 0), ElementsAre(1, 2));
}

TEST_F(BaseVisTest, APointAtTheToleranceLiesBehind) {
    VisGraph graph = WithPointPast(0.0625);
    EXPECT_THAT(MightSee(graph, 0, 0.0625F), ElementsAre(1));
}

TEST_F(BaseVisTest, APortalThatHasTheBaseInFrontIsNotSeen) {
    // The second portal leads towards -x.
    VisGraph graph = ReadGraph(3, PortalFileText(3, {SlotOpening(0, 1, {64}), SlotOpening(2, 1, {128})}));
    EXPECT_THAT(MightSee(graph, 0), ElementsAre(1));
}

TEST_F(BaseVisTest, PrintsADotForEach120thPortal) {
    VisGraph graph = ReadGraph(62, CorridorText(62));
    TakeLoggedText();
    BasePortalVis(graph, Eps);
    EXPECT_EQ(TakeLoggedText(), ". ok");
    EXPECT_EQ(ProgressDone, 122);
}

TEST_F(BaseVisTest, RejectsRecordNumbersAbove131072) {
    const auto withPortals = [](int32_t count) {
        std::vector<RoomOpening> openings;
        for (int32_t i = 0; i < count; ++i) openings.push_back(SlotOpening(i % 1024, 1024 + i % 1024, {64}));
        return ReadGraph(2048, PortalFileText(2048, openings));
    };
    VisGraph most = withPortals(65536);
    BasePortalVis(most, Eps);
    EXPECT_EQ(most.portal(131071).mightSeeCount, 1);
    VisGraph more = withPortals(65537);
    ExpectFatal([&] { BasePortalVis(more, Eps); }, "E079: Map size - too many portals!");
}

TEST_F(BaseVisTest, NumbersThatAreNoneDoNotLieBehind) {
    VisGraph graph = ReadGraph(3,
                               "PORT\n3\n2\n4 0 1 (64 0 0 ) (64 64 0 ) (64 64 64 ) (64 0 64 ) \n"
                               "3 1 2 (nan 0 0 ) (0 nan 0 ) (0 0 nan ) \n");
    EXPECT_THAT(MightSee(graph, 0), ElementsAre(1, 2));
}

}  // namespace
}  // namespace k2k::test
