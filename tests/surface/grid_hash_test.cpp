#include "surface/grid_hash.h"

#include <gtest/gtest.h>

#include <limits>

namespace k2k {
namespace {

constexpr float Infinity = std::numeric_limits<float>::infinity();
constexpr float NotANumber = std::numeric_limits<float>::quiet_NaN();

GridHash DefaultHash() {
    return {{-56000, -56000, -56000}, {56000, 56000, 56000}, 8192};
}

TEST(GridHash, CountsRowsAndColumnsOf90OverTheDefaultBound) {
    const GridHash hash = DefaultHash();
    EXPECT_EQ(hash({-56000, -56000, 0}), 0U);
    EXPECT_EQ(hash({-56000, 0, 0}), 45U);
    EXPECT_EQ(hash({0, -56000, 0}), 4050U);
    EXPECT_EQ(hash({0, 0, 0}), 4095U);
    EXPECT_EQ(hash({56000, 56000, 0}), 8190U);
}

TEST(GridHash, DoesNotLookAtZ) {
    const GridHash hash = DefaultHash();
    EXPECT_EQ(hash({100, 200, -300}), hash({100, 200, 5000}));
}

TEST(GridHash, TakesNegativeValuesAsUnsigned) {
    const GridHash hash = DefaultHash();
    EXPECT_EQ(hash({-56000, -56100, 0}), 0U);  // -0.08 is cut to 0
    EXPECT_EQ(hash({-56000, -60000, 0}), 0xFFFFFFFDU);
}

TEST(GridHash, GivesOneCellWithoutAnArea) {
    const GridHash flat({0, -64, 0}, {0, 64, 0}, 1024);
    EXPECT_EQ(flat({0, -64, 0}), flat({0, 64, 0}));
    const GridHash nothing({0, 0, 0}, {0, 0, 0}, 8192);
    EXPECT_EQ(nothing({1, 2, 3}), 0U);
}

TEST(Truncation, CutsTowardZero) {
    EXPECT_EQ(TruncateToUnsigned(7.9F), 7U);
    EXPECT_EQ(TruncateToUnsigned(-7.9F), 0xFFFFFFF9U);
    EXPECT_EQ(TruncateToInt(-7.9F), -7);
}

TEST(Truncation, KeepsTheLow32BitsUnsigned) {
    EXPECT_EQ(TruncateToUnsigned(4294967296.0F + 1024.0F), 1024U);
}

TEST(Truncation, GivesTheLowestNumberOutOfRange) {
    EXPECT_EQ(TruncateToUnsigned(1e30F), 0U);
    EXPECT_EQ(TruncateToUnsigned(-Infinity), 0U);
    EXPECT_EQ(TruncateToUnsigned(NotANumber), 0U);
    EXPECT_EQ(TruncateToInt(3e9F), std::numeric_limits<int32_t>::min());
    EXPECT_EQ(TruncateToInt(NotANumber), std::numeric_limits<int32_t>::min());
}

}  // namespace
}  // namespace k2k
