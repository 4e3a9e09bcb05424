#include "radiosity/make_patches.h"

#include <gtest/gtest.h>

#include <set>

#include "support/build_state.h"
#include "test_patches.h"

namespace k2k::test {
namespace {

class Patches : public BuildState {};

std::vector<int32_t> ChainOf(const LightPatches& patches, uint32_t surface) {
    std::vector<int32_t> chain;
    for (int32_t i = patches.surfacePatches[surface]; i != NoPatch; i = patches[i].next) chain.push_back(i);
    return chain;
}

TEST_F(Patches, AShadedSurfaceGetsOnePatchInFrontOfItsMiddle) {
    HandmadeLevel level;
    level.Quad(2, 8, 1, {0, 0, 0}, {40, 20, 0}).reflectivity = {0.25F, 0.5F, 0.75F};
    const LightPatches patches = level.Patches();
    ASSERT_EQ(patches.count(), 1);
    const CLightPatch& patch = patches[0];
    EXPECT_EQ(patch.origin, (Vec3{20, 10, 9}));
    EXPECT_EQ(patch.normal, (Vec3{0, 0, 1}));
    EXPECT_EQ(patch.area, 800);
    EXPECT_EQ(patch.region, 20);
    EXPECT_EQ(patch.surfaceIndex, 0U);
    EXPECT_EQ(patch.reflectivity, (Vec3{0.25F, 0.5F, 0.75F}));
    EXPECT_EQ(patch.totallight, (Vec3{}));
    EXPECT_EQ(patch.next, NoPatch);
}

TEST_F(Patches, TheCentreIsThatOfTheSimplifiedOutlineOfEverySurface) {
    HandmadeLevel level;
    // A corner on a straight run would pull the mean to its side.
    level.Quad(2, 0, 1, {0, 0, 0}, {40, 20, 0}).outline.insert(level.surfaces[0].outline.begin() + 1, {0, 7, 0});
    level.Quad(2, 0, 1, {100, 0, 0}, {140, 20, 0}).shaded = false;
    std::vector<Vec3> centres;
    const LightPatches patches = MakePatches(level, centres);
    EXPECT_EQ(centres[0], (Vec3{20, 10, 0}));
    EXPECT_EQ(centres[1], (Vec3{120, 10, 0}));
    EXPECT_EQ(patches.count(), 1);
    EXPECT_EQ(patches[0].polygon->numpoints(), 4);
    EXPECT_EQ(patches.surfacePatches, (std::vector<int32_t>{0, NoPatch}));
}

TEST_F(Patches, AnOutlineOfTwoCornersGetsNone) {
    HandmadeLevel level;
    PatchSurface& surface = level.Quad(2, 0, 1, {0, 0, 0}, {40, 20, 0});
    surface.outline = {{0, 0, 0}, {10, 0, 0}, {20, 0, 0}};
    EXPECT_EQ(level.Patches().count(), 0);
}

TEST_F(Patches, ASmallAreaCountsAsOne) {
    HandmadeLevel level;
    level.Quad(2, 0, 1, {0, 0, 0}, {0.5, 0.5, 0});
    level.Quad(2, 0, 1, {0, 0, 0}, {1.5, 1, 0});
    const LightPatches patches = level.Patches();
    EXPECT_EQ(patches[0].area, 1);
    EXPECT_EQ(patches[1].area, 1.5F);
}

TEST_F(Patches, SkyReflectsNothingAndIsNotCut) {
    HandmadeLevel level;
    level.Quad(2, 0, 1, {0, 0, 0}, {256, 256, 0}).sky = true;
    const LightPatches patches = level.Patches(64);
    ASSERT_EQ(patches.count(), 1);
    EXPECT_TRUE(patches[0].sky);
    EXPECT_EQ(patches[0].reflectivity, (Vec3{}));
}

TEST_F(Patches, ASizeOfZeroCutsNothing) {
    HandmadeLevel level;
    level.Quad(2, 0, 1, {0, 0, 0}, {256, 256, 0});
    EXPECT_EQ(level.Patches(0).count(), 1);
}

TEST_F(Patches, CutsRunAlongTheGridOfTheWorld) {
    HandmadeLevel level;
    level.Quad(2, 0, 1, {-40, 10, 0}, {100, 60, 0});
    const LightPatches patches = level.Patches(64);
    // Lines at 0 and 64 on x; on y no line is inside.
    ASSERT_EQ(patches.count(), 3);
    std::set<std::pair<double, double>> spans;
    for (const CLightPatch& patch : patches.patches) spans.insert({patch.mins[0], patch.maxs[0]});
    EXPECT_EQ(spans, (std::set<std::pair<double, double>>{{-40, 0}, {0, 64}, {64, 100}}));
    EXPECT_EQ(patches[0].area + patches[1].area + patches[2].area, 140 * 50);
}

TEST_F(Patches, AStripOfOneUnitIsNotCutOff) {
    HandmadeLevel level;
    level.Quad(2, 0, 1, {-1, 0, 0}, {65, 8, 0});    // floor(0 / 64) = 0, floor(64 / 64) = 1: the line at 64
    level.Quad(2, 0, 1, {0, 0, 0}, {64.5, 8, 0});   // floor(1 / 64) = 0, floor(63.5 / 64) = 0
    level.Quad(2, 0, 1, {-1.5, 0, 0}, {60, 8, 0});  // floor(-0.5 / 64) = -1, floor(59 / 64) = 0: the line at 0
    const LightPatches patches = level.Patches(64);
    EXPECT_EQ(ChainOf(patches, 0).size(), 2U);
    EXPECT_EQ(ChainOf(patches, 1).size(), 1U);
    EXPECT_EQ(ChainOf(patches, 2).size(), 2U);
}

TEST_F(Patches, ThePatchKeepsTheFrontAndTheNewOneStandsBehindItInTheChain) {
    HandmadeLevel level;
    level.Quad(2, 0, 1, {0, 0, 0}, {128, 128, 0});
    level.Quad(2, 0, 1, {200, 0, 0}, {220, 20, 0});
    const LightPatches patches = level.Patches(64);
    ASSERT_EQ(patches.count(), 5);
    // x is cut first: patch 0 keeps x >= 64 and is cut on y, then the new patch 2 is cut.
    EXPECT_EQ(patches[0].mins, (Vec3d{64, 64, 0}));
    EXPECT_EQ(patches[2].mins, (Vec3d{0, 64, 0}));
    EXPECT_EQ(patches[3].mins, (Vec3d{64, 0, 0}));
    EXPECT_EQ(patches[4].mins, (Vec3d{0, 0, 0}));
    EXPECT_EQ(ChainOf(patches, 0), (std::vector<int32_t>{0, 3, 2, 4}));
    for (const int32_t i : ChainOf(patches, 0)) {
        EXPECT_EQ(patches[i].surfaceIndex, 0U);
        EXPECT_EQ(patches[i].reflectivity, (Vec3{0.5F, 0.5F, 0.5F}));
        EXPECT_EQ(patches[i].area, 64 * 64);
        EXPECT_EQ(patches[i].origin[2], 1);
        EXPECT_EQ(patches[i].region, static_cast<int32_t>(patches[i].origin[0]));
    }
}

// A level whose normals lean towards where the point is.
class LeaningLevel final : public PatchLevel {
  public:
    uint32_t SurfaceCount() const override { return flat_.SurfaceCount(); }
    PatchSurface Surface(uint32_t surfaceIndex) const override { return flat_.Surface(surfaceIndex); }
    Vec3 NormalAt(uint32_t, const Vec3& point) const override { return {point[0] / 256, 0, 1}; }
    int32_t RegionAt(const Vec3&) const override { return 7; }
    HandmadeLevel& flat() { return flat_; }

  private:
    HandmadeLevel flat_;
};

TEST_F(Patches, PiecesTakeTheSurfaceNormalAtTheirMiddle) {
    LeaningLevel level;
    level.flat().Quad(2, 0, 1, {0, 0, 0}, {128, 10, 0});
    std::vector<Vec3> centres;
    LightPatches patches = MakePatches(level, centres);
    EXPECT_EQ(patches[0].normal, (Vec3{0, 0, 1}));  // of the plane
    SubdividePatches(patches, 64, level);
    ASSERT_EQ(patches.count(), 2);
    EXPECT_EQ(patches[0].normal, (Vec3{0.375F, 0, 1}));
    EXPECT_EQ(patches[0].origin, (Vec3{96.375F, 5, 1}));
    EXPECT_EQ(patches[1].normal, (Vec3{0.125F, 0, 1}));
    EXPECT_EQ(patches[1].region, 7);
}

TEST_F(Patches, MoreThanAMillionAreTooMany) {
    HandmadeLevel level;
    level.Quad(2, 0, 1, {0, 0, 0}, {16384, 16384, 0});
    ExpectFatal([&] { level.Patches(8); }, "E017: Map size - too many surfaces");
}

TEST_F(Patches, CoordinatesTooLargeForTheGridAreNotCut) {
    HandmadeLevel level;
    level.Quad(2, 0, 1, {0x1p100, 0, 0}, {0x3p100, 8, 0});
    EXPECT_EQ(level.Patches(64).count(), 1);
}

class DirectSamples : public BuildState {
  protected:
    DirectSamples() {
        HandmadeLevel level;
        level.Quad(2, 0, 1, {0, 0, 0}, {128, 64, 0});
        patches_ = level.Patches(64);  // patch 0 lies beyond x = 64, patch 1 before it
    }
    LightPatches patches_;
};

TEST_F(DirectSamples, ReachEveryPatchWithinSixteenUnits) {
    AddSampleToPatches(patches_, {79, 32, 0}, {10, 20, 30}, 0);  // 15 from patch 1
    AddSampleToPatches(patches_, {80, 32, 16}, {1, 2, 3}, 0);    // 16 from it, and 16 above both
    AddSampleToPatches(patches_, {81, 32, 0}, {4, 4, 4}, 0);
    AddSampleToPatches(patches_, {81, 32, 16.5F}, {5, 5, 5}, 0);
    EXPECT_EQ(patches_[0].samples, 3);
    EXPECT_EQ(patches_[0].samplelight, (Vec3{15, 26, 37}));
    EXPECT_EQ(patches_[1].samples, 2);
    EXPECT_EQ(patches_[1].samplelight, (Vec3{11, 22, 33}));
}

TEST_F(DirectSamples, NearlyDarkOnesCountForNothing) {
    AddSampleToPatches(patches_, {100, 32, 0}, {1, 1, 0.99F}, 0);
    EXPECT_EQ(patches_[0].samples, 0);
    AddSampleToPatches(patches_, {100, 32, 0}, {1, 1, 1}, 0);
    EXPECT_EQ(patches_[0].samples, 1);
    AverageSamples(patches_, 0);
    EXPECT_EQ(patches_[0].samplelight, (Vec3{1, 1, 1}));
    EXPECT_EQ(patches_[1].samplelight, (Vec3{}));
}

TEST_F(DirectSamples, CountForNothingWithoutBounces) {
    Options().radbounce = 0;
    AddSampleToPatches(patches_, {100, 32, 0}, {10, 10, 10}, 0);
    EXPECT_EQ(patches_[0].samples, 0);
}

TEST_F(DirectSamples, BecomeTheirMean) {
    AddSampleToPatches(patches_, {100, 32, 0}, {10, 20, 30}, 0);
    AddSampleToPatches(patches_, {110, 32, 0}, {20, 20, 40}, 0);
    AverageSamples(patches_, 0);
    EXPECT_EQ(patches_[0].samplelight, (Vec3{15, 20, 35}));
}

}  // namespace
}  // namespace k2k::test
