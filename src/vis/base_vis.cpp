// The cheap upper bound of what each portal can see: a flood through the portals in front of it.
#include "vis/base_vis.h"

#include <algorithm>
#include <cmath>

#include "driver/build_log.h"
#include "solid/vectors.h"

namespace k2k {
namespace {

constexpr int32_t PortalsPerDot = 120;

double Distance(const CPlane& plane, const Vec3d& point) {
    return Dot(plane.normal, point) - plane.dist;
}

// A ball around a polygon. The reach is more than the radius by far more than rounding can cost, so that a decision by
// the ball is the decision that all the points would give.
struct Ball {
    Vec3d center{};
    double reach = 0;
};

Ball BallAround(const CPolygon& polygon) {
    Ball ball;
    for (const Vec3d& point : polygon.points) {
        for (size_t axis = 0; axis < 3; ++axis) ball.center[axis] += point[axis] / polygon.numpoints();
    }
    double radius = 0;
    for (const Vec3d& point : polygon.points) {
        const Vec3d offset = Sub(point, ball.center);
        radius = std::max(radius, std::sqrt(Dot(offset, offset)));
    }
    const double size = std::abs(ball.center[0]) + std::abs(ball.center[1]) + std::abs(ball.center[2]);
    ball.reach = radius * (1 + 1e-6) + size * 1e-12 + 1e-6;
    return ball;
}

bool AllAtOrBelow(const CPlane& plane, const CPolygon& polygon, const Ball& ball, double limit) {
    const double center = Distance(plane, ball.center);
    if (center + ball.reach <= limit) return true;
    if (center - ball.reach > limit) return false;
    return std::all_of(polygon.points.begin(), polygon.points.end(),
                       [&](const Vec3d& point) { return Distance(plane, point) <= limit; });
}

bool AllAtOrAbove(const CPlane& plane, const CPolygon& polygon, const Ball& ball, double limit) {
    const double center = Distance(plane, ball.center);
    if (center - ball.reach >= limit) return true;
    if (center + ball.reach < limit) return false;
    return std::all_of(polygon.points.begin(), polygon.points.end(),
                       [&](const Vec3d& point) { return Distance(plane, point) >= limit; });
}

class BaseFlood {
  public:
    BaseFlood(VisGraph& graph, double eps) : graph_(graph), eps_(eps) {
        balls_.reserve(graph.portals.size());
        for (const VisPortal& portal : graph.portals) balls_.push_back(BallAround(*portal.polygon));
    }

    // The regions are visited in no particular order, since only the set of them is kept.
    void SimpleFlood(int32_t base) {
        VisPortal& portal = graph_.portal(base);
        portal.mightSeeCount = 0;
        Visit(portal, portal.region);
        while (!open_.empty()) {
            const int32_t region = open_.back();
            open_.pop_back();
            for (const RegionExit& exit : graph_.ExitsOf(region)) {
                if (exit.portal > MaxPortalRecord) FatalError("E079: Map size - too many portals!");
                if (!TestBit(portal.mightSee, exit.region) && PortalSee(base, exit.portal)) Visit(portal, exit.region);
            }
        }
    }

  private:
    void Visit(VisPortal& portal, int32_t region) {
        SetBit(portal.mightSee, region);
        ++portal.mightSeeCount;
        open_.push_back(region);
    }

    // Tested only for portals that the flood reaches: each belongs to one region, so none is tested twice.
    bool PortalSee(int32_t base, int32_t other) const {
        if (base == other) return false;
        const VisPortal& p = graph_.portal(base);
        const VisPortal& t = graph_.portal(other);
        return !AllAtOrBelow(p.plane, *t.polygon, balls_[static_cast<size_t>(other)], eps_) &&
               !AllAtOrAbove(t.plane, *p.polygon, balls_[static_cast<size_t>(base)], -eps_);
    }

    VisGraph& graph_;
    const double eps_;
    std::vector<Ball> balls_;
    std::vector<int32_t> open_;
};

}  // namespace

void BasePortalVis(VisGraph& graph, float eps) {
    graph.AllocateMightSee();
    BaseFlood flood(graph, eps);
    for (size_t base = 0; base < graph.portals.size(); ++base) {
        if (++ProgressDone % PortalsPerDot == 0) BuildLog(".");
        flood.SimpleFlood(static_cast<int32_t>(base));
    }
    BuildLog(" ok");
}

}  // namespace k2k
