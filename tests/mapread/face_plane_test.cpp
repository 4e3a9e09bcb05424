// From three points to a plane: rounding and snapping.
#include "mapread/face_plane.h"

#include <cmath>
#include <random>

#include "map_text.h"
#include "solid/vectors.h"

namespace k2k::test {

namespace {

class FacePlane : public MapTest {};

// A face that looks along +z at a height.
MapFace Floor(float height) {
    MapFace face;
    face.points = {{{1, 0, height}, {0, 0, height}, {0, 1, height}}};
    return face;
}

float SnappedHeight(float height, bool precise) {
    MapFace face = Floor(height);
    EXPECT_TRUE(SetFacePlane(face, precise));
    return face.dist;
}

TEST_F(FacePlane, DistanceJustAboveAWholeNumberSnapsDown) {
    EXPECT_EQ(SnappedHeight(4.005F, false), 4.0F);
    EXPECT_EQ(SnappedHeight(4.0099F, false), 4.0F);
    EXPECT_EQ(SnappedHeight(-3.995F, false), -4.0F);
}

TEST_F(FacePlane, DistanceJustBelowAWholeNumberStays) {
    EXPECT_EQ(SnappedHeight(3.995F, false), 3.995F);
    EXPECT_EQ(SnappedHeight(4.011F, false), 4.011F);
    EXPECT_EQ(SnappedHeight(-4.005F, false), -4.005F);
}

TEST_F(FacePlane, PreciseDistanceGoesToTheHalfUnitBelow) {
    EXPECT_EQ(SnappedHeight(3.995F, true), 3.5F);
    EXPECT_EQ(SnappedHeight(4.005F, true), 4.0F);
    EXPECT_EQ(SnappedHeight(4.5F, true), 4.5F);
    EXPECT_EQ(SnappedHeight(-0.25F, true), -0.5F);
}

TEST_F(FacePlane, LooksOutOfATurnToTheLeft) {
    MapFace face = Floor(8);
    SetFacePlane(face, true);
    EXPECT_EQ(face.normal, (Vec3{0, 0, 1}));
    EXPECT_EQ(face.planeType, 2);
    std::swap(face.points[0], face.points[2]);
    SetFacePlane(face, true);
    EXPECT_EQ(face.normal, (Vec3{0, 0, -1}));
    EXPECT_EQ(face.dist, -8);
    EXPECT_EQ(face.planeType, -1);
}

TEST_F(FacePlane, OfPointsThatAreNoNumbersIsNotFinite) {
    for (const float bad : {NAN, INFINITY, -INFINITY}) {
        for (size_t point = 0; point < 3; ++point) {
            for (size_t axis = 0; axis < 3; ++axis) {
                MapFace face = Floor(8);
                EXPECT_TRUE(SetFacePlane(face, true));
                EXPECT_TRUE(HasFinitePlane(face));
                face.points[point][axis] = bad;
                SetFacePlane(face, true);
                EXPECT_FALSE(HasFinitePlane(face)) << bad << " at " << point << ' ' << axis;
                EXPECT_TRUE(std::isnan(face.normal[0])) << "no axis";
            }
        }
    }
}

TEST_F(FacePlane, BeyondAllDistancesIsNotFinite) {
    // The middle of the slope is 3e38 from the origin on each axis.
    constexpr float Far = 3e38F;
    MapFace face;
    face.points = {{{Far / 2, Far, Far}, {Far, Far, Far}, {Far, Far / 2, Far}}};
    SetFacePlane(face, false);
    EXPECT_TRUE(HasFinitePlane(face));
    face.points = {{{Far, Far / 2, Far}, {Far, Far, Far / 2}, {Far / 2, Far, Far}}};
    SetFacePlane(face, false);
    EXPECT_FALSE(HasFinitePlane(face)) << face.dist;
}

TEST_F(FacePlane, NormalNextToAnAxisBecomesTheAxis) {
    // An incline of 4 in 1000: the component differs from 1 by 8e-6.
    MapFace face;
    face.points = {{{1000, 0, 4}, {0, 0, 0}, {0, 1000, 0}}};
    SetFacePlane(face, false);
    EXPECT_EQ(face.normal, (Vec3{0, 0, 1}));
    std::swap(face.points[0], face.points[2]);
    SetFacePlane(face, false);
    EXPECT_EQ(face.normal, (Vec3{0, 0, -1}));
    // 5 in 1000: 1.25e-5.
    face.points[2][2] = 5;
    SetFacePlane(face, false);
    EXPECT_NE(face.normal[0], 0);
    EXPECT_EQ(face.planeType, -1);
}

TEST_F(FacePlane, ObliqueNormalHasTypeThree) {
    MapFace face;
    face.points = {{{1, 0, 1}, {0, 0, 0}, {0, 1, 0}}};
    SetFacePlane(face, true);
    EXPECT_EQ(face.planeType, 3);
    EXPECT_FLOAT_EQ(face.normal[0], -0.70710677F);
    EXPECT_EQ(face.normal[1], 0);
    EXPECT_FALSE(std::signbit(face.normal[1]));
}

TEST_F(FacePlane, DistanceComesFromTheNormalInDouble) {
    std::mt19937 random(11);
    std::uniform_real_distribution<float> coordinate(-4000, 4000);
    int roundedOtherwise = 0;
    for (int round = 0; round < 200; ++round) {
        MapFace face;
        for (Vec3& point : face.points) point = {coordinate(random), coordinate(random), coordinate(random)};
        const Vec3d corner = Widen(face.points[1]);
        Vec3d normal = Cross(Sub(Widen(face.points[0]), corner), Sub(Widen(face.points[2]), corner));
        NormalizeD(normal);
        const auto expected = static_cast<float>(Dot(corner, normal));
        if (expected - std::floor(expected) < 0.01) continue;
        SetFacePlane(face, false);
        EXPECT_EQ(face.normal, Narrow(normal));
        EXPECT_EQ(face.dist, expected);
        if (static_cast<float>(Dot(corner, face.normal)) != expected) ++roundedOtherwise;
    }
    EXPECT_GT(roundedOtherwise, 10);
}

TEST_F(FacePlane, ATenThousandthIsNoArea) {
    MapFace face;
    face.points = {{{0.01F, 0, 0}, {0, 0, 0}, {0, 0.0099F, 0}}};
    EXPECT_FALSE(SetFacePlane(face, true));
    EXPECT_EQ(face.normal, (Vec3{}));
    face.points[2][1] = 0.0101F;
    EXPECT_TRUE(SetFacePlane(face, true));
    EXPECT_EQ(face.normal, (Vec3{0, 0, 1}));
}

// Components of 7e-5 make a length of 1.2e-4, which is a direction.
TEST_F(FacePlane, NarrowFaceCanHaveANormal) {
    constexpr float Edge = 0.0083666F;
    MapFace face;
    face.points = {{{Edge, -Edge, 0}, {0, 0, 0}, {0, Edge, -Edge}}};
    EXPECT_FALSE(SetFacePlane(face, true));
    EXPECT_FLOAT_EQ(face.normal[0], std::sqrt(1 / 3.0F));
}

TEST_F(FacePlane, PointsOnALineSpanNoArea) {
    MapFace face;
    face.points = {{{1, 1, 1}, {2, 2, 2}, {3, 3, 3}}};
    EXPECT_FALSE(SetFacePlane(face, true));
    EXPECT_EQ(face.normal, (Vec3{}));
    EXPECT_EQ(face.dist, 0);
    EXPECT_EQ(face.planeType, 3);
}

TEST_F(FacePlane, RoundsHalvesAwayFromZero) {
    MapFace face;
    face.points = {{{0.5F, -0.5F, 1.4F}, {2.5F, -2.5F, -1.4F}, {0, 1.5F, -1.6F}}};
    RoundPoints(face);
    EXPECT_EQ(face.points, (std::array<Vec3, 3>{{{1, -1, 1}, {3, -3, -1}, {0, 2, -2}}}));
}

TEST_F(FacePlane, HoldsPointsWithinEpsilonAndAtIt) {
    MapFace face = Floor(8);
    SetFacePlane(face, true);
    Options().eps = 0.25F;
    EXPECT_TRUE(ArePointsInPlane({{{0, 0, 8.25F}, {5, 0, 7.75F}, {0, 5, 8}}}, face));
    EXPECT_FALSE(ArePointsInPlane({{{0, 0, 8.26F}, {5, 0, 8}, {0, 5, 8}}}, face));
    EXPECT_FALSE(ArePointsInPlane({{{0, 0, 8}, {5, 0, 8}, {0, 5, 7.74F}}}, face));
}

}  // namespace

}  // namespace k2k::test
