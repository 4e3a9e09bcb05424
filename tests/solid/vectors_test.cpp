#include "solid/vectors.h"

#include <gtest/gtest.h>

namespace k2k {
namespace {

TEST(Normalize, MakesAVectorOfLength00001Zero) {
    Vec3 v{0.0001F, 0, 0};
    EXPECT_EQ(Normalize(v), 0.0F);
    EXPECT_EQ(v, (Vec3{0, 0, 0}));
}

TEST(Normalize, DividesAVectorThatIsJustLonger) {
    Vec3 v{0, 0.00011F, 0};
    EXPECT_EQ(Normalize(v), 0.00011F);
    EXPECT_EQ(v, (Vec3{0, 1, 0}));
}

TEST(Normalize, ReturnsTheLengthBeforeDivision) {
    Vec3 v{3, 0, 4};
    EXPECT_EQ(Normalize(v), 5.0F);
    EXPECT_EQ(v, (Vec3{0.6F, 0, 0.8F}));
}

TEST(Normalize, SetsComponentsBelow00001ToZero) {
    Vec3 v{1000, 0.09F, 0.11F};
    Normalize(v);
    EXPECT_EQ(v[1], 0.0F);
    EXPECT_GT(v[2], 0.0001F);
}

TEST(NormalizeD, FollowsTheSameRulesInDouble) {
    Vec3d tiny{0, 0, 0.0001};
    EXPECT_EQ(NormalizeD(tiny), 0.0);
    EXPECT_EQ(tiny, (Vec3d{0, 0, 0}));
    Vec3d v{1000, 0.09, 0};
    EXPECT_GT(NormalizeD(v), 1000.0);
    EXPECT_EQ(v[1], 0.0);
}

TEST(Dot, IsSummedInDouble) {
    // In 32 bits the second product would vanish in the first.
    EXPECT_EQ(Dot(Vec3{16777216, 1, -16777216}, Vec3{1, 1, 1}), 1.0);
}

TEST(Cross, IsTakenIn32Bits) {
    // The product ends half a unit beyond what 32 bits hold; in double that half would be left in the difference.
    const float above = 1 + 0x1p-12F;
    EXPECT_EQ(Cross(Vec3{0, above, 1}, Vec3{0, 1, above}), (Vec3{0x1p-11F, 0, 0}));
    EXPECT_EQ(Cross(Vec3d{0, above, 1}, Vec3d{0, 1, above}), (Vec3d{0x1p-11 + 0x1p-24, 0, 0}));
}

TEST(VectorEqual, CountsADifferenceOfTheToleranceAsEqual) {
    EXPECT_TRUE(VectorEqual({1, 2, 3}, {1.5F, 2, 2.5F}, 0.5));
    EXPECT_FALSE(VectorEqual({1, 2, 3}, {1.5001F, 2, 3}, 0.5));
}

TEST(VectorEqual, TakesTheDifferenceInDouble) {
    // In 32 bits the difference would be rounded down to 0.01F.
    EXPECT_FALSE(VectorEqual({0.01F, 0, 0}, {-4e-10F, 0, 0}, 0.01));
    EXPECT_FALSE(VectorEqual({0, 0.01F, 0}, {0, -4e-10F, 0}, 0.01));
    EXPECT_FALSE(VectorEqual({0, 0, 0.01F}, {0, 0, -4e-10F}, 0.01));
    EXPECT_TRUE(VectorEqual({0.01F, 0, 0}, {-2e-10F, 0, 0}, 0.01));
}

TEST(VectorEqual, ComparesEveryAxis) {
    EXPECT_FALSE(VectorEqual({0, 0, 0}, {1, 0, 0}, 0.5));
    EXPECT_FALSE(VectorEqual({0, 0, 0}, {0, -1, 0}, 0.5));
    EXPECT_FALSE(VectorEqual({0, 0, 0}, {0, 0, 1}, 0.5));
}

}  // namespace
}  // namespace k2k
