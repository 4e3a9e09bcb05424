// Visibility in its plainest form, to hold the fast one against.
#include "vis/reference_vis.h"

#include <algorithm>
#include <optional>

#include "solid/vectors.h"

namespace k2k::test {
namespace {

struct Portal {
    CPlane plane;
    int32_t region = 0;
    PolygonRef polygon;
    bool done = false;
    BitRow visBits, mightSee;
    int64_t mightSeeCount = 0;
};

struct Frame {
    Frame* next = nullptr;
    int32_t region = -1;
    PolygonRef source, pass;
    CPlane portalPlane;
    BitRow mightSee;
};

double Distance(const CPlane& plane, const Vec3d& point) {
    return Dot(plane.normal, point) - plane.dist;
}
float NarrowDistance(const CPlane& plane, const Vec3d& point) {
    return static_cast<float>(Distance(plane, point));
}

class Reference {
  public:
    Reference(const VisGraph& graph, int32_t level, float eps)
        : level_(level), eps_(eps), regions_(static_cast<size_t>(graph.regionCount())) {
        for (const VisPortal& portal : graph.portals) {
            Portal& copy = portals_.emplace_back();
            copy.plane = portal.plane;
            copy.region = portal.region;
            copy.polygon = portal.polygon;
        }
        for (int32_t region = 0; region < graph.regionCount(); ++region) {
            for (const RegionExit& exit : graph.ExitsOf(region)) {
                regions_[static_cast<size_t>(region)].push_back(static_cast<size_t>(exit.portal));
            }
        }
    }

    ReferenceResult Run() {
        for (Portal& portal : portals_) BasePortalVis(portal);
        while (Portal* portal = Choose()) PortalFlow(*portal);
        ReferenceResult result;
        for (const Portal& portal : portals_) {
            result.mightSee.push_back(portal.mightSee);
            result.visBits.push_back(portal.visBits);
        }
        result.regionFlowCalls = calls_;
        result.recursions = recursions_;
        return result;
    }

  private:
    void BasePortalVis(Portal& p) {
        std::vector<bool> portalSee(portals_.size(), false);
        for (size_t number = 0; number < portals_.size(); ++number) {
            const Portal& t = portals_[number];
            if (&t == &p) continue;
            const auto behind = [&](const Vec3d& point) { return Distance(p.plane, point) <= eps_; };
            const auto inFront = [&](const Vec3d& point) { return Distance(t.plane, point) >= -eps_; };
            const std::vector<Vec3d>& mine = p.polygon->points;
            const std::vector<Vec3d>& theirs = t.polygon->points;
            if (std::all_of(theirs.begin(), theirs.end(), behind)) continue;
            if (std::all_of(mine.begin(), mine.end(), inFront)) continue;
            portalSee[number] = true;
        }
        p.mightSee.assign(regions_.size(), false);
        SimpleFlood(p, p.region, portalSee);
    }

    void SimpleFlood(Portal& p, int32_t region, const std::vector<bool>& portalSee) {
        const auto r = static_cast<size_t>(region);
        if (p.mightSee[r]) return;
        p.mightSee[r] = true;
        ++p.mightSeeCount;
        for (const size_t t : regions_[r]) {
            if (portalSee[t]) SimpleFlood(p, portals_[t].region, portalSee);
        }
    }

    Portal* Choose() {
        Portal* best = nullptr;
        int64_t bound = 9999999;
        for (Portal& portal : portals_) {
            if (portal.done || portal.mightSeeCount >= bound) continue;
            bound = portal.mightSeeCount;
            best = &portal;
        }
        return best;
    }

    void PortalFlow(Portal& p) {
        p.visBits.assign(regions_.size(), false);
        base_ = &p;
        Frame head;
        head.source = p.polygon;
        head.portalPlane = p.plane;
        head.mightSee = p.mightSee;
        head_ = &head;
        RegionFlow(p.region, head);
        p.done = true;
    }

    void RegionFlow(int32_t region, Frame& previous) {
        ++calls_;
        for (const Frame* above = head_->next; above != nullptr; above = above->next) {
            if (above->region != region) continue;
            ++recursions_;
            return;
        }
        base_->visBits[static_cast<size_t>(region)] = true;
        Frame frame;
        previous.next = &frame;
        frame.region = region;
        for (const size_t t : regions_[static_cast<size_t>(region)]) {
            frame.next = nullptr;
            LookThrough(portals_[t], previous, frame);
        }
        previous.next = nullptr;
    }

    void LookThrough(const Portal& t, const Frame& previous, Frame& frame) {
        if (!previous.mightSee[static_cast<size_t>(t.region)]) return;
        const BitRow& test = t.done ? t.visBits : t.mightSee;
        frame.mightSee.assign(regions_.size(), false);
        bool fresh = false;
        for (size_t r = 0; r < regions_.size(); ++r) {
            frame.mightSee[r] = previous.mightSee[r] && test[r];
            if (frame.mightSee[r] && !base_->visBits[r]) fresh = true;
        }
        if (!fresh) return;
        frame.portalPlane = t.plane;
        const CPlane back = FlippedPlane(t.plane);
        if (VectorEqual(previous.portalPlane.normal, back.normal, 0.01)) return;
        PolygonRef target = ClipPolygonFree(t.polygon, head_->portalPlane, false, eps_);
        if (!target) return;
        PolygonRef source = previous.source;
        if (previous.pass) {
            target = ClipPolygonFree(target, previous.portalPlane, false, eps_);
            if (!target) return;
            source = ClipPolygonFree(source, back, false, eps_);
            if (!source) return;
            if (level_ > 0) target = ClipToSeparators(*source, *previous.pass, target, false);
            if (!target) return;
            if (level_ > 1) target = ClipToSeparators(*previous.pass, *source, target, true);
            if (!target) return;
            if (level_ > 2) source = ClipToSeparators(*target, *previous.pass, source, false);
            if (!source) return;
            if (level_ > 3) source = ClipToSeparators(*previous.pass, *target, source, true);
            if (!source) return;
        }
        frame.source = source;
        frame.pass = target;
        RegionFlow(t.region, frame);
    }

    PolygonRef ClipToSeparators(const CPolygon& source, const CPolygon& pass, PolygonRef target, bool flip) const {
        for (size_t i = 0; i < source.points.size(); ++i) {
            for (size_t j = 0; j < pass.points.size(); ++j) {
                const std::optional<CPlane> plane = Separator(source, pass, i, j);
                if (!plane) continue;
                target = ClipPolygonFree(target, flip ? Reverse(*plane) : *plane, false, eps_);
                if (!target) return nullptr;
            }
        }
        return target;
    }

    std::optional<CPlane> Separator(const CPolygon& source, const CPolygon& pass, size_t i, size_t j) const {
        const size_t l = (i + 1) % source.points.size();
        const Vec3 edge = Narrow(Sub(source.points[l], source.points[i]));
        const Vec3 way = Narrow(Sub(pass.points[j], source.points[i]));
        CPlane plane;
        plane.normal = Cross(edge, way);
        if (Normalize(plane.normal) <= eps_) return {};
        plane.dist = static_cast<float>(Dot(plane.normal, pass.points[j]));

        std::optional<bool> reverse;
        for (size_t k = 0; k < source.points.size() && !reverse; ++k) {
            if (k == i || k == l) continue;
            const float d = NarrowDistance(plane, source.points[k]);
            if (d < -eps_) {
                reverse = false;
            } else if (d > eps_) {
                reverse = true;
            }
        }
        if (!reverse) return {};
        if (*reverse) plane = Reverse(plane);

        int inFront = 0;
        for (size_t k = 0; k < pass.points.size(); ++k) {
            if (k == j) continue;
            const float d = NarrowDistance(plane, pass.points[k]);
            if (d < -eps_) return {};
            if (d > eps_) ++inFront;
        }
        if (inFront == 0) return {};
        return plane;
    }

    static CPlane Reverse(CPlane plane) {
        plane.normal = Negate(plane.normal);
        plane.dist = -plane.dist;
        return plane;
    }

    const int32_t level_;
    const float eps_;
    std::vector<Portal> portals_;
    std::vector<std::vector<size_t>> regions_;
    Portal* base_ = nullptr;
    Frame* head_ = nullptr;
    int64_t calls_ = 0;
    int64_t recursions_ = 0;
};

}  // namespace

ReferenceResult ReferenceVisibility(const VisGraph& graph, int32_t level, float eps) {
    return Reference(graph, level, eps).Run();
}

}  // namespace k2k::test
