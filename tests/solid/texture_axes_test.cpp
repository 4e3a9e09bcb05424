#include "solid/texture_axes.h"

#include <gtest/gtest.h>

#include <cmath>

namespace k2k {
namespace {

Texinfo Axes(const Vec3& normal, float rotation = 0, std::array<float, 2> scale = {1, 1}) {
    Texinfo texinfo;
    MakePlaneTextureAxes(normal, {0, 0}, scale, rotation, texinfo);
    return texinfo;
}

TEST(PlaneTextureAxes, ProjectAlongTheAxisThePlaneFacesMost) {
    EXPECT_EQ(Axes({0, 0, 1}).vecS, (Vec3{1, 0, 0}));
    EXPECT_EQ(Axes({0, 0, 1}).vecT, (Vec3{0, -1, 0}));
    EXPECT_EQ(Axes({0, 0, -1}).vecT, (Vec3{0, -1, 0}));
    EXPECT_EQ(Axes({-1, 0, 0}).vecS, (Vec3{0, 1, 0}));
    EXPECT_EQ(Axes({0.9F, 0.1F, 0}).vecT, (Vec3{0, 0, -1}));
    EXPECT_EQ(Axes({0.1F, -0.9F, 0}).vecS, (Vec3{1, 0, 0}));
}

TEST(PlaneTextureAxes, TakeTheFirstOfEquals) {
    EXPECT_EQ(Axes({0.5F, 0, 0.5F}).vecS, (Vec3{1, 0, 0})) << "floor before wall";
    EXPECT_EQ(Axes({0.5F, 0.5F, 0}).vecS, (Vec3{0, 1, 0})) << "x before y";
}

TEST(PlaneTextureAxes, MapANormalOfNoDirectionLikeAFloor) {
    EXPECT_EQ(Axes({0, 0, 0}).vecS, (Vec3{1, 0, 0}));
    EXPECT_EQ(Axes({0, 0, 0}).vecT, (Vec3{0, -1, 0}));
}

TEST(PlaneTextureAxes, TurnByQuartersExactly) {
    EXPECT_EQ(Axes({0, 0, 1}, 90).vecS, (Vec3{0, 1, 0}));
    EXPECT_EQ(Axes({0, 0, 1}, 90).vecT, (Vec3{1, 0, 0}));
    EXPECT_EQ(Axes({0, 0, 1}, 180).vecS, (Vec3{-1, 0, 0}));
    EXPECT_EQ(Axes({0, 0, 1}, 270).vecS, (Vec3{0, -1, 0}));
    EXPECT_NE(Axes({0, 0, 1}, 450).vecS, (Vec3{0, 1, 0})) << "only the four named angles are exact";
}

TEST(PlaneTextureAxes, TurnByOtherAnglesIn32Bits) {
    const auto angle = static_cast<float>(30.0F / 180.0 * 3.141592653589793);
    const auto sine = static_cast<float>(std::sin(static_cast<double>(angle)));
    const auto cosine = static_cast<float>(std::cos(static_cast<double>(angle)));
    EXPECT_EQ(Axes({0, 0, 1}, 30).vecS, (Vec3{cosine, sine, 0}));
    EXPECT_EQ(Axes({0, 0, 1}, 30).vecT, (Vec3{sine, -cosine, 0}));
    EXPECT_EQ(Axes({1, 0, 0}, 30).vecS, (Vec3{0, cosine, sine}));
}

TEST(PlaneTextureAxes, DivideByTheScaleAndTakeZeroAsOne) {
    EXPECT_EQ(Axes({0, 0, 1}, 0, {2, 4}).vecS, (Vec3{0.5F, 0, 0}));
    EXPECT_EQ(Axes({0, 0, 1}, 0, {2, 4}).vecT, (Vec3{0, -0.25F, 0}));
    EXPECT_EQ(Axes({0, 0, 1}, 0, {0, 0}).vecS, (Vec3{1, 0, 0}));
}

TEST(PlaneTextureAxes, StoreTheShiftsAndLeaveTheRest) {
    Texinfo texinfo;
    texinfo.texture = 3;
    texinfo.flags = 5;
    MakePlaneTextureAxes({0, 0, 1}, {11, -12}, {1, 1}, 0, texinfo);
    EXPECT_EQ(texinfo.shiftS, 11.0F);
    EXPECT_EQ(texinfo.shiftT, -12.0F);
    EXPECT_EQ(texinfo.texture, 3U);
    EXPECT_EQ(texinfo.flags, 5U);
}

}  // namespace
}  // namespace k2k
