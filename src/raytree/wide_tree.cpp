#include "raytree/wide_tree.h"

#include <algorithm>
#include <limits>

#include "solid/vectors.h"

namespace k2k::Opcode {

// Turns the binary tree into the wide one, top down. Kept apart from the tree, since its tables are needed only once.
class WideTreeBuilder {
  public:
    WideTreeBuilder(WideTree& wide, const MeshInterface& mesh, const AABBNoLeafTree& tree)
        : wide_(wide), mesh_(mesh), tree_(tree), counts_(CountTriangles(tree)) {}

    void Build() {
        const size_t usual = tree_.nodes.size() / 3;
        wide_.packets_.reserve(usual);
        wide_.nodes_.reserve(usual / 3);
        wide_.nodes_.emplace_back();
        std::vector<Task> tasks{{0, 0, 1}};
        uint32_t depth = 0;
        while (!tasks.empty()) {
            const Task task = tasks.back();
            tasks.pop_back();
            depth = std::max(depth, task.depth);
            FillNode(task, tasks);
        }
        wide_.stackSize_ = depth * static_cast<uint32_t>(WideNode::Width - 1) + 1;
    }

  private:
    // A child word of the binary tree, and the node that has it.
    struct Child {
        uint32_t word;
        uint32_t parent;
    };
    struct Children {
        std::array<Child, WideNode::Width> items{};
        size_t count = 0;
    };
    struct Task {
        uint32_t wideNode;
        uint32_t binaryNode;
        uint32_t depth;
    };

    // Triangles below each node. Nodes stand behind their parents.
    static std::vector<uint32_t> CountTriangles(const AABBNoLeafTree& tree) {
        std::vector<uint32_t> counts(tree.nodes.size());
        for (size_t i = counts.size(); i-- > 0;) {
            for (const uint32_t word : {tree.nodes[i].pos, tree.nodes[i].neg}) {
                counts[i] += IsTriangle(word) ? 1 : counts[ChildIndex(word)];
            }
        }
        return counts;
    }

    bool FillsAPacket(uint32_t word) const {
        return IsTriangle(word) || counts_[ChildIndex(word)] <= TrianglePacket::Width;
    }

    float HalfArea(uint32_t word) const {
        const Vec3& e = tree_.nodes[ChildIndex(word)].extents;
        return e[0] * e[1] + e[1] * e[2] + e[2] * e[0];
    }

    // The child to open next: that of the largest box, as rays meet it most often. The count when there is none.
    size_t LargestNode(const Children& children) const {
        size_t best = children.count;
        for (size_t i = 0; i < children.count; i++) {
            if (FillsAPacket(children.items[i].word)) continue;
            if (best == children.count || HalfArea(children.items[i].word) > HalfArea(children.items[best].word))
                best = i;
        }
        return best;
    }

    // Replaces children by their own children, until the wide node is full or holds nothing but packets.
    Children Gather(uint32_t binaryNode) const {
        const AABBNoLeafNode& top = tree_.nodes[binaryNode];
        Children children;
        children.items[0] = {top.pos, binaryNode};
        children.items[1] = {top.neg, binaryNode};
        children.count = 2;
        while (children.count < WideNode::Width) {
            const size_t opened = LargestNode(children);
            if (opened == children.count) break;
            const uint32_t number = ChildIndex(children.items[opened].word);
            const auto place = children.items.begin() + static_cast<std::ptrdiff_t>(opened);
            std::copy_backward(place + 1, children.items.begin() + static_cast<std::ptrdiff_t>(children.count),
                               children.items.begin() + static_cast<std::ptrdiff_t>(children.count) + 1);
            place[0] = {tree_.nodes[number].pos, number};
            place[1] = {tree_.nodes[number].neg, number};
            children.count++;
        }
        return children;
    }

    void FillNode(const Task& task, std::vector<Task>& tasks) {
        const Children children = Gather(task.binaryNode);
        WideNode node;
        for (auto& lanes : node.extents) lanes.fill(-std::numeric_limits<float>::infinity());
        for (size_t i = 0; i < children.count; i++) {
            const auto [word, parent] = children.items[i];
            // A triangle has no box of its own; that of its node guards it.
            const AABBNoLeafNode& box = tree_.nodes[IsTriangle(word) ? parent : ChildIndex(word)];
            for (size_t k = 0; k < 3; k++) {
                node.center[k][i] = box.center[k];
                node.extents[k][i] = box.extents[k];
            }
            if (FillsAPacket(word)) {
                node.children[i] = AddPacket(children.items[i]) << 1U | 1U;
                continue;
            }
            const auto number = static_cast<uint32_t>(wide_.nodes_.size());
            wide_.nodes_.emplace_back();
            node.children[i] = number << 1U;
            tasks.push_back({number, ChildIndex(word), task.depth + 1});
        }
        wide_.nodes_[task.wideNode] = node;
    }

    uint32_t AddPacket(const Child& child) {
        TrianglePacket& packet = wide_.packets_.emplace_back();
        size_t lane = 0;
        AddTriangles(packet, child, lane);
        return static_cast<uint32_t>(wide_.packets_.size()) - 1;
    }

    void AddTriangles(TrianglePacket& packet, const Child& child, size_t& lane) const {
        const uint32_t number = ChildIndex(child.word);
        if (!IsTriangle(child.word)) {
            AddTriangles(packet, {tree_.nodes[number].pos, number}, lane);
            AddTriangles(packet, {tree_.nodes[number].neg, number}, lane);
            return;
        }
        const auto& [a, b, c] = mesh_.triangles[number];
        const Vec3& v0 = mesh_.vertices[a];
        const Vec3 e1 = Sub(mesh_.vertices[b], v0), e2 = Sub(mesh_.vertices[c], v0);
        for (size_t k = 0; k < 3; k++) {
            packet.v0[k][lane] = v0[k];
            packet.e1[k][lane] = e1[k];
            packet.e2[k][lane] = e2[k];
        }
        packet.triangle[lane] = number;
        packet.parent[lane] = child.parent;
        lane++;
    }

    WideTree& wide_;
    const MeshInterface& mesh_;
    const AABBNoLeafTree& tree_;
    const std::vector<uint32_t> counts_;
};

WideTree::WideTree(const MeshInterface& mesh, const AABBNoLeafTree& tree) {
    WideTreeBuilder(*this, mesh, tree).Build();
}

}  // namespace k2k::Opcode
