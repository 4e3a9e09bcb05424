#include "light/page_packer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <random>
#include <string>

#include "light/selection_order.h"
#include "plain_packer.h"
#include "support/build_state.h"

namespace k2k::test {
namespace {

class PagePacking : public BuildState {};

// Random numbers that are the same on every machine.
class Dice {
  public:
    explicit Dice(uint32_t seed) : engine_(seed) {}
    uint32_t Below(uint32_t end) { return static_cast<uint32_t>(engine_() % end); }
    // A node of a random group and size.
    PlainPacker::Block Block(uint32_t groups, uint32_t widest, uint32_t highest, uint32_t smallest = 3) {
        return {1 + Below(groups), static_cast<int32_t>(smallest + Below(widest)),
                static_cast<int32_t>(smallest + Below(highest))};
    }
    std::mt19937& engine() { return engine_; }

  private:
    std::mt19937 engine_;
};
using Blocks = std::vector<PlainPacker::Block>;

// The nodes of blocks and the pages that they were packed into.
struct Packed {
    Packed(const Blocks& blocks, uint32_t maxPageLevel) {
        for (const auto& block : blocks) {
            PageNode& node = nodes.emplace_back();
            node.group = block.group;
            node.block = &anyBlock;
            node.x1 = block.w - 1;
            node.y1 = block.h - 1;
        }
        PackBlocks(trees, blocks.size(), maxPageLevel, pages);
    }
    LightBlock anyBlock;
    std::vector<PageNode> nodes;
    CPageTrees trees{nodes};
    std::vector<LightPage> pages;
};

// One line a block of a page: page, block, place; in the order of the tree.
void Describe(const CPageTrees& trees, size_t page, PageNodeIndex index, std::string& out) {
    if (index == NoNode) return;
    const PageNode& node = trees.Node(index);
    if (!node.IsLeaf()) {
        Describe(trees, page, node.childA, out);
        Describe(trees, page, node.childB, out);
        return;
    }
    out += std::to_string(page) + (node.block != nullptr ? " b" + std::to_string(index) : " free");
    for (const int32_t v : {node.x0, node.y0, node.x1, node.y1}) out += " " + std::to_string(v);
    out += "\n";
}

void Describe(size_t page, const PlainNode* node, std::string& out) {
    if (node == nullptr) return;
    if (node->childA != nullptr) {
        Describe(page, node->childA, out);
        Describe(page, node->childB, out);
        return;
    }
    out += std::to_string(page) + (node->block >= 0 ? " b" + std::to_string(node->block) : " free");
    for (const int32_t v : {node->x0, node->y0, node->x1, node->y1}) out += " " + std::to_string(v);
    out += "\n";
}

std::string Describe(const Packed& packed) {
    std::string out;
    for (size_t i = 0; i < packed.pages.size(); i++) {
        const LightPage& page = packed.pages[i];
        out += "page of level " + std::to_string(page.level) + "\n";
        Describe(packed.trees, i, page.root, out);
        EXPECT_EQ(page.freeArea, packed.trees.FreeArea(page.root));
    }
    return out;
}

std::string Describe(const PlainPacker& plain) {
    std::string out;
    for (size_t i = 0; i < plain.pages.size(); i++) {
        out += "page of level " + std::to_string(plain.pages[i].level) + "\n";
        Describe(i, plain.pages[i].root, out);
    }
    return out;
}

void ExpectSameAsPlain(const Blocks& blocks, uint32_t maxPageLevel) {
    TakeLoggedText();
    const std::string fast = Describe(Packed(blocks, maxPageLevel));
    const std::string fastText = TakeLoggedText();
    const std::string plain = Describe(PlainPacker(blocks, maxPageLevel));
    ASSERT_EQ(fast, plain);
    ASSERT_EQ(fastText, TakeLoggedText());
}

TEST_F(PagePacking, SelectionOrderIsThatOfThePlainSort) {
    Dice dice(3);
    for (int round = 0; round < 2000; round++) {
        const uint32_t count = dice.Below(60);
        const uint32_t kinds = 1 + dice.Below(12);
        std::vector<std::pair<uint32_t, size_t>> plain;
        std::vector<uint32_t> keys;
        for (size_t i = 0; i < count; i++) {
            keys.push_back(dice.Below(kinds));
            plain.emplace_back(keys.back(), i);
        }
        SelectionSort(plain, [](const auto& a, const auto& b) { return a.first < b.first; });
        std::vector<size_t> expected;
        for (const auto& item : plain) expected.push_back(item.second);
        ASSERT_EQ(SelectionOrder(keys, std::less<>()), expected);
    }
}

TEST_F(PagePacking, TheExchangeMovesEqualItemsPastEachOther) {
    // 2a 2b 1 becomes 1 2b 2a: the first is exchanged with the last.
    EXPECT_EQ(SelectionOrder(std::vector<int>{2, 2, 1}, std::less<>()), (std::vector<size_t>{2, 1, 0}));
}

TEST_F(PagePacking, ALoneBlockLiesInTheFirstCorner) {
    const Packed packed({{1, 3, 3}}, 0);
    ASSERT_EQ(packed.pages.size(), 1U);
    EXPECT_EQ(packed.nodes[0].x0, 0);
    EXPECT_EQ(packed.nodes[0].y1, 2);
}

TEST_F(PagePacking, ABlockAsWideAsALeafTakesItsWidthWithoutANewFreeNode) {
    std::vector<PageNode> nodes(1);
    nodes[0].group = 1;
    nodes[0].x1 = 255;
    nodes[0].y1 = 9;
    CPageTrees trees(nodes);
    LightPage page = trees.FreshPage(0);
    const size_t before = nodes.size();
    ASSERT_TRUE(trees.InsertRect(page, 0));
    EXPECT_EQ(nodes.size(), before + 1);  // only the rest
    EXPECT_EQ(trees.Node(page.root).childA, 0);
    EXPECT_EQ(trees.Node(trees.Node(page.root).childB).y0, 10);
}

TEST_F(PagePacking, TheSmallerLeftoverDecidesTheSplit) {
    // 100 x 200 in 256 x 256: what is left in height is less, so columns are cut first.
    const Packed packed({{1, 100, 200}}, 0);
    const PageNode& root = packed.trees.Node(packed.pages[0].root);
    EXPECT_EQ(packed.trees.Node(root.childB).x0, 100);
    EXPECT_EQ(packed.trees.Node(root.childB).y0, 0);
    const Packed equal({{1, 100, 100}}, 0);
    const PageNode& equalRoot = equal.trees.Node(equal.pages[0].root);
    EXPECT_EQ(equal.trees.Node(equalRoot.childB).y0, 100);
}

TEST_F(PagePacking, RemovingABlockMergesTheFreeLeavesAgain) {
    std::vector<PageNode> nodes(2);
    for (PageNode& node : nodes) {
        node.group = 1;
        node.x1 = node.y1 = 9;
    }
    CPageTrees trees(nodes);
    LightPage page = trees.FreshPage(0);
    ASSERT_TRUE(trees.InsertRect(page, 0));
    ASSERT_TRUE(trees.InsertRect(page, 1));
    EXPECT_EQ(page.freeArea, 65536 - 200);
    trees.RemoveRect(page, 0);
    EXPECT_EQ(page.freeArea, 65536 - 100);
    EXPECT_EQ(trees.FreeArea(page.root), page.freeArea);
    trees.RemoveRect(page, 1);
    EXPECT_TRUE(trees.Node(page.root).IsFreeLeaf());
    EXPECT_EQ(page.freeArea, 65536);
}

TEST_F(PagePacking, ABlockThatWasTheRootLeavesNoRoot) {
    std::vector<PageNode> nodes(1);
    nodes[0].group = 1;
    nodes[0].x1 = nodes[0].y1 = 255;
    CPageTrees trees(nodes);
    LightPage page = trees.FreshPage(0);
    ASSERT_TRUE(trees.InsertRect(page, 0));
    EXPECT_EQ(page.root, 0);
    trees.RemoveRect(page, 0);
    EXPECT_EQ(page.root, NoNode);
    EXPECT_FALSE(trees.InsertRect(page, 0));
}

TEST_F(PagePacking, AGroupThatFitsStaysOnOnePage) {
    Blocks blocks;
    for (uint32_t group = 1; group <= 6; group++) {
        for (int i = 0; i < 8; i++) blocks.push_back({group, 60, 60});
    }
    const Packed packed(blocks, 0);
    std::map<uint32_t, std::string> pageOf;
    for (size_t p = 0; p < packed.pages.size(); p++) {
        std::vector<PageNodeIndex> todo{packed.pages[p].root};
        while (!todo.empty()) {
            const PageNode& node = packed.trees.Node(todo.back());
            todo.pop_back();
            if (node.group != 0) {
                auto& page = pageOf[node.group];
                EXPECT_TRUE(page.empty() || page == std::to_string(p));
                page = std::to_string(p);
            }
            if (!node.IsLeaf()) todo.insert(todo.end(), {node.childA, node.childB});
        }
    }
    EXPECT_EQ(pageOf.size(), 6U);
}

TEST_F(PagePacking, AGroupLargerThanAPageIsSpreadWithoutLoss) {
    const Packed packed(Blocks(40, {1, 100, 100}), 0);
    EXPECT_EQ(packed.pages.size(), 10U);
    int64_t used = 0;
    for (const LightPage& page : packed.pages) used += 65536 - page.freeArea;
    EXPECT_EQ(used, 40 * 10000);
    EXPECT_EQ(TakeLoggedText(), "");
}

TEST_F(PagePacking, TheFirstBlockOfAGroupDoesNotCountInItsArea) {
    // Page 0 has room for 56 x 256 beside its block; a group of one block tries it whatever its area is.
    const Packed packed({{1, 200, 256}, {2, 56, 256}}, 0);
    EXPECT_EQ(packed.pages.size(), 1U);
}

TEST_F(PagePacking, WhenAllPagesAreFullBlocksAreDroppedWithAMessage) {
    Blocks blocks(300, {1, 256, 256});
    const Packed packed(blocks, 0);
    EXPECT_EQ(packed.pages.size(), MaxLightPages);
    EXPECT_EQ(TakeLoggedText(), "\nWARRNING: Dropped some lightmap patches\n");
}

TEST_F(PagePacking, LargerPagesComeOnlyWhereTheyAreAllowed) {
    EXPECT_EQ(Packed({{1, 300, 20}}, 2).pages[0].level, 1U);
    EXPECT_EQ(Packed({{1, 600, 20}}, 2).pages[0].level, 2U);
    // No page of a BSP level can take it: every page that may be is tried, and it is dropped.
    const Packed packed({{1, 300, 20}}, 0);
    EXPECT_EQ(packed.pages.size(), MaxLightPages);
    EXPECT_EQ(TakeLoggedText(), "\nWARRNING: Dropped some lightmap patches\n");
}

TEST_F(PagePacking, AGrownPageKeepsItsBlocksInTheFirstCorner) {
    std::vector<PageNode> nodes(2);
    nodes[0].group = nodes[1].group = 1;
    nodes[0].x1 = nodes[0].y1 = 99;
    nodes[1].x1 = 399;
    nodes[1].y1 = 199;
    CPageTrees trees(nodes);
    LightPage page = trees.FreshPage(0);
    ASSERT_TRUE(trees.InsertRect(page, 0));
    ASSERT_FALSE(trees.InsertRect(page, 1));
    const PageBefore before = trees.Grow(page, 1);
    EXPECT_EQ(page.width, 512U);
    EXPECT_EQ(page.freeArea, 512 * 512 - 10000);
    ASSERT_TRUE(trees.InsertRect(page, 1));
    EXPECT_EQ(nodes[0].x0, 0);
    EXPECT_EQ(nodes[1].y0, 256);
    trees.RemoveRect(page, 1);
    trees.UndoGrow(page, before);
    EXPECT_EQ(page.width, 256U);
    EXPECT_EQ(trees.FreeArea(page.root), 65536 - 10000);
}

TEST_F(PagePacking, GivesWhatThePlainPackerGivesOnBlocksOfLevels) {
    Dice dice(5);
    for (int round = 0; round < 60; round++) {
        Blocks blocks;
        const uint32_t groups = 1 + dice.Below(80);
        const uint32_t count = dice.Below(600);
        const uint32_t widest = round % 3 == 0 ? 34 : 120;
        for (size_t i = 0; i < count; i++) {
            blocks.push_back(dice.Block(groups, widest, widest));
        }
        ExpectSameAsPlain(blocks, 0);
        if (HasFatalFailure()) return;
    }
}

TEST_F(PagePacking, GivesWhatThePlainPackerGivesWithLargerPages) {
    Dice dice(6);
    for (int round = 0; round < 60; round++) {
        Blocks blocks;
        const uint32_t groups = 1 + dice.Below(30);
        const uint32_t count = dice.Below(250);
        for (size_t i = 0; i < count; i++) {
            const uint32_t widest = dice.Below(10) == 0 ? 1000 : dice.Below(3) == 0 ? 300 : 60;
            blocks.push_back(dice.Block(groups, widest, widest));
        }
        ExpectSameAsPlain(blocks, 1 + round % 2);
        if (HasFatalFailure()) return;
    }
}

TEST_F(PagePacking, GivesWhatThePlainPackerGivesWhenPagesRunOut) {
    Dice dice(7);
    for (int round = 0; round < 6; round++) {
        Blocks blocks;
        for (size_t i = 0; i < 330; i++) {
            blocks.push_back(dice.Block(round < 3 ? 400 : 3, 106, 106, 150));
        }
        for (size_t i = 0; i < 100; i++) {
            blocks.push_back(dice.Block(500, 300, 90));
        }
        std::shuffle(blocks.begin(), blocks.end(), dice.engine());
        ExpectSameAsPlain(blocks, static_cast<uint32_t>(round % 3));
        if (HasFatalFailure()) return;
    }
}

TEST_F(PagePacking, PacksTwentyThousandBlocksWithoutQuadraticCost) {
    for (const uint32_t groups : {1U, 3000U, 100000U}) {
        Dice dice(8);
        Blocks blocks;
        for (size_t i = 0; i < 20000; i++) {
            blocks.push_back(dice.Block(groups, 16, 16));
        }
        const auto start = std::chrono::steady_clock::now();
        const Packed packed(blocks, 0);
        const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
        RecordProperty("seconds_" + std::to_string(groups), std::to_string(seconds.count()));
        EXPECT_EQ(TakeLoggedText(), "");
        EXPECT_LT(seconds.count(), 20) << "measured properly by the benchmarks; this only tells linear from quadratic";
    }
}

}  // namespace
}  // namespace k2k::test
