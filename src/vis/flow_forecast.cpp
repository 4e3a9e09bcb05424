// What the portals that are not done yet will cost.
#include "vis/flow_forecast.h"

#include <algorithm>
#include <cmath>

namespace k2k {
namespace {

// Measured on levels that people made. Less than in proportion, as of much that might be seen less is.
constexpr double SizeExponent = 0.8;
// The first portals look into corners, and with none before them the means of what stands behind say little.
constexpr double UnlearnedPart = 0.1;  // of the cost of what is done

}  // namespace

FlowForecast::FlowForecast(const VisGraph& graph, const std::vector<int32_t>& order)
    : graph_(graph), order_(order), cost_(order.size(), 0) {
    size_.reserve(graph.portals.size());
    for (const VisPortal& portal : graph.portals) size_.push_back(std::pow(portal.mightSeeCount, SizeExponent));
}

void FlowForecast::Done(int32_t portal, int64_t cost) {
    const auto at = static_cast<size_t>(portal);
    cost_[at] = static_cast<double>(cost);
    doneCost_ += cost_[at];
    doneSize_ += size_[at];
}

FlowForecast::Work FlowForecast::Foretell() {
    if (doneCost_ == 0) return {};
    rate_.assign(order_.size(), 0);
    double left = 0, passed = 0, learned = 0, foretold = 0;
    for (const int32_t number : order_) {
        const auto at = static_cast<size_t>(number);
        rate_[at] = RateBehind(graph_.portal(number), doneCost_ / doneSize_);
        const double cost = rate_[at] * size_[at];
        if (cost_[at] == 0) {
            left += cost;
            continue;
        }
        passed += cost_[at];
        if (passed > UnlearnedPart * doneCost_) {
            learned += cost_[at];
            foretold += cost;
        }
        rate_[at] = cost_[at] / size_[at];
    }
    return {doneCost_, left * learned / foretold};
}

// The mean of the rates of the portals that leave the region behind, as far as there are any.
double FlowForecast::RateBehind(const VisPortal& portal, double otherwise) const {
    double sum = 0;
    int32_t count = 0;
    for (const RegionExit& exit : graph_.ExitsOf(portal.region)) {
        const double rate = rate_[static_cast<size_t>(exit.portal)];
        if (rate == 0) continue;
        sum += rate;
        ++count;
    }
    return count > 0 ? sum / count : otherwise;
}

}  // namespace k2k
