#include "raytree/ray_tree.h"

#include <algorithm>
#include <atomic>
#include <numeric>
#include <utility>

#include "raytree/wide_tree.h"
#include "raytree/wide_walk.h"

namespace k2k::Opcode {
namespace {

constexpr float Third = 0.33333334F;

std::array<int, 3> AxesByExtent(const Vec3& extents) {
    std::array<int, 3> axes{0, 1, 2};
    std::stable_sort(axes.begin(), axes.end(), [&](int a, int b) { return extents[a] > extents[b]; });
    return axes;
}

}  // namespace

uint32_t MeshInterface::CountDegenerate() const {
    return static_cast<uint32_t>(std::count_if(triangles.begin(), triangles.end(), [](const auto& t) {
        return t[0] == t[1] || t[1] == t[2] || t[0] == t[2];
    }));
}

AABBTreeOfTrianglesBuilder::AABBTreeOfTrianglesBuilder(const MeshInterface& mesh)
    : order_(mesh.triangles.size()), boxes_(mesh.triangles.size()), centers_(mesh.triangles.size()) {
    std::iota(order_.begin(), order_.end(), 0U);
    for (size_t i = 0; i < order_.size(); i++) {
        const auto& [a, b, c] = mesh.triangles[i];
        const Vec3 &va = mesh.vertices[a], &vb = mesh.vertices[b], &vc = mesh.vertices[c];
        for (size_t k = 0; k < 3; k++) {
            boxes_[i][0][k] = std::min({va[k], vb[k], vc[k]});
            boxes_[i][1][k] = std::max({va[k], vb[k], vc[k]});
            centers_[i][k] = (va[k] + vb[k] + vc[k]) * Third;
        }
    }
}

// One pass: triangles above the value are swapped to the front. Returns how many there are.
uint32_t AABBTreeOfTrianglesBuilder::Split(Range range, int axis, float value) {
    uint32_t above = 0;
    for (uint32_t i = 0; i < range.count; i++) {
        if (!(centers_[order_[range.first + i]][static_cast<size_t>(axis)] > value)) continue;
        std::swap(order_[range.first + i], order_[range.first + above]);
        above++;
    }
    return above;
}

uint32_t AABBTreeOfTrianglesBuilder::SplitBest(Range range, const Vec3& center, const Vec3& extents) {
    for (const int axis : AxesByExtent(extents)) {
        const uint32_t above = Split(range, axis, center[static_cast<size_t>(axis)]);
        if (above != 0 && above != range.count) return above;
    }
    return range.count / 2;
}

// Makes the node of a range of two triangles or more, links it to its parent, and queues the parts that need a node.
void AABBTreeOfTrianglesBuilder::AddNode(AABBNoLeafTree& tree, const Task& task, std::vector<Task>& tasks) {
    std::array<Vec3, 2> box = boxes_[order_[task.range.first]];
    for (uint32_t i = 1; i < task.range.count; i++) {
        const auto& other = boxes_[order_[task.range.first + i]];
        for (size_t k = 0; k < 3; k++) {
            box[0][k] = std::min(box[0][k], other[0][k]);
            box[1][k] = std::max(box[1][k], other[1][k]);
        }
    }
    const auto number = static_cast<uint32_t>(tree.nodes.size());
    AABBNoLeafNode& node = tree.nodes.emplace_back();
    tree.parents.push_back(task.parent);
    for (size_t k = 0; k < 3; k++) {
        node.center[k] = (box[1][k] + box[0][k]) * 0.5F;
        node.extents[k] = (box[1][k] - box[0][k]) * 0.5F;
    }
    if (number != 0) {
        AABBNoLeafNode& parent = tree.nodes[task.parent];
        (task.above ? parent.pos : parent.neg) = number << 1U;
    }
    tree.depth = std::max(tree.depth, task.depth);

    const uint32_t above = SplitBest(task.range, node.center, node.extents);
    const Range front{task.range.first, above};
    const Range back{task.range.first + above, task.range.count - above};
    if (front.count == 1) node.pos = order_[front.first] << 1U | 1U;
    if (back.count == 1) node.neg = order_[back.first] << 1U | 1U;
    if (back.count > 1) tasks.push_back({back, number, false, task.depth + 1});
    if (front.count > 1) tasks.push_back({front, number, true, task.depth + 1});
}

AABBNoLeafTree AABBTreeOfTrianglesBuilder::Build() {
    AABBNoLeafTree tree;
    tree.nodes.reserve(order_.size() - 1);
    tree.parents.reserve(order_.size() - 1);
    std::vector<Task> tasks{{{0, static_cast<uint32_t>(order_.size())}, 0, false, 1}};
    while (!tasks.empty()) {
        const Task task = tasks.back();
        tasks.pop_back();
        AddNode(tree, task, tasks);
    }
    tree.places.resize(order_.size());
    for (uint32_t i = 0; i < order_.size(); i++) tree.places[order_[i]] = i;
    return tree;
}

Model::Model() = default;
Model::~Model() = default;
Model::Model(Model&&) noexcept = default;
Model& Model::operator=(Model&&) noexcept = default;

bool Model::Build(const CreateRecord& create) {
    if (create.mesh == nullptr || create.mesh->triangles.empty() || create.settings.limit != 1) return false;
    static std::atomic<uint64_t> models = 0;
    serial_ = ++models;
    mesh_ = *create.mesh;
    single_ = mesh_.triangles.size() == 1;
    tree_ = {};
    wide_.reset();
    if (single_) return true;
    tree_ = AABBTreeOfTrianglesBuilder(mesh_).Build();
    if (create.widen && CanWalkWideTrees()) wide_ = std::make_unique<const WideTree>(mesh_, tree_);
    return true;
}

}  // namespace k2k::Opcode
