// The region tree, the hull trees and the visibility rows.
#include "levelcheck/fault_list.h"

namespace levelcheck {
namespace {

std::string Name(const char* what, int64_t i) {
    return std::string(what) + " " + std::to_string(i);
}

// A contents word: empty or solid, with flag bits.
bool IsContents(int32_t word) {
    return (word & ~16) == -256 || (word < 0 && (word & ~(1 | 2 | 4 | 16)) == -128);
}

struct TreeWalk {
    std::vector<uint8_t> nodeSeen, regionSeen;
};

// Every node and every region from row 1 on is reached once; the shared solid region any number of times.
void WalkRegions(const LevelView& level, TreeWalk& walk, FaultList& faults) {
    std::vector<int32_t> stack{level.info.headNodes[0]};
    while (!stack.empty()) {
        const int32_t at = stack.back();
        stack.pop_back();
        if (at >= 0) {
            if (static_cast<size_t>(at) >= level.nodes.size()) {
                faults.Add("child names no node", Name("node", at));
                continue;
            }
            if (walk.nodeSeen[at]++ != 0) {
                faults.Add("node reached twice", Name("node", at));
                continue;
            }
            stack.push_back(level.nodes[at].children[1]);
            stack.push_back(level.nodes[at].children[0]);
            continue;
        }
        const int64_t region = -(int64_t{at} + 1);
        if (region >= static_cast<int64_t>(level.regions.size())) {
            faults.Add("child names no region", Name("region", region));
        } else if (walk.regionSeen[region] < 2) {
            walk.regionSeen[region]++;
        }
    }
}

void CheckRegionTree(const LevelView& level, FaultList& faults) {
    if (level.regions.empty()) return;
    faults.Require(level.regions[0].contents == -128 && level.regions[0].surfaceCount == 0,
                   "row 0 is not the shared solid region", "region 0");
    for (size_t i = 0; i < level.regions.size(); i++) {
        faults.Require(IsContents(level.regions[i].contents), "region with no contents word",
                       Name("region", static_cast<int64_t>(i)));
    }
    if (level.nodes.empty()) return;
    TreeWalk walk{std::vector<uint8_t>(level.nodes.size()), std::vector<uint8_t>(level.regions.size())};
    WalkRegions(level, walk, faults);
    for (size_t i = 0; i < level.nodes.size(); i++) {
        faults.Require(walk.nodeSeen[i] != 0, "node not reached from the root", Name("node", static_cast<int64_t>(i)));
    }
    for (size_t i = 1; i < level.regions.size(); i++) {
        faults.Require(walk.regionSeen[i] == 1, "region not reached exactly once",
                       Name("region", static_cast<int64_t>(i)));
    }
    faults.Require(level.info.visRegions == static_cast<int32_t>(level.regions.size()) - 1,
                   "region count of the level info", std::to_string(level.info.visRegions));
}

// The hull's links lead to rows of the table, never in a circle, and end in contents words.
void CheckHull(const LevelView& level, int hull, FaultList& faults) {
    std::vector<uint8_t> seen(level.hullNodes.size());
    std::vector<int32_t> stack{level.info.headNodes[hull]};
    while (!stack.empty()) {
        const int32_t at = stack.back();
        stack.pop_back();
        if (at < 0) {
            faults.Require(IsContents(at), "hull leaf with no contents word", Name("word", at));
            continue;
        }
        if (static_cast<size_t>(at) >= level.hullNodes.size()) {
            faults.Add("child names no hull node", Name("hull node", at));
            continue;
        }
        if (seen[at]++ != 0) {
            faults.Add("hull node reached twice", Name("hull node", at));
            continue;
        }
        for (const int32_t child : level.hullNodes[at].children) stack.push_back(child);
    }
}

}  // namespace

void CheckTrees(const LevelView& level, FaultList& faults) {
    CheckRegionTree(level, faults);
    if (level.hullNodes.empty()) return;
    CheckHull(level, 1, faults);
    CheckHull(level, 2, faults);
    for (size_t i = 0; i < level.hullNodes.size(); i++) {
        for (const int32_t child : level.hullNodes[i].children) {
            faults.Require(child < static_cast<int64_t>(level.hullNodes.size()), "hull child out of range",
                           Name("hull node", static_cast<int64_t>(i)));
        }
    }
}

void CheckVisibility(const LevelView& level, FaultList& faults) {
    const bool none = level.chunks[ChunkVis].size == 0;
    const int64_t count = static_cast<int64_t>(level.regions.size()) - 1;
    if (!none && level.info.visRegions != count) {
        return faults.Add("visibility rows of another length than the regions", std::to_string(level.info.visRegions));
    }
    for (int64_t i = 1; i <= count; i++) {
        const std::string name = Name("region", i);
        if (none) {
            faults.Require(level.regions[i].visOffset == -1, "visibility offset without visibility data", name);
            continue;
        }
        const auto row = VisRow(level, static_cast<size_t>(i));
        if (!row) {
            faults.Add("visibility row missing or damaged", name);
            continue;
        }
        const int64_t own = i - 1;
        faults.Require(((*row)[own / 8] >> (own % 8) & 1) != 0, "region does not see itself", name);
        for (int64_t bit = count; bit < static_cast<int64_t>(row->size()) * 8; bit++) {
            faults.Require(((*row)[bit / 8] >> (bit % 8) & 1) == 0, "visibility bit beyond the last region", name);
        }
    }
}

}  // namespace levelcheck
