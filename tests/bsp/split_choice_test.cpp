#include "bsp/split_choice.h"

#include <gtest/gtest.h>

#include <random>

#include "bsp/test_blocks.h"

namespace k2k {
namespace {

using test::ListOf;
using test::Square;
using test::SurfaceOf;

class SplitChoice : public test::TreeTest {
  protected:
    SplitChoice() {
        plain_ = test::AddTexture(TextureNoLightmap);
        detail_ = test::AddTexture(TextureNoLightmap | TextureDetail);
    }

    std::unique_ptr<CBlockFace> Face(const Vec3& normal, const Vec3& middle, float half = 8) const {
        return Square(normal, middle, half, plain_);
    }
    std::unique_ptr<CBlockFace> DetailFace(const Vec3& normal, const Vec3& middle) const {
        return Square(normal, middle, 8, detail_);
    }

    int32_t plain_ = 0, detail_ = 0;
};

TEST_F(SplitChoice, NoCandidateGivesNone) {
    SurfaceList list = ListOf(SurfaceOf(Face({1, 0, 0}, {0, 0, 0})), SurfaceOf(DetailFace({0, 1, 0}, {0, 0, 0})));
    list.front()->onNode = true;
    EXPECT_EQ(SelectPartition(list, true), nullptr);
    EXPECT_EQ(SelectPartition(list, false), nullptr);
}

TEST_F(SplitChoice, OneCandidateIsTakenAtOnce) {
    SurfaceList list = ListOf(SurfaceOf(DetailFace({0, 1, 0}, {0, 0, 0})), SurfaceOf(Face({0.6F, 0.8F, 0}, {0, 0, 0})),
                              SurfaceOf(DetailFace({0, 0, 1}, {0, 0, 0})));
    CSplitSurface* oblique = list.front()->next;
    EXPECT_EQ(SelectPartition(list, true), oblique);
    EXPECT_EQ(SelectPartition(list, false), oblique);
}

TEST_F(SplitChoice, ADetailSurfaceCanWinOnceTwoCandidatesExist) {
    SurfaceList list = ListOf(SurfaceOf(Face({1, 0, 0}, {-100, 0, 0})), SurfaceOf(Face({1, 0, 0}, {100, 0, 0})),
                              SurfaceOf(DetailFace({1, 0, 0}, {0, 0, 0})));
    EXPECT_EQ(SelectPartition(list, true), list.front()->next->next);
}

TEST_F(SplitChoice, TheBoxTakesInSurfacesThatAreNodesAlready) {
    SurfaceList list = ListOf(SurfaceOf(Face({1, 0, 0}, {-100, 0, 0})), SurfaceOf(Face({1, 0, 0}, {0, 0, 0})),
                              SurfaceOf(Face({1, 0, 0}, {100, 0, 0})), SurfaceOf(Face({1, 0, 0}, {900, 0, 0})));
    CSplitSurface* third = list.front()->next->next;
    third->next->onNode = true;
    EXPECT_EQ(SelectPartition(list, true), third);
}

TEST_F(SplitChoice, EqualCostsGoToTheLaterSurfaceUnderMidSplit) {
    SurfaceList list = ListOf(SurfaceOf(Face({1, 0, 0}, {-10, 0, 0})), SurfaceOf(Face({1, 0, 0}, {10, 0, 0})));
    EXPECT_EQ(ChooseMidPlane(list, {-50, -50, -50}, {50, 50, 50}), list.front()->next);
}

TEST_F(SplitChoice, OnlyObliqueSurfacesGiveTheFirstFreeOneUnderMidSplit) {
    SurfaceList list = ListOf(SurfaceOf(Face({0.6F, 0.8F, 0}, {5, 0, 0})), SurfaceOf(Face({0.8F, 0.6F, 0}, {0, 0, 0})),
                              SurfaceOf(Face({0, 0.6F, 0.8F}, {0, 0, 0})));
    list.front()->onNode = true;
    EXPECT_EQ(ChooseMidPlane(list, {-50, -50, -50}, {50, 50, 50}), list.front()->next);
}

TEST_F(SplitChoice, NoFreeSurfaceIsFatalUnderMidSplit) {
    SurfaceList list = ListOf(SurfaceOf(Face({1, 0, 0}, {0, 0, 0})));
    list.front()->onNode = true;
    test::ExpectFatal([&] { ChooseMidPlane(list, {}, {}); }, "E061");
}

TEST_F(SplitChoice, CostIsTheSumOfSquaresOfTheChildBoxes) {
    const CPlane plane{{1, 0, 0}, 10, 0};
    // 90^2 + 30^2 along the axis, twice 40^2 and twice 60^2 across.
    EXPECT_EQ(SplitterCost(plane, {-20, 0, 0}, {100, 40, 60}), 8100.0F + 900.0F + 3200.0F + 7200.0F);
}

TEST_F(SplitChoice, CostIsNarrowedAfterEachAddition) {
    const CPlane plane{{0, 0, 1}, 0.25F, 2};
    const Vec3 mins{-4096.1F, 0, -0.3F};
    const Vec3 maxs{4096.7F, 0.7F, 9.1F};
    float sum = 0;
    const auto add = [&](double term) { sum = static_cast<float>(sum + term); };
    const double x = static_cast<double>(maxs[0]) - mins[0];
    const double y = static_cast<double>(maxs[1]) - mins[1];
    add(x * 2.0 * x);
    add(y * 2.0 * y);
    add((maxs[2] - 0.25) * (maxs[2] - 0.25));
    add((0.25 - mins[2]) * (0.25 - mins[2]));
    EXPECT_EQ(SplitterCost(plane, mins, maxs), sum);
}

TEST_F(SplitChoice, FewestSplitsWin) {
    // The plane x = 0 cuts the long face; the plane z = 5 cuts nothing.
    SurfaceList list = ListOf(SurfaceOf(Face({1, 0, 0}, {0, 0, 0})), SurfaceOf(Face({0, 0, 1}, {0, 0, 50}, 40)));
    EXPECT_EQ(ChooseSplitPlane(list, {-50, -50, -50}, {50, 50, 50}, true), list.front()->next);
}

TEST_F(SplitChoice, AnObliquePlaneNeedsFewerSplitsToWin) {
    SurfaceList list =
        ListOf(SurfaceOf(Face({1, 0, 0}, {-20, 0, 0}, 2)), SurfaceOf(Face({0.6F, 0.8F, 0}, {50, 0, 0}, 2)));
    EXPECT_EQ(ChooseSplitPlane(list, {-50, -50, -50}, {50, 50, 50}, true), list.front());
    list.reverse();
    // The oblique one comes first and wins; the axial one has equal splits and a cost below the start value.
    EXPECT_EQ(ChooseSplitPlane(list, {-50, -50, -50}, {50, 50, 50}, true), list.front()->next);
}

TEST_F(SplitChoice, EqualSplitsGoToTheBetterBalance) {
    SurfaceList list = ListOf(SurfaceOf(Face({1, 0, 0}, {-40, 0, 0}, 2)), SurfaceOf(Face({1, 0, 0}, {3, 0, 0}, 2)),
                              SurfaceOf(Face({1, 0, 0}, {30, 0, 0}, 2)));
    EXPECT_EQ(ChooseSplitPlane(list, {-50, -50, -50}, {50, 50, 50}, true), list.front()->next);
}

TEST_F(SplitChoice, FloorsArePassedOverWhenNotAllowed) {
    SurfaceList list = ListOf(SurfaceOf(Face({0, 0, 1}, {0, 0, 0}, 2)));
    EXPECT_EQ(ChooseSplitPlane(list, {-50, -50, -50}, {50, 50, 50}, true), list.front());
    EXPECT_EQ(ChooseSplitPlane(list, {-50, -50, -50}, {50, 50, 50}, false), nullptr);
}

// The choice as it is told: every face is counted, and counts are cut short as soon as they cannot beat the best.
CSplitSurface* PlainChoice(const SurfaceList& surfaces, const Vec3& mins, const Vec3& maxs) {
    float bestSplits = 9999999.0F;
    float bestCost = 9e30F;
    CSplitSurface* best = nullptr;
    for (CSplitSurface& p : surfaces) {
        if (p.onNode) continue;
        const CPlane& plane = TablePlane(p.planenum);
        int splits = 0;
        for (const CSplitSurface& other : surfaces) {
            if (&other == &p || other.onNode) continue;
            for (const CBlockFace& face : other.faces) {
                if (FaceSide(face, plane) == 2) {
                    ++splits;
                    if (static_cast<float>(splits) >= bestSplits) break;
                }
            }
            if (static_cast<float>(splits) > bestSplits) break;
        }
        const auto count = static_cast<float>(splits);
        if (count > bestSplits) continue;
        if (plane.type >= 3) {
            if (count == bestSplits) continue;
            bestSplits = count;
            best = &p;
            continue;
        }
        const float cost = SplitterCost(plane, mins, maxs);
        if (cost > bestCost && count == bestSplits) continue;
        bestCost = cost;
        bestSplits = count;
        best = &p;
    }
    return best;
}

class RandomSurfaces {
  public:
    explicit RandomSurfaces(uint32_t seed) : random_(seed) {}

    int Whole(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random_); }

    // Whole coordinates, so that many faces touch planes and many counts are equal.
    std::unique_ptr<CBlockFace> Face(int32_t texinfo) {
        static const std::array<Vec3, 8> normals{{{1, 0, 0},
                                                  {0, 1, 0},
                                                  {0, 0, 1},
                                                  {0, -1, 0},
                                                  {0.6F, 0.8F, 0},
                                                  {0, -0.6F, 0.8F},
                                                  {0.8F, 0, -0.6F},
                                                  {0.57735F, 0.57735F, 0.57735F}}};
        const Vec3 middle{Coordinate(), Coordinate(), Coordinate()};
        return Square(normals[static_cast<size_t>(Whole(0, 7))], middle, static_cast<float>(8 * Whole(1, 4)), texinfo);
    }

  private:
    float Coordinate() { return static_cast<float>(16 * Whole(-6, 6)); }
    std::mt19937 random_;
};

TEST_F(SplitChoice, CountsBehindBoundsGiveThePlainChoice) {
    for (uint32_t seed = 0; seed < 300; ++seed) {
        RandomSurfaces random(seed);
        SurfaceList list;
        const int count = random.Whole(1, 24);
        for (int i = 0; i < count; ++i) {
            auto surface = SurfaceOf(random.Face(plain_));
            const CPlane plane = TablePlane(surface->planenum);
            // More faces on the same plane; and now and then bounds that are wider than the faces.
            for (int more = random.Whole(0, 5); more > 0; --more) {
                const auto shift = static_cast<float>(16 * random.Whole(-4, 4));
                auto face = surface->faces.front()->Clone();
                const size_t along = std::abs(plane.normal[0]) < 0.1F ? 0 : std::abs(plane.normal[1]) < 0.1F ? 1 : 2;
                for (Vec3& point : face->points) point[along] += shift;
                surface->faces.push_front(std::move(face));
            }
            CalcSurfaceInfo(*surface);
            if (random.Whole(0, 3) == 0) surface->maxs[1] += 100;
            surface->onNode = random.Whole(0, 7) == 0;
            list.push_front(std::move(surface));
        }
        const Vec3 mins{-200, -200, -200};
        const Vec3 maxs{200, 200, 200};
        ASSERT_EQ(ChooseSplitPlane(list, mins, maxs, true), PlainChoice(list, mins, maxs)) << "seed " << seed;
    }
}

}  // namespace
}  // namespace k2k
