#include <gtest/gtest.h>

#include "levelfile/mesh.h"
#include "support/build_state.h"

namespace k2k {
namespace {

class LightmapAxesOfMeshLevels : public test::BuildState {
  protected:
    Vec3 s_{}, t_{};
};

TEST_F(LightmapAxesOfMeshLevels, EachDominantAxisHasAPair) {
    EXPECT_TRUE(LightmapAxes(0, {1, 0, 0}, s_, t_));
    EXPECT_EQ(s_, (Vec3{0, 0, 1}));
    EXPECT_EQ(t_, (Vec3{0, -1, 0}));
    EXPECT_TRUE(LightmapAxes(1, {0, 1, 0}, s_, t_));
    EXPECT_EQ(s_, (Vec3{1, 0, 0}));
    EXPECT_EQ(t_, (Vec3{0, 0, 1}));
    EXPECT_TRUE(LightmapAxes(2, {0, 0, 1}, s_, t_));
    EXPECT_EQ(s_, (Vec3{1, 0, 0}));
    EXPECT_EQ(t_, (Vec3{0, -1, 0}));
}

TEST_F(LightmapAxesOfMeshLevels, AllTypesCountByTheirAxis) {
    for (const int32_t type : {-3, -2, -1, 3, 4, 5}) {
        Vec3 axialS, axialT;
        LightmapAxes((type + 3) % 3, {1, 1, 1}, axialS, axialT);
        EXPECT_TRUE(LightmapAxes(type, {1, 1, 1}, s_, t_));
        EXPECT_EQ(s_, axialS) << type;
        EXPECT_EQ(t_, axialT) << type;
    }
}

TEST_F(LightmapAxesOfMeshLevels, TheResolutionScalesThem) {
    Options().litres = 0.5F;
    EXPECT_TRUE(LightmapAxes(0, {-1, 0, 0}, s_, t_));
    EXPECT_EQ(s_, (Vec3{0, 0, 0.5F}));
    EXPECT_EQ(t_, (Vec3{0, -0.5F, 0}));
}

TEST_F(LightmapAxesOfMeshLevels, ANormalWithoutTheDominantAxisHasNone) {
    EXPECT_FALSE(LightmapAxes(0, {0, 1, 0}, s_, t_));
}

// The cross product of the axes is then too short to have a direction.
TEST_F(LightmapAxesOfMeshLevels, AResolutionOfAHundredthOrLessHasNone) {
    Options().litres = 0.01F;
    EXPECT_FALSE(LightmapAxes(2, {0, 0, 1}, s_, t_));
    Options().litres = 0;
    EXPECT_FALSE(LightmapAxes(2, {0, 0, 1}, s_, t_));
    Options().litres = 0.011F;
    EXPECT_TRUE(LightmapAxes(2, {0, 0, 1}, s_, t_));
}

}  // namespace
}  // namespace k2k
