#include "surface/weld_table.h"

#include <gtest/gtest.h>

#include <limits>

#include "surface_fixture.h"

namespace k2k {
namespace {

using test::ExpectFatal;

class WeldTest : public test::SurfaceTest {
  protected:
    WeldTest() { table_.InitWeldHash(56000); }
    int32_t Weld(const Vec3& point, int32_t planenum = 0) { return table_.WeldVertex(point, planenum, vertices_); }

    WeldTable table_;
    std::vector<Vec3> vertices_;
};

TEST_F(WeldTest, SnapsToWholeNumbersBelowAThousandth) {
    Weld({10.0005F, -10.0005F, 10.002F});
    EXPECT_EQ(vertices_[0], (Vec3{10, -10, 10.002F}));
}

TEST_F(WeldTest, MakesOneVertexOfPointsLessThanATenthApart) {
    EXPECT_EQ(Weld({100, 100, 100}), 0);
    EXPECT_EQ(Weld({100.05F, 100.05F, 100.05F}), 0);
    EXPECT_EQ(Weld({100.05F, 100.05F, 100.2F}), 1);
    EXPECT_EQ(vertices_.size(), 2U);
    EXPECT_EQ(vertices_[0], (Vec3{100, 100, 100}));
}

TEST_F(WeldTest, KeepsPointsApartAtATenth) {
    EXPECT_EQ(Weld({0.5F, 100, 100}), 0);
    EXPECT_EQ(Weld({0.6F, 100, 100}), 1);
}

TEST_F(WeldTest, MeasuresDistancesInDouble) {
    // A hair below a tenth apart; the difference rounded to 32 bits is a hair above.
    EXPECT_EQ(Weld({0x1.a50934p-4F, 100, 100}), 0);
    EXPECT_EQ(Weld({0x1.6df354p-9F, 100, 100}), 0);
}

TEST_F(WeldTest, KeepsPointsApartOverACellBorder) {
    const Vec3 left{-1.15F, 100, 0};
    const Vec3 right{-1.07F, 100, 0};
    ASSERT_NE(table_.HashOf(left), table_.HashOf(right));
    Weld(left);
    Weld(right);
    EXPECT_EQ(vertices_.size(), 2U);
}

TEST_F(WeldTest, TakesTheLatestOfSeveralNearVertices) {
    EXPECT_EQ(Weld({100.0F, 100, 0}), 0);
    EXPECT_EQ(Weld({100.15F, 100, 0}), 1);
    EXPECT_EQ(Weld({100.08F, 100, 0}), 1);
}

TEST_F(WeldTest, CountsUsesAndPlanesUpToThree) {
    for (const int32_t planenum : {7, 7, 8, 7, 8}) Weld({1, 2, 3}, planenum);
    EXPECT_EQ(table_.entries()[0].useCount, 5);
    EXPECT_EQ(table_.entries()[0].planeCount, 2);
    EXPECT_EQ(table_.entries()[0].planes, (std::array<int32_t, 2>{7, 8}));
    EXPECT_EQ(table_.cornerCount(), 0);

    Weld({1, 2, 3}, 9);
    Weld({1, 2, 3}, 10);
    EXPECT_EQ(table_.entries()[0].planeCount, 3);
    EXPECT_EQ(table_.entries()[0].planes, (std::array<int32_t, 2>{7, 8}));
    EXPECT_EQ(table_.cornerCount(), 1);
    EXPECT_EQ(table_.entries()[0].useCount, 7);
}

TEST_F(WeldTest, NumbersVerticesByTheLevelsTable) {
    vertices_.resize(5);
    EXPECT_EQ(Weld({1, 2, 3}), 5);
    table_.InitWeldHash(56000);
    EXPECT_EQ(Weld({1, 2, 3}), 6);
}

TEST_F(WeldTest, StopsAtTheEndOfItsPool) {
    for (int i = 0; i < 131072; ++i) Weld({static_cast<float>(i % 512), static_cast<float>(i / 512), 0});
    EXPECT_EQ(vertices_.size(), 131072U);
    EXPECT_EQ(Weld({3, 4, 0}), 2051);
    ExpectFatal([&] { Weld({3, 4, 1}); }, "E015: Map size - too many vertices");
    EXPECT_EQ(vertices_.size(), 131072U);
}

TEST_F(WeldTest, BearsPointsThatAreNoNumbers) {
    const float none = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(Weld({none, 0, 0}), 0);
    EXPECT_EQ(Weld({none, 0, 0}), 1);
    EXPECT_EQ(Weld({1e38F, -1e38F, 0}), 2);
}

}  // namespace
}  // namespace k2k
