#include "light/radiosity_direct.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "radiosity_level.h"

namespace k2k::test {
namespace {

using ::testing::HasSubstr;

constexpr Vec3 Right{1, 0, 0};
constexpr Vec3 Down{0, -1, 0};

// A floor at z 0 with the given outline, with texture axes along x and against y.
uint32_t Floor(TestLevel& level, const std::vector<Vec3>& ring, const Vec3& s = Right, const Vec3& t = Down,
               uint32_t flags = 0) {
    return level.Surface(ring, level.Plane({0, 0, 1}, ring[0][2]), 0, level.Texture(flags, s, t));
}
std::vector<Vec3> Square(float low, float high, float z = 0) {
    return {{low, low, z}, {low, high, z}, {high, high, z}, {high, low, z}};
}

class Fragments : public RadiosityTest {};

TEST_F(Fragments, EveryTexelIsCutOutOfTheSurface) {
    OpenLevel level;
    const uint32_t floor = Floor(level, {{0, 0, 0}, {0, 16, 0}, {40, 16, 0}, {40, 0, 0}});
    const FaceLight face = RoadState().Fragments(floor);
    EXPECT_EQ(face.info.size, (std::array<int32_t, 2>{4, 2}));
    EXPECT_EQ(face.info.texMin, (std::array<int32_t, 2>{0, -1}));
    ASSERT_EQ(face.fragments.size(), 3U);
    const SampleFragment& whole = face.fragments[1];
    EXPECT_EQ(whole.x, 1U);
    EXPECT_EQ(whole.y, 0U);
    EXPECT_EQ(whole.u, 1.5F);
    EXPECT_EQ(whole.v, 0.5F);
    EXPECT_EQ(whole.area, 256.0F);
    EXPECT_EQ(whole.position, (Vec3{24, 8, 0}));
    EXPECT_EQ(whole.polygon, nullptr);
    const SampleFragment& half = face.fragments[2];
    EXPECT_EQ(half.x, 2U);
    EXPECT_EQ(half.minU, 2.0F);
    EXPECT_EQ(half.maxU, 2.5F);
    EXPECT_EQ(half.minV, 0.0F);
    EXPECT_EQ(half.maxV, 1.0F);
    EXPECT_EQ(half.area, 128.0F);
    EXPECT_EQ(half.position, (Vec3{36, 8, 0}));
    ASSERT_NE(half.polygon, nullptr);
    Vec3d mins, maxs;
    PolygonBounds(*half.polygon, mins, maxs);
    EXPECT_EQ(mins, (Vec3d{32, 0, 0}));
    EXPECT_EQ(maxs, (Vec3d{40, 16, 0}));
}

TEST_F(Fragments, PreviewTakesWholeTexelsAroundWholeCoordinates) {
    Options().preview = true;
    OpenLevel level;
    const uint32_t floor = Floor(level, {{0, 0, 0}, {0, 16, 0}, {40, 16, 0}, {40, 0, 0}});
    const FaceLight face = RoadState().Fragments(floor);
    ASSERT_EQ(face.fragments.size(), 8U);
    const SampleFragment& last = face.fragments[7];
    EXPECT_EQ(last.x, 3U);
    EXPECT_EQ(last.y, 1U);
    EXPECT_EQ(last.minU, 2.5F);
    EXPECT_EQ(last.maxV, 1.5F);
    EXPECT_EQ(last.area, 256.0F);
    EXPECT_EQ(last.position, (Vec3{48, 0, 0}));
    for (const SampleFragment& fragment : face.fragments) EXPECT_EQ(fragment.polygon, nullptr);
}

TEST_F(Fragments, ASliverWithinTheToleranceStaysInItsCell) {
    // -eps / 16 in texels is -eps in units: the strip beyond the texel line is no cell of its own.
    OpenLevel level;
    const uint32_t thin = Floor(level, {{0, 0, 0}, {0, 16, 0}, {16.04F, 16, 0}, {16.04F, 0, 0}});
    const uint32_t wide = Floor(level, {{0, 0, 0}, {0, 16, 0}, {16.06F, 16, 0}, {16.06F, 0, 0}});
    const RoadState road;
    EXPECT_EQ(road.Fragments(thin).fragments.size(), 1U);
    EXPECT_EQ(road.Fragments(wide).fragments.size(), 2U);
}

TEST_F(Fragments, TexelAreaGoesByTheLengthOfTheAxes) {
    OpenLevel level;
    const uint32_t fine = Floor(level, Square(0, 16), {2, 0, 0}, {0, -4, 0});
    const FaceLight face = RoadState().Fragments(fine);
    EXPECT_EQ(face.luxelArea, 32.0F);
    ASSERT_EQ(face.fragments.size(), 8U);
    for (const SampleFragment& fragment : face.fragments) EXPECT_EQ(fragment.area, 32.0F);
}

class DirectPassTest : public RadiosityTest {};

TEST_F(DirectPassTest, AFragmentGetsTheLightOfItsDistanceAndAngle) {
    OpenLevel level;
    level.Light({0, 0, 50}, 100, {10, 20, 30});
    const uint32_t floor = Floor(level, Square(0, 16));
    RayStructures rays;
    RoadState road;
    const FaceLight& face = road.Light(floor);
    EXPECT_TRUE(face.hasLight);
    ASSERT_EQ(face.samples.size(), 1U);
    EXPECT_EQ(face.styleCount, 1);
    EXPECT_EQ(face.styles[0], 0);
    EXPECT_EQ(face.styles[1], FreeStyle);
    EXPECT_EQ(road.lights[0].colour, (Vec3{0.9F, 0.6F, 0.3F}));
    EXPECT_EQ(road.lights[0].intensity, 100.0F);
    LightStrength strength;
    ASSERT_EQ(SampleLight(road.lights[0], floor, {0, 0, 0}, {0, 0, 1}, strength), LightReach::Lit);
    EXPECT_EQ(strength.scale, 0.5);
    EXPECT_EQ(strength.dot, 2.0);
}

TEST_F(DirectPassTest, AmbientSoftnessRaisesTheAngleOfLightsButNotOfTheSun) {
    OpenLevel level;
    level.Light({0, 0, 50}, 100, {10, 20, 30});
    const uint32_t floor = Floor(level, Square(0, 16));
    RayStructures rays;
    RoadState road;
    Options().lmambient = 0.5F;
    Options().sunrgb = {100, 100, 100};
    Lighting().SunVector = {0, 0, 10000};
    SetRadiositySun();
    road.Light(floor);
    ASSERT_EQ(road.lights.size(), 2U);
    LightStrength strength;
    ASSERT_EQ(SampleLight(road.lights[0], floor, {8, 8, 0}, {0, 0, 1}, strength), LightReach::Lit);
    EXPECT_EQ(strength.dot, 1.0);
    EXPECT_EQ(strength.scale, 1.0);
    ASSERT_EQ(SampleLight(road.lights[1], floor, {0, 0, 0}, {0, 0, 1}, strength), LightReach::Lit);
    EXPECT_EQ(strength.dot, 2.0);
    ASSERT_EQ(SampleLight(road.lights[1], floor, {0, 0, 0}, {0.8F, 0, 0.6F}, strength), LightReach::Lit);
    EXPECT_NEAR(strength.dot, 0.6 * 1.5 + 0.5, 1e-6);
}

TEST_F(DirectPassTest, LightsEndWhereTheySayAndBehindTheSurface) {
    OpenLevel level;
    level.Light({0, 0, 100}, 100, {10, 10, 10});
    const uint32_t floor = Floor(level, Square(0, 16));
    RoadState road;
    RayStructures rays;
    const DirectLight light = BuildDirectLights(road.patches).at(0);
    LightStrength strength;
    EXPECT_EQ(SampleLight(light, floor, {0, 0, 0}, {0, 0, 1}, strength), LightReach::None);
    EXPECT_EQ(SampleLight(light, floor, {0, 0, 101}, {0, 0, 1}, strength), LightReach::Behind);
    EXPECT_EQ(SampleLight(light, floor, {0, 0, 100}, {0, 0, 1}, strength), LightReach::Behind);
}

TEST_F(DirectPassTest, PatchesAndSpotsShineIntoTheirCone) {
    OpenLevel level;
    const uint32_t floor = Floor(level, Square(0, 16));
    RayStructures rays;
    DirectLight light;
    light.origin = {0, 0, 10};
    light.normal = {0, 0, -1};
    light.intensity = 40;
    LightStrength strength;
    light.type = DirectLightType::Surface;
    ASSERT_EQ(SampleLight(light, floor, {0, 0, 0}, {0, 0, 1}, strength), LightReach::Lit);
    EXPECT_DOUBLE_EQ(strength.scale, 0.01);
    ASSERT_EQ(SampleLight(light, floor, {0, 0, 9.5F}, {0, 0, 1}, strength), LightReach::Lit);
    EXPECT_DOUBLE_EQ(strength.scale, 1);  // distances below 1 count as 1
    light.normal = {0, 0, 1};
    EXPECT_EQ(SampleLight(light, floor, {0, 0, 0}, {0, 0, 1}, strength), LightReach::None);
    light.normal = {0, 0, -1};
    light.type = DirectLightType::Spot;
    light.stopDot = 0.5F;
    ASSERT_EQ(SampleLight(light, floor, {0, 0, 0}, {0, 0, 1}, strength), LightReach::Lit);
    EXPECT_DOUBLE_EQ(strength.scale, 0.75);
    EXPECT_EQ(SampleLight(light, floor, {20, 0, 0}, {0, 0, 1}, strength), LightReach::None);
    light.stopDot = 1;
    EXPECT_EQ(SampleLight(light, floor, {0, 0, 0}, {0, 0, 1}, strength), LightReach::None);
    light.type = static_cast<DirectLightType>(4);
    ExpectFatal([&] { SampleLight(light, floor, {0, 0, 0}, {0, 0, 1}, strength); }, "Bad dl->type");
}

TEST_F(DirectPassTest, ObjectsGiveLightsByTheirRawRangeNewestFirst) {
    OpenLevel level;
    level.Light({1, 0, 0}, 100, {10, 20, 30});
    level.Light({2, 0, 0}, 300, {10, 20, 30}).rawRange = 0;  // an automatic range lights the direct road only
    CEntity& spot = level.Light({3, 0, 0}, 200, {10, 20, 30});
    spot.lightValue = 300;
    LightPatches patches;
    const std::vector<DirectLight> lights = BuildDirectLights(patches);
    ASSERT_EQ(lights.size(), 2U);
    EXPECT_EQ(lights[0].origin[0], 3.0F);
    EXPECT_EQ(lights[0].style, 0);
    EXPECT_EQ(lights[1].origin[0], 1.0F);
    EXPECT_EQ(lights[1].type, DirectLightType::Point);
}

TEST_F(DirectPassTest, ASunWithoutOneOfItsColoursIsNone) {
    OpenLevel level;
    LightPatches patches;
    Lighting().SunVector = {0, 6000, 8000};
    Options().sunrgb = {100, 0, 0};
    SetRadiositySun();
    EXPECT_TRUE(BuildDirectLights(patches).empty());
    Options().sunrgb = {100, 50, 20};
    SetRadiositySun();
    const std::vector<DirectLight> lights = BuildDirectLights(patches);
    ASSERT_EQ(lights.size(), 1U);
    EXPECT_EQ(lights[0].type, DirectLightType::Sun);
    EXPECT_EQ(lights[0].colour, (Vec3{51, 127.5F, 255}));
    EXPECT_EQ(lights[0].normal, (Vec3{0, -0.6F, -0.8F}));
    EXPECT_EQ(lights[0].intensity, 1.0F);
}

TEST_F(DirectPassTest, ShiningPatchesBecomeLightsAndGiveTheirLightAway) {
    OpenLevel level;
    const uint32_t floor = Floor(level, Square(0, 16));
    RoadState road;
    road.AddPatch(floor, {{0, 0, 0}, {0, 16, 0}, {16, 16, 0}, {16, 0, 0}}, {2, 4, 1});
    road.AddPatch(floor, {{0, 0, 0}, {0, 16, 0}, {16, 16, 0}, {16, 0, 0}}, {2.9F, 2.9F, 2.9F});
    const std::vector<DirectLight> lights = BuildDirectLights(road.patches);
    ASSERT_EQ(lights.size(), 1U);
    EXPECT_EQ(lights[0].type, DirectLightType::Surface);
    EXPECT_EQ(lights[0].colour, (Vec3{0.5F, 1, 0.25F}));
    EXPECT_EQ(lights[0].intensity, static_cast<float>(4 * 256 * 0.4));
    EXPECT_EQ(lights[0].origin, (Vec3{8, 8, 1}));
    EXPECT_EQ(road.patches[0].totallight, Vec3{});
    EXPECT_EQ(road.patches[1].totallight, (Vec3{2.9F, 2.9F, 2.9F}));
}

// A pillar stands between the sun's fixed far point and a floor.
TEST_F(DirectPassTest, TheSunIsAFarPointOfTheWorld) {
    TestLevel level;
    const Box room{{-20000, -20000, -100}, {20000, 20000, 20000}};
    level.RoomTree(room, {{{7990, -50, 100}, {8010, 50, 200}}});
    const uint32_t floor = Floor(level, Square(0, 16));
    RoadState road;
    RayStructures rays;
    Options().sunrgb = {100, 100, 100};
    Lighting().SunVector = {0, 0, 10000};
    SetRadiositySun();
    const DirectLight sun = BuildDirectLights(road.patches).at(0);
    LightStrength strength;
    // From straight above this point would be clear; from the far point above the origin the pillar is in the way.
    EXPECT_EQ(SampleLight(sun, floor, {8080, 0, 0}, {0, 0, 1}, strength), LightReach::Blocked);
    EXPECT_EQ(SampleLight(sun, floor, {7900, 0, 0}, {0, 0, 1}, strength), LightReach::Lit);
    EXPECT_EQ(SampleLight(sun, floor, {7900, 0, 0}, {0, 0, -1}, strength), LightReach::Behind);
}

// What every light gives to every fragment, without leaving any light out and without sampling again.
std::vector<Vec3> PlainSamples(const RoadState& road, const FaceLight& face) {
    std::vector<Vec3> samples;
    for (const SampleFragment& fragment : face.fragments) {
        Vec3 sum{};
        for (const DirectLight& light : road.lights) {
            LightStrength s;
            if (SampleLight(light, face.info.surfaceIndex, fragment.position, fragment.normal, s) != LightReach::Lit)
                continue;
            for (size_t c = 0; c < 3; c++)
                sum[c] = static_cast<float>(sum[c] + light.colour[c] * (s.scale * light.intensity * s.dot));
        }
        samples.push_back(sum);
    }
    return samples;
}

TEST_F(DirectPassTest, LightsAreLeftOutByWhereTheFragmentsAre) {
    // The axes span a plane that stands upright on the floor: fragments lie below it, far from their surface, and a
    // light beneath the floor reaches them from above.
    OpenLevel level;
    level.Light({-128, 64, -30}, 60, {10, 10, 10});
    const uint32_t floor = Floor(level, Square(-256, 0), {1, 0, 0.5F}, {0, 0, 1});
    Options().radbounce = 0;
    Options().preview = true;
    RoadState road;
    RayStructures rays;
    const FaceLight& face = road.Light(floor);
    const std::vector<Vec3> plain = PlainSamples(road, face);
    const bool isLit = std::any_of(plain.begin(), plain.end(), [](const Vec3& c) { return c[0] > 0; });
    EXPECT_TRUE(isLit);
    EXPECT_TRUE(face.hasLight);
}

TEST_F(DirectPassTest, AFifthStyleIsLeftOutAndSaidOnceASurface) {
    OpenLevel level;
    for (int32_t i = 0; i < 6; i++) level.Light({8, 8, 50}, 100, {10, 10, 10}).lightValue = static_cast<float>(i);
    const uint32_t floor = Floor(level, Square(0, 32));
    RoadState road;
    RayStructures rays;
    Logged();
    const FaceLight& face = road.Light(floor);
    // Lights come newest first, and style 0 has its slot from the start.
    EXPECT_EQ(face.styleCount, 4);
    EXPECT_EQ((std::vector(face.styles.begin(), face.styles.begin() + 5)),
              (std::vector<int32_t>{0, 5, 4, 3, FreeStyle}));
    EXPECT_EQ(Logged(), "\nWARNING: Face 0 has too many lightstyles\n");
}

// A wall that shades one half of a floor.
class Refinement : public RadiosityTest {
  protected:
    Refinement() {
        const Box room{{-64, -64, -16}, {64, 64, 128}};
        level_.RoomTree(room, {{{-4, -64, 30}, {0, 64, 60}}});
        level_.Light({32, 0, 100}, 400, {10, 10, 10});
        Options().radbounce = 0;
    }
    TestLevel level_;
};

TEST_F(Refinement, SamplesTexelsOfHighContrastAtSixteenPoints) {
    const uint32_t floor = Floor(level_, {{-48, -16, 0}, {-48, 0, 0}, {48, 0, 0}, {48, -16, 0}});  // whole texels
    RoadState road;
    RayStructures rays;
    const FaceLight& face = road.Light(floor);
    const std::vector<Vec3> plain = PlainSamples(road, face);
    const DirectLight& light = road.lights[0];
    int refined = 0;
    for (size_t k = 0; k < face.fragments.size(); k++) {
        const SampleFragment& fragment = face.fragments[k];
        Vec3 sum{};
        for (int i = 0; i < 4; i++) {
            for (int j = 0; j < 4; j++) {
                const Vec3 point{fragment.position[0] + (static_cast<float>(i) * 0.25F - 0.375F) * 16,
                                 fragment.position[1] - (static_cast<float>(j) * 0.25F - 0.375F) * 16, 0};
                LightStrength s;
                if (SampleLight(light, floor, point, {0, 0, 1}, s) != LightReach::Lit) continue;
                for (size_t c = 0; c < 3; c++)
                    sum[c] = static_cast<float>(sum[c] + light.colour[c] * (s.scale * light.intensity * s.dot));
            }
        }
        for (float& component : sum) component /= 16;
        const bool isMean = face.samples[0][k] == sum;
        EXPECT_TRUE(isMean || face.samples[0][k] == plain[k]) << k;
        if (isMean && sum != plain[k]) refined++;
    }
    EXPECT_GE(refined, 2);
}

TEST_F(Refinement, LeavesEvenLightAsItIs) {
    level_ = TestLevel();
    const int32_t open = level_.Region(ContentsEmpty);
    level_.Node(level_.Plane({0, 0, 1}, -4096), open, open);
    Options().sunrgb = {50, 50, 50};
    Lighting().SunVector = {0, 0, 10000};
    SetRadiositySun();
    const uint32_t floor = Floor(level_, Square(-32, 32));
    RoadState road;
    RayStructures rays;
    const FaceLight& face = road.Light(floor);
    // Whole texels all have the sun's light. The row and column beyond the surface are dark texels without fragments,
    // and what is next to them is sampled again, with the same result.
    for (const Vec3& sample : face.samples[0]) EXPECT_EQ(sample, (Vec3{127.5F, 127.5F, 127.5F}));
}

TEST_F(Refinement, PointsOutsideAPartlyCoveredTexelAreSkipped) {
    // A strip of a quarter texel, lit whole, although the shadow begins in the same texel.
    const uint32_t strip = Floor(level_, {{-12, -8, 0}, {-12, 8, 0}, {-8, 8, 0}, {-8, -8, 0}});
    RoadState road;
    RayStructures rays;
    const FaceLight& face = road.Light(strip);
    const auto lightAt = [&](const Vec3& point) {
        LightStrength s;
        const bool isLit = SampleLight(road.lights[0], strip, point, {0, 0, 1}, s) == LightReach::Lit;
        return isLit ? road.lights[0].colour[0] * s.scale * road.lights[0].intensity * s.dot : 0;
    };
    ASSERT_EQ(face.fragments.size(), 2U);
    for (size_t k = 0; k < face.fragments.size(); k++) {
        const SampleFragment& fragment = face.fragments[k];
        EXPECT_EQ(fragment.polygon, nullptr);  // freed at the end of the pass
        EXPECT_LT(fragment.area, face.luxelArea);
        const Vec3& middle = fragment.position;
        ASSERT_EQ(lightAt({middle[0] - 6, middle[1], 0}), 0);
        const double expected = lightAt(middle);
        ASSERT_GT(expected, 0);
        EXPECT_NEAR(face.samples[0][k][0], expected, expected * 0.02) << k;
    }
}

class VertexNormalsTest : public RadiosityTest {
  protected:
    // Surfaces that share the vertices at the y axis: a floor to the left, and a ramp to the right that rises by `z`
    // over 64 units.
    uint32_t AddRamp(float z, uint32_t flags = 0) {
        CGeometryData& g = Geometry();
        const uint32_t left = level_.Surface({{-64, 0, 0}, {-64, 64, 0}, {0, 64, 0}, {0, 0, 0}},
                                             level_.Plane({0, 0, 1}, 0), 0, level_.Texture(flags, Right, Down));
        Vec3 normal{-z, 0, 64};
        Normalize(normal);
        level_.Surface({{0, 0, 0}, {0, 64, 0}, {64, 64, z}, {64, 0, z}}, level_.Plane(normal, 0), 0,
                       level_.Texture(flags, Right, Down));
        g.edges[g.edges.size() - 4] = {3, 2};  // both rings use the left one's vertices
        g.edges[g.edges.size() - 3].first = 2;
        g.edges[g.edges.size() - 1].second = 3;
        return left;
    }
    OpenLevel level_;
};

TEST_F(VertexNormalsTest, FlatAnglesShareTheirNormals) {
    const uint32_t left = AddRamp(48);
    const CVertexNormals normals;
    EXPECT_EQ(normals.Of(left).neighbours, (std::vector<uint32_t>{left + 1}));
    EXPECT_EQ(normals.Of(left).vertexNormals[0], (Vec3{0, 0, 1}));
    const Vec3 shared = normals.Of(left).vertexNormals[2];
    EXPECT_NEAR(shared[0], -0.6 / std::sqrt(0.36 + 1.8 * 1.8), 1e-6);
    EXPECT_EQ(normals.Of(left + 1).vertexNormals[0], shared);
    EXPECT_FALSE(InitFace(left, normals).flat);
}

TEST_F(VertexNormalsTest, AngleOfFortyFiveDegreesIsStillSmooth) {
    const uint32_t left = AddRamp(64);
    EXPECT_EQ(CVertexNormals().Of(left).neighbours.size(), 1U);
}

TEST_F(VertexNormalsTest, SteepAnglesAreCreasesUnlessBothSurfacesArePhong) {
    const uint32_t crease = AddRamp(65);
    const CVertexNormals plain;
    EXPECT_TRUE(plain.Of(crease).neighbours.empty());
    EXPECT_TRUE(InitFace(crease, plain).flat);
    for (Texinfo& texinfo : Textures().texinfos) texinfo.flags = TexturePhong;
    EXPECT_EQ(CVertexNormals().Of(crease).neighbours.size(), 1U);
    Textures().texinfos.back().flags = 0;
    EXPECT_TRUE(CVertexNormals().Of(crease).neighbours.empty());
}

TEST_F(VertexNormalsTest, SurfacesWithoutALightmapTakeNoPart) {
    for (const uint32_t flags : {TextureNoLightmap, TextureSky}) {
        level_ = OpenLevel();
        const uint32_t left = AddRamp(16);
        Textures().texinfos.back().flags = flags;
        EXPECT_TRUE(CVertexNormals().Of(left).neighbours.empty());
        EXPECT_EQ(CVertexNormals().Of(left + 1).faceNormal, Vec3{});
    }
}

TEST_F(VertexNormalsTest, BetweenVerticesTheNormalIsInterpolated) {
    const uint32_t left = AddRamp(48);
    const RoadState road;
    const Vec3 shared = road.normals.Of(left).vertexNormals[2];
    EXPECT_EQ(road.normals.FaceNormalAt(left, {-32, 32, 0}), (Vec3{0, 0, 1}));
    EXPECT_EQ(road.normals.FaceNormalAt(left, {0, 64, 0}), shared);
    Vec3 half{shared[0] / 2, 0, (1 + shared[2]) / 2};
    Normalize(half);
    const Vec3 between = road.normals.FaceNormalAt(left, {-16, 32, 0});
    for (size_t c = 0; c < 3; c++) EXPECT_NEAR(between[c], half[c], 1e-6);
}

TEST_F(VertexNormalsTest, OppositeNormalsLeaveTheSurfacesOwn) {
    // Two smooth surfaces back to back at the same vertices.
    const uint32_t up = Floor(level_, Square(0, 64), Right, Down, TexturePhong);
    const uint32_t down = Floor(level_, Square(0, 64), Right, Down, TexturePhong);
    Geometry().surfaces[down].side = 1;
    for (size_t i = 0; i < 4; i++) Geometry().edges[5 + i] = Geometry().edges[1 + i];
    const CVertexNormals normals;
    ASSERT_EQ(normals.Of(up).neighbours.size(), 1U);
    for (const Vec3& normal : normals.Of(up).vertexNormals) EXPECT_EQ(normal, (Vec3{0, 0, 1}));
    for (const Vec3& normal : normals.Of(down).vertexNormals) EXPECT_EQ(normal, (Vec3{0, 0, -1}));
}

TEST_F(VertexNormalsTest, WhereNormalsCancelOutTheSurfacesOwnIsTakenWithOneWarning) {
    // Three smooth surfaces on the back outweigh one on the front: half way to its edges nothing is left.
    const uint32_t up = Floor(level_, Square(0, 64), Right, Down, TexturePhong);
    for (int i = 0; i < 3; i++) {
        const uint32_t down = Floor(level_, Square(0, 64), Right, Down, TexturePhong);
        Geometry().surfaces[down].side = 1;
        for (size_t k = 0; k < 4; k++) Geometry().edges[down * 4 + 1 + k] = Geometry().edges[1 + k];
    }
    const RoadState road;
    ASSERT_EQ(road.normals.Of(up).vertexNormals[0], (Vec3{0, 0, -1}));
    Logged();
    EXPECT_EQ(road.normals.FaceNormalAt(up, {32, 48, 0}), (Vec3{0, 0, 1}));
    EXPECT_EQ(Logged(), "Warning: face 0 is degenerated\n");
    EXPECT_EQ(road.normals.FaceNormalAt(up, {32, 16, 0}), (Vec3{0, 0, 1}));
    EXPECT_EQ(Logged(), "");
}

TEST_F(VertexNormalsTest, SixtyFiveNeighboursAreFatal) {
    const auto addFan = [&](int count) {
        level_ = OpenLevel();
        for (int i = 0; i < count; i++) {
            const auto x = static_cast<float>(i) * 16;
            Floor(level_, {{x, 0, 0}, {x, 16, 0}, {x + 16, 16, 0}});
            Geometry().edges[Geometry().edges.size() - 3].first = 0;
            Geometry().edges.back().second = 0;
        }
    };
    addFan(65);
    EXPECT_EQ(CVertexNormals().Of(0).neighbours.size(), 64U);
    addFan(66);
    ExpectFatal([] { CVertexNormals normals; }, "Face has too much neighbors\n");
}

TEST_F(VertexNormalsTest, AxesOfNoUseAreTakenAsTheyAre) {
    const uint32_t floor = Floor(level_, Square(0, 16), {1, 0, 0}, {0, 0, 1});
    const FaceInfo info = InitFace(floor, CVertexNormals());
    EXPECT_EQ(info.texToWorld[0], (Vec3{1, 0, 0}));
    EXPECT_EQ(info.texToWorld[1], (Vec3{0, -1, 1}));
}

TEST_F(VertexNormalsTest, TexelsLieInThePlaneOfTheirSurface) {
    const uint32_t floor = Floor(level_, Square(0, 32, 24));
    const FaceInfo info = InitFace(floor, CVertexNormals());
    EXPECT_EQ(LightmapToWorld(info, 1, 0.5), (Vec3{16, 24, 24}));
    const LightmapPoint point = WorldToLightmap(info, {16, 24, 24});
    EXPECT_EQ(point.u, 1);
    EXPECT_EQ(point.v, 0.5);
}

TEST_F(DirectPassTest, SurfacesTooLargeToMapAreFatal) {
    OpenLevel level;
    const uint32_t floor = Floor(level, Square(0, 16 * 520));
    RoadState road;
    ExpectFatal([&] { road.Light(floor); }, "Surface to large to map");
}

TEST_F(DirectPassTest, SurfacesWithoutALightmapGetNothing) {
    OpenLevel level;
    Floor(level, Square(0, 16), Right, Down, TextureSky);
    Floor(level, Square(0, 16), Right, Down, TextureNoLightmap);
    Floor(level, Square(0, 16));
    Geometry().surfaces[2].texInfoId = -1;
    RoadState road;
    for (uint32_t i = 0; i < 3; i++) {
        BuildFaceLights({road.normals, road.lights, road.patches, road.faceLights}, i);
        EXPECT_EQ(road.faceLights[i], nullptr);
    }
}

TEST_F(DirectPassTest, PatchesGetTheMeanOfTheSamplesNearThem) {
    OpenLevel level;
    level.Light({8, 8, 50}, 100, {10, 10, 10});
    Options().radbounce = 1;
    const uint32_t floor = Floor(level, Square(0, 16));
    RoadState road;
    RayStructures rays;
    road.AddPatch(floor, {{0, 0, 0}, {0, 16, 0}, {16, 16, 0}, {16, 0, 0}}, {});
    road.AddPatch(floor, {{900, 0, 0}, {900, 16, 0}, {916, 16, 0}, {916, 0, 0}}, {});
    const FaceLight& face = road.Light(floor);
    ASSERT_EQ(face.fragments.size(), 1U);
    EXPECT_EQ(road.patches[0].samples, 1);
    EXPECT_EQ(road.patches[0].samplelight, face.samples[0][0]);
    EXPECT_EQ(road.patches[1].samples, 0);
    EXPECT_EQ(road.patches[1].samplelight, Vec3{});
}

}  // namespace
}  // namespace k2k::test
