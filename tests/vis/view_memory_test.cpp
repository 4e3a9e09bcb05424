// The views of one base that have been followed to their end.
#include "vis/view_memory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <random>
#include <set>
#include <vector>

namespace k2k::test {
namespace {

constexpr size_t RowWords = 3;
constexpr size_t NoLimit = ~size_t{0};
constexpr int64_t Cost = 100;

using Row = std::array<Word, RowWords>;
using Points = std::vector<Vec3d>;

Points Triangle(double x) {
    return {{x, 0, 0}, {x, 1, 0}, {x, 0, 1}};
}

FlowView View(int32_t portal, const Points& source, const Points& pass) {
    FlowView view{portal, source, pass};
    view.hash = HashView(view);
    return view;
}

class ViewMemoryTest : public testing::Test {
  protected:
    ViewMemoryTest() { memory_.Clear(); }

    const Points source_ = Triangle(1), pass_ = Triangle(2);
    const FlowView view_ = View(7, source_, pass_);
    const Row row_{6, 0, 1};
    ViewMemory memory_{RowWords, NoLimit};
};

TEST_F(ViewMemoryTest, HoldsNothingAtFirst) {
    EXPECT_FALSE(memory_.Holds(view_, row_.data()));
}

TEST_F(ViewMemoryTest, HoldsAViewWithAnyPartOfItsRow) {
    memory_.Add(view_, row_.data(), Cost);
    for (const Row& part : {row_, Row{6, 0, 0}, Row{2, 0, 1}, Row{}}) EXPECT_TRUE(memory_.Holds(view_, part.data()));
}

TEST_F(ViewMemoryTest, DoesNotHoldAViewThatMightSeeMore) {
    memory_.Add(view_, row_.data(), Cost);
    for (const Row& more : {Row{7, 0, 1}, Row{6, 1, 1}, Row{0, 0, 2}, Row{1, 0, 0}}) {
        EXPECT_FALSE(memory_.Holds(view_, more.data()));
    }
}

TEST_F(ViewMemoryTest, OneOfTheRowsMustHaveAllNotAllOfThemTogether) {
    const Row low{6, 0, 0}, high{0, 0, 1};
    memory_.Add(view_, low.data(), Cost);
    memory_.Add(view_, high.data(), Cost);
    EXPECT_FALSE(memory_.Holds(view_, row_.data()));
    memory_.Add(view_, row_.data(), Cost);
    EXPECT_TRUE(memory_.Holds(view_, row_.data()));
}

TEST_F(ViewMemoryTest, AnotherPortalIsAnotherView) {
    memory_.Add(view_, row_.data(), Cost);
    EXPECT_FALSE(memory_.Holds(View(8, source_, pass_), row_.data()));
}

TEST_F(ViewMemoryTest, EachBitOfThePolygonsCounts) {
    memory_.Add(view_, row_.data(), Cost);
    for (size_t point = 0; point < 3; ++point) {
        for (size_t axis = 0; axis < 3; ++axis) {
            for (Points polygon : {source_, pass_}) {
                double& number = polygon[point][axis];
                number = number == 0 ? -0.0 : std::nextafter(number, 9);
                const bool isSource = polygon[0][0] < 2;
                const FlowView other = isSource ? View(7, polygon, pass_) : View(7, source_, polygon);
                EXPECT_FALSE(memory_.Holds(other, row_.data())) << "point " << point << ", axis " << axis;
            }
        }
    }
}

TEST_F(ViewMemoryTest, ThePlaceWhereTheSourceEndsCounts) {
    const Points all{{1, 0, 0}, {1, 1, 0}, {1, 0, 1}, {2, 0, 0}, {2, 1, 0}, {2, 0, 1}, {3, 0, 0}};
    FlowView early{7, FlowPoints(all).first(3), FlowPoints(all).subspan(3)};
    FlowView late{7, FlowPoints(all).first(4), FlowPoints(all).subspan(4)};
    early.hash = late.hash = 1;
    memory_.Add(early, row_.data(), Cost);
    EXPECT_TRUE(memory_.Holds(early, row_.data()));
    EXPECT_FALSE(memory_.Holds(late, row_.data()));
}

TEST_F(ViewMemoryTest, ViewsWithOneHashAreToldApart) {
    FlowView other = View(8, pass_, source_);
    other.hash = view_.hash;
    memory_.Add(view_, row_.data(), Cost);
    EXPECT_FALSE(memory_.Holds(other, row_.data()));
    memory_.Add(other, row_.data(), Cost);
    EXPECT_TRUE(memory_.Holds(other, row_.data()));
    EXPECT_TRUE(memory_.Holds(view_, row_.data()));
}

TEST_F(ViewMemoryTest, HoldsManyViews) {
    constexpr int32_t Count = 5000;
    for (int32_t portal = 0; portal < Count; portal += 2) memory_.Add(View(portal, source_, pass_), row_.data(), Cost);
    for (int32_t portal = 0; portal < Count; ++portal) {
        EXPECT_EQ(memory_.Holds(View(portal, source_, pass_), row_.data()), portal % 2 == 0) << portal;
    }
}

TEST_F(ViewMemoryTest, ClearedItHoldsNothing) {
    memory_.Add(view_, row_.data(), Cost);
    memory_.Clear();
    EXPECT_FALSE(memory_.Holds(view_, row_.data()));
}

TEST_F(ViewMemoryTest, ViewsThatCostNextToNothingAreNotRemembered) {
    memory_.Add(view_, row_.data(), 3);
    EXPECT_FALSE(memory_.Holds(view_, row_.data()));
    memory_.Add(view_, row_.data(), 4);
    EXPECT_TRUE(memory_.Holds(view_, row_.data()));
}

// View number n costs n, taken in any order.
TEST_F(ViewMemoryTest, AtItsLimitItForgetsTheCheaperHalf) {
    constexpr int32_t Count = 1000;
    constexpr size_t Limit = 40'000;
    std::vector<int32_t> numbers(Count);
    std::iota(numbers.begin(), numbers.end(), 10);
    std::shuffle(numbers.begin(), numbers.end(), std::mt19937(3));
    ViewMemory small(RowWords, Limit);
    small.Clear();
    for (const int32_t number : numbers) {
        small.Add(View(number, source_, pass_), row_.data(), number);
        EXPECT_LE(small.bytes(), Limit);
    }
    const auto held = [&](int32_t number) { return small.Holds(View(number, source_, pass_), row_.data()); };
    std::sort(numbers.begin(), numbers.end());
    const auto first = std::partition_point(numbers.begin(), numbers.end(), [&](int32_t n) { return !held(n); });
    EXPECT_GT(first - numbers.begin(), Count / 2);
    EXPECT_LT(first - numbers.begin(), Count - 50);
    for (auto number = first; number != numbers.end(); ++number) EXPECT_TRUE(held(*number)) << *number;
}

TEST_F(ViewMemoryTest, WhereAllCostTheSameItForgetsAll) {
    ViewMemory small(RowWords, 40'000);
    small.Clear();
    size_t most = 0;
    for (int32_t portal = 0; portal < 1000; ++portal) {
        small.Add(View(portal, source_, pass_), row_.data(), Cost);
        most = std::max(most, small.bytes());
    }
    EXPECT_GT(most, 30'000U);
    EXPECT_LT(small.bytes(), 2000U);
}

TEST_F(ViewMemoryTest, ClearedItTakesCheapViewsAgain) {
    ViewMemory small(RowWords, 2000);
    small.Clear();
    for (int32_t portal = 0; portal < 100; ++portal) small.Add(View(portal, source_, pass_), row_.data(), Cost);
    small.Add(view_, row_.data(), 4);
    EXPECT_FALSE(small.Holds(view_, row_.data()));
    small.Clear();
    small.Add(view_, row_.data(), 4);
    EXPECT_TRUE(small.Holds(view_, row_.data()));
}

// Few bits, so that many hashes would be equal if a bit were lost.
TEST_F(ViewMemoryTest, HashesSpreadOverTheLowBits) {
    std::mt19937 random(3);
    std::set<uint64_t> low;
    for (int32_t i = 0; i < 1000; ++i) {
        Points pass = pass_;
        pass[random() % 3][random() % 3] += 1 + i;
        low.insert(View(7, source_, pass).hash & 0xFFFF);
    }
    EXPECT_GT(low.size(), 950U);
}

}  // namespace
}  // namespace k2k::test
