#include "solid/tree.h"

#include <atomic>
#include <cstdlib>
#include <new>

#include "solid_support.h"

namespace {

std::atomic<int64_t> allocationsMade{0}, allocationsLive{0};

}  // namespace

// All of the program's allocations are counted.
void* operator new(size_t size) {
    void* memory = std::malloc(size);
    if (memory == nullptr) throw std::bad_alloc();
    ++allocationsMade;
    ++allocationsLive;
    return memory;
}
void operator delete(void* memory) noexcept {
    if (memory != nullptr) --allocationsLive;
    std::free(memory);
}
void operator delete(void* memory, size_t /*size*/) noexcept {
    operator delete(memory);
}

namespace k2k {
namespace {

class TreeTest : public test::SolidTest {};

TEST_F(TreeTest, SurfaceInfoTakesInAllFaces) {
    CSplitSurface surface;
    surface.faces.push_front(test::MakeFloorFace({{0, 0, 0}, {0, 8, 0}, {8, 0, 0}}));
    surface.faces.push_front(test::MakeFloorFace({{-5, 2, 0}, {0, 8, 0}, {8, 0, 3}}));
    CalcSurfaceInfo(surface);
    EXPECT_EQ(surface.mins, (Vec3{-5, 0, 0}));
    EXPECT_EQ(surface.maxs, (Vec3{8, 8, 3}));
}

TEST_F(TreeTest, SurfaceInfoNeedsFaces) {
    CSplitSurface surface;
    test::ExpectFatal([&] { CalcSurfaceInfo(surface); }, "E062");
}

TEST_F(TreeTest, SurfaceInfoNeedsContentsOnBothSides) {
    for (const size_t side : {0U, 1U}) {
        CSplitSurface surface;
        auto face = test::MakeFloorFace({{0, 0, 0}, {0, 8, 0}, {8, 0, 0}});
        face->contents[side] = 0;
        surface.faces.push_front(std::move(face));
        test::ExpectFatal([&] { CalcSurfaceInfo(surface); }, "E063");
    }
}

// A tree of this many nodes; childOf gives the side on which each hangs below the one before.
template <typename ChildOf>
std::unique_ptr<CBspNode> DeepTree(int nodes, ChildOf childOf) {
    auto root = std::make_unique<CBspNode>();
    CBspNode* node = root.get();
    for (int i = 1; i < nodes; ++i) {
        auto& child = node->children[static_cast<size_t>(childOf(i))];
        child = std::make_unique<CBspNode>();
        node = child.get();
    }
    return root;
}

TEST_F(TreeTest, FreesADeepTreeWithoutRecursionOrAllocation) {
    constexpr int Nodes = 1000000;
    std::vector<std::unique_ptr<CBspNode>> trees;
    trees.push_back(DeepTree(Nodes, [](int) { return 0; }));
    trees.push_back(DeepTree(Nodes, [](int) { return 1; }));
    trees.push_back(DeepTree(Nodes, [](int i) { return i % 2; }));
    for (std::unique_ptr<CBspNode>& tree : trees) {
        const int64_t before = allocationsMade;
        tree.reset();
        EXPECT_EQ(allocationsMade, before);
    }
}

TEST_F(TreeTest, FreesLongBlockListsWithoutRecursionOrAllocation) {
    CBlockSet set;
    for (int i = 0; i < 1000000; ++i) set.blocks.push_front(std::make_unique<CBlock>());
    const int64_t before = allocationsMade;
    set.blocks.clear();
    EXPECT_EQ(allocationsMade, before);
}

TEST_F(TreeTest, FreesAllNodesAndWhatTheyHold) {
    const int64_t before = allocationsLive;
    {
        CBspNode root;
        std::vector<CBspNode*> nodes{&root};
        for (size_t i = 0; i < 511; ++i) {
            CBspNode& node = *nodes[i];
            node.faces.push_front(std::make_unique<CBlockFace>());
            node.faces.front()->points.resize(4);
            for (auto& child : node.children) {
                child = std::make_unique<CBspNode>();
                nodes.push_back(child.get());
            }
        }
    }
    EXPECT_EQ(allocationsLive, before);
}

}  // namespace
}  // namespace k2k
