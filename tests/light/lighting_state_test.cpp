#include "light/lighting_state.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "light/gamma_table.h"
#include "light/narrowing.h"
#include "test_level.h"

namespace k2k::test {
namespace {

using Opening = LightTest;

TEST_F(Opening, TheGammaTableCountsItsLevelsIn32Bits) {
    const GammaCurve curve = BuildGammaTable(1.5F);
    float level = 0.001F;
    for (int i = 0; i < 256; i++) {
        const double value = std::pow(static_cast<double>(level), 1.0 / 1.5) * 255.0;
        EXPECT_EQ(curve[static_cast<size_t>(i)], std::min(255, static_cast<int>(value))) << i;
        level += 1.0F / 255.0F;
    }
    EXPECT_EQ(curve[0], 2);
    EXPECT_EQ(curve[255], 255);
}

TEST_F(Opening, AnyGammaGivesBytes) {
    EXPECT_EQ(BuildGammaTable(0.0F)[0], 0);
    EXPECT_EQ(BuildGammaTable(0.0F)[255], 255);
    EXPECT_EQ(BuildGammaTable(-1.0F)[0], 255);
    EXPECT_EQ(BuildGammaTable(std::numeric_limits<float>::quiet_NaN())[9], 0);
}

TEST_F(Opening, TheFirstGammaValueIsKeptForTheSunRecord) {
    OpenLighting();
    EXPECT_EQ(FirstGammaValue, 2);
}

TEST_F(Opening, ConversionsHoldAnyNumber) {
    EXPECT_EQ(TruncToInt(-1.9), -1);
    EXPECT_EQ(TruncToInt(1e30), std::numeric_limits<int32_t>::max());
    EXPECT_EQ(TruncToInt(-1e30), std::numeric_limits<int32_t>::min());
    EXPECT_EQ(TruncToInt(std::nan("")), 0);
    EXPECT_EQ(TruncToByte(254.9), 254);
    EXPECT_EQ(TruncToByte(-3), 0);
    EXPECT_EQ(TruncToByte(std::nan("")), 0);
    EXPECT_EQ(ClampToInt(int64_t{1} << 40), std::numeric_limits<int32_t>::max());
    EXPECT_EQ(ClampToInt(-(int64_t{1} << 40)), std::numeric_limits<int32_t>::min());
}

TEST_F(Opening, TheAmbientLevelIsTruncatedAfterEachComponent) {
    Options().ambrgb = {1, 0.5F, 2};
    OpenLighting();
    EXPECT_EQ(Lighting().AmbientColour, (Vec3{2.55F, 1.275F, 5.1F}));
    EXPECT_EQ(Lighting().AmbientLevel, 2);  // 2, 3, 8; divided by 3
    Options().ambrgb = {0.3F, 0.3F, 0.3F};
    OpenLighting();
    EXPECT_EQ(Lighting().AmbientLevel, 0);
}

TEST_F(Opening, TheSunVectorFollowsAzimuthAndElevation) {
    Options().az = 90;
    Options().el = 30;
    OpenLighting();
    EXPECT_NEAR(Lighting().SunVector[0], 0, 0.001);
    EXPECT_NEAR(Lighting().SunVector[1], 8660.254, 0.01);
    EXPECT_NEAR(Lighting().SunVector[2], 5000, 0.001);
}

TEST_F(Opening, AngleSoftnessIsScaledInPlaceAtEachOpening) {
    OpenLighting();
    EXPECT_EQ(Options().lmambient, 1.0F);
    OpenLighting();
    EXPECT_EQ(Options().lmambient, 0.02F);
}

TEST_F(Opening, ASunWithOneComponentShinesOnTheDirectRoad) {
    Options().sunrgb = {100, 0, 0};
    OpenLighting();
    SetDirectLights();
    ASSERT_EQ(Lighting().ActiveLights.size(), 1U);
    EXPECT_TRUE(Lighting().ActiveLights[0].isSun);
    EXPECT_EQ(Lighting().SunLight.lightRange, 20000);
    EXPECT_EQ(Lighting().SunLight.lightColor, (Vec3{100.0F * 6 * 255 / 100 / 20000, 0, 0}));
}

TEST_F(Opening, ABlackSunIsNoLight) {
    OpenLighting();
    SetDirectLights();
    EXPECT_TRUE(Lighting().ActiveLights.empty());
    EXPECT_EQ(Lighting().SunLight.lightRange, 0);
}

TEST_F(Opening, MonoTurnsSunAndAmbientGreyAfterTheAmbientLevelWasTaken) {
    Options().mono = true;
    Options().sunrgb = {10, 20, 0};
    Options().ambrgb = {1, 0, 0};
    OpenLighting();
    SetDirectLights();
    const Vec3& sun = Lighting().SunLight.lightColor;
    EXPECT_EQ(sun, (Vec3{sun[1], sun[1], sun[1]}));
    EXPECT_GT(sun[0], 0);
    EXPECT_EQ(Lighting().AmbientColour, (Vec3{2.55F, 2.55F, 2.55F}));
    EXPECT_EQ(Lighting().AmbientLevel, 0);
}

TEST_F(Opening, ActiveLightsAreThoseWithARangeInTableOrderThenTheSun) {
    TestLevel level;
    level.Light({1, 0, 0}, 10, {1, 1, 1}, 3);
    NewEntity();
    level.Light({2, 0, 0}, 20, {1, 1, 1});
    Options().sunrgb = {1, 1, 1};
    OpenLighting();
    SetDirectLights();
    const auto& lights = Lighting().ActiveLights;
    ASSERT_EQ(lights.size(), 3U);
    EXPECT_EQ(lights[0].light.origin[0], 1);
    EXPECT_EQ(lights[0].light.flags, 3U);
    EXPECT_EQ(lights[1].light.origin[0], 2);
    EXPECT_TRUE(lights[2].isSun);
}

TEST_F(Opening, TheStoreAlignsToFourAndDoubles) {
    OpenLighting();
    EXPECT_EQ(Lighting().LightStore.capacity(), 8388608U);
    EXPECT_EQ(AllocLightData(5), 0U);
    EXPECT_EQ(AllocLightData(1), 8U);
    Lighting().LightStore.At(8, 1)[0] = 77;
    EXPECT_EQ(AllocLightData(8388608), 12U);
    EXPECT_EQ(Lighting().LightStore.capacity(), 16777216U);
    EXPECT_EQ(Lighting().LightStore.At(8, 1)[0], 77);
    CloseLighting();
    EXPECT_EQ(Lighting().lightDataLength, 8388620U);
}

TEST_F(Opening, AStoreThatIsNotOpenGrowsFromNothing) {
    CLightStore store;
    EXPECT_EQ(store.Alloc(100), 0U);
    EXPECT_EQ(store.capacity(), LightStoreStartSize);
}

}  // namespace
}  // namespace k2k::test
