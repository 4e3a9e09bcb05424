#include "raytree/wide_tree.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "solid/vectors.h"

namespace k2k::Opcode {
namespace {

struct Box {
    using Side = std::array<float, 4>;  // x, y, z, and one to spare, as four are added at once

    Side mins, maxs;

    Box() {
        mins.fill(std::numeric_limits<float>::infinity());
        maxs.fill(-std::numeric_limits<float>::infinity());
    }
    Box(const Vec3& low, const Vec3& high) : mins{low[0], low[1], low[2]}, maxs{high[0], high[1], high[2]} {}

    void Add(const Box& other) {
        for (size_t k = 0; k < 4; k++) mins[k] = std::min(mins[k], other.mins[k]);
        for (size_t k = 0; k < 4; k++) maxs[k] = std::max(maxs[k], other.maxs[k]);
    }

    // Twice the middle.
    Side Middle() const {
        Side sum;
        for (size_t k = 0; k < 4; k++) sum[k] = mins[k] + maxs[k];
        return sum;
    }
    void Add(const Side& point) {
        for (size_t k = 0; k < 4; k++) mins[k] = std::min(mins[k], point[k]);
        for (size_t k = 0; k < 4; k++) maxs[k] = std::max(maxs[k], point[k]);
    }

    float HalfArea() const {
        const float x = maxs[0] - mins[0], y = maxs[1] - mins[1], z = maxs[2] - mins[2];
        return x * y + y * z + z * x;
    }
};

Box BoxOfNode(const AABBNoLeafNode& node) {
    return {Sub(node.center, node.extents), Add(node.center, node.extents)};
}

// A triangle that lies square to an axis and is not thin, as WideTree tells.
bool IsWellShapedAxial(const Box& box, const Vec3& e1, const Vec3& e2) {
    constexpr double LargestStretch = 24;
    for (size_t k = 0; k < 3; k++) {
        if (box.mins[k] != box.maxs[k]) continue;
        const double area = std::fabs(Cross(e1, e2)[k]);
        return std::max(LengthSquared(e1), LengthSquared(e2)) <= LargestStretch * area;
    }
    return false;
}

}  // namespace

// Kept apart from the tree, since its tables are needed only once.
class WideTreeBuilder {
  public:
    WideTreeBuilder(WideTree& wide, const MeshInterface& mesh, const AABBNoLeafTree& tree) : wide_(wide), mesh_(mesh) {
        items_.reserve(mesh.triangles.size());
        for (uint32_t i = 0; i < tree.nodes.size(); i++) {
            for (const uint32_t word : {tree.nodes[i].pos, tree.nodes[i].neg}) {
                if (IsTriangle(word)) AddItem(tree.nodes[i], i, ChildIndex(word));
            }
        }
    }

    void Build() {
        wide_.packets_.reserve(items_.size() / 3);
        wide_.nodes_.reserve(items_.size() / 12 + 1);
        wide_.nodes_.emplace_back();
        std::vector<Task> tasks{{0, MakeRange(0, items_.size()), 1}};
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
    struct Item {
        Box box;
        uint32_t triangle, parent;
    };
    struct Range {
        size_t first = 0, count = 0;
        Box box;
    };
    struct Task {
        uint32_t wideNode;
        Range range;
        uint32_t depth;
    };
    struct Children {
        std::array<Range, WideNode::Width> items;
        size_t count = 1;
    };

    // What falls into equal parts of the span of the items' middles on one axis.
    struct Bins {
        static constexpr size_t Count = 16;

        std::array<Box, Count> boxes;
        std::array<uint32_t, Count> counts{};
        float start = 0, scale = 0;

        size_t Of(float middle) const {
            constexpr auto Last = static_cast<float>(Count - 1);
            return static_cast<uint32_t>(static_cast<int32_t>(std::clamp((middle - start) * scale, 0.0F, Last)));
        }
    };
    struct Cut {
        size_t axis = 0;
        size_t bin = 0;  // the first behind the cut; 0 for no cut
        float cost = std::numeric_limits<float>::max();
    };

    void AddItem(const AABBNoLeafNode& node, uint32_t number, uint32_t triangle) {
        const auto& [a, b, c] = mesh_.triangles[triangle];
        const Vec3 &v0 = mesh_.vertices[a], &v1 = mesh_.vertices[b], &v2 = mesh_.vertices[c];
        Box box(v0, v0);
        box.Add({v1, v1});
        box.Add({v2, v2});
        if (!IsWellShapedAxial(box, Sub(v1, v0), Sub(v2, v0))) box = BoxOfNode(node);
        items_.push_back({box, triangle, number});
    }

    Range MakeRange(size_t first, size_t count) const {
        Range range{first, count, {}};
        for (size_t i = 0; i < count; i++) range.box.Add(items_[first + i].box);
        return range;
    }

    static bool FillsAPacket(const Range& range) { return range.count <= TrianglePacket::Width; }

    // Of many items, some stand for all.
    std::array<Bins, 3> FillBins(const Range& range) const {
        constexpr size_t EnoughItems = 1024;
        constexpr float LeastSpan = 1e-20F;
        const size_t step = range.count / EnoughItems + 1;
        Box middles;
        for (size_t i = 0; i < range.count; i += step) middles.Add(items_[range.first + i].box.Middle());
        std::array<Bins, 3> bins;
        for (size_t k = 0; k < 3; k++) {
            const float span = middles.maxs[k] - middles.mins[k];
            bins[k].start = middles.mins[k];
            if (span > LeastSpan) bins[k].scale = static_cast<float>(Bins::Count) / span;
        }
        for (size_t i = 0; i < range.count; i += step) {
            const Box& box = items_[range.first + i].box;
            const Box::Side middle = box.Middle();
            for (size_t k = 0; k < 3; k++) {
                const size_t bin = bins[k].Of(middle[k]);
                bins[k].boxes[bin].Add(box);
                bins[k].counts[bin]++;
            }
        }
        return bins;
    }

    // Packets to test, times how often rays meet their box.
    static float Cost(const Box& box, size_t count) {
        constexpr size_t Width = TrianglePacket::Width;
        const size_t packets = (count + Width - 1) / Width;
        return box.HalfArea() * static_cast<float>(packets);
    }

    // Keeps the best cut along the axis, when it is better.
    static void ImproveCut(const Bins& bins, size_t axis, Cut& cut) {
        std::array<float, Bins::Count> costBehind{};
        Box box;
        size_t count = 0;
        for (size_t i = Bins::Count - 1; i > 0; i--) {
            box.Add(bins.boxes[i]);
            count += bins.counts[i];
            costBehind[i] = count == 0 ? std::numeric_limits<float>::infinity() : Cost(box, count);
        }
        box = {};
        count = 0;
        for (size_t i = 1; i < Bins::Count; i++) {
            box.Add(bins.boxes[i - 1]);
            count += bins.counts[i - 1];
            if (count == 0) continue;
            const float cost = Cost(box, count) + costBehind[i];
            if (cost < cut.cost) cut = {axis, i, cost};
        }
    }

    std::array<Range, 2> Split(const Range& range) {
        const std::array<Bins, 3> bins = FillBins(range);
        Cut cut;
        for (size_t k = 0; k < 3; k++) ImproveCut(bins[k], k, cut);
        size_t count = range.count / 2;
        if (cut.bin != 0) {
            const auto first = items_.begin() + static_cast<std::ptrdiff_t>(range.first);
            const auto middle = std::partition(
                first, first + static_cast<std::ptrdiff_t>(range.count),
                [&](const Item& item) { return bins[cut.axis].Of(item.box.Middle()[cut.axis]) < cut.bin; });
            count = static_cast<size_t>(middle - first);
        }
        return {MakeRange(range.first, count), MakeRange(range.first + count, range.count - count)};
    }

    // Splits the child of the largest box, which rays meet most often, until the wide node is full or holds nothing but
    // packets.
    Children Gather(const Range& range) {
        Children children;
        children.items[0] = range;
        while (children.count < WideNode::Width) {
            Range* largest = nullptr;
            for (size_t i = 0; i < children.count; i++) {
                Range& child = children.items[i];
                if (FillsAPacket(child)) continue;
                if (largest == nullptr || child.box.HalfArea() > largest->box.HalfArea()) largest = &child;
            }
            if (largest == nullptr) break;
            const std::array<Range, 2> parts = Split(*largest);
            *largest = parts[0];
            children.items[children.count++] = parts[1];
        }
        return children;
    }

    void FillNode(const Task& task, std::vector<Task>& tasks) {
        const Children children = Gather(task.range);
        WideNode node;
        for (size_t i = 0; i < WideNode::Width; i++) {
            for (size_t k = 0; k < 3; k++) {
                node.sides[k][i] = children.items[i].box.mins[k];
                node.sides[3 + k][i] = children.items[i].box.maxs[k];
            }
            if (i >= children.count) continue;
            if (FillsAPacket(children.items[i])) {
                node.children[i] = AddPacket(children.items[i]) << 1U | 1U;
                continue;
            }
            const auto number = static_cast<uint32_t>(wide_.nodes_.size());
            wide_.nodes_.emplace_back();
            node.children[i] = number << 1U;
            tasks.push_back({number, children.items[i], task.depth + 1});
        }
        wide_.nodes_[task.wideNode] = node;
    }

    uint32_t AddPacket(const Range& range) {
        TrianglePacket& packet = wide_.packets_.emplace_back();
        for (size_t lane = 0; lane < range.count; lane++) {
            const Item& item = items_[range.first + lane];
            const auto& [a, b, c] = mesh_.triangles[item.triangle];
            const Vec3& v0 = mesh_.vertices[a];
            const Vec3 e1 = Sub(mesh_.vertices[b], v0), e2 = Sub(mesh_.vertices[c], v0);
            for (size_t k = 0; k < 3; k++) {
                packet.v0[k][lane] = v0[k];
                packet.e1[k][lane] = e1[k];
                packet.e2[k][lane] = e2[k];
            }
            packet.triangle[lane] = item.triangle;
            packet.parent[lane] = item.parent;
        }
        return static_cast<uint32_t>(wide_.packets_.size()) - 1;
    }

    WideTree& wide_;
    const MeshInterface& mesh_;
    std::vector<Item> items_;
};

namespace {

// Coordinates beyond this could overflow in the products of the box test.
constexpr float LargestReach = 1e12F;

float LargestCoordinate(const Vec3& v) {
    return std::max({std::fabs(v[0]), std::fabs(v[1]), std::fabs(v[2])});
}

// Infinite when any is too large or no number.
float ReachOf(std::span<const Vec3> vertices) {
    float reach = 0;
    for (const Vec3& vertex : vertices) {
        for (const float coordinate : vertex) {
            if (!(std::fabs(coordinate) <= LargestReach)) return std::numeric_limits<float>::infinity();
        }
        reach = std::max(reach, LargestCoordinate(vertex));
    }
    return reach;
}

}  // namespace

WideTree::WideTree(const MeshInterface& mesh, const AABBNoLeafTree& tree) : reach_(ReachOf(mesh.vertices)) {
    if (reach_ <= LargestReach) WideTreeBuilder(*this, mesh, tree).Build();
}

std::optional<float> WideTree::Margin(const Ray& ray, float length) const {
    // In scenes below the first no determinant is large enough. Products of the others stay clear of the smallest
    // numbers that have all their bits.
    constexpr float LeastReach = 1e-3F, LeastLength = 1e-10F, LeastDirection = 1e-10F;
    constexpr float MarginOfReach = 0x1p-15F;
    for (size_t k = 0; k < 3; k++) {
        const float part = std::fabs(ray.direction[k]);
        if (!(part == 0 || part >= LeastDirection) || !(std::fabs(ray.origin[k]) <= LargestReach)) return std::nullopt;
    }
    const float reach = reach_ + LargestCoordinate(ray.origin) + length;
    if (!(reach >= LeastReach && reach <= LargestReach && length >= LeastLength)) return std::nullopt;
    return MarginOfReach * reach;
}

}  // namespace k2k::Opcode
