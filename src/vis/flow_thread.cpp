// The portal flow: the view from one portal, pushed through chains of portals until nothing is left of it.
#include "vis/flow_thread.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "driver/build_log.h"
#include "solid/vectors.h"

namespace k2k {
namespace {

constexpr double SameNormal = 0.01;  // per component: a view cannot leave through the plane that it came in by

// The largest sum of a point's coordinates.
double SizeOf(const VisGraph& graph) {
    double size = 0;
    for (const VisPortal& portal : graph.portals) {
        for (const Vec3d& point : portal.polygon->points) {
            const double sum = std::abs(point[0]) + std::abs(point[1]) + std::abs(point[2]);
            size = std::isnan(sum) ? std::numeric_limits<double>::infinity() : std::max(size, sum);
        }
    }
    return size;
}

// The points of a clipped polygon for longer than the next clip: where they were not cut they stay where they are.
FlowPoints Keep(const ClippedPolygon& polygon, ScratchStack& scratch) {
    const FlowPoints points = polygon.points();
    if (polygon.isWhole() || points.empty()) return points;
    Vec3d* kept = scratch.Take<Vec3d>(points.size());
    std::copy(points.begin(), points.end(), kept);
    return {kept, points.size()};
}

}  // namespace

std::vector<int32_t> PortalOrder(const VisGraph& graph) {
    std::vector<int32_t> order(graph.portals.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&](int32_t a, int32_t b) {
        return graph.portal(a).mightSeeCount < graph.portal(b).mightSeeCount;
    });
    return order;
}

FlowThread::FlowThread(VisGraph& graph, const std::vector<int32_t>& rankOf, const FlowSettings& settings)
    : graph_(graph),
      rankOf_(rankOf),
      settings_(settings),
      eps_(settings.eps),
      separatorRules_{settings.eps, MaySkipRepeats(SizeOf(graph), settings.eps)},
      rowWords_(graph.rowWords()),
      onChain_(rowWords_, 0),
      memory_(rowWords_, settings.memoryLimit),
      firstClips_(graph.portals.size()) {}

void FlowThread::PortalFlow(FlowJob& job) {
    job_ = &job;
    base_ = &graph_.portal(job.base);
    if (LoadStatus(*base_) != PortalStatus::Working) FatalError("E122");
    basePlane_ = WidenPlane(base_->plane);
    ++flow_;
    clipScratch_.Release({});
    memory_.Clear();
    const int64_t callsBefore = regionFlowCalls_;
    if (job.waiting.empty()) {
        StartFlow();
    } else {
        ResumeReady();
    }
    job.regionFlowCalls += regionFlowCalls_ - callsBefore;
}

void FlowThread::StartFlow() {
    job_->started = true;
    job_->missed.clear();
    FlowFrame frame;
    frame.view = {job_->base, base_->polygon->points, {}};
    frame.mightSee = base_->mightSee;
    EnterRegion(frame);
    RegionFlow();
}

// Takes up the branches that waited for portals which are done by now. Those that are put aside meanwhile wait for
// other portals.
void FlowThread::ResumeReady() {
    for (auto at = job_->waiting.begin(); at != job_->waiting.end();) {
        if (LoadStatus(graph_.portal(at->first)) != PortalStatus::Done) {
            ++at;
            continue;
        }
        const auto entry = job_->waiting.extract(at++);
        job_->waitingBytes -= entry.mapped().bytes();
        Resume(entry.key(), entry.mapped());
    }
}

void FlowThread::Resume(int32_t number, const WaitingBranches& waiting) {
    const Word* visBits = graph_.portal(number).visBits;
    const Word* row = waiting.rows.data();
    const Vec3d* points = waiting.points.data();
    const int32_t* chain = waiting.chain.data();
    for (const WaitingBranches::Branch& branch : waiting.branches) {
        if (ShareNewBit(row, visBits, base_->visBits, rowWords_)) {
            chainBelow_.assign(chain, chain + branch.chainLength);
            for (const int32_t region : chainBelow_) SetBit(onChain_.data(), region);
            source_.Start({points, branch.sourceCount});
            target_.Start({points + branch.sourceCount, branch.passCount});
            GoThrough(number, row, visBits);
            RegionFlow();
            for (const int32_t region : chainBelow_) ClearBit(onChain_.data(), region);
            chainBelow_.clear();
        }
        row += rowWords_;
        points += branch.sourceCount + branch.passCount;
        chain += branch.chainLength;
    }
}

// Runs all that follows from the frames on the stack. The recursion is as deep as the longest chain of regions, so its
// frames lie on the heap.
void FlowThread::RegionFlow() {
    while (!frames_.empty()) {
        FlowFrame& frame = frames_.back();
        if (frame.exits.empty()) {
            LeaveRegion();
            continue;
        }
        const RegionExit& exit = frame.exits.front();
        frame.exits = frame.exits.subspan(1);
        LookThrough(frame, exit);
    }
}

void FlowThread::LookThrough(FlowFrame& frame, const RegionExit& exit) {
    if (!TestBit(frame.mightSee, exit.region)) return;
    const VisPortal& portal = graph_.portal(exit.portal);
    const Bound bound = BoundOf(exit.portal);
    if (!ShareNewBit(frame.mightSee, bound.row, base_->visBits, rowWords_)) return;
    if (VectorEqual(frame.entryNormal, Negate(portal.plane.normal), SameNormal)) return;
    if (!ClipView(frame, exit.portal)) return;
    if (bound.isEarly) {
        PutAside(frame, exit.portal);
    } else {
        GoThrough(exit.portal, frame.mightSee, bound.row);
    }
}

FlowThread::Bound FlowThread::BoundOf(int32_t number) const {
    const VisPortal& portal = graph_.portal(number);
    if (rankOf_[static_cast<size_t>(number)] >= rankOf_[static_cast<size_t>(job_->base)])
        return {portal.mightSee, false};
    if (LoadStatus(portal) == PortalStatus::Done) return {portal.visBits, false};
    return {portal.mightSee, true};
}

// Leaves in source_ and target_ what of the view goes through the portal. False when nothing does.
bool FlowThread::ClipView(FlowFrame& frame, int32_t number) {
    const FlowPoints opening = FirstClipOf(number);
    if (opening.empty()) return false;
    source_.Start(frame.view.source);
    target_.Start(opening);
    if (frame.view.pass.empty()) return true;
    return target_.Clip(frame.entryPlane, eps_) && source_.Clip(WidenFlipped(graph_.portal(number).plane), eps_) &&
           ClipToSeparators(frame);
}

// Clips by the planes that separate what the view comes from and what it has come through. Those of the frame's own
// polygons are the same for all its portals.
bool FlowThread::ClipToSeparators(FlowFrame& frame) {
    const int32_t level = settings_.level;
    if (source_.isWhole()) {
        if (level > 0 && !ClipByKept(frame.fromSource, frame.view.source, frame.view.pass, false)) return false;
        if (level > 1 && !ClipByKept(frame.fromPass, frame.view.pass, frame.view.source, true)) return false;
    } else {
        if (level > 0 && !ClipBySeparators(source_.points(), frame.view.pass, false, target_)) return false;
        if (level > 1 && !ClipBySeparators(frame.view.pass, source_.points(), true, target_)) return false;
    }
    if (level > 2 && !ClipBySeparators(target_.points(), frame.view.pass, false, source_)) return false;
    return level <= 3 || ClipBySeparators(frame.view.pass, target_.points(), true, source_);
}

bool FlowThread::ClipByKept(SeparatorRange& range, FlowPoints source, FlowPoints pass, bool flip) {
    if (!range.known) {
        range.begin = separators_.size();
        AddSeparators(source, pass, flip, separatorRules_, separators_);
        range.count = separators_.size() - range.begin;
        range.known = true;
    }
    return target_.Clip({separators_.data() + range.begin, range.count}, eps_);
}

bool FlowThread::ClipBySeparators(FlowPoints source, FlowPoints pass, bool flip, ClippedPolygon& target) {
    const size_t begin = separators_.size();
    AddSeparators(source, pass, flip, separatorRules_, separators_);
    const bool isLeft = target.Clip({separators_.data() + begin, separators_.size() - begin}, eps_);
    separators_.resize(begin);
    return isLeft;
}

FlowPoints FlowThread::FirstClipOf(int32_t number) {
    FirstClip& kept = firstClips_[static_cast<size_t>(number)];
    if (kept.flow != flow_) {
        target_.Start(graph_.portal(number).polygon->points);
        target_.Clip(basePlane_, eps_);
        kept = {flow_, Keep(target_, clipScratch_)};
    }
    return kept.points;
}

// Enters the region behind the portal with what is left of the view.
void FlowThread::GoThrough(int32_t number, const Word* mightSee, const Word* row) {
    FlowFrame frame;
    frame.scratchBelow = scratch_.Top();
    Word* behind = scratch_.Take<Word>(rowWords_);
    AndRows(mightSee, row, behind, rowWords_);
    frame.mightSee = behind;
    frame.view = {number, Keep(source_, scratch_), Keep(target_, scratch_)};
    if (settings_.memoryLimit > 0) frame.view.hash = HashView(frame.view);
    if (IsRepeated(frame)) {
        ++repeats_;
        scratch_.Release(frame.scratchBelow);
    } else {
        EnterRegion(frame);
    }
}

// Whether the view's way has been gone already. Where it might come back to a region that it has come through, it is
// followed, so that the recursion is told.
bool FlowThread::IsRepeated(const FlowFrame& frame) const {
    return settings_.memoryLimit > 0 && memory_.Holds(frame.view, frame.mightSee) &&
           !ShareBit(frame.mightSee, onChain_.data(), rowWords_);
}

// Recursions depend on the way that a view has come; what has met one may go further on another way.
void FlowThread::Remember(const FlowFrame& frame) {
    if (settings_.memoryLimit == 0 || frame.view.pass.empty() || recursions_ != frame.recursionsBefore) return;
    memory_.Add(frame.view, frame.mightSee, regionFlowCalls_ - frame.callsBefore);
}

void FlowThread::EnterRegion(FlowFrame& frame) {
    const VisPortal& portal = graph_.portal(frame.view.portal);
    const int32_t region = portal.region;
    frame.callsBefore = regionFlowCalls_++;
    frame.recursionsBefore = recursions_;
    if (TestBit(onChain_.data(), region)) {
        ++recursions_;
        scratch_.Release(frame.scratchBelow);
        return;
    }
    if (!TestBit(base_->visBits, region)) {
        SetBit(base_->visBits, region);
        ++base_->canSeeCount;
    }
    SetBit(onChain_.data(), region);
    frame.region = region;
    frame.exits = graph_.ExitsOf(region);
    frame.entryPlane = WidenPlane(portal.plane);
    frame.entryNormal = portal.plane.normal;
    frame.separatorsBelow = separators_.size();
    frames_.push_back(frame);
}

void FlowThread::LeaveRegion() {
    const FlowFrame& frame = frames_.back();
    ClearBit(onChain_.data(), frame.region);
    Remember(frame);
    separators_.resize(frame.separatorsBelow);
    scratch_.Release(frame.scratchBelow);
    frames_.pop_back();
}

void FlowThread::PutAside(const FlowFrame& frame, int32_t number) {
    if (job_->waitingBytes >= settings_.waitingLimit) {
        if (std::find(job_->missed.begin(), job_->missed.end(), number) == job_->missed.end()) {
            job_->missed.push_back(number);
        }
        return;
    }
    WaitingBranches& waiting = job_->waiting[number];
    const size_t bytesBefore = waiting.bytes();
    const FlowPoints source = source_.points();
    const FlowPoints pass = target_.points();
    waiting.branches.push_back({source.size(), pass.size(), chainBelow_.size() + frames_.size()});
    waiting.rows.insert(waiting.rows.end(), frame.mightSee, frame.mightSee + rowWords_);
    waiting.points.insert(waiting.points.end(), source.begin(), source.end());
    waiting.points.insert(waiting.points.end(), pass.begin(), pass.end());
    waiting.chain.insert(waiting.chain.end(), chainBelow_.begin(), chainBelow_.end());
    for (const FlowFrame& above : frames_) waiting.chain.push_back(above.region);
    job_->waitingBytes += waiting.bytes() - bytesBefore;
}

}  // namespace k2k
