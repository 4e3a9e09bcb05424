// What the portals that are left are foretold to cost.
#include "vis/flow_forecast.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "support/build_state.h"
#include "vis/base_vis.h"
#include "vis/flow_thread.h"
#include "vis/graph_text.h"

namespace k2k::test {
namespace {

// Corridors beside each other, of so many regions each; the portals of one see only along it.
VisGraph Corridors(const std::vector<int32_t>& lengths) {
    std::vector<RoomOpening> openings;
    int32_t first = 0;
    for (const int32_t length : lengths) {
        for (int32_t i = 0; i + 1 < length; ++i)
            openings.push_back(SlotOpening(first + i, first + i + 1, {64.0 * (i + 1)}));
        first += length;
    }
    VisGraph graph = ReadGraph(first, PortalFileText(first, openings));
    BasePortalVis(graph, 0.05F);
    return graph;
}

class FlowForecastTest : public BuildState {
  protected:
    static double SizeOf(const VisGraph& graph, int32_t portal) {
        return std::pow(graph.portal(portal).mightSeeCount, 0.8);
    }
};

TEST_F(FlowForecastTest, SaysNothingWhileNothingIsDone) {
    const VisGraph graph = Corridors({5});
    const std::vector<int32_t> order = PortalOrder(graph);
    FlowForecast forecast(graph, order);
    EXPECT_EQ(forecast.Foretell().done, 0);
    EXPECT_EQ(forecast.Foretell().left, 0);
}

TEST_F(FlowForecastTest, NothingIsLeftWhenAllIsDone) {
    const VisGraph graph = Corridors({5});
    const std::vector<int32_t> order = PortalOrder(graph);
    FlowForecast forecast(graph, order);
    for (const int32_t portal : order) forecast.Done(portal, 10);
    EXPECT_EQ(forecast.Foretell().done, 80);
    EXPECT_EQ(forecast.Foretell().left, 0);
}

// Portal 0 leads to the region that 1 and 2 leave, 3 likewise; 0 and 3 might see two regions, 1 and 2 one.
TEST_F(FlowForecastTest, APortalCostsForItsSizeWhatThoseBehindItDo) {
    const VisGraph graph = Corridors({3});
    const std::vector<int32_t> order = PortalOrder(graph);
    FlowForecast forecast(graph, order);
    forecast.Done(1, 300);
    forecast.Done(2, 500);
    // Nothing stands behind 1 and 2, so each was foretold the mean of all, 400, and that was right on the average.
    EXPECT_NEAR(forecast.Foretell().left, 2 * 400 * SizeOf(graph, 0), 1e-6);
    forecast.Done(0, 4000);
    // Foretold for 0, 1 and 2 with the new mean: 400 for the size, and twice the mean.
    const double mean = 4800 / (2 + SizeOf(graph, 0));
    const double correction = (4000 + 500) / (400 * SizeOf(graph, 0) + mean);
    EXPECT_NEAR(forecast.Foretell().left, 400 * SizeOf(graph, 0) * correction, 1e-6);
}

TEST_F(FlowForecastTest, EachPlaceGoesOnAsItBegan) {
    const VisGraph graph = Corridors({10, 10});
    const std::vector<int32_t> order = PortalOrder(graph);
    const auto leftIn = [&](int32_t place) {
        FlowForecast forecast(graph, order);
        for (const int32_t portal : order) {
            const bool isFirst = portal < 18;
            const bool isLeft = isFirst == (place == 0) && graph.portal(portal).mightSeeCount > 6;
            if (!isLeft) forecast.Done(portal, isFirst ? 10 : 1000);
        }
        return forecast.Foretell().left;
    };
    EXPECT_GT(leftIn(1), 50 * leftIn(0));
}

TEST_F(FlowForecastTest, DoesNotDependOnTheOrderInWhichPortalsAreDone) {
    const VisGraph graph = Corridors({10, 7});
    const std::vector<int32_t> order = PortalOrder(graph);
    FlowForecast forward(graph, order), backward(graph, order);
    for (int32_t portal = 0; portal < 20; ++portal) {
        forward.Done(portal, 5 + portal);
        backward.Done(19 - portal, 24 - portal);
    }
    EXPECT_NEAR(forward.Foretell().left, backward.Foretell().left, 1e-6);
}

// The range of what is foretold to be left against what is, from a tenth of all cost on and nearly to its end.
template <typename Cost>
std::pair<double, double> RangeOfForecasts(const VisGraph& graph, const Cost& costOf) {
    const std::vector<int32_t> order = PortalOrder(graph);
    FlowForecast forecast(graph, order);
    double all = 0, done = 0, least = 1, most = 1;
    for (const int32_t portal : order) all += static_cast<double>(costOf(portal));
    for (const int32_t portal : order) {
        forecast.Done(portal, costOf(portal));
        done += static_cast<double>(costOf(portal));
        if (done < all / 10 || done > all * 0.98) continue;
        const double ratio = forecast.Foretell().left / (all - done);
        least = std::min(least, ratio);
        most = std::max(most, ratio);
    }
    return {least, most};
}

// One long corridor where the cost lies, and many short ones where there is little: by what they might see alone, what
// is left of the long one would be foretold less than half of its cost.
TEST_F(FlowForecastTest, IsWithinAFactorOfTwoWhereTheCostLiesInOnePlace) {
    std::vector<int32_t> lengths(60, 10);
    lengths.push_back(150);
    const VisGraph graph = Corridors(lengths);
    for (const double power : {0.7, 0.85, 1.0}) {
        SCOPED_TRACE(power);
        const auto [least, most] = RangeOfForecasts(graph, [&](int32_t portal) {
            const double growth = std::pow(graph.portal(portal).mightSeeCount, power);
            return static_cast<int64_t>((portal < 60 * 18 ? 1 : 1000) * growth);
        });
        EXPECT_GT(least, 0.5);
        EXPECT_LT(most, 2);
    }
}

// The short corridors are the dear ones.
TEST_F(FlowForecastTest, IsWithinAFactorOfTwoWhereTheCostLiesInSmallPlaces) {
    std::vector<int32_t> lengths(60, 10);
    lengths.push_back(150);
    const VisGraph graph = Corridors(lengths);
    const auto [least, most] = RangeOfForecasts(graph, [&](int32_t portal) -> int64_t {
        return int64_t{portal < 60 * 18 ? 40 : 10} * graph.portal(portal).mightSeeCount;
    });
    EXPECT_GT(least, 0.5);
    EXPECT_LT(most, 2);
}

// Flows a grid of rooms, which is the more costly the deeper one looks into it.
TEST_F(FlowForecastTest, IsWithinAFactorOfTwoForTheFlowOfAGrid) {
    RoomGridOptions options;
    options.size = {6, 5, 3};
    options.maxOpenings = 3;
    VisGraph graph = ReadGrid(options);
    BasePortalVis(graph, 0.05F);
    graph.AllocateVisBits();
    const std::vector<int32_t> order = PortalOrder(graph);
    std::vector<int32_t> rankOf(order.size());
    for (size_t rank = 0; rank < order.size(); ++rank)
        rankOf[static_cast<size_t>(order[rank])] = static_cast<int32_t>(rank);
    FlowThread thread(graph, rankOf, {});
    std::vector<int64_t> calls(order.size());
    for (const int32_t portal : order) {
        StoreStatus(graph.portal(portal), PortalStatus::Working);
        FlowJob job(portal);
        thread.PortalFlow(job);
        StoreStatus(graph.portal(portal), PortalStatus::Done);
        calls[static_cast<size_t>(portal)] = job.regionFlowCalls;
    }
    const auto [least, most] =
        RangeOfForecasts(graph, [&](int32_t portal) { return calls[static_cast<size_t>(portal)]; });
    EXPECT_GT(least, 0.5);
    EXPECT_LT(most, 2);
}

}  // namespace
}  // namespace k2k::test
