// The portal flow: the view from one portal, pushed through chains of portals until nothing is left of it.
#pragma once

#include <cstdint>
#include <vector>

#include "vis/flow_job.h"
#include "vis/scratch_stack.h"
#include "vis/separators.h"
#include "vis/view_memory.h"

namespace k2k {

struct FlowSettings {
    int32_t level = 2;  // number of separator tests, 0 to 4
    float eps = 0.05F;
    size_t waitingLimit = size_t{16} << 20U;  // bytes of waiting branches that one job may hold
    size_t memoryLimit = size_t{32} << 20U;   // bytes for the views that one worker remembers; 0 for none
};

// The portals in the order in which a single worker takes them: by mightSeeCount, then by number.
std::vector<int32_t> PortalOrder(const VisGraph& graph);

// What one worker needs to flow portals one after the other.
//
// The rows do not depend on the number of workers. A view makes use of the finished rows of exactly those portals that
// stand before its base in the order, as it would with a single worker. A branch that comes to one of them before its
// row is finished is put aside and taken up again later. That changes nothing, since a row is the union of what all
// branches show, in any order: a branch is left out only when everything that it could show is in the row already, or
// comes into it by another branch.
class FlowThread {
  public:
    // rankOf[p] is the place of portal p in the order.
    FlowThread(VisGraph& graph, const std::vector<int32_t>& rankOf, const FlowSettings& settings);

    // Starts the flow of the job's base, whose status must be Working, or goes on with it as far as it can.
    void PortalFlow(FlowJob& job);

    // Counts since the start: views that entered a region, those among them that were cut since they had come through
    // it before, and views that were left out since they repeated another.
    int64_t regionFlowCalls() const { return regionFlowCalls_; }
    int64_t recursions() const { return recursions_; }
    int64_t repeats() const { return repeats_; }

  private:
    // Separators that a frame keeps for as long as source stays whole: a range of separators_.
    struct SeparatorRange {
        size_t begin = 0, count = 0;
        bool known = false;
    };

    // A view inside a region.
    struct FlowFrame {
        int32_t region = 0;
        std::span<const RegionExit> exits;  // those that are still to be looked through
        FlowPlane entryPlane;               // of the portal that the view came in by
        Vec3 entryNormal{};
        FlowView view;  // pass is empty in the base's own region
        const Word* mightSee = nullptr;
        SeparatorRange fromSource, fromPass;
        ScratchStack::Mark scratchBelow;
        size_t separatorsBelow = 0;
        int64_t callsBefore = 0, recursionsBefore = 0;
    };

    // What is known of the view behind a portal.
    struct Bound {
        const Word* row = nullptr;
        bool isEarly = false;  // the upper bound, standing in for a row that is not finished yet
    };

    // A portal's polygon clipped by the base's plane, the same for all branches of a base.
    struct FirstClip {
        int64_t flow = 0;
        FlowPoints points;
    };

    void StartFlow();
    void ResumeReady();
    void Resume(int32_t number, const WaitingBranches& waiting);

    void RegionFlow();
    void LookThrough(FlowFrame& frame, const RegionExit& exit);
    bool ClipView(FlowFrame& frame, int32_t number);
    bool ClipToSeparators(FlowFrame& frame);
    bool ClipBySeparators(FlowPoints source, FlowPoints pass, bool flip, ClippedPolygon& target);
    bool ClipByKept(SeparatorRange& range, FlowPoints source, FlowPoints pass, bool flip);
    FlowPoints FirstClipOf(int32_t number);
    Bound BoundOf(int32_t number) const;
    void GoThrough(int32_t number, const Word* mightSee, const Word* row);
    bool IsRepeated(const FlowFrame& frame) const;
    void Remember(const FlowFrame& frame);
    void EnterRegion(FlowFrame& frame);
    void LeaveRegion();
    void PutAside(const FlowFrame& frame, int32_t number);

    VisGraph& graph_;
    const std::vector<int32_t>& rankOf_;
    const FlowSettings settings_;
    const double eps_;
    const SeparatorRules separatorRules_;
    const size_t rowWords_;

    FlowJob* job_ = nullptr;
    VisPortal* base_ = nullptr;
    FlowPlane basePlane_;
    int64_t flow_ = 0;  // number of the call of PortalFlow

    std::vector<FlowFrame> frames_;
    std::vector<int32_t> chainBelow_;  // regions in front of the first frame of a branch that was taken up again
    std::vector<Word> onChain_;        // a row: the regions that the view has come through
    ViewMemory memory_;
    ScratchStack scratch_;               // rows and polygons of the frames
    std::vector<FlowPlane> separators_;  // of the frames
    ScratchStack clipScratch_;           // points of the first clips
    std::vector<FirstClip> firstClips_;  // by portal
    ClippedPolygon source_, target_;     // of the view that is being clipped
    int64_t regionFlowCalls_ = 0;
    int64_t recursions_ = 0;
    int64_t repeats_ = 0;
};

}  // namespace k2k
