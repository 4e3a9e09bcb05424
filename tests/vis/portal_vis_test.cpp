// The exact step: what each portal really sees.
#include "vis/portal_vis.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "support/build_state.h"
#include "vis/base_vis.h"
#include "vis/graph_text.h"
#include "vis/vis_rows.h"

namespace k2k::test {
namespace {

using testing::ElementsAre;

constexpr float Eps = 0.05F;

class PortalVisTest : public BuildState {
  protected:
    static VisGraph Prepared(int32_t regionCount, const std::string& text) {
        VisGraph graph = ReadGraph(regionCount, text);
        BasePortalVis(graph, Eps);
        TakeLoggedText();
        return graph;
    }
    static FlowSettings AtLevel(int32_t level) {
        FlowSettings settings;
        settings.level = level;
        return settings;
    }
    static std::vector<int32_t> Seen(const VisGraph& graph, int32_t portal) {
        return RegionsIn(graph.portal(portal).visBits, graph.regionCount());
    }
};

// Slots to the one side, the other side and the first again: whoever looks through two of them misses the third.
VisGraph ZigZag() {
    return ReadGraph(4, PortalFileText(4, {SlotOpening(0, 1, {64, 0, 8}), SlotOpening(1, 2, {128, 56, 64}),
                                           SlotOpening(2, 3, {192, 0, 8})}));
}

TEST_F(PortalVisTest, SeparatorsHideWhatLiesRoundTheCorner) {
    for (const int32_t level : {1, 2, 3, 4}) {
        VisGraph graph = ZigZag();
        BasePortalVis(graph, Eps);
        CalculatePortalVis(graph, AtLevel(level), 1);
        EXPECT_THAT(Seen(graph, 0), ElementsAre(1, 2)) << "level " << level;
    }
}

TEST_F(PortalVisTest, LevelZeroClipsByThePortalsPlanesOnly) {
    VisGraph graph = ZigZag();
    BasePortalVis(graph, Eps);
    CalculatePortalVis(graph, AtLevel(0), 1);
    EXPECT_THAT(Seen(graph, 0), ElementsAre(1, 2, 3));
}

TEST_F(PortalVisTest, CountsTheRegionsSeen) {
    VisGraph graph = Prepared(5, CorridorText(5));
    CalculatePortalVis(graph, {}, 1);
    EXPECT_EQ(graph.portal(0).canSeeCount, 4);
    EXPECT_EQ(graph.portal(0).status, PortalStatus::Done);
}

TEST_F(PortalVisTest, AViewDoesNotLeaveThroughThePlaneItCameInBy) {
    // Both slots lie in one plane, one leads from 0 to 1, the other back from 1 to 2.
    VisGraph graph = Prepared(3, PortalFileText(3, {SlotOpening(0, 1, {64}), SlotOpening(2, 1, {64, 100, 164})}));
    for (VisPortal& portal : graph.portals) SetBit(portal.mightSee, 2);
    CalculatePortalVis(graph, {}, 1);
    EXPECT_THAT(Seen(graph, 0), ElementsAre(1));
}

TEST_F(PortalVisTest, PrintsADotForEach60thPortal) {
    VisGraph graph = Prepared(62, CorridorText(62));
    CalculatePortalVis(graph, {}, 1);
    EXPECT_EQ(TakeLoggedText(), " \nCalculating visibility ..... ok");
    EXPECT_EQ(ProgressDone, 122);
    EXPECT_EQ(ProgressTotal, 122);
}

TEST_F(PortalVisTest, FewerThanOneThreadCountsAsOne) {
    for (const int32_t threads : {0, -1, -2147483647}) {
        VisGraph graph = Prepared(4, CorridorText(4));
        CalculatePortalVis(graph, {}, threads);
        EXPECT_THAT(Seen(graph, 0), ElementsAre(1, 2, 3));
    }
}

TEST_F(PortalVisTest, FastTakesWhatMightBeSeen) {
    VisGraph graph = ZigZag();
    BasePortalVis(graph, Eps);
    TakeLoggedText();
    FastPortalVis(graph);
    EXPECT_THAT(Seen(graph, 0), ElementsAre(1, 2, 3));
    EXPECT_EQ(graph.portal(0).status, PortalStatus::Done);
    EXPECT_EQ(TakeLoggedText(), "");
}

TEST_F(PortalVisTest, TakesThePortalsBySmallestMightSeeCountTheFirstOfEquals) {
    VisGraph graph = Prepared(4, CorridorText(4));
    // Counts 3 1, 2 2, 1 3.
    EXPECT_THAT(PortalOrder(graph), ElementsAre(1, 4, 2, 3, 0, 5));
}

// Region 1 lies on both sides of region 2, so that views from region 0, through either slot, come to it twice.
VisGraph Recursive() {
    return ReadGraph(
        4, PortalFileText(4, {SlotOpening(0, 1, {64, 0, 30}), SlotOpening(0, 1, {64, 34, 64}), SlotOpening(1, 2, {128}),
                              SlotOpening(2, 1, {192}), SlotOpening(1, 3, {256})}));
}

TEST_F(PortalVisTest, WarnsOnceOfARegionThatIsOnAChainTwice) {
    VisGraph graph = Recursive();
    BasePortalVis(graph, Eps);
    TakeLoggedText();
    CalculatePortalVis(graph, {}, 1);
    EXPECT_EQ(TakeLoggedText(), " \nCalculating visibility ... \nWARNING W030: Region recursion!\n ok");
    EXPECT_GT(WarnCount, 1);
    EXPECT_THAT(Seen(graph, 0), ElementsAre(1, 2, 3));
}

TEST_F(PortalVisTest, WarnsOfEveryRecursionWhenVerboseAndOfNoneWhenQuiet) {
    const auto logged = [] {
        VisGraph graph = Recursive();
        BasePortalVis(graph, Eps);
        TakeLoggedText();
        WarnCount = 0;
        CalculatePortalVis(graph, {}, 1);
        return TakeLoggedText();
    };
    Options().verbose = true;
    const std::string text = logged();
    const std::string warning = " \nWARNING W030: Region recursion!\n";
    int32_t count = 0;
    for (size_t at = text.find(warning); at != std::string::npos; at = text.find(warning, at + 1)) ++count;
    EXPECT_EQ(count, WarnCount);
    Options().verbose = false;
    Options().quiet = true;
    EXPECT_EQ(logged(), " \nCalculating visibility ... ok");
    EXPECT_EQ(WarnCount, count);
}

// A portal of 64 points that the plane of another one cuts.
VisGraph WithWideCut() {
    RoomOpening circle{1, 2, {}};
    for (int i = 0; i < 64; ++i) {
        const double angle = 2 * std::numbers::pi * i / 64;
        circle.points.push_back({64 + 20 * std::cos(angle), 32 + 20 * std::sin(angle), 32});
    }
    return ReadGraph(3, PortalFileText(3, {SlotOpening(0, 1, {64}), circle}));
}

TEST_F(PortalVisTest, AFatalErrorOnAWorkerStopsTheStage) {
    for (const int32_t threads : {1, 4}) {
        VisGraph graph = WithWideCut();
        BasePortalVis(graph, Eps);
        ExpectFatal([&] { CalculatePortalVis(graph, {}, threads); }, "Too many intersection points requested !");
    }
}

TEST_F(PortalVisTest, PointsThatAreNoNumbersDoNoHarm) {
    std::vector<RoomOpening> openings{SlotOpening(0, 1, {64}), SlotOpening(1, 2, {128}), SlotOpening(2, 3, {192})};
    const std::vector<double> numbers{std::nan(""), INFINITY, -INFINITY, 1e300, -1e300, 1e30, 1e-300};
    for (size_t opening = 0; opening < openings.size(); ++opening) {
        for (const double number : numbers) {
            std::vector<RoomOpening> broken = openings;
            broken[opening].points[1][1] = number;
            VisGraph graph = ReadGraph(4, PortalFileText(4, broken));
            BasePortalVis(graph, Eps);
            CalculatePortalVis(graph, AtLevel(4), 1);
            EXPECT_EQ(graph.portal(0).status, PortalStatus::Done);
        }
    }
}

TEST_F(PortalVisTest, OnlyPortalsInWorkAreFlowed) {
    VisGraph graph = Prepared(2, CorridorText(2));
    graph.AllocateVisBits();
    const std::vector<int32_t> ranks{0, 1};
    FlowThread thread(graph, ranks, {});
    FlowJob job(0);
    ExpectFatal([&] { thread.PortalFlow(job); }, "E122");
}

TEST_F(PortalVisTest, ChainsMayBeAsLongAsThereAreRegions) {
    constexpr int32_t Regions = 3000;
    VisGraph graph = Prepared(Regions, CorridorText(Regions));
    graph.AllocateVisBits();
    const std::vector<int32_t> sameRank(graph.portals.size(), 0);
    FlowThread thread(graph, sameRank, {});
    graph.portal(0).status = PortalStatus::Working;
    FlowJob job(0);
    thread.PortalFlow(job);
    EXPECT_TRUE(job.isFinished());
    EXPECT_EQ(graph.portal(0).canSeeCount, Regions - 1);
}

}  // namespace
}  // namespace k2k::test
