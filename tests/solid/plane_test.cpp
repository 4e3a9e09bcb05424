#include "solid/plane.h"

#include <cmath>

#include "solid_support.h"

namespace k2k {
namespace {

using test::PlaneOf;

int32_t Find(const CPlane& plane, int32_t* sideOut = nullptr) {
    int32_t side = -1;
    const int32_t number = FindPlane(plane, side);
    if (sideOut != nullptr) *sideOut = side;
    return number;
}

TEST(SetPlaneType, TakesAComponentFrom09999OnForAnAxis) {
    EXPECT_EQ(PlaneOf({0.99995F, 0.01F, 0}, 0).type, 0);
    EXPECT_EQ(PlaneOf({0, 0.99995F, 0.01F}, 0).type, 1);
    EXPECT_EQ(PlaneOf({0, 0, 1}, 0).type, 2);
    EXPECT_EQ(PlaneOf({-0.99995F, 0, 0.01F}, 0).type, -3);
    EXPECT_EQ(PlaneOf({0, -1, 0}, 0).type, -2);
    EXPECT_EQ(PlaneOf({0, 0, -1}, 0).type, -1);
    EXPECT_EQ(PlaneOf({0.9998F, 0.02F, 0}, 0).type, 3);
}

TEST(PlaneTypeFromNormal, ComparesExactly) {
    EXPECT_EQ(PlaneTypeFromNormal({1, 0, 0}), 0);
    EXPECT_EQ(PlaneTypeFromNormal({0, 1, 0}), 1);
    EXPECT_EQ(PlaneTypeFromNormal({0, 0, 1}), 2);
    EXPECT_EQ(PlaneTypeFromNormal({-1, 0, 0}), -3);
    EXPECT_EQ(PlaneTypeFromNormal({0, -1, 0}), -2);
    EXPECT_EQ(PlaneTypeFromNormal({0, 0, -1}), -1);
    EXPECT_EQ(PlaneTypeFromNormal({0.99999F, 0.001F, 0}), 3);
}

TEST(PlaneTypeFromNormal, NamesTheDominantAxisOfObliquePlanes) {
    EXPECT_EQ(PlaneTypeFromNormal({0.8F, -0.6F, 0}), 3);
    EXPECT_EQ(PlaneTypeFromNormal({-0.6F, 0.8F, 0}), 4);
    EXPECT_EQ(PlaneTypeFromNormal({0.6F, 0, -0.8F}), 5);
    EXPECT_EQ(PlaneTypeFromNormal({0.7F, 0.7F, 0.1F}), 3) << "x wins ties";
    EXPECT_EQ(PlaneTypeFromNormal({0.1F, 0.7F, 0.7F}), 4) << "y wins ties against z";
    EXPECT_EQ(PlaneTypeFromNormal({0.5F, 0.4F, 0.7F}), 5) << "z, although x exceeds y";
}

TEST(FlippedPlane, NegatesNormalAndDistAndTypesAnew) {
    const CPlane flipped = FlippedPlane(PlaneOf({0, 1, 0}, 8));
    EXPECT_EQ(flipped.normal, (Vec3{0, -1, 0}));
    EXPECT_EQ(flipped.dist, -8.0F);
    EXPECT_EQ(flipped.type, -2);
}

class FindPlaneTest : public test::SolidTest {};

TEST_F(FindPlaneTest, TurnsANegativeAxisIntoThePositiveRow) {
    int32_t side = -1;
    const int32_t number = Find(PlaneOf({-1, 0, 0}, -64), &side);
    EXPECT_EQ(side, 1);
    EXPECT_EQ(TablePlane(number).normal, (Vec3{1, 0, 0}));
    EXPECT_EQ(TablePlane(number).dist, 64.0F);
    EXPECT_EQ(TablePlane(number).type, 0);
}

TEST_F(FindPlaneTest, KeepsThePlanesOfBothSidesInOneRow) {
    int32_t side = -1;
    const int32_t number = Find(PlaneOf({0, 0, 1}, 16), &side);
    EXPECT_EQ(side, 0);
    EXPECT_EQ(Find(PlaneOf({0, 0, -1}, -16), &side), number);
    EXPECT_EQ(side, 1);
}

TEST_F(FindPlaneTest, TurnsAnObliquePlaneWithANegativeDominantComponent) {
    int32_t side = -1;
    const int32_t number = Find(PlaneOf({0.6F, -0.8F, 0}, 5), &side);
    EXPECT_EQ(side, 1);
    EXPECT_EQ(TablePlane(number).normal, (Vec3{-0.6F, 0.8F, 0}));
    EXPECT_EQ(TablePlane(number).dist, -5.0F);
    EXPECT_EQ(TablePlane(number).type, 4);
}

TEST_F(FindPlaneTest, GivesTheRowOfAPlaneWhoseDistDiffersByLessThan001) {
    const int32_t number = Find(PlaneOf({1, 0, 0}, 64));
    int32_t side = -1;
    EXPECT_EQ(Find(PlaneOf({1, 0, 0}, 64.009F), &side), number);
    EXPECT_EQ(side, 0);
    EXPECT_EQ(Find(PlaneOf({-1, 0, 0}, -64.009F), &side), number);
    EXPECT_EQ(side, 1) << "the side comes from the normals alone";
    EXPECT_NE(Find(PlaneOf({1, 0, 0}, 64.0115F)), number);
}

TEST_F(FindPlaneTest, TakesTheDifferenceOfDistsInDouble) {
    // In 32 bits it would be rounded down to 0.01F, which lies below 0.01.
    const int32_t number = Find(PlaneOf({1, 0, 0}, 0.01F));
    EXPECT_NE(Find(PlaneOf({1, 0, 0}, -4e-10F)), number);
}

TEST_F(FindPlaneTest, AddsAPlaneWhoseNormalDiffers) {
    const int32_t number = Find(PlaneOf({1, 0, 0}, 64));
    const auto angle = [](double radians) {
        return Vec3{static_cast<float>(std::cos(radians)), static_cast<float>(std::sin(radians)), 0};
    };
    EXPECT_EQ(Find(PlaneOf(angle(0.004), 64)), number);
    EXPECT_NE(Find(PlaneOf(angle(0.005), 64)), number);
}

TEST_F(FindPlaneTest, TakesTheFirstOfTwoMatchingRows) {
    const int32_t first = Find(PlaneOf({1, 0, 0}, 64));
    const int32_t second = Find(PlaneOf({1, 0, 0}, 64.015F));
    EXPECT_NE(first, second);
    EXPECT_EQ(Find(PlaneOf({1, 0, 0}, 64.008F)), first);
}

TEST_F(FindPlaneTest, RefusesANormalThatIsNotOfUnitLength) {
    int32_t side = 0;
    test::ExpectFatal([&] { FindPlane(PlaneOf({1.0001F, 0, 0}, 0), side); }, " \nE701");
    test::ExpectFatal([&] { FindPlane(PlaneOf({0.9999F, 0, 0}, 0), side); }, " \nE701");
    test::ExpectFatal([&] { FindPlane(PlaneOf({0, 0, 0}, 0), side); }, " \nE701");
    test::ExpectFatal([&] { FindPlane(PlaneOf({NAN, 0, 0}, 0), side); }, " \nE701");
    FindPlane(PlaneOf({1.000005F, 0, 0}, 0), side);
}

TEST_F(FindPlaneTest, RefusesAPlaneWithoutADistance) {
    int32_t side = 0;
    for (const float dist : {NAN, INFINITY, -INFINITY}) {
        test::ExpectFatal([&] { FindPlane(PlaneOf({1, 0, 0}, dist), side); }, " \nE701");
    }
    EXPECT_TRUE(PlaneTable().empty());
    FindPlane(PlaneOf({1, 0, 0}, 3e38F), side);
}

// The lookup as it is meant: the table from its first row on.
int32_t FindPlaneInOrder(const CPlane& plane) {
    for (size_t i = 0; i < PlaneTable().size(); ++i) {
        const CPlane& row = PlaneTable()[i];
        const bool isNear = std::fabs(static_cast<double>(row.dist) - plane.dist) < 0.01;
        if (isNear && Dot(row.normal, plane.normal) > 1 - 1e-5) return static_cast<int32_t>(i);
    }
    return static_cast<int32_t>(PlaneTable().size());
}

// Planes that lie close together, on a few normals and dists, so that rows overlap in every way.
CPlane CrowdedPlane(test::Random& random, const std::vector<Vec3>& normals, float scale) {
    Vec3 normal = normals[static_cast<size_t>(random.Whole(0, static_cast<int>(normals.size()) - 1))];
    for (float& component : normal) component += static_cast<float>(random.Real(-0.003, 0.003));
    Normalize(normal);
    Normalize(normal);
    const double dist = random.Whole(-20, 20) * static_cast<double>(scale) + random.Real(-0.03, 0.03);
    return PlaneOf(normal, static_cast<float>(dist));
}

TEST_F(FindPlaneTest, GivesTheSameRowsAsASearchInOrder) {
    test::Random random(1);
    for (const float scale : {0.37F, 1.0F, 63.5F, 4096.0F, 3e7F, 1e30F}) {
        ResetPlaneTableForTest();
        std::vector<Vec3> normals{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0.7071068F, 0.7071068F, 0}};
        for (int i = 0; i < 4; ++i) normals.push_back(random.UnitVector());
        for (int i = 0; i < 2500; ++i) {
            CPlane plane = CrowdedPlane(random, normals, scale);
            int32_t side = 0;
            CPlane form = plane;
            const int32_t type = PlaneTypeFromNormal(form.normal);
            if (type < 0 || (type >= 3 && form.normal[static_cast<size_t>(type) - 3] < 0)) {
                form.normal = Negate(form.normal);
                form.dist = -form.dist;
            }
            const int32_t expected = FindPlaneInOrder(form);
            ASSERT_EQ(FindPlane(plane, side), expected) << "scale " << scale << ", plane " << i;
        }
    }
}

}  // namespace
}  // namespace k2k
