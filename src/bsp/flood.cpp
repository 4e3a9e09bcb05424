// The flood from the outside of a level inwards, and what it leads to.
#include <vector>

#include "bsp/portals.h"
#include "bsp/tree_build.h"
#include "driver/build_log.h"
#include "driver/build_options.h"
#include "driver/run_stats.h"
#include "mapread/entity.h"

namespace k2k {
namespace {

// Puts every entity but the level's own into its leaf, unless that is solid; whether any was placed.
bool OccupyLeaves(CBspNode& root) {
    bool isOccupied = false;
    const std::vector<CEntity>& entities = Entities();
    for (size_t i = 1; i < entities.size(); ++i) {
        CBspNode& leaf = PointInLeaf(root, entities[i].origin);
        if (IsSolid(leaf.contents)) continue;
        leaf.occupied = static_cast<int32_t>(i);
        isOccupied = true;
    }
    return isOccupied;
}

// One walk through the portals, depth first and in list order, from a start leaf. Levels have any number of leaves in a
// row, so the path is kept in a list of its own.
class PortalFlood {
  public:
    PortalFlood(int32_t stamp, bool fill) : stamp_(stamp), fill_(fill) {}

    // Whether the walk met an occupied leaf, where it ends.
    bool Run(CBspNode& start) {
        if (Enter(start)) return true;
        while (!path_.empty()) {
            Step& step = path_.back();
            if (step.portal == nullptr) {
                path_.pop_back();
                continue;
            }
            CBspNode& node = *step.node;
            const CPortal& portal = *step.portal;
            step.portal = portal.NextAt(node);
            if (Enter(portal.FarSide(node))) return true;
        }
        return false;
    }

  private:
    struct Step {
        CBspNode* node;
        CPortal* portal;  // the next one to go through
    };

    // Whether the node is occupied; an open one that was not seen before joins the path.
    bool Enter(CBspNode& node) {
        if (IsSolid(node.contents) || node.fillStamp == stamp_) return false;
        if (node.occupied != 0) return true;
        node.fillStamp = stamp_;
        if (fill_) node.contents = ContentsSolid;
        path_.push_back({&node, node.portals});
        return false;
    }

    const int32_t stamp_;
    const bool fill_;
    std::vector<Step> path_;
};

// The family's flag belongs to leaks of both kinds, though one kind shows under -verbose only.
void WarnLeak(const CBspNode& start) {
    if (WarnOnce(WarnFamily::W091)) {
        if (start.occupied != 0) {
            BuildLog(" \nWARNING W091: Region disaligned!\n");
        } else if (Options().verbose) {
            BuildLog(" \nWARNING W090: Region leaking!\n");
        }
    }
    ++WarnCount;
}

// Faces that only the outside sees lose their points; whoever gathers the tree's faces drops them.
void ClearOutsideFaces(CBspNode& root) {
    std::vector<CBspNode*> stack{&root};
    while (!stack.empty()) {
        CBspNode& node = *stack.back();
        stack.pop_back();
        if (!node.IsLeaf()) {
            for (auto& child : node.children) stack.push_back(child.get());
        } else if (IsSolid(node.contents)) {
            for (CBlockFace* face : node.markFaces) face->points.clear();
            node.faces.clear();
        }
    }
}

}  // namespace

bool FillOutside(TreePortals& portals, CBspNode& root) {
    if (Options().nofill || !OccupyLeaves(root)) return false;
    CBspNode& start = portals.outside.portals->FarSide(portals.outside);
    if (PortalFlood(1, false).Run(start)) {
        WarnLeak(start);
        AddStat("leaking_hulls", 1);
        // From now on the second walk ends at its first step: a level that leaks keeps its outside.
        start.occupied = 1;
    }
    PortalFlood(2, true).Run(start);
    ClearOutsideFaces(root);
    return true;
}

}  // namespace k2k
