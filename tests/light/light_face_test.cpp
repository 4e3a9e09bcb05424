#include "light/light_face.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include "light/face_axes.h"
#include "light/near_equal.h"
#include "light/sample_placement.h"
#include "surface_lighter.h"
#include "test_level.h"

namespace k2k::test {
namespace {

class LightFaces : public LightTest {
  protected:
    // Opens lighting with the lights that the level has.
    void Open() {
        OpenDirectRoad();
        Options().lmambient = 1;
    }

    // Lights one surface by itself.
    std::optional<LightBlock> LightOne(uint32_t surface) {
        SurfaceLighter lighter(PlaneFlips::Apply);
        const auto face = MakeLightFace(surface);
        if (!face) return std::nullopt;
        return LightSurface(*face, lighter.scratch);
    }

    // The samples of the coarse step.
    static std::vector<LightSample> SamplesOf(CLightFace& face) {
        const RayStructures rays;
        std::vector<LightSample> samples;
        CalcSamples(face, samples, CoarseStep, dynamic_cast<CPhongFace*>(&face) != nullptr);
        return samples;
    }

    // A room whose floor is surface 4.
    void MakeRoom(uint32_t flags = 0, const std::vector<Box>& obstacles = {}) {
        level_ = std::make_unique<TestLevel>();
        level_->RoomTree(SmallRoom, obstacles);
        level_->RoomFaces(SmallRoom, flags);
    }
    static constexpr uint32_t Floor = 4;

    std::unique_ptr<TestLevel> level_;
};

TEST_F(LightFaces, SurfacesWithoutATextureOrALightmapGetNoFace) {
    MakeRoom();
    auto& surfaces = Geometry().surfaces;
    surfaces[0].texInfoId = 0;
    surfaces[1].texInfoId = -1;
    Textures().texinfos[static_cast<size_t>(surfaces[2].texInfoId)].flags = TextureNoLightmap | TextureSky;
    EXPECT_EQ(MakeLightFace(0), nullptr);
    EXPECT_EQ(MakeLightFace(1), nullptr);
    EXPECT_EQ(MakeLightFace(2), nullptr);
    EXPECT_NE(MakeLightFace(3), nullptr);
}

TEST_F(LightFaces, ThePhongFlagMakesAPhongFace) {
    MakeRoom();
    EXPECT_NE(dynamic_cast<CFlatFace*>(MakeLightFace(0).get()), nullptr);
    MakeRoom(TexturePhong);
    EXPECT_NE(dynamic_cast<CPhongFace*>(MakeLightFace(0).get()), nullptr);
}

TEST_F(LightFaces, TheFloorIsMeasuredInStepsOf16) {
    MakeRoom();
    const auto face = MakeLightFace(Floor);
    EXPECT_EQ(face->size, (std::array<int32_t, 2>{17, 17}));
    EXPECT_EQ(face->texMin, (std::array<int32_t, 2>{-8, -8}));
    EXPECT_EQ(face->exactMin, (std::array<float, 2>{-128, -128}));
    EXPECT_EQ(face->exactMax, (std::array<float, 2>{128, 128}));
    EXPECT_EQ(face->centre, (Vec3{0, 0, 1}));
    EXPECT_EQ(face->texOrigin, (Vec3{0, 0, 1}));
    EXPECT_EQ(Geometry().surfaces[Floor].lightShift, 4);
    EXPECT_EQ(Geometry().surfaces[Floor].lightOffset, 0xFFFFFFFF);
}

TEST_F(LightFaces, TheCentreIsRoundedOnce) {
    TestLevel level;
    const std::vector<Vec3> ring{{-113.2F, 0, -1.1F}, {80.6F, 0, -0.9F}, {-16.1F, 64, -1.07F}};
    const uint32_t surface = level.Surface(ring, level.Plane({0, 0, 1}, -1), 0, level.TextureFor({0, 0, 1}));
    const auto face = MakeLightFace(surface);
    ASSERT_NE(face, nullptr);
    EXPECT_EQ(face->centre[0], -16.2333336F);    // a sum in 32 bits gives -16.2333317
    EXPECT_EQ(face->centre[2], -0.0233333502F);  // a mean in 32 bits and then one more gives -0.0233333111
}

TEST_F(LightFaces, TexelsBeginBelowTheSmallestCoordinateThatIsStored) {
    // A sixteenth of the smallest number below 0 is not 0.
    TestLevel level;
    const std::vector<Vec3> ring{{-1e-45F, -1e-45F, 0}, {0, 20, 0}, {20, 20, 0}};
    const uint32_t surface = level.Surface(ring, level.Plane({0, 0, 1}, 0), 0, level.Texture(0, {1, 0, 0}, {0, 1, 0}));
    const auto face = MakeLightFace(surface);
    ASSERT_NE(face, nullptr);
    EXPECT_EQ(face->texMin, (std::array<int32_t, 2>{-1, -1}));
    EXPECT_EQ(face->size, (std::array<int32_t, 2>{4, 4}));
}

TEST_F(LightFaces, NearPositionsAreComparedUnrounded) {
    const Vec3 a{0, 1.20999999e-09F, 0};
    const Vec3 b{0, -0.00999999885F, 0};  // 0.010000000055 away, which is 0.01 in 32 bits
    EXPECT_FALSE(NearlyEqual(a, b, SpotSize));
    EXPECT_TRUE(NearlyEqual({}, b, SpotSize));
}

TEST_F(LightFaces, ABackSideSurfaceSeesItsPlaneNegated) {
    MakeRoom();
    const auto ceiling = MakeLightFace(5);
    EXPECT_EQ(ceiling->normal, (Vec3{0, 0, -1}));
    EXPECT_EQ(ceiling->planeDist, -128);
    EXPECT_EQ(ceiling->centre, (Vec3{0, 0, 127}));
    EXPECT_EQ(ceiling->texOrigin[2], 127);
}

TEST_F(LightFaces, ObliqueAxesLeadBackToTheWorld) {
    TestLevel level;
    const int16_t texinfo = level.Texture(0, {0.5F, 0.1F, 0.2F}, {0, -2, 0.3F}, 7, -3);
    Vec3 normal{0.3F, -0.2F, 0.9F};
    Normalize(normal);
    const uint32_t surface = level.Surface({{0, 0, 0}, {9, 0, -3}, {9, 9, -1}}, level.Plane(normal, 5), 0, texinfo);
    const auto face = MakeLightFace(surface);
    ASSERT_NE(face, nullptr);
    for (const float s : {-20.0F, 0.0F, 33.0F}) {
        for (const float t : {-9.0F, 4.0F}) {
            const Vec3 p = Add(face->texOrigin, Add(Scale(face->texToWorld[0], s), Scale(face->texToWorld[1], t)));
            EXPECT_NEAR(Dot(p, normal), 6, 1e-3);  // one unit off the plane
        }
    }
    // A point of the face's own plane comes back to its coordinates; one unit off it moves along the texture's normal.
    const Vec3 step = face->texToWorld[0];
    EXPECT_NEAR(Dot(step, Vec3{0.5F, 0.1F, 0.2F}), 1, 1e-5);
    EXPECT_NEAR(Dot(step, normal), 0, 1e-6);
}

TEST_F(LightFaces, ParallelAxesWarnOnceAndLeaveNoLightmap) {
    MakeRoom();
    for (const size_t row : {1U, 2U}) {
        // Both axes along the wall's normal.
        Textures().texinfos[row].vecS = {1, 0, 0};
        Textures().texinfos[row].vecT = {2, 0, 0};
    }
    EXPECT_EQ(MakeLightFace(0), nullptr);
    EXPECT_EQ(MakeLightFace(1), nullptr);
    EXPECT_EQ(TakeLoggedText(), "\n W023 - Invalid texture axis \n");
    EXPECT_EQ(Geometry().surfaces[0].lightShift, 255);
    EXPECT_EQ(Geometry().surfaces[0].lightOffset, 0xFFFFFFFF);
    Options().verbose = true;
    EXPECT_EQ(MakeLightFace(1), nullptr);
    EXPECT_EQ(TakeLoggedText(), "\n W023 - Invalid texture axis \n");
    Options().quiet = true;
    EXPECT_EQ(MakeLightFace(1), nullptr);
    EXPECT_EQ(TakeLoggedText(), "");
}

TEST_F(LightFaces, ASurfaceTooLargeWarnsWithItsTextureAndEndsTheBuild) {
    TestLevel level;
    TextureName name{};
    std::copy_n("BIGWALL", 7, name.begin());
    Textures().names = {name};
    const uint32_t surface = level.Quad(2, 0, true, {0, 0, 0}, {8192, 8176, 0});
    // 513 x 512 texels.
    ExpectFatal([&] { MakeLightFace(surface); }, "E023");
    EXPECT_THAT(TakeLoggedText(), ::testing::StartsWith(" \nWARNING W149: \"BIGWALL\" - invalid surface size\n"));
    ExpectFatal([&] { MakeLightFace(surface); }, "E023");
    EXPECT_THAT(TakeLoggedText(), ::testing::Not(::testing::HasSubstr("W149")));
}

TEST_F(LightFaces, TheLargestSurfaceThatFitsGetsAFace) {
    TestLevel level;
    const auto face = MakeLightFace(level.Quad(2, 0, true, {0, 0, 0}, {8176, 8176, 0}));
    EXPECT_EQ(face->size, (std::array<int32_t, 2>{512, 512}));
    EXPECT_EQ(TakeLoggedText(), "");
}

TEST_F(LightFaces, CoordinatesThatAreNoNumbersEndTheBuild) {
    TestLevel level;
    const float nan = std::nanf("");
    const uint32_t surface = level.Quad(2, 0, true, {0, 0, 0}, {64, 64, 0});
    for (Vec3& vertex : Geometry().vertices) vertex[0] = nan;
    ExpectFatal([&] { MakeLightFace(surface); }, "E023");
    Geometry().surfaces[surface].edgeCount = 0;
    ExpectFatal([&] { MakeLightFace(surface); }, "E023");
    for (Vec3& vertex : Geometry().vertices) vertex[0] = vertex[0] < 32 ? -1e30F : 1e30F;
    Geometry().surfaces[surface].edgeCount = 4;
    ExpectFatal([&] { MakeLightFace(surface); }, "E023");
}

TEST_F(LightFaces, TheTitleOfATextureComesFromTheImageWhenNamesAreNotThere) {
    Texinfo texinfo;
    EXPECT_EQ(TextureTitle(texinfo), "");
    // One texture, 8 bytes in.
    std::vector<uint8_t>& blob = Textures().blob;
    blob = {1, 0, 0, 0, 8, 0, 0, 0, 'S', 'T', 'O', 'N', 'E', 0, 'X', 0, 0, 0, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(TextureTitle(texinfo), "STONE");
    blob[4] = 20;
    EXPECT_EQ(TextureTitle(texinfo), "");
}

// What a mesh level's surfaces are measured with.
TEST_F(LightFaces, MeshLevelsTakeTheAxesOfTheDominantAxis) {
    MakeRoom();
    Options().mesh = true;
    Options().litres = 0.5F;
    const auto floor = MakeLightFace(Floor);
    EXPECT_EQ(floor->worldVecs[0], (Vec3{0.5F, 0, 0}));
    EXPECT_EQ(floor->worldVecs[1], (Vec3{0, -0.5F, 0}));
    EXPECT_EQ(floor->size, (std::array<int32_t, 2>{9, 9}));
    EXPECT_EQ(floor->texOrigin, (Vec3{0, 0, 1}));
    const auto wall = MakeLightFace(0);
    EXPECT_EQ(wall->worldVecs[0], (Vec3{0, 0, 0.5F}));
    EXPECT_EQ(wall->worldVecs[1], (Vec3{0, -0.5F, 0}));
    // A negative axis plane counts by its axis.
    Geometry().planes[Geometry().surfaces[0].planeNumber].type = -3;
    EXPECT_EQ(MakeLightFace(0)->worldVecs[0], (Vec3{0, 0, 0.5F}));
    Options().litres = 0.001F;
    EXPECT_EQ(MakeLightFace(0), nullptr);
}

TEST_F(LightFaces, ALightAtTheFaceGivesItsFullValue) {
    // Value 50 with range 300 has 0.5 a component; at distance 0 twice 300 * 0.5 would need a cosine: here the sample
    // lies 16 below the light.
    MakeRoom();
    level_->Light({0, 0, 17}, 300, {50, 50, 50});
    Open();
    const auto block = LightOne(Floor);
    ASSERT_TRUE(block);
    EXPECT_EQ(block->width, 17U);
    EXPECT_EQ(block->lightShift, 4);
    EXPECT_EQ(block->group, Geometry().surfaces[Floor].blockId);
    // Texel 8, 8 is made of the samples at 0 and 8 in both directions, each (300 - dist) * (cos + 1) * 0.5.
    double sum = 0;
    for (const double x : {0.0, 8.0}) {
        for (const double y : {0.0, 8.0}) {
            const double dist = std::sqrt(x * x + y * y + 16 * 16);
            sum += (300 - dist) * (16 / dist + 1) * 0.5;
        }
    }
    EXPECT_NEAR(block->texels[8 * 17 + 8][0], 0.125 * sum, 1e-3);
}

TEST_F(LightFaces, ALightOnTheSampleTakesASoftAngleTermOfTwo) {
    MakeRoom();
    Options().preview = true;
    level_->Light({0, 0, 1.001F}, 300, {50, 50, 50});
    level_->Light({64, 0, 1.001F}, 1530, {255, 255, 255});
    Open();
    const auto block = LightOne(Floor);
    ASSERT_TRUE(block);
    EXPECT_NEAR(block->texels[8 * 17 + 8][0], 0.5 * (300 + (1530 - 64) * 0.5 * (0.001 / 64 + 1)), 0.1);
    EXPECT_NEAR(block->texels[8 * 17 + 12][0], 0.5 * (1530 + (300 - 64) * 0.5 * (0.001 / 64 + 1)), 0.1);
}

TEST_F(LightFaces, LightsBehindOrTooFarFromTheFaceGiveNothing) {
    MakeRoom();
    level_->Light({0, 0, -5}, 300, {50, 50, 50});
    level_->Light({0, 0, 100}, 99, {50, 50, 50});
    Open();
    EXPECT_FALSE(LightOne(Floor));
}

TEST_F(LightFaces, NoLightAndNoAmbientMeansNoBlock) {
    MakeRoom();
    Open();
    EXPECT_FALSE(LightOne(Floor));
}

TEST_F(LightFaces, AmbientAloneMakesABlockOfPureAmbient) {
    MakeRoom();
    Options().ambrgb = {10, 20, 30};
    Open();
    const auto block = LightOne(Floor);
    ASSERT_TRUE(block);
    for (const Vec3& texel : block->texels) EXPECT_EQ(texel, Lighting().AmbientColour);
}

TEST_F(LightFaces, UntilALightIsStrongEachOneStartsFromDarkness) {
    MakeRoom();
    // Two lights of which none brings a sample above 1, though both together would; then a strong one.
    level_->Light({0, 0, 64}, 200, {0.06F, 0.06F, 0.06F});
    level_->Light({0, 0, 64}, 200, {0.06F, 0.06F, 0.06F});
    Open();
    EXPECT_FALSE(LightOne(Floor));
    level_->Light({0, 0, 64}, 200, {50, 0, 0});
    Open();
    const auto block = LightOne(Floor);
    ASSERT_TRUE(block);
    EXPECT_GT(block->texels[8 * 17 + 8][0], 10);
    EXPECT_EQ(block->texels[8 * 17 + 8][1], 0);  // the weak ones were forgotten
}

TEST_F(LightFaces, AStrongLightKeepsTheWeakOnesThatFollow) {
    MakeRoom();
    level_->Light({0, 0, 64}, 200, {50, 0, 0});
    level_->Light({0, 0, 64}, 200, {0, 0.16F, 0});
    Open();
    const auto block = LightOne(Floor);
    ASSERT_TRUE(block);
    EXPECT_GT(block->texels[8 * 17 + 8][1], 0.1);
}

TEST_F(LightFaces, AnObstacleCastsAShadow) {
    const Box table{{-32, -32, 40}, {32, 32, 48}};
    MakeRoom(0, {table});
    level_->Light({0, 0, 100}, 400, {50, 50, 50});
    Open();
    const auto block = LightOne(Floor);
    ASSERT_TRUE(block);
    EXPECT_EQ(block->texels[8 * 17 + 8][0], 0);
    EXPECT_GT(block->texels[8 * 17 + 0][0], 50);
}

TEST_F(LightFaces, AShadowCastingLightDoublesTheResolution) {
    MakeRoom();
    level_->Light({0, 0, 64}, 300, {50, 50, 50}, LightCastsShadows);
    Open();
    const auto block = LightOne(Floor);
    ASSERT_TRUE(block);
    EXPECT_EQ(block->width, 33U);
    EXPECT_EQ(block->height, 33U);
    EXPECT_EQ(block->lightShift, 3);
    EXPECT_EQ(Geometry().surfaces[Floor].lightShift, 3);
}

TEST_F(LightFaces, AWeakShadowCasterLeavesTheCoarseStep) {
    MakeRoom();
    level_->Light({0, 0, 64}, 200, {0.05F, 0.05F, 0.05F}, LightCastsShadows);
    level_->Light({0, 0, 64}, 300, {50, 50, 50});
    Open();
    EXPECT_EQ(LightOne(Floor)->lightShift, 4);
}

TEST_F(LightFaces, TheFineStepHasALimitOfItsOwn) {
    TestLevel level;
    const Box hall{{0, 0, 0}, {4096, 2048, 512}};
    level.RoomTree(hall);
    const uint32_t floor = level.Quad(2, 0, true, hall.mins, hall.maxs);
    level.Light({100, 100, 64}, 300, {50, 50, 50}, LightCastsShadows);
    Options().preview = true;
    Open();
    // 257 x 129 texels at 16 units, 513 x 257 at 8.
    ASSERT_NE(MakeLightFace(floor), nullptr);
    ExpectFatal([&] { LightOne(floor); }, "E023");
}

TEST_F(LightFaces, UnderLitmapsonlyAFaceThatIsDarkAtTheFineStepLosesItsLightmap) {
    MakeRoom(TexturePhong);
    // The light lies on a jittered sample of the coarse grid, and 2 units from the nearest one of the fine grid.
    Options().jitter = 3;
    level_->Light({-117, 117, 1.001F}, 1.5F, {50, 50, 50}, LightCastsShadows);
    Open();
    EXPECT_FALSE(LightOne(Floor));
    EXPECT_EQ(Geometry().surfaces[Floor].lightShift, 3);
    Options().litmapsonly = true;
    EXPECT_FALSE(LightOne(Floor));
    EXPECT_EQ(Geometry().surfaces[Floor].lightShift, 255);
    EXPECT_EQ(Geometry().surfaces[Floor].lightOffset, 0xFFFFFFFF);
}

TEST_F(LightFaces, WithoutTrueColourLightmapsThereIsNoBlock) {
    MakeRoom();
    Options().nod3dlmaps = true;
    level_->Light({0, 0, 64}, 300, {50, 50, 50}, LightCastsShadows);
    Options().ambrgb = {10, 10, 10};
    Open();
    EXPECT_FALSE(LightOne(Floor));
    EXPECT_EQ(Geometry().surfaces[Floor].lightShift, 4);
}

TEST_F(LightFaces, PreviewTakesOneSampleATexel) {
    MakeRoom();
    Options().preview = true;
    const auto face = MakeLightFace(Floor);
    const std::vector<LightSample> samples = SamplesOf(*face);
    EXPECT_EQ(face->sampleDim, face->size);
    ASSERT_EQ(samples.size(), 17U * 17);
    EXPECT_EQ(samples[0].position, (Vec3{-128, 128, 1}));
    EXPECT_EQ(samples[0].s, -128);
    EXPECT_EQ(samples[18].s, -112);
    EXPECT_EQ(samples[18].t, -112);
    for (const LightSample& sample : samples) EXPECT_TRUE(sample.valid);
}

TEST_F(LightFaces, OversamplingHalvesTheStep) {
    MakeRoom();
    const auto face = MakeLightFace(Floor);
    const std::vector<LightSample> samples = SamplesOf(*face);
    EXPECT_EQ(face->sampleDim, (std::array<int32_t, 2>{34, 34}));
    EXPECT_EQ(samples[1].s, -120);
    EXPECT_EQ(samples[34].t, -120);
    EXPECT_EQ(samples[33].s, 136);
    // Beyond the wall the centre sees nothing.
    EXPECT_FALSE(samples[33].valid);
    EXPECT_TRUE(samples[34 * 17 + 17].valid);
}

TEST_F(LightFaces, PhongSamplesAreJitteredAndPutOnThePlane) {
    MakeRoom(TexturePhong);
    Options().jitter = 3;
    const auto face = MakeLightFace(Floor);
    const std::vector<LightSample> samples = SamplesOf(*face);
    EXPECT_EQ(samples[0].s, -131);
    EXPECT_EQ(samples[1].s, -117);
    EXPECT_EQ(samples[34].t, -117);
    for (const LightSample& sample : samples) EXPECT_EQ(sample.position[2], 0);
}

TEST_F(LightFaces, PreviewNeitherJittersNorProjectsPhongSamples) {
    MakeRoom(TexturePhong);
    Options().preview = true;
    const auto face = MakeLightFace(Floor);
    const std::vector<LightSample> samples = SamplesOf(*face);
    EXPECT_EQ(samples[0].s, -128);
    EXPECT_EQ(samples[0].position[2], 1);
}

TEST_F(LightFaces, ACentreInSolidCastsNoRaysAndLeavesTheLightsToDecide) {
    // The table stands in the middle of the floor.
    const Box table{{-32, -32, 0}, {32, 32, 48}};
    MakeRoom(0, {table});
    level_->Light({100, 100, 100}, 150, {50, 50, 50});
    Open();
    const auto face = MakeLightFace(Floor);
    {
        const RayStructures rays;
        ASSERT_TRUE(PointInSolid(face->centre));
    }
    const std::vector<LightSample> samples = SamplesOf(*face);
    const auto at = [&](float s, float t) {
        for (const LightSample& sample : samples) {
            if (sample.s == s && sample.t == t) return sample.valid != 0;
        }
        ADD_FAILURE();
        return false;
    };
    EXPECT_TRUE(at(96, -96));    // near the light
    EXPECT_FALSE(at(-96, 96));   // open, but beyond the light's range
    EXPECT_FALSE(at(0, 0));      // in the table
    EXPECT_FALSE(at(136, -96));  // outside the surface's bounds
}

TEST_F(LightFaces, TheSunReachesSamplesFromItsOwnDirection) {
    const Box table{{-32, -32, 0}, {32, 32, 48}};
    TestLevel level;
    const int32_t open = level.RoomTree(SmallRoom, {table});
    static_cast<void>(open);
    const uint32_t floor = level.Quad(2, 0, true, SmallRoom.mins, SmallRoom.maxs);
    const uint32_t sky = level.Quad(2, 128, false, SmallRoom.mins, SmallRoom.maxs, TextureSky | TextureNoLightmap);
    for (CRegionNode& node : Portals().nodes) {
        if (Geometry().planes[node.plane].dist == 128 && Geometry().planes[node.plane].type == 2) {
            node.firstSurface = sky;
            node.surfaceCount = 1;
        }
    }
    Options().solidsky = true;
    Options().sunrgb = {100, 100, 100};
    Options().el = 90;
    Open();
    const auto face = MakeLightFace(floor);
    const std::vector<LightSample> samples = SamplesOf(*face);
    EXPECT_TRUE(samples[34 * 3 + 3].valid);
    EXPECT_FALSE(samples[34 * 17 + 17].valid);
}

TEST_F(LightFaces, RunsShareARayAndTheirFirstPositionCounts) {
    CSampleBuffers samples;
    samples.SetPositions({{0, 0, 0}, {0.009F, 0, 0}, {0.018F, 0, 0}, {5, 0, 0}, NoPosition});
    ASSERT_EQ(samples.runs.size(), 4U);
    EXPECT_EQ(samples.runs[0].count, 2U);
    EXPECT_EQ(samples.runs[1].first, 2U);
    samples.SetPositions({NoPosition, NoPosition, {0, 0, 0}});
    ASSERT_EQ(samples.runs.size(), 1U);
    EXPECT_EQ(samples.runs[0].first, 2U);
}

}  // namespace
}  // namespace k2k::test
