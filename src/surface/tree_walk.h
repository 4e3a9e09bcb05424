// Pre-order walks over a tree (node, front child, back child) that no depth of tree can overflow.
#pragma once

#include <vector>

#include "solid/tree.h"

namespace k2k {

// Leaves have negative contents. A node that detail faces fell back on has ContentsDetail set and is a node still.
inline bool IsInnerNode(const CBspNode& node) {
    return node.contents >= 0;
}

template <typename Visit>
void ForEachNodeAndLeaf(CBspNode& root, Visit visit) {
    std::vector<CBspNode*> open{&root};
    while (!open.empty()) {
        CBspNode& node = *open.back();
        open.pop_back();
        visit(node);
        if (!IsInnerNode(node)) continue;
        open.push_back(node.children[1].get());
        open.push_back(node.children[0].get());
    }
}

template <typename Visit>
void ForEachInnerNode(CBspNode& root, Visit visit) {
    ForEachNodeAndLeaf(root, [&](CBspNode& node) {
        if (IsInnerNode(node)) visit(node);
    });
}

// The faces that a leaf lists. A null ends the list, also before the array's end.
template <typename Visit>
void ForEachMarkedFace(const CBspNode& leaf, Visit visit) {
    for (CBlockFace* face : leaf.markFaces) {
        if (face == nullptr) return;
        visit(*face);
    }
}

}  // namespace k2k
