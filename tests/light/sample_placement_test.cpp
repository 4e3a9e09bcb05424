// Where samples are placed, held against a plain form that asks the lights before the outline.
#include "light/sample_placement.h"

#include <random>

#include "light/light_face.h"
#include "light/near_equal.h"
#include "light/polygon_info.h"
#include "light/rays.h"
#include "test_level.h"

namespace k2k::test {
namespace {

constexpr Box Table{{-32, -24, 0}, {40, 48, 30}};

class SamplePlacement : public LightTest {
  protected:
    // A room with a table in it, some of whose floors have their middle inside the table.
    void MakeRoom(std::mt19937& random, uint32_t flags) {
        TestLevel level;
        level.RoomTree(SmallRoom, {Table, {{-100, -90, 20}, {-60, 100, 90}}});
        level.RoomFaces(SmallRoom, flags);
        level.BoxFaces(Table, flags);
        std::uniform_real_distribution<float> place(-120, 120), axis(-1.2F, 1.2F);
        const uint32_t floor = level.Plane({0, 0, 1}, 0);
        for (int i = 0; i < 6; i++) {
            // The last ones have samples closer together than one spot.
            const float scale = i < 4 ? 1.0F : 4000.0F;
            const int16_t texinfo = level.Texture(flags, {scale * axis(random), scale * axis(random), 0},
                                                  {scale * axis(random), scale * axis(random), 0}, place(random));
            const float reach = i < 4 ? 120.0F : 0.05F;
            level.Surface({{-reach, -reach / 2, 0}, {0, reach, 0}, {reach, reach / 3, 0}, {reach / 2, -reach, 0}},
                          floor, 0, texinfo);
        }
        for (int i = 0; i < 5; i++) {
            level.Light({place(random), place(random), 60 + place(random) / 3}, 40 + std::fabs(place(random)) * 2,
                        {50, 50, 50});
        }
        Options().sunrgb[0] = random() % 2 == 0 ? 10.0F : 0.0F;
        Options().jitter = static_cast<int32_t>(random() % 20);
        OpenLighting();
        SetDirectLights();
    }
};

class PlainPlacement {
  public:
    PlainPlacement(const CLightFace& face, bool phong) : face_(face) {
        const bool over = !Options().preview;
        const int32_t step = over ? CoarseStep / 2 : CoarseStep;
        const int32_t width = over ? 2 * face.size[0] : face.size[0];
        const int32_t height = over ? 2 * face.size[1] : face.size[1];
        for (int32_t t = 0; t < height; t++) {
            for (int32_t s = 0; s < width; s++) {
                LightSample sample;
                const int32_t jitter = over && phong ? Options().jitter : 0;
                sample.t = static_cast<float>(t * step + face.texMin[1] * 16 + (t % 2 == 1 ? jitter : -jitter));
                sample.s = static_cast<float>(s * step + face.texMin[0] * 16 + (s % 2 == 1 ? jitter : -jitter));
                for (size_t c = 0; c < 3; c++) {
                    const double x = static_cast<double>(face.texToWorld[0][c]) * sample.s + face.texOrigin[c];
                    const double y = static_cast<double>(face.texToWorld[1][c]) * sample.t;
                    sample.position[c] = static_cast<float>(x + y);
                }
                if (over) Decide(sample, phong);
                if (!over) sample.valid = 1;
                samples.push_back(sample);
            }
        }
    }

    std::vector<LightSample> samples;

  private:
    void Decide(LightSample& sample, bool phong) {
        Vec3& p = sample.position;
        if (phong) p = PointAlong(p, face_.normal, -(Dot(p, face_.normal) - face_.planeDist));
        if (NearlyEqual(p, lastPos_, 0.01)) {
            sample.valid = lastGood_;
            return;
        }
        lastPos_ = p;
        Vec3 hit;
        lastGood_ = !PointInSolid(face_.centre) && TraceShadow(face_.centre, p, hit, -1) >= 0;
        const bool inBounds = sample.s >= face_.exactMin[0] && sample.s <= face_.exactMax[0] &&
                              sample.t >= face_.exactMin[1] && sample.t <= face_.exactMax[1];
        if (!lastGood_ && inBounds) lastGood_ = IsLit(p) && PointInSurface(p, face_.surfaceIndex);
        sample.valid = lastGood_;
    }

    static bool IsLit(const Vec3& p) {
        return std::any_of(Lighting().ActiveLights.begin(), Lighting().ActiveLights.end(),
                           [&](const ActiveLight& active) {
                               const Vec3 origin = active.isSun ? Add(Lighting().SunVector, p) : active.light.origin;
                               Vec3 hit;
                               const float dist = TraceShadow(origin, p, hit, -1);
                               return dist >= 0 && dist < active.light.lightRange;
                           });
    }

    const CLightFace& face_;
    Vec3 lastPos_{-99999, -99999, -99999};
    bool lastGood_ = false;
};

TEST_F(SamplePlacement, EqualsThePlainFormWithFewerRays) {
    std::mt19937 random(5);
    int valid = 0, invalid = 0;
    int64_t rays = 0, plainRays = 0;
    for (int round = 0; round < 12; round++) {
        const bool phong = round % 2 != 0;
        Options().preview = round % 6 == 5;
        MakeRoom(random, phong ? TexturePhong : 0);
        const RayStructures structures;
        for (uint32_t surface = 0; surface < Geometry().surfaces.size(); surface++) {
            const auto face = MakeLightFace(surface);
            ASSERT_NE(face, nullptr);
            TakeRayCount();
            std::vector<LightSample> samples;
            CalcSamples(*face, samples, CoarseStep, phong);
            rays += TakeRayCount();
            const std::vector<LightSample> plain = PlainPlacement(*face, phong).samples;
            plainRays += TakeRayCount();
            ASSERT_EQ(samples.size(), plain.size());
            for (size_t i = 0; i < samples.size(); i++) {
                ASSERT_EQ(samples[i].position, plain[i].position) << round << " " << surface << " " << i;
                ASSERT_EQ(samples[i].s, plain[i].s);
                ASSERT_EQ(samples[i].t, plain[i].t);
                ASSERT_EQ(samples[i].valid, plain[i].valid) << round << " " << surface << " " << i;
                (samples[i].valid != 0 ? valid : invalid)++;
            }
        }
    }
    EXPECT_GT(valid, 5000);
    EXPECT_GT(invalid, 2000);
    EXPECT_LT(rays, plainRays);
}

TEST_F(SamplePlacement, SamplesInOneSpotShareOneRay) {
    TestLevel level;
    level.RoomTree(SmallRoom);
    const int16_t texinfo = level.Texture(0, {16000, 0, 0}, {0, 16000, 0});
    const std::vector<Vec3> ring{{0, 0, 0}, {0, 0.004F, 0}, {0.004F, 0.004F, 0}, {0.004F, 0, 0}};
    const auto face = MakeLightFace(level.Surface(ring, level.Plane({0, 0, 1}, 0), 0, texinfo));
    const RayStructures structures;
    std::vector<LightSample> samples;
    TakeRayCount();
    CalcSamples(*face, samples, CoarseStep, false);
    EXPECT_EQ(samples.size(), 100U);
    EXPECT_EQ(TakeRayCount(), 1);
    for (const LightSample& sample : samples) EXPECT_TRUE(sample.valid);
}

}  // namespace
}  // namespace k2k::test
