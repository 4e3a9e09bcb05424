#include "radiosity/bounce_light.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "radiosity/worker_pool.h"
#include "support/build_state.h"
#include "test_patches.h"

namespace k2k::test {
namespace {

using ::testing::HasSubstr;

class Bounces : public BuildState {
  protected:
    void Bounce(LightPatches& patches) {
        const BoxRays rays;
        CTransfers transfers(patches, rays);
        RunOnThreads(patches.count(), false, [&](int32_t patch) { transfers.MakeTransfers(patch); });
        transfers.ShareOut();
        BounceLight(patches, transfers);
    }
};

// A floor of 1,024 square units that is lit by (100, 50, 10), and a ceiling of 256.
LightPatches TwoFacing() {
    HandmadeLevel level;
    level.Quad(2, 0, 1, {0, 0, 0}, {32, 32, 0});
    level.Quad(2, 12, -1, {8, 8, 0}, {24, 24, 0});
    LightPatches patches = level.Patches();
    patches[0].samplelight = {100, 50, 10};
    return patches;
}

TEST_F(Bounces, OneIterationLeavesLightOfTheFirstBounceOnly) {
    LightPatches patches = TwoFacing();
    Options().radbounce = 1;
    Bounce(patches);
    // Half of the light of the floor's area, on a quarter of that area.
    EXPECT_EQ(patches[1].totallight, (Vec3{200, 100, 20}));
    EXPECT_EQ(patches[0].totallight, (Vec3{}));
    EXPECT_EQ(patches[1].emit, (Vec3{0.5F * 51200, 0.5F * 25600, 0.5F * 5120}));
}

TEST_F(Bounces, TwoFacingPatchesExchangeWhatTheyReflect) {
    LightPatches patches = TwoFacing();
    Options().radbounce = 4;
    Bounce(patches);
    // The ceiling gets 51,200 and then a quarter of it, the floor a half and then an eighth.
    EXPECT_EQ(patches[1].totallight[0], 51200 * 1.25F / 256);
    EXPECT_EQ(patches[0].totallight[0], 51200 * (0.5F + 0.125F) / 1024);
    EXPECT_EQ(patches[0].totallight[1], 25600 * (0.5F + 0.125F) / 1024);
}

TEST_F(Bounces, AClosedWhiteRoomLosesByItsReflectivityEachTime) {
    HandmadeLevel level;
    level.Room({0, 0, 0}, {256, 192, 128});
    LightPatches patches = level.Patches(64);
    patches[0].samplelight = {90, 90, 90};
    patches[5].samplelight = {10, 20, 30};
    Options().radbounce = 6;
    TakeLoggedText();
    Bounce(patches);
    const std::string text = TakeLoggedText();
    std::vector<double> sums;
    for (size_t at = text.find("transfered: "); at != std::string::npos; at = text.find("transfered: ", at + 1)) {
        sums.push_back(std::stod(text.substr(at + 12)));
    }
    ASSERT_EQ(sums.size(), 6U);
    const double first = (270 * patches[0].area + 60 * patches[5].area) * 0.25;
    double expected = first;
    for (const double sum : sums) {
        EXPECT_NEAR(sum / expected, 1, 1e-5);
        expected *= 0.5;
    }
}

TEST_F(Bounces, EachIterationIsReported) {
    LightPatches patches = TwoFacing();
    Options().radbounce = 2;
    TakeLoggedText();
    Bounce(patches);
    EXPECT_EQ(TakeLoggedText(),
              " \nIteration 1 of 2 ... transfered: 40960.000000 ... ok"
              " \nIteration 2 of 2 ... transfered: 20480.000000 ... ok");
}

TEST_F(Bounces, AllIterationsRunInTheDark) {
    LightPatches patches = TwoFacing();
    patches[0].samplelight = {};
    Options().radbounce = 32;
    TakeLoggedText();
    Bounce(patches);
    EXPECT_THAT(TakeLoggedText(), HasSubstr("Iteration 32 of 32 ... transfered: 0.000000 "));
}

TEST_F(Bounces, SkyDropsWhatItReceives) {
    HandmadeLevel level;
    level.Quad(2, 0, 1, {0, 0, 0}, {32, 32, 0});
    level.Quad(2, 12, -1, {0, 0, 0}, {32, 32, 0}).sky = true;
    LightPatches patches = level.Patches();
    patches[0].samplelight = {100, 50, 10};
    Options().radbounce = 4;
    Bounce(patches);
    EXPECT_EQ(patches[1].totallight, (Vec3{}));
    EXPECT_EQ(patches[1].emit, (Vec3{}));
    EXPECT_EQ(patches[0].totallight, (Vec3{}));
}

TEST_F(Bounces, APatchWithoutSamplesShootsNothing) {
    LightPatches patches = TwoFacing();
    patches[0].samplelight = {};
    Bounce(patches);
    EXPECT_EQ(patches[1].totallight, (Vec3{}));
}

// What each patch shoots at others, one after the other: the order in which one thread would add.
void PlainIteration(LightPatches& patches, const CTransfers& transfers) {
    for (int32_t from = 0; from < patches.count(); from++) {
        for (int32_t to = 0; to < patches.count(); to++) {
            for (const Transfer& link : transfers.To(to)) {
                if (link.patch != static_cast<uint32_t>(from)) continue;
                for (size_t c = 0; c < 3; c++) {
                    patches[to].send[c] = static_cast<float>(patches[to].send[c] +
                                                             static_cast<double>(patches[from].emit[c]) * link.factor);
                }
            }
        }
    }
}

TEST_F(Bounces, SumsHaveTheOrderOfTheSendersOnAnyNumberOfThreads) {
    HandmadeLevel level;
    level.Room({0, 0, 0}, {256, 192, 128});
    LightPatches start = level.Patches(64);
    for (int32_t i = 0; i < start.count(); i++) {
        const auto v = static_cast<float>(i);
        start[i].emit = {v * 1.37F, 1000 / (v + 3), v * v};
    }
    const BoxRays rays;
    CTransfers transfers(start, rays);
    for (int32_t i = 0; i < start.count(); i++) transfers.MakeTransfers(i);
    transfers.ShareOut();
    LightPatches plain = start;
    PlainIteration(plain, transfers);
    for (const int32_t threads : {1, 2, 8}) {
        Options().threads = threads;
        LightPatches gathered = start;
        RunOnThreads(start.count(), false, [&](int32_t patch) { ShootLight(gathered, transfers, patch); });
        for (int32_t i = 0; i < start.count(); i++) ASSERT_EQ(gathered[i].send, plain[i].send) << i;
    }
}

TEST_F(Bounces, NegativeLightIsFatal) {
    LightPatches patches = TwoFacing();
    CheckPatches(patches);
    patches[1].totallight[2] = -1;
    ExpectFatal([&] { CheckPatches(patches); }, "Negative patch totallight\n");
}

}  // namespace
}  // namespace k2k::test
