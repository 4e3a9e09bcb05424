#include "light/radiosity_texels.h"

#include <gtest/gtest.h>

#include "light/light_finishing.h"
#include "light/splat.h"
#include "radiosity_level.h"

namespace k2k::test {
namespace {

// Floors at z 0 with texture axes along x and against y: texel (u, v) of a floor whose y ends at `high` lies at
// (u * 16, high - v * 16).
class RadiosityTexels : public RadiosityTest {
  protected:
    RadiosityTexels() {
        Options().radbounce = 0;
        Options().litscale = 1;
        Options().litmax = 196;
        Options().litcomp = 0.5F;
    }

    uint32_t AddFloor(float left, float right, float low, float high) {
        return level_.Surface({{left, low, 0}, {left, high, 0}, {right, high, 0}, {right, low, 0}},
                              level_.Plane({0, 0, 1}, 0), 0, level_.Texture(0, {1, 0, 0}, {0, -1, 0}));
    }

    // The fragments of a surface with these samples, as the direct pass leaves them.
    static void SetSamples(RoadState& road, uint32_t surface, const std::vector<Vec3>& samples) {
        auto face = std::make_unique<FaceLight>(road.Fragments(surface));
        ASSERT_EQ(face->fragments.size(), samples.size());
        face->styles.fill(FreeStyle);
        face->styles[0] = 0;
        face->styleCount = 1;
        face->samples.push_back(samples);
        road.faceLights[surface] = std::move(face);
    }

    static FinishedFace Finish(const RoadState& road, uint32_t surface) {
        return FinalLightFace({road.normals, road.patches, road.faceLights}, surface);
    }

    OpenLevel level_;
};

using Texels = std::vector<Vec3>;

TEST_F(RadiosityTexels, ABoxCountsByItsCoverAndNearness) {
    const uint32_t floor = AddFloor(0, 64, 0, 64);
    const RoadState road;
    const FaceInfo info = InitFace(floor, road.normals);
    SplatBuffer buffer(info);
    ASSERT_EQ(buffer.width, 5);
    // A quarter of the texels around (1, 2), its position a quarter of a texel beside it.
    SplatBox(buffer, LightmapToWorld(info, 1.25, 2), {1, 1.5}, {1.5, 2.5}, {8, 4, 2});
    const auto weight = [&](int x, int y) { return buffer.weights[static_cast<size_t>(y * buffer.width + x)]; };
    EXPECT_FLOAT_EQ(weight(1, 2), 0.5F * 1 / 0.25F);
    EXPECT_FLOAT_EQ(weight(1, 1), 0.5F * 0.5F / 1);
    EXPECT_FLOAT_EQ(weight(2, 2), 0.5F * 1 / 0.75F);
    EXPECT_FLOAT_EQ(weight(2, 3), 0.5F * 0.5F / 1);
    EXPECT_EQ(weight(0, 2), 0.0F);
    EXPECT_EQ(weight(3, 2), 0.0F);
    EXPECT_EQ(buffer.colours[static_cast<size_t>(2 * buffer.width + 1)], (Vec3{16, 8, 4}));
    // Nearer than a tenth of a texel is as near as that.
    SplatBuffer near(info);
    SplatBox(near, LightmapToWorld(info, 1, 1), {0.5, 0.5}, {1.5, 1.5}, {1, 1, 1});
    EXPECT_FLOAT_EQ(near.weights[static_cast<size_t>(near.width + 1)], 10.0F);
}

TEST_F(RadiosityTexels, BoxesBeyondTheMapAndThoseOfNoAreaGiveNothing) {
    const uint32_t floor = AddFloor(0, 64, 0, 64);
    const RoadState road;
    const FaceInfo info = InitFace(floor, road.normals);
    SplatBuffer buffer(info);
    SplatBox(buffer, {0, 0, 0}, {-4, -4}, {-2, -2}, {1, 1, 1});
    SplatBox(buffer, {0, 0, 0}, {7, 7}, {9, 9}, {1, 1, 1});
    SplatBox(buffer, {0, 0, 0}, {1, 1}, {1.03, 1.03}, {1, 1, 1});  // covers 0.0009 of a texel
    SplatBox(buffer, {0, 0, 0}, {2, 1}, {1, 2}, {1, 1, 1});        // turned round
    for (const float weight : buffer.weights) EXPECT_EQ(weight, 0.0F);
    SplatBox(buffer, {0, 0, 0}, {1, 1}, {1.04, 1.04}, {1, 1, 1});
    EXPECT_GT(buffer.weights[static_cast<size_t>(buffer.width + 1)], 0.0F);
}

TEST_F(RadiosityTexels, TheRadialWeightFallsWithTheDistanceInBoxSizes) {
    const uint32_t floor = AddFloor(0, 64, 0, 64);
    const RoadState road;
    const FaceInfo info = InitFace(floor, road.normals);
    SplatBuffer buffer(info);
    SplatRadial(buffer, LightmapToWorld(info, 1, 0.5), {0, 0}, {2, 1}, {4, 2, 1});
    const auto weight = [&](int x, int y) { return buffer.weights[static_cast<size_t>(y * buffer.width + x)]; };
    EXPECT_EQ(weight(1, 0), 1.75F);
    EXPECT_EQ(weight(1, 1), 1.75F);
    EXPECT_EQ(weight(0, 0), 1.5F);
    EXPECT_EQ(weight(2, 1), 1.5F);
    EXPECT_EQ(weight(3, 0), 0.75F);
    EXPECT_EQ(weight(4, 0), 0.0F);
    EXPECT_EQ(weight(1, 2), 0.0F);  // 2 - 1.5 * 1.5 is below 0
    EXPECT_EQ(buffer.colours[3], (Vec3{3, 1.5F, 0.75F}));
    // Boxes smaller than a texel count as one.
    SplatBuffer small(info);
    SplatRadial(small, LightmapToWorld(info, 1, 1), {1, 1}, {1.25, 1.25}, {1, 1, 1});
    EXPECT_EQ(small.weights[static_cast<size_t>(small.width + 2)], 1.0F);
    EXPECT_EQ(small.weights[static_cast<size_t>(small.width + 3)], 0.0F);
}

TEST_F(RadiosityTexels, ReadingTellsTexelsWithoutWeightAndPointsOutside) {
    const uint32_t floor = AddFloor(0, 64, 0, 64);
    const RoadState road;
    const FaceInfo info = InitFace(floor, road.normals);
    SplatBuffer buffer(info);
    const size_t texel = static_cast<size_t>(buffer.width + 1);
    buffer.weights[texel] = 2;
    buffer.colours[texel] = {6, 4, 2};
    Vec3 colour{9, 9, 9};
    EXPECT_TRUE(ReadSplat(buffer, LightmapToWorld(info, 1.4, 0.6), colour));
    EXPECT_EQ(colour, (Vec3{3, 2, 1}));
    EXPECT_FALSE(ReadSplat(buffer, LightmapToWorld(info, 0, 0), colour));
    EXPECT_EQ(colour, Vec3{});
    buffer.weights[texel] = 0.00001F;
    EXPECT_FALSE(ReadSplat(buffer, LightmapToWorld(info, 1, 1), colour));
    EXPECT_EQ(colour, Vec3{});
    for (const auto& [u, v] : {std::pair{5.0, 1.0}, {1.0, 5.0}, {-2.0, 1.0}, {1.0, -2.0}}) {
        EXPECT_FALSE(ReadSplat(buffer, LightmapToWorld(info, u, v), colour));
        EXPECT_EQ(colour, (Vec3{2550, 0, 0})) << u << " " << v;
    }
}

TEST_F(RadiosityTexels, ASmallSurfaceComputedByHand) {
    // Two texels wide and one high: two fragments, a lightmap of 3 x 2, one patch over all of it.
    const uint32_t floor = AddFloor(0, 32, 0, 16);
    RoadState road;
    SetSamples(road, floor, {{200, 100, 50}, {100, 0, 0}});
    road.AddPatch(floor, {{0, 0, 0}, {0, 16, 0}, {32, 16, 0}, {32, 0, 0}}, {40, 40, 0});
    Options().radbounce = 1;

    // Every texel lies half a texel from the middle of the fragments that touch it, and so takes their mean; a single
    // patch gives its own light to all texels that it reaches.
    FinishedFace finished = Finish(road, floor);
    ASSERT_TRUE(finished.block);
    EXPECT_EQ(finished.block->width, 3U);
    EXPECT_EQ(finished.block->height, 2U);
    EXPECT_EQ(finished.block->lightShift, 4);
    EXPECT_EQ(finished.block->group, Geometry().surfaces[floor].blockId);
    const Texels expected{{240, 140, 50}, {190, 90, 25}, {140, 40, 0}};
    for (size_t j = 0; j < 6; j++) {
        for (size_t c = 0; c < 3; c++) EXPECT_NEAR(finished.block->texels[j][c], expected[j % 3][c], 1e-4) << j;
    }

    // The mean of 240, 190 and 140, and their mean distance from it.
    ASSERT_EQ(finished.exposureSamples.size(), 6U);
    std::vector<FinishedFace> faces;
    faces.push_back(std::move(finished));
    Lighting().ExposureReference = ComputeExposure(faces);
    EXPECT_NEAR(Lighting().ExposureReference, 190 + 100.0 / 3, 1e-4);

    // 240 lies above the reference; the others follow the curve from the knee of 98 up.
    Lighting().LightStore.Open();
    for (size_t i = 0; i < 256; i++) Lighting().GammaTable[i] = static_cast<uint8_t>(i);
    AddFinishedBlock(std::move(*faces[0].block));
    PixelPages pages;
    TLightFinishing finishing;
    finishing.AddBlocks(LightBlocks());
    finishing.AllocatePages(pages, Geometry().surfaces, 0);
    finishing.Finish(pages, Geometry().surfaces, 1, 0);
    const std::vector<std::vector<uint8_t>> bytes{{196, 114, 40}, {189, 89, 24}, {152, 43, 0}};
    for (size_t j = 0; j < 6; j++) {
        const uint8_t* texel = pages[1].data() + ((1 + j / 3) * 256 + 1 + j % 3) * 3;
        EXPECT_EQ(std::vector<uint8_t>(texel, texel + 3), bytes[j % 3]) << j;
    }
}

TEST_F(RadiosityTexels, SmoothNeighboursBleedIntoEachOther) {
    // Two floors that share an edge, one lit and one dark.
    const uint32_t left = AddFloor(0, 16, 0, 16);
    const uint32_t right = AddFloor(16, 32, 0, 16);
    auto& edges = Geometry().edges;
    edges[5] = {3, 2};
    edges[6].first = 2;
    edges[8].second = 3;
    RoadState road;
    ASSERT_EQ(road.normals.Of(left).neighbours, (std::vector<uint32_t>{right}));
    SetSamples(road, left, {{100, 100, 100}});
    SetSamples(road, right, {{0, 0, 0}});
    const FinishedFace finished = Finish(road, left);
    EXPECT_EQ(finished.block->texels, (Texels{{100, 100, 100}, {50, 50, 50}, {100, 100, 100}, {50, 50, 50}}));
    // A neighbour without that style stays out.
    road.faceLights[right]->styles[0] = 7;
    EXPECT_EQ(Finish(road, left).block->texels, Texels(4, Vec3{100, 100, 100}));
}

TEST_F(RadiosityTexels, SurfacesWithoutNeighboursHaveTheirOwnFragmentsOnly) {
    const uint32_t left = AddFloor(0, 16, 0, 16);
    const uint32_t right = AddFloor(16, 32, 0, 16);  // beside it, with corners of its own
    RoadState road;
    SetSamples(road, left, {{100, 100, 100}});
    SetSamples(road, right, {{0, 0, 0}});
    EXPECT_EQ(Finish(road, left).block->texels, Texels(4, Vec3{100, 100, 100}));
}

TEST_F(RadiosityTexels, WithoutBouncesPatchesGiveNothing) {
    const uint32_t floor = AddFloor(0, 16, 0, 16);
    RoadState road;
    SetSamples(road, floor, {{10, 20, 30}});
    road.AddPatch(floor, {{0, 0, 0}, {0, 16, 0}, {16, 16, 0}, {16, 0, 0}}, {40, 40, 40});
    EXPECT_EQ(Finish(road, floor).block->texels, Texels(4, Vec3{10, 20, 30}));
    Options().radbounce = 1;
    EXPECT_EQ(Finish(road, floor).block->texels, Texels(4, Vec3{50, 60, 70}));
}

TEST_F(RadiosityTexels, PreviewTakesTheSamplesAsTheyAreAndFiltersPatches) {
    Options().preview = true;
    const uint32_t floor = AddFloor(0, 16, 0, 16);
    RoadState road;
    SetSamples(road, floor, {{1, 0, 0}, {2, 0, 0}, {3, 0, 0}, {4, 0, 0}});
    EXPECT_EQ(Finish(road, floor).block->texels, (Texels{{1, 0, 0}, {2, 0, 0}, {3, 0, 0}, {4, 0, 0}}));
    road.AddPatch(floor, {{0, 0, 0}, {0, 16, 0}, {16, 16, 0}, {16, 0, 0}}, {40, 40, 40});
    Options().radbounce = 1;
    EXPECT_EQ(Finish(road, floor).block->texels, (Texels{{41, 40, 40}, {42, 40, 40}, {43, 40, 40}, {44, 40, 40}}));
}

TEST_F(RadiosityTexels, ScaleComesBeforeAmbientWhichIsReversedAndNothingIsNegative) {
    const uint32_t floor = AddFloor(0, 16, 0, 16);
    RoadState road;
    SetSamples(road, floor, {{-100, 40, 20}});
    Options().litscale = 0.5F;
    Options().ambrgb = {20, 40, 10};
    EXPECT_EQ(Finish(road, floor).block->texels, Texels(4, Vec3{0, 122, 61}));
}

TEST_F(RadiosityTexels, ASurfaceWithoutFragmentsIsMarked) {
    const uint32_t floor = AddFloor(0, 16, 0, 16);
    RoadState road;
    SetSamples(road, floor, {{0, 0, 0}});
    road.faceLights[floor]->fragments.clear();
    road.faceLights[floor]->samples[0].clear();
    Options().litcomp = 0;
    const FinishedFace finished = Finish(road, floor);
    EXPECT_EQ(finished.block->texels, Texels(4, Vec3{1, 0, 0}));
    EXPECT_TRUE(finished.exposureSamples.empty());
}

TEST_F(RadiosityTexels, OnlyTexelsAboveTheKneeTellTheExposure) {
    const uint32_t floor = AddFloor(0, 16, 0, 16);
    RoadState road;
    Options().litmax = 200;
    SetSamples(road, floor, {{20, 100, 0}});
    EXPECT_TRUE(Finish(road, floor).exposureSamples.empty());
    SetSamples(road, floor, {{20, 0, 101}});
    EXPECT_EQ(Finish(road, floor).exposureSamples, std::vector<float>(4, 101));
    EXPECT_EQ(ComputeExposure({}), 0);
}

TEST_F(RadiosityTexels, ExposureIsTheMeanAndTheMeanDistanceFromIt) {
    std::vector<FinishedFace> faces(3);
    faces[0].exposureSamples = {100, 200};
    faces[2].exposureSamples = {600, 700};
    EXPECT_EQ(ComputeExposure(faces), 400 + 250);
}

TEST_F(RadiosityTexels, DarkSurfacesHaveNoBlockOnlyUnderLitmapsonly) {
    const uint32_t floor = AddFloor(0, 16, 0, 16);
    RoadState road;
    SetSamples(road, floor, {{0, 0, 0}});
    EXPECT_TRUE(Finish(road, floor).block);
    Options().litmapsonly = true;
    EXPECT_FALSE(Finish(road, floor).block);
    Options().radbounce = 1;
    EXPECT_TRUE(Finish(road, floor).block);
    Options().radbounce = 0;
    Lighting().AmbientLevel = 1;
    EXPECT_TRUE(Finish(road, floor).block);
    Lighting().AmbientLevel = 0;
    road.faceLights[floor]->hasLight = true;
    EXPECT_TRUE(Finish(road, floor).block);
}

TEST_F(RadiosityTexels, SurfacesThatAreNotLitHaveNoBlock) {
    const uint32_t floor = AddFloor(0, 16, 0, 16);
    const RoadState road;
    EXPECT_FALSE(Finish(road, floor).block);
}

TEST_F(RadiosityTexels, BuffersAreAsLargeAsTheirSurface) {
    const uint32_t floor = AddFloor(0, 64, 0, 32);
    const RoadState road;
    const FaceInfo info = InitFace(floor, road.normals);
    const SplatBuffer buffer(info);
    EXPECT_EQ(buffer.weights.size(), 15U);
    EXPECT_EQ(buffer.colours.size(), 15U);
}

}  // namespace
}  // namespace k2k::test
