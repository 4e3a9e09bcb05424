#include "surface/edge_table.h"

#include <gtest/gtest.h>

#include <map>

#include "plain_edges.h"
#include "surface_fixture.h"

namespace k2k {
namespace {

using test::Dice;
using test::ExpectFatal;
using test::MakeFace;
using test::PlainEdges;
using test::Points;
using test::Rectangle;

class EdgeTest : public test::SurfaceTest {
  protected:
    EdgeTest() { table_.Begin(56000, Geometry()); }

    std::vector<int32_t> Build(CBlockFace& face) {
        table_.BuildSurfaceEdges(face, Geometry());
        return face.edges;
    }
    std::vector<int32_t> Build(const Points& points, int32_t frontContents = ContentsEmpty) {
        auto face = MakeFace(0, points);
        face->contents[0] = frontContents;
        return Build(*face);
    }

    EdgeTable table_;
};

TEST_F(EdgeTest, BuildsARingOfNewEdges) {
    EXPECT_EQ(Build(Rectangle(0, 0, 64, 64)), (std::vector<int32_t>{1, 2, 3, 4}));
    EXPECT_EQ(Geometry().vertices.size(), 4U);
    EXPECT_EQ(Geometry().edges[4].first, 3U);
    EXPECT_EQ(Geometry().edges[4].second, 0U);
}

TEST_F(EdgeTest, SharesASideWalkedInOppositeDirections) {
    Build(Rectangle(0, 0, 64, 64));
    EXPECT_EQ(Build(Rectangle(64, 0, 128, 64)), (std::vector<int32_t>{-3, 5, 6, 7}));
}

TEST_F(EdgeTest, MakesTwoEdgesOfASideWalkedInOneDirection) {
    Build({{0, 0, 0}, {64, 0, 0}, {64, 64, 0}});
    EXPECT_EQ(Build({{0, 0, 0}, {64, 0, 0}, {64, 0, 64}})[0], 4);
}

TEST_F(EdgeTest, GivesAThirdFaceAnEdgeOfItsOwn) {
    Build({{0, 0, 0}, {64, 0, 0}, {64, 64, 0}});
    EXPECT_EQ(Build({{64, 0, 0}, {0, 0, 0}, {0, -64, 0}})[0], -1);
    EXPECT_GT(Build({{64, 0, 0}, {0, 0, 0}, {0, 0, 64}})[0], 0);
}

TEST_F(EdgeTest, SharesTheLatestEdgeFirst) {
    Build({{0, 0, 0}, {64, 0, 0}, {64, 64, 0}});
    Build({{0, 0, 0}, {64, 0, 0}, {64, 0, 64}});
    EXPECT_EQ(Build({{64, 0, 0}, {0, 0, 0}, {0, -64, 0}})[0], -4);
    EXPECT_EQ(Build({{64, 0, 0}, {0, 0, 0}, {0, -64, 0}})[0], -1);
}

TEST_F(EdgeTest, DoesNotShareBetweenDifferentContents) {
    Build({{0, 0, 0}, {64, 0, 0}, {64, 64, 0}}, ContentsEmpty);
    EXPECT_GT(Build({{64, 0, 0}, {0, 0, 0}, {0, -64, 0}}, ContentsSolid + ContentsOpen)[0], 0);
}

TEST_F(EdgeTest, DoesNotShareWhenTheGivenPointsHashDifferently) {
    table_.Begin(45, Geometry());  // a grid of one unit: the border at x = 0 parts the points, snapping joins them
    Build({{0.0009F, 0, 0}, {30, 0, 0}, {30, 30, 0}});
    EXPECT_EQ(Build({{30, 0, 0}, {-0.0009F, 0, 0}, {0, -30, 0}})[0], 4);
    EXPECT_EQ(Geometry().edges[4].first, Geometry().edges[1].second);
    EXPECT_EQ(Geometry().edges[4].second, Geometry().edges[1].first);
}

TEST_F(EdgeTest, RefusesAFaceWithoutFrontContents) {
    ExpectFatal([&] { Build(Rectangle(0, 0, 64, 64), 0); }, "E09A");
}

TEST_F(EdgeTest, RefusesMoreThan40Vertices) {
    Points circle;
    for (int i = 0; i < 41; ++i) circle.push_back({static_cast<float>(i), static_cast<float>(i * i), 0});
    auto face = MakeFace(0, circle, 17);
    ExpectFatal([&] { Build(*face); }, "E09C - Block 16 has too many edges");
    face->points.pop_back();
    EXPECT_EQ(Build(*face).size(), 40U);
}

TEST_F(EdgeTest, MarksTheFaceAsNotYetEmitted) {
    auto face = MakeFace(0, Rectangle(0, 0, 64, 64));
    face->outputIndex = 5;
    Build(*face);
    EXPECT_EQ(face->outputIndex, -1);
}

TEST_F(EdgeTest, SharesNothingBetweenModels) {
    Build(Rectangle(0, 0, 64, 64));
    table_.Begin(56000, Geometry());
    EXPECT_EQ(Build(Rectangle(64, 0, 128, 64)), (std::vector<int32_t>{5, 6, 7, 8}));
    EXPECT_EQ(Geometry().vertices.size(), 8U);
    EXPECT_EQ(Build(Rectangle(128, 0, 192, 64))[0], -7);
}

TEST_F(EdgeTest, StopsAtTheEndOfItsPool) {
    auto face = MakeFace(0, {});
    const auto addEdge = [&] { table_.EdgeNumber({0, 0, 0}, {64, 0, 0}, *face, Geometry()); };
    Geometry().edges.resize(512000 - 1);
    table_.Begin(56000, Geometry());
    addEdge();
    EXPECT_EQ(Geometry().edges.size(), 512000U);
    ExpectFatal(addEdge, "E023: Map size - too many edges");
    EXPECT_EQ(Geometry().edges.size(), 512000U);
}

// Faces between the points of a small raster, each of them moved a little.
std::vector<std::unique_ptr<CBlockFace>> RandomFaces(Dice& dice, int count, float shift) {
    std::vector<std::unique_ptr<CBlockFace>> faces;
    for (int i = 0; i < count; ++i) {
        Points points;
        for (int corner = dice.Roll(3, 6); corner > 0; --corner) {
            Vec3 point;
            for (float& v : point) v = static_cast<float>(dice.Roll(-2, 2)) + dice.Between(-shift, shift);
            points.push_back(point);
        }
        faces.push_back(MakeFace(dice.Roll(0, 5), points));
        if (dice.Roll(0, 3) == 0) faces.back()->contents[0] = ContentsSolid + ContentsOpen;
    }
    return faces;
}

TEST_F(EdgeTest, GivesTheNumbersOfPlainChains) {
    for (uint32_t seed = 1; seed <= 20; ++seed) {
        Dice dice(seed);
        const float bound = seed % 2 == 0 ? 56000 : 45;
        PlainEdges plain(bound);
        Geometry() = CGeometryData();
        Geometry().edges.resize(1);
        table_.Begin(bound, Geometry());
        const auto faces = RandomFaces(dice, 150, 0.12F);
        for (const auto& face : faces) {
            Build(*face);
            for (size_t i = 0; i < face->points.size(); ++i) {
                const Vec3& next = face->points[(i + 1) % face->points.size()];
                ASSERT_EQ(face->edges[i], plain.EdgeNumber(face->points[i], next, *face)) << "seed " << seed;
            }
        }
        ASSERT_EQ(Geometry().vertices, plain.vertices);
    }
}

TEST_F(EdgeTest, ClosesEveryRingAndSharesEachEdgeAtMostOnce) {
    Dice dice(5);
    const auto faces = RandomFaces(dice, 400, 0.04F);
    std::map<int32_t, int> uses;
    for (const auto& face : faces) {
        const std::vector<int32_t> ring = Build(*face);
        for (size_t i = 0; i < ring.size(); ++i) {
            const int32_t here = ring[i];
            const int32_t next = ring[(i + 1) % ring.size()];
            const CEdge& edge = Geometry().edges[static_cast<size_t>(std::abs(here))];
            const CEdge& follower = Geometry().edges[static_cast<size_t>(std::abs(next))];
            EXPECT_EQ(here > 0 ? edge.second : edge.first, next > 0 ? follower.first : follower.second);
            EXPECT_EQ(++uses[here], 1) << "an edge walked twice in one direction";
        }
    }
}

}  // namespace
}  // namespace k2k
