#include <algorithm>

#include "solid/concave_block.h"
#include "solid_support.h"

namespace k2k {
namespace {

std::vector<Point2D> Numbered(std::initializer_list<std::array<float, 2>> points) {
    std::vector<Point2D> out;
    for (const auto& [x, y] : points) out.push_back({x, y, static_cast<int32_t>(out.size())});
    return out;
}

std::vector<int32_t> HullOf(const std::vector<Point2D>& points, int32_t bins) {
    std::vector<int32_t> indices;
    for (const Point2D& point : NearHull2D(points, bins)) indices.push_back(point.index);
    return indices;
}

TEST(NearHull2D, GoesRoundASquareFromTheLowerLeft) {
    EXPECT_EQ(HullOf(Numbered({{0, 0}, {8, 0}, {8, 8}, {0, 8}}), 4), (std::vector<int32_t>{0, 1, 2, 3}));
}

TEST(NearHull2D, LeavesOutPointsInside) {
    EXPECT_EQ(HullOf(Numbered({{0, 0}, {4, 4}, {8, 0}, {8, 8}, {0, 8}, {3, 5}}), 6),
              (std::vector<int32_t>{0, 2, 3, 4}));
}

TEST(NearHull2D, LeavesOutPointsOnStraightRuns) {
    EXPECT_EQ(HullOf(Numbered({{0, 0}, {4, 0}, {8, 0}, {8, 8}, {0, 8}}), 5), (std::vector<int32_t>{0, 2, 3, 4}));
}

TEST(NearHull2D, KeepsASinglePointAtTheEndsOnce) {
    EXPECT_EQ(HullOf(Numbered({{0, 4}, {4, 0}, {8, 4}, {4, 8}}), 4), (std::vector<int32_t>{0, 1, 2, 3}));
}

TEST(NearHull2D, GivesTheEndsOfAnUprightLineUncleaned) {
    EXPECT_EQ(HullOf(Numbered({{2, 5}, {2, 1}, {2, 9}}), 3), (std::vector<int32_t>{1, 2}));
    EXPECT_EQ(HullOf(Numbered({{2, 5}, {2, 5}}), 2), (std::vector<int32_t>{0}));
}

TEST(NearHull2D, ComparesTheCoordinateWithTheNumberInTheBin) {
    // Points 2 and 3 share the only bin, below the line from 0 to 1. Point 3 takes it when its x is below 2, the number
    // of the point there, however low either of them lies.
    EXPECT_EQ(HullOf(Numbered({{0, 0}, {8, 0}, {5, -1}, {4, -6}}), 1), (std::vector<int32_t>{0, 2, 1}));
    EXPECT_EQ(HullOf(Numbered({{0, 0}, {8, 0}, {1, -6}, {1.5F, -1}}), 1), (std::vector<int32_t>{0, 3, 1}));
}

TEST(NearHull2D, ComparesTheUpperSlotWithTheLowerSlotsNumber) {
    // The bin has no low point, whose number is then -1: only an x below that takes the slot over.
    EXPECT_EQ(HullOf(Numbered({{0, 0}, {8, 0}, {5, 1}, {4, 6}}), 1), (std::vector<int32_t>{0, 1, 2}));
    EXPECT_EQ(HullOf(Numbered({{0, 0}, {8, 0}, {1.5F, 1}, {1, 6}}), 1), (std::vector<int32_t>{0, 1, 2}));
    EXPECT_EQ(HullOf(Numbered({{-9, 0}, {-1, 0}, {-5, 1}, {-4, 6}}), 1), (std::vector<int32_t>{0, 1, 3}));
}

TEST(NearHull2D, MarksOnlyEverySecondPointOfARun) {
    // The corner at 2 is so flat that it goes; 3 is then judged with its own neighbours.
    EXPECT_EQ(HullOf(Numbered({{0, 0}, {8, 0}, {8.001F, 1}, {8, 8}, {0, 8}}), 5), (std::vector<int32_t>{0, 1, 3, 4}));
}

TEST(NearHull2D, ACornerOfAHundredthStays) {
    EXPECT_EQ(HullOf(Numbered({{0, 0}, {8, 0}, {8.0013F, 1}, {8, 8}, {0, 8}}), 5),
              (std::vector<int32_t>{0, 1, 2, 3, 4}));
    EXPECT_EQ(HullOf(Numbered({{0, 0}, {8, 0}, {8.0012F, 1}, {8, 8}, {0, 8}}), 5), (std::vector<int32_t>{0, 1, 3, 4}));
}

TEST(NearHull2D, MeasuresSidesInDouble) {
    // In 32 bits point 2 would seem to lie on the line between its neighbours.
    EXPECT_EQ(
        HullOf(Numbered({{728, 3933.5F}, {-5194.375F, -3812.375F}, {-4963.375F, -3510.25F}, {4063.25F, 3245.75F}}), 4),
        (std::vector<int32_t>{1, 3, 0, 2}));
}

TEST(NearHull2D, MeasuresStripsInDouble) {
    // Point 2 stands just before the fourth fifth of the way; in 32 bits it would be in the strip of point 3.
    EXPECT_EQ(HullOf(Numbered({{0, 0}, {2273.875F, 0}, {1819.09998F, -42}, {2244.3147F, -30}, {1136.9375F, 40}}), 5),
              (std::vector<int32_t>{0, 2, 3, 1, 4}));
}

TEST(NearHull2D, MeasuresStraightCornersInDouble) {
    // Twice the area of the corner at point 2 is 0.94; in 32 bits it vanishes.
    EXPECT_EQ(
        HullOf(Numbered({{4146.625F, 7158.625F}, {6884.75F, -4043.875F}, {4896.875F, 4089.125F}, {-3353.25F, -1723}}),
               4),
        (std::vector<int32_t>{3, 1, 2, 0}));
}

TEST(NearHull2D, StandsNoPointsAndHugeCoordinates) {
    EXPECT_TRUE(NearHull2D({}, 4).empty());
    EXPECT_TRUE(NearHull2D(Numbered({{0, 0}, {1, 1}}), -3).empty());
    NearHull2D(Numbered({{-3e38F, 0}, {3e38F, 1}, {0, -3e38F}, {1, 3e38F}}), 4);
    NearHull2D(Numbered({{NAN, 0}, {1, 1}, {2, NAN}}), 3);
}

TEST(NearHull2D, KeepsToTheHullOfRandomPoints) {
    test::Random random(11);
    for (int round = 0; round < 500; ++round) {
        std::vector<Point2D> points;
        const int count = random.Whole(3, 30);
        for (int i = 0; i < count; ++i) {
            points.push_back({static_cast<float>(random.Whole(-40, 40)), static_cast<float>(random.Whole(-40, 40)), i});
        }
        const std::vector<Point2D> hull = NearHull2D(points, count);
        for (const Point2D& point : hull) {
            const Point2D& original = points[static_cast<size_t>(point.index)];
            EXPECT_EQ(point.x, original.x);
            EXPECT_EQ(point.y, original.y);
        }
        EXPECT_LE(hull.size(), points.size());
    }
}

TEST(ProjectTo2D, DropsTheAxisThePlaneFaces) {
    const auto floor = ProjectTo2D({{0, 0, 5}, {0, 8, 5}, {9, 8, 5}});
    ASSERT_TRUE(floor);
    EXPECT_EQ((*floor)[2].x, 9.0F);
    EXPECT_EQ((*floor)[2].y, 8.0F);
    EXPECT_EQ((*floor)[2].index, 2);
    const auto wallX = ProjectTo2D({{5, 0, 1}, {5, 8, 2}, {5, 8, 9}});
    ASSERT_TRUE(wallX);
    EXPECT_EQ((*wallX)[1].x, 8.0F);
    EXPECT_EQ((*wallX)[1].y, 2.0F);
    const auto wallY = ProjectTo2D({{0, 5, 1}, {8, 5, 2}, {8, 5, 9}});
    ASSERT_TRUE(wallY);
    EXPECT_EQ((*wallY)[1].x, 8.0F);
    EXPECT_EQ((*wallY)[1].y, 2.0F);
}

TEST(ProjectTo2D, FailsOnALine) {
    EXPECT_FALSE(ProjectTo2D({{0, 0, 0}, {4, 4, 0}, {8, 8, 0}}));
    EXPECT_FALSE(ProjectTo2D({{0, 0, 0}, {100, 0, 0}, {50, 1, 0}})) << "directions with a dot product above 0.99";
    EXPECT_FALSE(ProjectTo2D({{0, 0, 0}, {0.1F, 0, 0}, {0, 0.1F, 0}})) << "differences too short";
    EXPECT_FALSE(ProjectTo2D({{0, 0, 0}, {0.315F, 0, 0}, {0, 0.315F, 0}})) << "one difference of 0.1 squared";
    EXPECT_TRUE(ProjectTo2D({{0, 0, 0}, {0.317F, 0, 0}, {0, 0.317F, 0}}));
    EXPECT_FALSE(ProjectTo2D({{0, 0, 0}, {100, 0, 0}, {50, 7.1F, 0}})) << "a dot product of 0.9901";
    EXPECT_TRUE(ProjectTo2D({{0, 0, 0}, {100, 0, 0}, {50, 7.15F, 0}}));
    EXPECT_FALSE(ProjectTo2D({}));
}

TEST(ProjectTo2D, FailsOnPointsOutOfPlane) {
    EXPECT_TRUE(ProjectTo2D({{0, 0, 0}, {0, 8, 0}, {8, 0, 0}, {8, 8, 0.19F}}));
    EXPECT_FALSE(ProjectTo2D({{0, 0, 0}, {0, 8, 0}, {8, 0, 0}, {8, 8, 0.21F}}));
}

TEST(ProjectTo2D, MeasuresWithTheCrossProductAsItIs) {
    // The first two directions meet at 45 degrees, so their cross product is shorter, and more is let through.
    EXPECT_TRUE(ProjectTo2D({{0, 0, 0}, {0, 8, 0}, {8, 8, 0}, {8, 0, 0.28F}}));
    EXPECT_FALSE(ProjectTo2D({{0, 0, 0}, {0, 8, 0}, {8, 8, 0}, {8, 0, 0.29F}}));
}

}  // namespace
}  // namespace k2k
