#include "solid/expand_block.h"

#include <algorithm>
#include <cmath>

#include "solid_support.h"

namespace k2k {
namespace {

using test::MapFaceOf;
using test::PlaneOf;

class ExpandBlockTest : public test::SolidTest {
  protected:
    ExpandBlockTest() {
        ComputeHullBoxes();
        block_.number = 1;
    }

    static std::vector<BlockSide> Sides(std::initializer_list<CPlane> planes) {
        std::vector<BlockSide> sides;
        for (const CPlane& plane : planes) sides.push_back({plane, 0});
        return sides;
    }
    bool Expand(int32_t hull, std::vector<BlockSide>& sides) {
        return ExpandBlock(hull, sides, BuildBlockFaces(block_, sides, 0));
    }
    static const CPlane* FindSide(const std::vector<BlockSide>& sides, const Vec3& normal) {
        for (const BlockSide& side : sides) {
            if (VectorEqual(side.plane.normal, normal, 0.001)) return &side.plane;
        }
        return nullptr;
    }

    MapBlock block_;
};

std::vector<CPlane> Box(float size) {
    return {PlaneOf({1, 0, 0}, size),  PlaneOf({-1, 0, 0}, size), PlaneOf({0, 1, 0}, size),
            PlaneOf({0, -1, 0}, size), PlaneOf({0, 0, 1}, size),  PlaneOf({0, 0, -1}, size)};
}

TEST_F(ExpandBlockTest, AddsNothingToABox) {
    std::vector<BlockSide> sides;
    for (const CPlane& plane : Box(32)) sides.push_back({plane, 0});
    EXPECT_FALSE(Expand(1, sides));
    ASSERT_EQ(sides.size(), 6U);
    for (const BlockSide& side : sides) EXPECT_EQ(side.plane.dist, 48.0F);
}

TEST_F(ExpandBlockTest, MovesASideByTheBoxCornerItFaces) {
    auto sides = Sides({PlaneOf({0.6F, 0, 0.8F}, 100), PlaneOf({-1, 0, 0}, 0), PlaneOf({0, 1, 0}, 10),
                        PlaneOf({0, -1, 0}, 10), PlaneOf({0, 0, -1}, 0)});
    EXPECT_TRUE(Expand(2, sides));
    // The fat box is (-32, -32, -32) to (32, 32, 16).
    EXPECT_EQ(sides[0].plane.dist,
              static_cast<float>(100 + (32 * static_cast<double>(0.6F) + 16 * static_cast<double>(0.8F))));
    EXPECT_EQ(sides[4].plane.dist, 32.0F);
}

TEST_F(ExpandBlockTest, BevelsAWedgeWithAxialPlanes) {
    auto sides = Sides({PlaneOf({0.6F, 0, 0.8F}, 60), PlaneOf({-1, 0, 0}, 0), PlaneOf({0, 1, 0}, 10),
                        PlaneOf({0, -1, 0}, 10), PlaneOf({0, 0, -1}, 0)});
    EXPECT_TRUE(Expand(1, sides));
    EXPECT_EQ(sides.size(), 7U) << "only the two axial planes that it did not have";
    EXPECT_EQ(FindSide(sides, {1, 0, 0})->dist, 116.0F);
    EXPECT_EQ(FindSide(sides, {0, 0, 1})->dist, 91.0F);
    EXPECT_EQ(FindSide(sides, {1, 0, 0})->type, 0);
}

TEST_F(ExpandBlockTest, AddsAxialPlanesFromXToZWithTheNegativeOneFirst) {
    auto sides = Sides({PlaneOf({0.6F, 0.8F, 0}, 50), PlaneOf({-0.6F, 0.8F, 0}, 50), PlaneOf({0.6F, -0.8F, 0}, 50),
                        PlaneOf({-0.6F, -0.8F, 0}, 50), PlaneOf({0, 0.6F, 0.8F}, 60), PlaneOf({0, 0.6F, -0.8F}, 60),
                        PlaneOf({0, -0.6F, 0.8F}, 60), PlaneOf({0, -0.6F, -0.8F}, 60)});
    EXPECT_TRUE(Expand(1, sides));
    ASSERT_GE(sides.size(), 14U);
    for (size_t axis = 0; axis < 3; ++axis) {
        EXPECT_EQ(sides[8 + 2 * axis].plane.normal[axis], -1.0F);
        EXPECT_EQ(sides[8 + 2 * axis].plane.type, static_cast<int32_t>(axis) - 3);
        EXPECT_EQ(sides[9 + 2 * axis].plane.normal[axis], 1.0F);
    }
}

TEST_F(ExpandBlockTest, AnEdgeObliqueToAllAxesGivesNoPlane) {
    // A pyramid: the edges to its tip are perpendicular to no axis.
    auto sides = Sides({PlaneOf({0, 0, -1}, 0), PlaneOf({0.8F, 0, 0.6F}, 48), PlaneOf({-0.8F, 0, 0.6F}, 48),
                        PlaneOf({0, 0.8F, 0.6F}, 48), PlaneOf({0, -0.8F, 0.6F}, 48)});
    EXPECT_TRUE(Expand(1, sides));
    EXPECT_EQ(sides.size(), 10U) << "five axial planes, no bevels";
}

TEST_F(ExpandBlockTest, BevelsEdgesThatArePerpendicularToAnAxis) {
    // An octahedron: each of its 12 edges lies in a plane of two axes.
    std::vector<BlockSide> sides;
    const float third = std::sqrt(1.0F / 3);
    for (int corner = 0; corner < 8; ++corner) {
        const auto sign = [&](int bit) { return (corner & bit) != 0 ? third : -third; };
        sides.push_back({PlaneOf({sign(4), sign(2), sign(1)}, 50), 0});
    }
    EXPECT_TRUE(Expand(1, sides));
    EXPECT_EQ(sides.size(), 8U + 6U + 12U);
    const float half = std::sqrt(0.5F);
    const CPlane* bevel = FindSide(sides, {half, half, 0});
    ASSERT_NE(bevel, nullptr) << "it faces outwards";
    EXPECT_NEAR(bevel->dist, 50 * std::sqrt(1.5) + 16 * std::sqrt(2), 0.01);
}

TEST_F(ExpandBlockTest, AddPlaneKnowsAPlaneFromBothSides) {
    auto sides = Sides({PlaneOf({1, 0, 0}, 8)});
    EXPECT_FALSE(AddPlane(PlaneOf({1, 0, 0}, 8.049F), sides)) << "within eps";
    EXPECT_FALSE(AddPlane(PlaneOf({-1, 0, 0}, -8), sides));
    EXPECT_FALSE(AddPlane(PlaneOf({0.99998F, 0.006F, 0}, 8), sides));
    EXPECT_TRUE(AddPlane(PlaneOf({-1, 0, 0}, 8), sides));
    EXPECT_TRUE(AddPlane(PlaneOf({1, 0, 0}, 8.0625F), sides));
}

TEST_F(ExpandBlockTest, AddPlaneComparesDistsInDouble) {
    // In 32 bits both differences would be rounded down to 0.05F, the tolerance.
    auto sides = Sides({PlaneOf({1, 0, 0}, 0.05F)});
    EXPECT_TRUE(AddPlane(PlaneOf({1, 0, 0}, -1e-9F), sides));
    sides = Sides({PlaneOf({1, 0, 0}, 0.05F)});
    EXPECT_TRUE(AddPlane(PlaneOf({-1, 0, 0}, 1e-9F), sides));
}

TEST_F(ExpandBlockTest, AddPlaneRefusesNormalsBeyondAThousandth) {
    auto sides = Sides({PlaneOf({1, 0, 0}, 8)});
    test::ExpectFatal([&] { AddPlane(PlaneOf({0, 0.9985F, 0}, 0), sides); }, " \nE702");
    test::ExpectFatal([&] { AddPlane(PlaneOf({0, 1.0015F, 0}, 0), sides); }, " \nE702");
    EXPECT_TRUE(AddPlane(PlaneOf({0, 1.0005F, 0}, 0), sides));
}

TEST_F(ExpandBlockTest, ABevelHasTheTextureOfTheFirstSide) {
    auto sides = Sides({PlaneOf({1, 0, 0}, 8)});
    sides[0].texinfo = 5;
    ASSERT_TRUE(AddPlane(PlaneOf({0, 1, 0}, 0), sides));
    EXPECT_EQ(sides[1].texinfo, 5);
}

TEST_F(ExpandBlockTest, ABevelOfAnotherVisualHullGetsAProjectionOfTextureZero) {
    Texinfo texinfo;
    texinfo.shiftS = 3;
    texinfo.shiftT = 4;
    texinfo.texture = 2;
    texinfo.flags = 64;
    Textures().AddTexinfo(texinfo);
    Options().sethulls = {1, 1, 2};
    auto sides = Sides({PlaneOf({0, 0, 1}, 8)});
    ASSERT_TRUE(AddPlane(PlaneOf({1, 0, 0}, 0), sides));
    const Texinfo& projected = Textures().GetTexinfo(sides[1].texinfo);
    EXPECT_EQ(sides[1].texinfo, 2);
    EXPECT_EQ(projected.vecS, (Vec3{0, 1, 0}));
    EXPECT_EQ(projected.vecT, (Vec3{0, 0, -1}));
    EXPECT_EQ(projected.shiftS, 3.0F);
    EXPECT_EQ(projected.shiftT, 4.0F);
    EXPECT_EQ(projected.texture, 2U);
    EXPECT_EQ(projected.flags, 0U) << "row 0 has none";
    ASSERT_TRUE(AddPlane(PlaneOf({1, 0, 0}, 5), sides));
    EXPECT_EQ(sides[2].texinfo, 2) << "looked up, not added again";
}

BlockFaces FacesOf(std::vector<std::vector<Vec3>> outlines) {
    BlockFaces built;
    for (auto& outline : outlines) {
        auto face = std::make_unique<CBlockFace>();
        face->points = std::move(outline);
        built.faces.push_front(std::move(face));
    }
    return built;
}

TEST_F(ExpandBlockTest, TakesAtMost128Points) {
    const auto expand = [](int count) {
        std::vector<std::vector<Vec3>> outlines;
        for (int i = 0; i < count; ++i) outlines.push_back({{static_cast<float>(i), static_cast<float>(i * i), 3.5F}});
        std::vector<BlockSide> sides;
        ExpandBlock(0, sides, FacesOf(std::move(outlines)));
    };
    expand(128);
    test::ExpectFatal([&] { expand(129); }, " \nBlock with too many vertices");
}

TEST_F(ExpandBlockTest, TakesPointsWithinAHundredthForOne) {
    std::vector<std::vector<Vec3>> outlines;
    for (int i = 0; i < 200; ++i)
        outlines.push_back({{static_cast<float>(i % 100), static_cast<float>(i % 2) * 0.009F, 0}});
    std::vector<BlockSide> sides;
    ExpandBlock(0, sides, FacesOf(std::move(outlines)));
}

TEST_F(ExpandBlockTest, TakesAtMost256Edges) {
    // Every pair of 23 points is an edge: 253. Two more corners make too many.
    const auto expand = [](size_t points) {
        std::vector<Vec3> ring;
        for (size_t i = 0; i < points; ++i) {
            const auto at = static_cast<float>(i);
            ring.push_back({at * 7, at * at, at * at * at});
        }
        std::vector<std::vector<Vec3>> outlines;
        for (size_t i = 0; i < points; ++i) {
            for (size_t j = 0; j < i; ++j) outlines.push_back({ring[i], ring[j]});
        }
        std::vector<BlockSide> sides;
        ExpandBlock(0, sides, FacesOf(std::move(outlines)));
    };
    expand(23);
    test::ExpectFatal([&] { expand(24); }, "E012a: Map size - too many edges");
}

// Faces of sides that the others cut away lie outside.
bool IsInside(const Vec3& point, const std::vector<BlockSide>& sides) {
    return std::all_of(sides.begin(), sides.end(),
                       [&](const BlockSide& side) { return Dot(point, side.plane.normal) - side.plane.dist < 0.06; });
}

// Whatever the block, the box set on any of its points stays inside the expanded block.
TEST_F(ExpandBlockTest, TheBoxInTheBlockStaysInTheExpandedBlock) {
    test::Random random(23);
    for (int round = 0; round < 300; ++round) {
        std::vector<BlockSide> sides;
        for (const CPlane& plane : Box(static_cast<float>(random.Whole(20, 60)))) sides.push_back({plane, 0});
        for (int i = random.Whole(0, 4); i > 0; --i) {
            sides.push_back({PlaneOf(random.UnitVector(), static_cast<float>(random.Whole(10, 40))), 0});
        }
        const std::vector<BlockSide> unexpanded = sides;
        const BlockFaces original = BuildBlockFaces(block_, sides, 0);
        const int32_t hull = random.Whole(1, 2);
        ExpandBlock(hull, sides, original);
        const HullBox box = HullBoxOf(hull);
        for (const BlockSide& side : sides) {
            for (const CBlockFace& face : original.faces) {
                for (const Vec3& point : face.points) {
                    if (!IsInside(point, unexpanded)) continue;
                    for (int corner = 0; corner < 8; ++corner) {
                        const Vec3 offset{(corner & 4) != 0 ? box.maxs[0] : box.mins[0],
                                          (corner & 2) != 0 ? box.maxs[1] : box.mins[1],
                                          (corner & 1) != 0 ? box.maxs[2] : box.mins[2]};
                        const double d = Dot(Add(point, offset), side.plane.normal) - side.plane.dist;
                        EXPECT_LE(d, 0.11) << "round " << round;
                    }
                }
            }
        }
    }
}

}  // namespace
}  // namespace k2k
