#include "raytree/last_blocker.h"

namespace k2k::Opcode {
namespace {

void SetLane(WideNode& node, size_t lane, const AABBNoLeafNode& box) {
    for (size_t k = 0; k < 3; k++) {
        node.center[k][lane] = box.center[k];
        node.extents[k][lane] = box.extents[k];
    }
}

}  // namespace

void LastBlocker::Set(const Model& model, uint32_t triangle, uint32_t parent) {
    serial_ = model.serial();
    triangle_ = triangle;
    parent_ = parent;
    boxes_.clear();
}

const std::vector<WideNode>& LastBlocker::Boxes(const AABBNoLeafTree& tree) {
    if (!boxes_.empty()) return boxes_;
    size_t lane = WideNode::Width;
    for (uint32_t node = parent_;; node = tree.parents[node]) {
        if (lane == WideNode::Width) {
            boxes_.emplace_back();
            for (size_t spare = 0; spare < WideNode::Width; spare++) SetLane(boxes_.back(), spare, tree.nodes[0]);
            lane = 0;
        }
        SetLane(boxes_.back(), lane++, tree.nodes[node]);
        if (node == 0) return boxes_;
    }
}

}  // namespace k2k::Opcode
