// What the portals that are not done yet will cost.
#pragma once

#include <cstdint>
#include <vector>

#include "vis/vis_graph.h"

namespace k2k {

// The cost of a portal's flow, in views that enter a region, grows with the number of regions that the portal might
// see; but much more it differs from place to place of a level. So each portal is taken to cost, for its number, what
// the portals behind it do that stand before it in the order. How far that is off on the average is learned from the
// portals that are done.
class FlowForecast {
  public:
    // order: the portals, first to last, with mightSeeCount set.
    FlowForecast(const VisGraph& graph, const std::vector<int32_t>& order);

    void Done(int32_t portal, int64_t cost);

    struct Work {
        double done = 0, left = 0;
    };
    // Looks at all portals.
    Work Foretell();

  private:
    double RateBehind(const VisPortal& portal, double otherwise) const;

    const VisGraph& graph_;
    const std::vector<int32_t>& order_;
    std::vector<double> size_;  // by portal: the cost, but for the place
    std::vector<double> cost_;  // by portal; 0 until it is done
    std::vector<double> rate_;  // by portal: the cost by size, known or foretold; 0 before either
    double doneCost_ = 0, doneSize_ = 0;
};

}  // namespace k2k
