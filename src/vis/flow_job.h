// The work on one base portal, and the branches of its view that wait for other portals.
#pragma once

#include <map>
#include <vector>

#include "vis/flow_polygon.h"
#include "vis/vis_graph.h"

namespace k2k {

// Branches of a view that have come to the same portal too early: all that is needed to go on from there.
struct WaitingBranches {
    struct Branch {
        size_t sourceCount = 0, passCount = 0;  // points
        size_t chainLength = 0;                 // regions
    };
    std::vector<Branch> branches;
    std::vector<Word> rows;      // one row a branch: what it might see in front of the portal
    std::vector<Vec3d> points;   // source and pass of each branch
    std::vector<int32_t> chain;  // the regions that each branch has come through

    size_t bytes() const {
        return branches.size() * sizeof(Branch) + rows.size() * sizeof(Word) + points.size() * sizeof(Vec3d) +
               chain.size() * sizeof(int32_t);
    }
};

struct FlowJob {
    explicit FlowJob(int32_t portal) : base(portal) {}

    int32_t base;  // portal number
    bool started = false;
    int64_t regionFlowCalls = 0;                 // spent on it so far
    std::map<int32_t, WaitingBranches> waiting;  // by the portal waited for
    size_t waitingBytes = 0;
    // Portals of branches that there was no room for. When all of them are done the flow runs once more from the start,
    // and faster, since what it has found stays found.
    std::vector<int32_t> missed;

    bool isFinished() const { return started && waiting.empty() && missed.empty(); }
};

}  // namespace k2k
