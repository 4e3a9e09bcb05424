#include "light/sample_repair.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <random>

#include "light/near_equal.h"
#include "light/rays.h"
#include "test_level.h"

namespace k2k::test {
namespace {

using SampleRepair = LightTest;

// The repair with a grid that is filled anew for every search.
class PlainRepair {
  public:
    PlainRepair(std::vector<LightSample>& samples, int width, int height, const Vec3& centre)
        : samples_(samples), width_(width), height_(height), centre_(centre) {
        Vec3 lastBad = NoPosition;
        LightSample replacement;
        for (int i = 0; i < width * height; i++) {
            LightSample& sample = samples_[static_cast<size_t>(i)];
            if (sample.valid != 0) continue;
            if (NearlyEqual(lastBad, sample.position, 0.01)) {
                sample = replacement;
                sample.valid = 1;
                continue;
            }
            lastBad = sample.position;
            replacement = sample;
            const int found = Search(i % width, i / width);
            if (found < 0) continue;
            Vec3 hit;
            const LightSample& good = samples_[static_cast<size_t>(found)];
            if (TraceShadow(good.position, sample.position, hit, -1) != RayBlocked) continue;
            sample = good;
            sample.valid = 1;
            replacement = sample;
        }
    }

  private:
    struct Near {
        int x, y;
        double distance;
    };

    int Search(int x, int y) {
        std::vector<int> states;
        for (const LightSample& sample : samples_) states.push_back(sample.valid != 0 ? 2 : 0);
        std::deque<std::pair<int, int>> queue{{x, y}};
        while (!queue.empty()) {
            const auto [cx, cy] = queue.front();
            queue.pop_front();
            std::vector<Near> near;
            for (int dy = -1; dy <= 1; dy++) {
                for (int dx = -1; dx <= 1; dx++) {
                    if (dx == 0 && dy == 0) continue;
                    const int px = std::clamp(cx + dx, 0, width_ - 1), py = std::clamp(cy + dy, 0, height_ - 1);
                    const Vec3 away = Sub(samples_[static_cast<size_t>(py * width_ + px)].position, centre_);
                    near.push_back({cx + dx, cy + dy, std::sqrt(Dot(away, away))});
                }
            }
            std::stable_sort(near.begin(), near.end(),
                             [](const Near& a, const Near& b) { return a.distance < b.distance; });
            for (const Near& n : near) {
                if (n.x < 0 || n.y < 0 || n.x >= width_ || n.y >= height_) continue;
                int& state = states[static_cast<size_t>(n.y * width_ + n.x)];
                if (state == 2) return n.y * width_ + n.x;
                if (state != 0) continue;
                state = 1;
                queue.emplace_back(n.x, n.y);
            }
        }
        return -1;
    }

    std::vector<LightSample>& samples_;
    int width_, height_;
    Vec3 centre_;
};

std::vector<LightSample> Grid(int width, int height) {
    std::vector<LightSample> samples;
    for (int y = 0; y < height; y++) {
        for (int x = 0; x < width; x++) {
            LightSample sample;
            sample.position = {static_cast<float>(x * 8) - 100, static_cast<float>(y * 8) - 100, 1};
            sample.s = static_cast<float>(x);
            sample.t = static_cast<float>(y);
            sample.valid = 1;
            samples.push_back(sample);
        }
    }
    return samples;
}

bool Same(const std::vector<LightSample>& a, const std::vector<LightSample>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const LightSample& p, const LightSample& q) {
        return p.position == q.position && p.s == q.s && p.t == q.t && p.valid == q.valid;
    });
}

TEST_F(SampleRepair, ABlockedSampleTakesTheGoodOneNearestToTheCentreWhole) {
    TestLevel().RoomTree(SmallRoom, {{{0, -200, 0}, {8, 200, 200}}});
    const RayStructures rays;
    auto samples = Grid(20, 20);
    LightSample& bad = samples[20 * 10 + 13];  // x = 4, in the wall
    bad.valid = 0;
    RepairSamples(samples, 20, 20, {-50, -20, 1});
    EXPECT_EQ(bad.s, 12);
    EXPECT_EQ(bad.t, 10);
    EXPECT_TRUE(bad.valid);
}

TEST_F(SampleRepair, ASampleThatTheGoodOneSeesStaysAsItIs) {
    TestLevel().RoomTree(SmallRoom);
    const RayStructures rays;
    auto samples = Grid(20, 20);
    samples[25].valid = 0;
    RepairSamples(samples, 20, 20, {0, 0, 1});
    EXPECT_EQ(samples[25].s, 5);
    EXPECT_FALSE(samples[25].valid);
}

TEST_F(SampleRepair, PreviewSearchesNothing) {
    Options().preview = true;
    auto samples = Grid(3, 3);
    samples[4].valid = 0;
    RepairSamples(samples, 3, 3, {0, 0, 1});
    EXPECT_EQ(samples[4].s, 1);
    EXPECT_TRUE(samples[4].valid);
}

TEST_F(SampleRepair, WithoutAnyGoodSampleNothingMoves) {
    TestLevel().RoomTree(SmallRoom);
    const RayStructures rays;
    auto samples = Grid(4, 4);
    for (LightSample& sample : samples) sample.valid = 0;
    const auto before = samples;
    RepairSamples(samples, 4, 4, {0, 0, 1});
    EXPECT_TRUE(Same(samples, before));
}

TEST_F(SampleRepair, SamplesInOneSpotShareTheAnswer) {
    TestLevel().RoomTree(SmallRoom, {{{0, -200, 0}, {8, 200, 200}}});
    const RayStructures rays;
    auto samples = Grid(20, 1);
    samples[13].valid = samples[14].valid = 0;
    samples[14].position = samples[13].position;
    TakeRayCount();
    RepairSamples(samples, 20, 1, {-50, -20, 1});
    EXPECT_EQ(TakeRayCount(), 1);
    EXPECT_EQ(samples[14].s, 12);
}

TEST_F(SampleRepair, EqualsThePlainSearchOnRandomGrids) {
    std::mt19937 random(21);
    std::uniform_real_distribution<float> somewhere(-120, 120);
    TestLevel().RoomTree(SmallRoom, {{{-20, -200, 0}, {-12, 50, 200}}, {{20, -30, 0}, {60, 30, 40}}});
    const RayStructures rays;
    for (int round = 0; round < 200; round++) {
        const int width = 1 + static_cast<int>(random() % 24), height = 1 + static_cast<int>(random() % 24);
        auto samples = Grid(width, height);
        const unsigned badPercent = static_cast<unsigned>(random() % 101);
        for (size_t i = 0; i < samples.size(); i++) {
            if (random() % 100 < badPercent) samples[i].valid = 0;
            if (i > 0 && random() % 4 == 0) samples[i].position = samples[i - 1].position;
            if (random() % 9 == 0) samples[i].position[2] = 100;
        }
        auto plain = samples;
        const Vec3 centre{somewhere(random), somewhere(random), 1};
        RepairSamples(samples, width, height, centre);
        PlainRepair(plain, width, height, centre);
        ASSERT_TRUE(Same(samples, plain)) << round;
    }
}

}  // namespace
}  // namespace k2k::test
