#include "mapread/widest_triple.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace k2k::test {

namespace {

using Positions = std::array<int32_t, 3>;

// Corners of a regular polygon on a tilted plane, from an angle on.
std::vector<Vec3> Ring(size_t count, double radius, double start = 0) {
    std::vector<Vec3> corners;
    for (size_t i = 0; i < count; ++i) {
        const double angle = start + 2 * 3.141592653589793 * static_cast<double>(i) / static_cast<double>(count);
        const double u = radius * std::cos(angle), v = radius * std::sin(angle);
        corners.push_back({static_cast<float>(u * 0.8), static_cast<float>(v), static_cast<float>(u * 0.6)});
    }
    return corners;
}

std::vector<Vec3> RandomCorners(std::mt19937& random, size_t count, int range, float step) {
    std::uniform_int_distribution<int> pick(-range, range);
    std::vector<Vec3> corners(count);
    for (Vec3& corner : corners) {
        for (float& coordinate : corner) coordinate = static_cast<float>(pick(random)) * step;
    }
    return corners;
}

TEST(WidestTriple, IsTheFirstOfASquaresFourTriangles) {
    const std::vector<Vec3> square{{0, 0, 0}, {64, 0, 0}, {64, 64, 0}, {0, 64, 0}};
    EXPECT_EQ(WidestTriple(square), (Positions{0, 1, 2}));
}

TEST(WidestTriple, IsTheFirstOfAParallelogramsFourTrianglesWhateverTheCoordinates) {
    std::mt19937 random(3);
    for (int round = 0; round < 200; ++round) {
        const std::vector<Vec3> points = RandomCorners(random, 3, 16000, 0.125F);
        std::vector<Vec3> corners(4, points[0]);
        for (size_t axis = 0; axis < 3; ++axis) {
            corners[1][axis] += points[1][axis];
            corners[2][axis] += points[1][axis] + points[2][axis];
            corners[3][axis] += points[2][axis];
        }
        EXPECT_EQ(WidestTriple(corners), (Positions{0, 1, 2})) << round;
    }
}

TEST(WidestTriple, LeavesCornersOnAStraightEdgeOut) {
    const std::vector<Vec3> corners{{0, 0, 0}, {32, 0, 0}, {64, 0, 0}, {64, 64, 0}};
    EXPECT_EQ(WidestTriple(corners), (Positions{0, 2, 3}));
}

TEST(WidestTriple, IsTheFirstTripleWhenNothingSpansAnything) {
    EXPECT_EQ(WidestTriple(std::vector<Vec3>(5)), (Positions{0, 1, 2}));
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(WidestTriple(std::vector<Vec3>(5, Vec3{nan, nan, nan})), (Positions{0, 1, 2}));
    EXPECT_EQ(WidestTriple(std::vector<Vec3>(100)), (Positions{0, 1, 2}));
}

TEST(WidestTriple, ByBoundsEqualsTrialOnRandomCorners) {
    std::mt19937 random(7);
    for (int round = 0; round < 300; ++round) {
        const size_t count = 3 + random() % 40;
        // Coarse numbers make many equal areas, fine ones many roundings.
        const bool coarse = round % 2 == 0;
        const std::vector<Vec3> corners = RandomCorners(random, count, coarse ? 2 : 100000, coarse ? 8.0F : 0.37F);
        EXPECT_EQ(WidestTripleByBounds(corners), WidestTripleByTrial(corners)) << round;
    }
}

TEST(WidestTriple, ByBoundsEqualsTrialOnRings) {
    for (size_t count = 3; count < 120; count += count < 20 ? 1 : 13) {
        for (const double start : {0.0, 0.1, 1.7}) {
            const std::vector<Vec3> corners = Ring(count, 100.3, start);
            EXPECT_EQ(WidestTripleByBounds(corners), WidestTripleByTrial(corners)) << count;
        }
    }
}

TEST(WidestTriple, ByBoundsEqualsTrialOnRepeatedCorners) {
    std::vector<Vec3> corners;
    for (int i = 0; i < 20; ++i) {
        for (const Vec3& corner : Ring(5, 64.7)) corners.push_back(corner);
    }
    EXPECT_EQ(WidestTripleByBounds(corners), WidestTripleByTrial(corners));
}

TEST(WidestTriple, ByBoundsEqualsTrialOnALine) {
    std::vector<Vec3> corners;
    for (int i = 0; i < 60; ++i) {
        const auto at = static_cast<float>(i);
        corners.push_back({at * 0.1F, at * 0.7F, at * 0.3F});
    }
    EXPECT_EQ(WidestTripleByBounds(corners), WidestTripleByTrial(corners));
}

TEST(WidestTriple, ByBoundsEqualsTrialBeyondTheRangeOfFloats) {
    std::mt19937 random(9);
    const std::vector<Vec3> corners = RandomCorners(random, 20, 100, 1e30F);
    EXPECT_EQ(WidestTripleByBounds(corners), WidestTripleByTrial(corners));
}

TEST(WidestTriple, EndsSoonOnThousandsOfCorners) {
    const auto start = std::chrono::steady_clock::now();
    const Positions found = WidestTriple(Ring(3000, 1000));
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    EXPECT_LT(seconds.count(), 30);  // the trial takes minutes
    EXPECT_NEAR(found[1] - found[0], 1000, 3);
    EXPECT_NEAR(found[2] - found[1], 1000, 3);
}

}  // namespace

}  // namespace k2k::test
