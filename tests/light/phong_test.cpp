#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <numbers>
#include <optional>
#include <random>

#include "light/near_equal.h"
#include "light/phong_normal.h"
#include "light/phong_table.h"
#include "light/surface_geometry.h"
#include "test_level.h"

namespace k2k::test {
namespace {

class Phong : public LightTest {
  protected:
    // Quads of a strip in the plane z = 0, 16 wide each, one behind the other along x.
    void MakeStrip(int count, uint16_t side = 0) {
        level_ = std::make_unique<TestLevel>();
        const uint32_t plane = level_->Plane({0, 0, side == 0 ? 1.0F : -1.0F}, 0);
        const int16_t texinfo = level_->Texture(TexturePhong, {1, 0, 0}, {0, -1, 0});
        for (int i = 0; i < count; i++) {
            const float x0 = static_cast<float>(i) * 16, x1 = x0 + 16;
            level_->Surface({{x0, 0, 0}, {x0, 16, 0}, {x1, 16, 0}, {x1, 0, 0}}, plane, side, texinfo);
        }
    }

    // Quads around the z axis with their normals outwards.
    void MakeRing(int count, float radius, uint32_t flags = TexturePhong) {
        level_ = std::make_unique<TestLevel>();
        const int16_t texinfo = level_->Texture(flags, {0.7F, 0.7F, 0.1F}, {0, 0, -1});
        const auto corner = [&](int i, float z) {
            const double angle = 2 * std::numbers::pi * (i % count) / count;
            return Vec3{static_cast<float>(radius * std::cos(angle)), static_cast<float>(radius * std::sin(angle)), z};
        };
        for (int i = 0; i < count; i++) {
            const double angle = 2 * std::numbers::pi * (i + 0.5) / count;
            const Vec3 normal{static_cast<float>(std::cos(angle)), static_cast<float>(std::sin(angle)), 0};
            const uint32_t plane = level_->Plane(normal, static_cast<float>(Dot(normal, corner(i, 0))));
            level_->Surface({corner(i, 0), corner(i, 64), corner(i + 1, 64), corner(i + 1, 0)}, plane, 0, texinfo);
        }
    }

    Vec3 NormalAt(uint32_t surface, const Vec3& sample, Vec3* end = nullptr, PlaneFlips flips = PlaneFlips::Apply) {
        const CPhongTable smooth;
        CSmoothNormals normals(smooth, flips);
        Vec3 normal, point;
        normals.PhongNormal(surface, sample, normal, point, 0);
        if (end != nullptr) *end = point;
        return normal;
    }

    // A floor of 64 x 64 with a slope of 45 degrees behind its edge at x = 64.
    void MakeFloorAndSlope() {
        level_ = std::make_unique<TestLevel>();
        const int16_t texinfo = level_->Texture(TexturePhong, {1, 0, 0}, {0, -1, 0});
        const float d = std::sqrt(0.5F);
        level_->Surface({{0, 0, 0}, {0, 64, 0}, {64, 64, 0}, {64, 0, 0}}, level_->Plane({0, 0, 1}, 0), 0, texinfo);
        level_->Surface({{64, 0, 0}, {64, 64, 0}, {64 + 64 * d, 64, -64 * d}, {64 + 64 * d, 0, -64 * d}},
                        level_->Plane({d, 0, d}, 64 * d), 0, texinfo);
    }

    std::unique_ptr<TestLevel> level_;
};

TEST_F(Phong, ASampleInItsSurfaceGetsARayEndOneUnitAbove) {
    MakeStrip(3);
    Vec3 end;
    const Vec3 normal = NormalAt(1, {20, 5, 0.5F}, &end);
    EXPECT_EQ(end, (Vec3{20, 5, 1}));
    EXPECT_NEAR(normal[2], 1, 1e-6);
}

TEST_F(Phong, TheNormalOfARingTurnsWithThePosition) {
    MakeRing(16, 100);
    const PolygonInfo polygon = MakePolygonInfo(2);
    Vec3 middle{};
    for (const Vec3& p : polygon.points) middle = Add(middle, Scale(p, 0.25F));
    const Vec3 flat = SurfaceNormal(SurfaceRow(2));
    const Vec3 atMiddle = NormalAt(2, middle);
    EXPECT_GT(Dot(atMiddle, flat), 0.999);
    // Near an edge it leans towards the neighbour, half way between the two at the edge itself.
    Vec3 towards = SurfaceNormal(SurfaceRow(3));
    const Vec3 edge = {static_cast<float>(100 * std::cos(3 * std::numbers::pi / 8)),
                       static_cast<float>(100 * std::sin(3 * std::numbers::pi / 8)), 32};
    const Vec3 nearEdge = PointAlong(middle, Sub(edge, middle), 0.98);
    const Vec3 atEdge = NormalAt(2, nearEdge);
    EXPECT_GT(Dot(atEdge, towards), Dot(atMiddle, towards) + 0.03);
    EXPECT_NEAR(Dot(atEdge, atEdge), 1, 1e-6);
}

TEST_F(Phong, ACreaseStaysHard) {
    // A floor and a wall at a right angle: their normals' dot product is 0.
    TestLevel level;
    const uint32_t floor = level.Quad(2, 0, true, {0, 0, 0}, {64, 64, 0}, TexturePhong);
    const uint32_t wall = level.Quad(0, 0, true, {0, 0, 0}, {0, 64, 64}, TexturePhong);
    EXPECT_EQ(NormalAt(floor, {2, 30, 0}), (Vec3{0, 0, 1}));
    EXPECT_EQ(NormalAt(wall, {0, 30, 2}), (Vec3{1, 0, 0}));
    const CPhongTable smooth;
    for (const auto& list : MakePolygonInfo(floor, smooth).edgeNeighbours) EXPECT_EQ(list[0], NoNeighbour);
}

TEST_F(Phong, OnlyNormalsWithADotProductAboveTheLimitJoin) {
    for (const float cosine : {0.19F, 0.21F}) {
        TestLevel level;
        const float sine = std::sqrt(1 - cosine * cosine);
        const uint32_t floor = level.Quad(2, 0, true, {0, 0, 0}, {64, 64, 0}, TexturePhong);
        // A slope that rises from the floor's edge at x = 0, towards negative x.
        const uint32_t plane = level.Plane({sine, 0, cosine}, 0);
        const Vec3 up{-64 * cosine, 0, 64 * sine};
        const int16_t texinfo = level.TextureFor({1, 0, 0}, TexturePhong);
        level.Surface({{0, 0, 0}, up, {up[0], 64, up[2]}, {0, 64, 0}}, plane, 0, texinfo);
        const CPhongTable smooth;
        bool joined = false;
        for (const auto& list : MakePolygonInfo(floor, smooth).edgeNeighbours) joined |= list[0] == 1;
        EXPECT_EQ(joined, cosine > 0.2F);
    }
}

TEST_F(Phong, OnlySmoothSurfacesAreNeighbours) {
    MakeStrip(3);
    Textures().texinfos.push_back(Textures().texinfos[1]);
    Textures().texinfos.back().flags = 0;
    Geometry().surfaces[2].texInfoId = 2;
    const CPhongTable smooth;
    EXPECT_EQ(smooth.PhongSurfaces(), (std::vector<uint32_t>{0, 1}));
    int heads = 0;
    for (const auto& list : MakePolygonInfo(1, smooth).edgeNeighbours) heads += list[0] != NoNeighbour ? 1 : 0;
    EXPECT_EQ(heads, 1);
}

TEST_F(Phong, ListsBeginWithTheSurfaceAcrossAndGoOnWithThoseThatTouch) {
    // Four quads around a corner; the two diagonal ones only touch.
    TestLevel level;
    const uint32_t plane = level.Plane({0, 0, 1}, 0);
    const int16_t texinfo = level.Texture(TexturePhong, {1, 0, 0}, {0, -1, 0});
    for (const float x : {0.0F, 16.0F}) {
        for (const float y : {0.0F, 16.0F}) {
            level.Surface({{x, y, 0}, {x, y + 16, 0}, {x + 16, y + 16, 0}, {x + 16, y, 0}}, plane, 0, texinfo);
        }
    }
    const CPhongTable smooth;
    const PolygonInfo polygon = MakePolygonInfo(0, smooth);
    std::vector<int32_t> heads;
    for (const auto& list : polygon.edgeNeighbours) {
        heads.push_back(list[0]);
        EXPECT_EQ(list[1], NoNeighbour);
        for (size_t i = 1; i < list.size(); i++) {
            EXPECT_TRUE(list[i] != list[0] || list[0] == NoNeighbour);
            EXPECT_TRUE(i == 1 || list[i - 1] < list[i]);
        }
    }
    std::sort(heads.begin(), heads.end());
    EXPECT_EQ(heads, (std::vector<int32_t>{-1, -1, 1, 2}));
}

// The neighbours of a surface by a walk over all smooth surfaces.
std::vector<std::vector<int32_t>> PlainNeighbours(uint32_t self) {
    const PolygonInfo polygon = MakePolygonInfo(self);
    const int n = static_cast<int>(polygon.points.size());
    std::vector<std::vector<int32_t>> lists(polygon.points.size(), {-1});
    for (uint32_t other = 0; other < Geometry().surfaces.size(); other++) {
        const SurfaceRecord& surface = Geometry().surfaces[other];
        if (other == self || (SurfaceFlags(surface) & TexturePhong) == 0) continue;
        if (!(Dot(polygon.normal, SurfaceNormal(surface)) > 0.2)) continue;
        const auto points = ConvexOutline(SurfaceEdgeEnds(surface), SurfaceNormal(surface));
        int first = -1;
        for (int i = 0; i < n; i++) {
            bool shared = false;
            for (const Vec3& p : points) shared |= NearlyEqual(p, polygon.points[static_cast<size_t>(i)], 0.0001);
            auto& listOfFirst = lists[static_cast<size_t>(std::max(first, 0))];
            auto& listOfThis = lists[static_cast<size_t>(i)];
            const auto id = static_cast<int32_t>(other);
            if (!shared) {
                if (first >= 0) listOfFirst.push_back(id);
            } else if (first < 0) {
                first = i;
            } else {
                if ((first + 1) % n == i) {
                    listOfFirst[0] = id;
                } else if ((i + 1) % n == first) {
                    listOfThis[0] = id;
                }
                listOfFirst.push_back(id);
                listOfThis.push_back(id);
                first = -1;
            }
        }
    }
    for (auto& list : lists) {
        const int32_t head = list[0];
        for (int32_t& entry : list) entry = entry == head ? -1 : entry;
        std::sort(list.begin(), list.end());
        list.erase(std::unique(list.begin(), list.end()), list.end());
        list.insert(list.begin(), head);
    }
    return lists;
}

TEST_F(Phong, NeighboursEqualThoseOfAWalkOverAllSurfaces) {
    std::mt19937 random(4);
    // A bumpy sheet of triangles and quads on a grid whose lines lie close to whole numbers.
    TestLevel level;
    const int16_t smoothTexture = level.Texture(TexturePhong, {1, 0, 0}, {0, -1, 0});
    std::vector<std::vector<Vec3>> grid(9, std::vector<Vec3>(9));
    for (size_t x = 0; x < 9; x++) {
        for (size_t y = 0; y < 9; y++) {
            grid[x][y] = {static_cast<float>(x) * 16, static_cast<float>(y) * 16, static_cast<float>(random() % 24)};
        }
    }
    for (size_t x = 0; x < 8; x++) {
        for (size_t y = 0; y < 8; y++) {
            std::vector<Vec3> ring{grid[x][y], grid[x][y + 1], grid[x + 1][y + 1]};
            if (random() % 2 == 0) ring.push_back(grid[x + 1][y]);
            for (Vec3& p : ring) p[0] += static_cast<float>(random() % 3) * 0.00008F - 0.00008F;
            Vec3 normal = Cross(Sub(ring[2], ring[0]), Sub(ring[1], ring[0]));
            Normalize(normal);
            const auto plane = level.Plane(normal, static_cast<float>(Dot(normal, ring[0])));
            level.Surface(ring, plane, 0, smoothTexture);
        }
    }
    const CPhongTable smooth;
    for (uint32_t i = 0; i < Geometry().surfaces.size(); i++) {
        ASSERT_EQ(MakePolygonInfo(i, smooth).edgeNeighbours, PlainNeighbours(i)) << i;
    }
}

TEST_F(Phong, APointIsInsideItsOutlineAndOnItsEdges) {
    TestLevel level;
    const uint32_t floor = level.Quad(2, 0, true, {0, 0, 0}, {64, 64, 0});
    EXPECT_TRUE(PointInSurface({32, 32, 0}, floor));
    EXPECT_TRUE(PointInSurface({32, 32, 90}, floor));  // the plane itself is not tested
    EXPECT_FALSE(PointInSurface({65, 32, 0}, floor));
    EXPECT_FALSE(PointInSurface({-1, 70, 0}, floor));
    // A line of points contains nothing.
    const uint32_t sliver = level.Surface({{0, 0, 0}, {0, 64, 0}}, level.Plane({0, 0, 1}, 0), 0, 1);
    EXPECT_FALSE(PointInSurface({0, 32, 0}, sliver));
}

TEST_F(Phong, APointOnAnEdgeCountsAsOnItsPositiveSide) {
    TestLevel level;
    const uint32_t floor = level.Quad(2, 0, true, {0, 0, 0}, {64, 64, 0});
    const PolygonInfo polygon = MakePolygonInfo(floor);
    const Vec3& a = polygon.points[0];
    Vec3 e = Sub(polygon.points[1], a);
    Normalize(e);
    const double inward = Dot(Sub(Vec3{32, 32, 0}, a), Cross(e, polygon.normal));
    EXPECT_EQ(PointInSurface({0, 32, 0}, floor), inward > 0);
    EXPECT_EQ(PointInSurface({32, 64, 0}, floor), inward > 0);
}

TEST_F(Phong, ASampleBeyondAnEdgeIsWalkedOntoTheNeighbour) {
    MakeStrip(4);
    Vec3 end;
    NormalAt(1, {40, 5, 0}, &end);  // on surface 2
    EXPECT_NEAR(end[0], 40, 1e-4);
    EXPECT_NEAR(end[2], 1, 1e-4);
    // Off the strip's end it stays on the last surface that it reached, one unit above the plane.
    NormalAt(3, {80, 5, 0}, &end);
    EXPECT_NEAR(end[0], 80, 1e-4);
}

TEST_F(Phong, AWalkAroundACornerFoldsTheSample) {
    // Beyond the edge the sample comes down the slope.
    MakeFloorAndSlope();
    const float d = std::sqrt(0.5F);
    Vec3 end;
    NormalAt(0, {74, 32, 0}, &end);
    EXPECT_NEAR(end[0], 64 + 10 * d + d, 1e-3);
    EXPECT_NEAR(end[2], -10 * d + d, 1e-3);
    // And the other way round: from the slope up onto the floor.
    NormalAt(1, {64 - 10 * d, 32, 10 * d}, &end);
    EXPECT_NEAR(end[0], 54, 1e-3);
    EXPECT_NEAR(end[2], 1, 1e-3);
}

TEST_F(Phong, AnEdgeAlongTheWayFromTheCornerIsNotAcrossFromIt) {
    // From the first corner straight up the edge x = 0, away from the slope: the edge on its other side is parallel.
    MakeFloorAndSlope();
    EXPECT_EQ(NormalAt(0, {0, 30, 0}), (Vec3{0, 0, 1}));
}

TEST_F(Phong, AnEdgeIsMetALittleBeyondItsEndsToo) {
    // The way from the first corner meets the line of the edge x = 64 at 1.02 of its length, which counts as its end.
    MakeFloorAndSlope();
    Vec3 atEnd{std::sqrt(0.5F), 0, 1 + std::sqrt(0.5F)};
    Normalize(atEnd);
    const float f = (40 * 64 + 40.8F * 64) / (2 * 64 * 64);
    Vec3 expected{atEnd[0] * f, 0, atEnd[2] * f + 1 - f};
    Normalize(expected);
    const Vec3 normal = NormalAt(0, {40, 40.8F, 0});
    for (size_t c = 0; c < 3; c++) EXPECT_NEAR(normal[c], expected[c], 1e-5);
}

TEST_F(Phong, WithoutAnEdgeAcrossTheNextCornerIsTried) {
    // Beyond the edge y = 0 there is no neighbour. Only from the third corner the way to the sample crosses an edge
    // that does not begin there: y = 0 itself, between a corner that is flat and one at the slope.
    MakeFloorAndSlope();
    const double t = (64 - 54 * 64 / 94.0) / 64;
    Vec3 atSlope{std::sqrt(0.5F), 0, 1 + std::sqrt(0.5F)};
    Normalize(atSlope);
    Vec3 expected{static_cast<float>(atSlope[0] * t), 0, static_cast<float>(atSlope[2] * t + 1 - t)};
    Normalize(expected);
    const Vec3 normal = NormalAt(0, {10, -30, 0});
    for (size_t c = 0; c < 3; c++) EXPECT_NEAR(normal[c], expected[c], 1e-5);
}

TEST_F(Phong, ASampleAtItsCornerKeepsThePolygonsNormal) {
    TestLevel level;
    const int16_t texinfo = level.Texture(TexturePhong, {1, 0, 0}, {0, -1, 0});
    const float d = std::sqrt(0.5F);
    level.Surface({{0, 0, 0}, {0, 64, 0}, {64, 64, 0}, {64, 0, 0}}, level.Plane({0, 0, 1}, 0), 0, texinfo);
    level.Surface({{0, 0, 0}, {0, 64, 0}, {-64 * d, 64, -64 * d}, {-64 * d, 0, -64 * d}}, level.Plane({-d, 0, d}, 0), 0,
                  texinfo);
    EXPECT_LT(NormalAt(0, {0, 0, 0})[0], -0.1F);  // one unit above the corner is far enough off ...
    Options().eps = 1;
    EXPECT_EQ(NormalAt(0, {0, 0, 0}), (Vec3{0, 0, 1}));  // ... but not for this tolerance
}

TEST_F(Phong, AWalkAroundASpireEndsWhereItBegan) {
    // Five steep sides, 6.7 degrees each at the tip: a sample 33.8 degrees off the middle of one goes round all of
    // them.
    TestLevel level;
    const int16_t texinfo = level.Texture(TexturePhong, {1, 0, 0}, {0, 0, -1});
    const Vec3 tip{0, 0, 200};
    const auto corner = [](int i) {
        const double angle = 2 * std::numbers::pi * (i % 5) / 5;
        return Vec3{static_cast<float>(20 * std::cos(angle)), static_cast<float>(20 * std::sin(angle)), 0};
    };
    for (int i = 0; i < 5; i++) {
        Vec3 normal = Cross(Sub(corner(i + 1), corner(i)), Sub(tip, corner(i)));
        Normalize(normal);
        const uint32_t plane = level.Plane(normal, static_cast<float>(Dot(normal, tip)));
        level.Surface({tip, corner(i + 1), corner(i)}, plane, 0, texinfo);
    }
    Vec3 down = Sub(Scale(Add(corner(0), corner(1)), 0.5F), tip);
    Vec3 aside = Sub(corner(1), corner(0));
    Normalize(down);
    Normalize(aside);
    const double angle = 33.8 * std::numbers::pi / 180;
    const Vec3 sample = PointAlong(PointAlong(tip, down, 100 * std::cos(angle)), aside, 100 * std::sin(angle));
    Vec3 end;
    NormalAt(0, sample, &end);
    const OrientedPlane plane = SurfacePlane(SurfaceRow(0));
    EXPECT_NEAR(Dot(end, plane.normal) - plane.dist, 0, 1e-3);  // not lifted, as where a walk finds its surface
    EXPECT_NEAR(Distance(end, tip), 100, 1e-2);
    EXPECT_NEAR(Dot(Sub(end, tip), aside), 100 * std::sin(angle - 5 * 6.7058 * std::numbers::pi / 180), 0.05);
}

TEST_F(Phong, BeyondDepthTenTheFlatNormalOfTheSurfaceReachedHolds) {
    MakeStrip(90);
    Options().verbose = true;
    Vec3 end;
    EXPECT_EQ(NormalAt(0, {1400, 5, 0}, &end), (Vec3{0, 0, 1}));
    EXPECT_EQ(TakeLoggedText(), "\n WARNING W081: Recursion in phong interpolation !\n");
    NormalAt(0, {1400, 5, 0}, &end);
    EXPECT_EQ(TakeLoggedText(), "");
}

TEST_F(Phong, TheRecursionWarningIsForVerboseRunsOnly) {
    MakeStrip(90);
    NormalAt(0, {1400, 5, 0});
    EXPECT_EQ(TakeLoggedText(), "");
}

TEST_F(Phong, NineFullWalksAreNoRecursion) {
    // Six surfaces a walk; the tenth visit still interpolates.
    MakeStrip(90);
    Options().verbose = true;
    NormalAt(0, {16 * 54 + 8, 5, 0});
    EXPECT_EQ(TakeLoggedText(), "");
    NormalAt(0, {16 * 66 + 8, 5, 0});
    EXPECT_NE(TakeLoggedText(), "");
}

TEST_F(Phong, ABackSideSurfaceReachedFlatNegatesItsPlaneAtEachVisit) {
    MakeStrip(90, 1);
    const Vec3 before = Geometry().planes[0].normal;
    EXPECT_EQ(before, (Vec3{0, 0, -1}));
    EXPECT_EQ(NormalAt(0, {1400, 5, 0}), Negate(before));
    EXPECT_EQ(Geometry().planes[0].normal, Negate(before));
    EXPECT_EQ(Geometry().planes[0].dist, 0);
    NormalAt(0, {1400, 5, 0});
    EXPECT_EQ(Geometry().planes[0].normal, before);
}

TEST_F(Phong, WhereOrderWouldMatterTheAnswerIsRefusedAndNothingChanged) {
    MakeStrip(90, 1);
    const Vec3 before = Geometry().planes[0].normal;
    EXPECT_THROW(NormalAt(0, {1400, 5, 0}, nullptr, PlaneFlips::Refuse), PlaneFlipNeeded);
    EXPECT_EQ(Geometry().planes[0].normal, before);
    EXPECT_NO_THROW(NormalAt(0, {40, 5, 0}, nullptr, PlaneFlips::Refuse));
    MakeStrip(90, 0);
    EXPECT_EQ(NormalAt(0, {1400, 5, 0}, nullptr, PlaneFlips::Refuse), (Vec3{0, 0, 1}));
    Options().verbose = true;
    EXPECT_THROW(NormalAt(0, {1400, 5, 0}, nullptr, PlaneFlips::Refuse), PlaneFlipNeeded);
    EXPECT_EQ(TakeLoggedText(), "");
}

TEST_F(Phong, ASurfaceWithoutAreaKeepsItsPlanesNormal) {
    TestLevel level;
    const int16_t texinfo = level.Texture(TexturePhong, {1, 0, 0}, {0, -1, 0});
    const uint32_t plane = level.Plane({0, 0, 1}, 0);
    const uint32_t line = level.Surface({{0, 0, 0}, {64, 0, 0}}, plane, 0, texinfo);
    const uint32_t nothing = level.Surface({}, plane, 1, texinfo);
    Vec3 end;
    EXPECT_EQ(NormalAt(line, {5, 5, 5}, &end), (Vec3{0, 0, 1}));
    EXPECT_EQ(end, (Vec3{5, 5, 5}));
    EXPECT_EQ(NormalAt(nothing, {5, 5, 5}), (Vec3{-0.0F, -0.0F, -1}));
}

TEST_F(Phong, TheCacheKeepsPolygonsThatAreHeld) {
    MakeStrip(200);
    const CPhongTable smooth;
    CPolygonCache cache(smooth);
    PolygonInfo* held = &cache.GetPolygon(0);
    for (uint32_t i = 1; i < 200; i++) {
        cache.GetPolygon(i);
        cache.ReleasePolygon(i);
    }
    EXPECT_EQ(&cache.GetPolygon(0), held);
    EXPECT_EQ(held->surfaceIndex, 0U);
}

TEST_F(Phong, ACacheWithAllSlotsHeldIsFatal) {
    MakeStrip(81);
    const CPhongTable smooth;
    CPolygonCache cache(smooth);
    for (uint32_t i = 0; i < PolygonCacheSlots; i++) cache.GetPolygon(i);
    ExpectFatal([&] { cache.GetPolygon(80); }, "Couldn't create polygon information- complex geometry !");
    cache.GetPolygon(79);
    cache.ReleasePolygon(7);
    EXPECT_EQ(cache.GetPolygon(80).surfaceIndex, 80U);
    cache.Empty();
    EXPECT_EQ(cache.GetPolygon(3).surfaceIndex, 3U);
}

}  // namespace
}  // namespace k2k::test
