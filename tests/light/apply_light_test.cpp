// The light arithmetic, held against a plain form: every sample of every light one by one, the ray first.
#include <gtest/gtest.h>

#include <random>

#include "light/near_equal.h"
#include "surface_lighter.h"
#include "test_level.h"

namespace k2k::test {
namespace {

class ApplyLightTest : public LightTest {
  protected:
    // A room with obstacles and random lights.
    void MakeLevel(std::mt19937& random, uint32_t flags) {
        TestLevel level;
        const Box room{{-160, -160, 0}, {160, 160, 160}};
        level.RoomTree(room, {{{-40, -40, 0}, {0, 8, 60}}, {{50, -80, 30}, {90, 90, 45}}});
        level.RoomFaces(room, flags);
        level.BoxFaces({{-40, -40, 0}, {0, 8, 60}}, flags);
        std::uniform_real_distribution<float> place(-150, 150);
        for (int i = 0; i < 12; i++) {
            const auto range = static_cast<float>(30 + random() % 400);
            const Vec3 value{static_cast<float>(random() % 100), static_cast<float>(random() % 100),
                             static_cast<float>(random() % 3) - 1};
            level.Light({place(random), place(random), place(random) + 75}, range, value, random() % 4);
        }
        Options().sunrgb = {20, 30, static_cast<float>(random() % 10)};
        Options().az = static_cast<float>(random() % 360);
        Options().ambrgb = random() % 2 == 0 ? std::array<float, 3>{0, 0, 0} : std::array<float, 3>{4, 5, 6};
        Options().lmambient = static_cast<float>(random() % 101);
        OpenDirectRoad();
    }
};

// The samples' light after all lights.
struct PlainResult {
    std::vector<Vec3> colours;
    uint32_t lit = 0;
    uint8_t shadowed = 0;
};

class PlainLights {
  public:
    PlainLights(const CLightFace& face, bool phong, const std::vector<Vec3>& positions)
        : face_(face), phong_(phong), positions_(positions), normals_(smooth_, PlaneFlips::Apply) {
        result.colours.resize(positions.size());
        for (const ActiveLight& active : Lighting().ActiveLights) Apply(active);
    }

    PlainResult result;

  private:
    bool Reaches(const ActiveLight& active) const {
        if (active.isSun) {
            if (phong_) return true;
            Vec3 origin = Lighting().SunVector;
            Normalize(origin);
            return Dot(origin, face_.normal) > 0;
        }
        const double d = Dot(active.light.origin, face_.normal) - face_.planeDist;
        if (phong_) return d <= active.light.lightRange * 1.5;
        return d > 0 && d <= active.light.lightRange;
    }

    bool Light(const ActiveLight& active, const Vec3& normal, const Vec3& end, Vec3& value) const {
        const LightRecord& light = active.light;
        const Vec3 origin = active.isSun ? Add(Lighting().SunVector, end) : light.origin;
        Vec3 hit;
        const float dist = TraceShadow(origin, end, hit, -1);
        if (dist < 0) return false;
        if (dist >= light.lightRange) return false;
        Vec3 dir = Sub(origin, end);
        Normalize(dir);
        double angle = Dot(dir, normal);
        if (angle < (phong_ ? -0.5 : 0.0)) return false;
        const double lm = Options().lmambient;
        angle = angle * (2 - lm) + lm;
        for (size_t c = 0; c < 3; c++) {
            value[c] = static_cast<float>((static_cast<double>(light.lightRange) - dist) * angle * light.lightColor[c]);
        }
        return true;
    }

    static double Total(const Vec3& v) { return static_cast<double>(v[0]) + v[1] + v[2]; }

    void Apply(const ActiveLight& active) {
        if (!Reaches(active)) return;
        if (result.lit == 0) result.colours.assign(result.colours.size(), Vec3{});
        Vec3 lastPos{-99999, -99999, -99999};
        Vec3 lastValue = lastPos;
        bool strong = false;
        for (size_t i = 0; i < positions_.size(); i++) {
            const Vec3& p = positions_[i];
            Vec3 normal = face_.normal, end = p;
            if (phong_) normals_.PhongNormal(face_.surfaceIndex, p, normal, end, 0);
            if (!NearlyEqual(lastPos, p, 0.01)) {
                lastPos = p;
                lastValue = {};
                if (!Light(active, normal, end, lastValue)) continue;
            }
            if (Total(lastValue) <= 0) continue;
            Vec3& colour = result.colours[i];
            for (size_t c = 0; c < 3; c++) colour[c] += lastValue[c];
            if (Total(colour) > 1) strong = true;
        }
        if (strong && (active.light.flags & 1) != 0) result.shadowed = 1;
        if (strong || Lighting().AmbientLevel != 0) result.lit = 1;
    }

    const CLightFace& face_;
    const bool phong_;
    const std::vector<Vec3>& positions_;
    const CPhongTable smooth_;
    CSmoothNormals normals_;
};

TEST_F(ApplyLightTest, EqualsThePlainFormOnFlatAndSmoothFaces) {
    std::mt19937 random(77);
    int lit = 0, shadowed = 0;
    for (int round = 0; round < 24; round++) {
        const uint32_t flags = round % 2 == 0 ? 0 : TexturePhong;
        MakeLevel(random, flags);
        Options().preview = round % 5 == 0;
        SurfaceLighter lighter(round % 4 < 2 ? PlaneFlips::Refuse : PlaneFlips::Apply);
        FaceScratch& scratch = lighter.scratch;
        for (uint32_t surface = 0; surface < Geometry().surfaces.size(); surface++) {
            const auto face = lighter.Sampled(surface);
            // Some samples stand in one spot, and some where nothing counts.
            std::vector<Vec3> positions = scratch.samples.positions;
            for (size_t i = 1; i < positions.size(); i++) {
                if (random() % 4 == 0) positions[i] = PointAlong(positions[i - 1], {0.004F, 0, 0}, 1);
            }
            positions[0] = {-99999, -99999, -99999};
            scratch.samples.SetPositions(positions);
            for (const ActiveLight& active : Lighting().ActiveLights) face->ApplyLight(active, scratch);
            const PlainResult plain = PlainLights(*face, flags != 0, positions).result;
            ASSERT_EQ(scratch.samples.colours, plain.colours) << round << " " << surface;
            ASSERT_EQ(face->lit, plain.lit);
            ASSERT_EQ(face->shadowed, plain.shadowed);
            lit += face->lit != 0 ? 1 : 0;
            shadowed += face->shadowed;
        }
    }
    EXPECT_GT(lit, 100);
    EXPECT_GT(shadowed, 30);
}

TEST_F(ApplyLightTest, TheSunBehindAFlatFaceCostsNoRay) {
    TestLevel level;
    level.RoomTree(SmallRoom);
    const uint32_t floor = level.Quad(2, 0, true, SmallRoom.mins, SmallRoom.maxs);
    const uint32_t ceiling = level.Quad(2, 128, false, SmallRoom.mins, SmallRoom.maxs);
    const uint32_t smoothCeiling = level.Quad(2, 128, false, SmallRoom.mins, SmallRoom.maxs, TexturePhong);
    Options().sunrgb = {100, 100, 100};
    Options().el = 80;
    OpenDirectRoad();
    SurfaceLighter lighter;
    const auto raysFor = [&](uint32_t surface) {
        const auto face = lighter.Sampled(surface);
        TakeRayCount();
        face->ApplyLight(Lighting().ActiveLights[0], lighter.scratch);
        return TakeRayCount();
    };
    EXPECT_GT(raysFor(floor), 1000);
    EXPECT_EQ(raysFor(ceiling), 0);
    // A smooth face is not passed over, but its samples reject the sun by their angle, before the ray.
    EXPECT_EQ(raysFor(smoothCeiling), 0);
}

TEST_F(ApplyLightTest, LightWrapsSixtyDegreesPastASmoothHorizon) {
    for (const uint32_t flags : {0U, TexturePhong}) {
        TestLevel level;
        level.RoomTree(SmallRoom);
        const uint32_t floor = level.Quad(2, 64, true, {-32, -32, 64}, {32, 32, 64}, flags);
        level.Light({100, 0, 40}, 300, {50, 50, 50});
        OpenDirectRoad();
        Options().lmambient = 1;
        SurfaceLighter lighter;
        const auto face = lighter.Sampled(floor);
        face->ApplyLight(Lighting().ActiveLights[0], lighter.scratch);
        EXPECT_EQ(face->lit, flags == 0 ? 0U : 1U);
    }
}

TEST_F(ApplyLightTest, RaysAreCastOnlyForWhatCouldBeLit) {
    TestLevel level;
    level.RoomTree(SmallRoom);
    const uint32_t floor = level.Quad(2, 0, true, SmallRoom.mins, SmallRoom.maxs);
    level.Light({0, 0, 20}, 30, {50, 50, 50});
    level.Light({0, 0, 20}, 300, {0, 0, 0});
    OpenDirectRoad();
    SurfaceLighter lighter;
    const auto face = lighter.Sampled(floor);
    int64_t inRange = 0;
    for (const Vec3& p : lighter.scratch.samples.positions) inRange += Distance(p, {0, 0, 20}) < 30 ? 1 : 0;
    TakeRayCount();
    for (const ActiveLight& active : Lighting().ActiveLights) face->ApplyLight(active, lighter.scratch);
    EXPECT_EQ(TakeRayCount(), inRange);
}

TEST_F(ApplyLightTest, SmoothNormalsAreFoundOnceForAllLights) {
    TestLevel level;
    level.RoomTree(SmallRoom);
    const uint32_t floor = level.Quad(2, 0, true, {-32, -32, 0}, {32, 32, 0}, TexturePhong);
    level.Light({0, 0, 100}, 300, {50, 50, 50});
    OpenDirectRoad();
    SurfaceLighter lighter;
    FaceScratch& scratch = lighter.scratch;
    const auto face = lighter.Sampled(floor);
    face->ApplyLight(Lighting().ActiveLights[0], scratch);
    ASSERT_EQ(scratch.samples.smoothSpots.size(), scratch.samples.positions.size());
    // The next light takes what is kept: turned away, nothing is lit any more.
    for (LightSpot& spot : scratch.samples.smoothSpots) spot.normal = {0, 0, -1};
    const std::vector<Vec3> before = scratch.samples.colours;
    face->ApplyLight(Lighting().ActiveLights[0], scratch);
    EXPECT_EQ(scratch.samples.colours, before);
    // A new sample set has normals of its own.
    face->BuildSamples(CoarseStep, scratch);
    face->ApplyLight(Lighting().ActiveLights[0], scratch);
    EXPECT_EQ(scratch.samples.colours, before);
}

}  // namespace
}  // namespace k2k::test
