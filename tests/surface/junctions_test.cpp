#include <gtest/gtest.h>

#include "plain_junctions.h"
#include "surface/junction_table.h"
#include "surface_fixture.h"

namespace k2k {
namespace {

using test::AddFace;
using test::Area;
using test::Dice;
using test::ExpectFatal;
using test::MakeFace;
using test::MakeNode;
using test::Points;
using test::Rectangle;

constexpr Vec3 Mins{-256, -256, -256};
constexpr Vec3 Maxs{256, 256, 256};

class JunctionTest : public test::SurfaceTest {
  protected:
    static void Repair(CBspNode& root) { RepairJunctions(root, Mins, Maxs); }

    static Points PointsOfBlock(const CBspNode& node, int32_t block) {
        for (const CBlockFace& face : node.faces) {
            if (face.sourceBlock == block) return face.points;
        }
        return {};
    }
};

TEST_F(JunctionTest, InsertsAVertexThatLiesOnASide) {
    auto root = MakeNode(Floor());
    AddFace(*root, MakeFace(Floor(), Rectangle(0, 0, 64, 64), 1));
    AddFace(*root, MakeFace(Floor(), Rectangle(-8, 16, 0, 48), 2));
    Repair(*root);
    EXPECT_EQ(PointsOfBlock(*root, 1),
              (Points{{0, 0, 0}, {0, 16, 0}, {0, 48, 0}, {0, 64, 0}, {64, 64, 0}, {64, 0, 0}}));
    EXPECT_EQ(PointsOfBlock(*root, 2), Rectangle(-8, 16, 0, 48));
}

TEST_F(JunctionTest, InsertsOnTheLastSideAtTheStartOfTheRing) {
    auto root = MakeNode(Floor());
    AddFace(*root, MakeFace(Floor(), Rectangle(0, 0, 64, 64), 1));
    AddFace(*root, MakeFace(Floor(), Rectangle(16, -8, 48, 0), 2));
    Repair(*root);
    // The last side runs from (64, 0) to (0, 0). The point at 16 comes first and takes place 0; the one at 48 lies on
    // what is the last side then, and takes place 0 in turn.
    EXPECT_EQ(PointsOfBlock(*root, 1),
              (Points{{48, 0, 0}, {16, 0, 0}, {0, 0, 0}, {0, 64, 0}, {64, 64, 0}, {64, 0, 0}}));
}

TEST_F(JunctionTest, LeavesFacesAloneWithNotjunc) {
    Options().notjunc = true;
    auto root = MakeNode(Floor());
    AddFace(*root, MakeFace(Floor(), Rectangle(0, 0, 64, 64), 1));
    AddFace(*root, MakeFace(Floor(), Rectangle(-8, 16, 0, 48), 2));
    Repair(*root);
    EXPECT_EQ(root->faces.front()->sourceBlock, 1);
    EXPECT_EQ(PointsOfBlock(*root, 1), Rectangle(0, 0, 64, 64));
}

TEST_F(JunctionTest, ReversesTheFacesOfANode) {
    auto root = MakeNode(Floor());
    AddFace(*root, MakeFace(Floor(), Rectangle(0, 0, 64, 64), 1));
    AddFace(*root, MakeFace(Floor(), Rectangle(128, 0, 192, 64), 2));
    Repair(*root);
    EXPECT_EQ(root->faces.front()->sourceBlock, 2);
    EXPECT_EQ(root->faces.front()->next->sourceBlock, 1);
}

TEST_F(JunctionTest, MeasuresDistancesInDouble) {
    JunctionTable junctions(Mins, Maxs);
    const auto upright = [&](float x) { return junctions.FindJunctionEdge({x, 8, 0}, {x, 8, 16}, 1).edge; };
    // A hair below a thousandth apart; the difference rounded to 32 bits is a hair above.
    const int32_t edge = upright(0x1.149214p-10F);
    EXPECT_EQ(upright(0x1.cda6dcp-15F), edge);
    // A hair above a hundredth, which rounds to below.
    junctions.AddJunctionPoint(edge, 0x1.5e03f6p-9F);
    junctions.AddJunctionPoint(edge, 0x1.9f2f12p-7F);
    EXPECT_EQ(junctions.edges()[static_cast<size_t>(edge)].points.size(), 2U);
}

TEST_F(JunctionTest, MeasuresTheWayFromACornerInDouble) {
    JunctionTable junctions(Mins, Maxs);
    const JunctionSide side = junctions.FindJunctionEdge({0, 0, 1}, {0, 0, 16}, 1);
    constexpr float NearCorner = 1.01F;  // a hair below 1.01, which is the same in 32 bits
    junctions.AddJunctionPoint(side.edge, NearCorner);
    EXPECT_FALSE(junctions.MissingPoint(side));
}

TEST_F(JunctionTest, IgnoresAPointNearerThanAHundredthToACorner) {
    auto root = MakeNode(Floor());
    AddFace(*root, MakeFace(Floor(), Rectangle(0, 0, 64, 64), 1));
    AddFace(*root, MakeFace(Floor(), Rectangle(-8, 0.009F, 0, 63.98F), 2));
    Repair(*root);
    EXPECT_EQ(PointsOfBlock(*root, 1), (Points{{0, 0, 0}, {0, 63.98F, 0}, {0, 64, 0}, {64, 64, 0}, {64, 0, 0}}));
}

TEST_F(JunctionTest, RepairsAcrossNodes) {
    auto root = MakeNode(Floor(), MakeNode(Floor()));
    AddFace(*root, MakeFace(Floor(), Rectangle(0, 0, 64, 64), 1));
    AddFace(*root->children[0], MakeFace(Floor(), {{0, 16, 0}, {0, 48, 0}, {0, 48, 64}, {0, 16, 64}}, 2));
    Repair(*root);
    EXPECT_EQ(PointsOfBlock(*root, 1).size(), 6U);
}

// Faces along the left side of a big one; each gives it a vertex on its border to the next.
std::unique_ptr<CBspNode> Comb(int teeth) {
    auto root = MakeNode(0);
    AddFace(*root, MakeFace(0, Rectangle(0, 0, 64, 64), 1));
    const float height = 64.0F / static_cast<float>(teeth);
    for (int i = 0; i < teeth; ++i) {
        const float y = height * static_cast<float>(i);
        AddFace(*root, MakeFace(0, Rectangle(-8, y, 0, y + height), 2));
    }
    return root;
}

TEST_F(JunctionTest, KeepsAFaceWholeUpTo28Vertices) {
    Floor();
    auto root = Comb(25);
    Repair(*root);
    EXPECT_EQ(root->faces.size(), 26U);
    EXPECT_EQ(PointsOfBlock(*root, 1).size(), 28U);
}

TEST_F(JunctionTest, SplitsAFaceThatGets29Vertices) {
    Floor();
    auto root = Comb(26);
    Repair(*root);
    EXPECT_EQ(root->faces.size(), 28U);
    double area = 0;
    for (const CBlockFace& face : root->faces) {
        EXPECT_LE(face.numpoints(), 28);
        if (face.sourceBlock == 1) area += Area(face.points);
    }
    EXPECT_NEAR(area, 64 * 64, 0.01);
}

TEST_F(JunctionTest, WarnsOnceOfASideWithoutLength) {
    auto root = MakeNode(Floor());
    AddFace(*root, MakeFace(Floor(), {{0, 0, 0}, {0, 0, 0}, {64, 64, 0}, {64, 0, 0}}, 12));
    Repair(*root);
    EXPECT_EQ(TakeLoggedText(), " \nWARNING W201: block 11 - null length edge!");
}

TEST_F(JunctionTest, WarnsOfANullSideWithoutABlock) {
    auto root = MakeNode(Floor());
    AddFace(*root, MakeFace(Floor(), {{0, 0, 0}, {0, 0, 0}, {64, 64, 0}, {64, 0, 0}}, 0));
    Repair(*root);
    EXPECT_EQ(TakeLoggedText(), " \nWARNING W202: null length edge!");
}

TEST_F(JunctionTest, WarnsAtEveryLookUpWithVerbose) {
    Options().verbose = true;
    auto root = MakeNode(Floor());
    AddFace(*root, MakeFace(Floor(), {{0, 0, 0}, {0, 0, 0}, {64, 64, 0}, {64, 0, 0}}, 12));
    AddFace(*root, MakeFace(Floor(), Rectangle(64, 16, 72, 48), 2));
    Repair(*root);
    // Once when the sides are entered, once in each of the three passes over the face that gains two vertices.
    const std::string warning = " \nWARNING W201: block 11 - null length edge!";
    EXPECT_EQ(TakeLoggedText(), warning + warning + warning + warning);
}

TEST_F(JunctionTest, IsSilentWithQuiet) {
    Options().quiet = true;
    auto root = MakeNode(Floor());
    AddFace(*root, MakeFace(Floor(), {{0, 0, 0}, {0, 0, 0}, {64, 64, 0}, {64, 0, 0}}, 12));
    Repair(*root);
    EXPECT_EQ(TakeLoggedText(), "");
}

TEST_F(JunctionTest, RefusesToSplitAPieceAgain) {
    Floor();
    auto root = Comb(26);
    root->faces.front()->leafCopy = root->faces.front()->next;
    ExpectFatal([&] { Repair(*root); }, "E104");
}

TEST_F(JunctionTest, TurnsLinesToTheirFirstPositiveComponent) {
    JunctionTable table(Mins, Maxs);
    const JunctionSide there = table.FindJunctionEdge({10, 20, 30}, {10, 4, 30}, 0);
    const JunctionSide back = table.FindJunctionEdge({10, 4, 30}, {10, 20, 30}, 0);
    EXPECT_EQ(there.edge, back.edge);
    EXPECT_EQ(table.edges()[0].dir[1], 1);
    EXPECT_EQ(table.edges()[0].origin, (Vec3{10, 0, 30}));
    EXPECT_EQ(there.t1, 4);
    EXPECT_EQ(there.t2, 20);
    EXPECT_EQ(back.t1, 4);
}

TEST_F(JunctionTest, NarrowsOriginsAndInsertedPointsOnce) {
    JunctionTable table(Mins, Maxs);
    const Vec3 p1{17.3F, -201.7F, 93.1F};
    const Vec3 p2{131.9F, 77.7F, -3.3F};
    const JunctionSide side = table.FindJunctionEdge(p1, p2, 0);
    const JunctionEdge& edge = table.edges()[0];
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(edge.origin[i], static_cast<float>(p1[i] - static_cast<double>(side.t1) * edge.dir[i]));
    }
    const float t = side.t1 + 33.3F;
    table.AddJunctionPoint(side.edge, t);
    const auto missing = table.MissingPoint(side);
    ASSERT_TRUE(missing);
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_EQ((*missing)[i], static_cast<float>(edge.origin[i] + static_cast<double>(t) * edge.dir[i]));
    }
}

TEST_F(JunctionTest, ClearsSmallComponentsInFrontOfTheFirst) {
    JunctionTable table(Mins, Maxs);
    table.FindJunctionEdge({0, 0, 0}, {0.05F, 64, 0.05F}, 0);
    EXPECT_EQ(table.edges()[0].dir[0], 0);
    EXPECT_NE(table.edges()[0].dir[2], 0) << "behind the deciding component nothing is cleared";
}

TEST_F(JunctionTest, UsesTheVerticalForASideWithoutLength) {
    JunctionTable table(Mins, Maxs);
    const JunctionSide side = table.FindJunctionEdge({1, 2, 3}, {1, 2, 3}, 0);
    EXPECT_TRUE(side.isNull);
    EXPECT_EQ(table.edges()[0].dir, (Vec3{0, 0, 1}));
    EXPECT_EQ(side.t1, 3);
}

TEST_F(JunctionTest, FindsALineWithinAThousandthAndTheLatestFirst) {
    JunctionTable table(Mins, Maxs);
    const auto find = [&](float x) { return table.FindJunctionEdge({x, 0, 0}, {x, 0, 64}, 0).edge; };
    EXPECT_EQ(find(8), 0);
    EXPECT_EQ(find(8.0009F), 0);
    EXPECT_EQ(find(8.0015F), 1);
    EXPECT_EQ(find(8.0008F), 1);
}

TEST_F(JunctionTest, KeepsPointsSortedAndAHundredthApart) {
    JunctionTable table(Mins, Maxs);
    table.FindJunctionEdge({0, 0, 0}, {0, 0, 64}, 0);
    for (const float t : {5.0F, 1.0F, 3.0F, 5.009F, 4.991F, 5.011F, 3.0F}) table.AddJunctionPoint(0, t);
    EXPECT_EQ(table.edges()[0].points, (std::vector<float>{1, 3, 5, 5.011F}));
}

TEST_F(JunctionTest, KeepsPointsAsAWalkFromTheStartDoes) {
    Dice dice(11);
    for (int run = 0; run < 50; ++run) {
        JunctionTable table(Mins, Maxs);
        table.FindJunctionEdge({0, 0, 0}, {0, 0, 64}, 0);
        std::vector<float> walked;
        for (int i = 0; i < 300; ++i) {
            const float t = dice.Between(-1, 1);
            table.AddJunctionPoint(0, t);
            auto at = walked.begin();
            while (at != walked.end() && !(std::fabs(t - *at) < 0.01) && !(t < *at)) ++at;
            if (at == walked.end() || !(std::fabs(t - *at) < 0.01)) walked.insert(at, t);
        }
        ASSERT_EQ(table.edges()[0].points, walked);
    }
}

TEST_F(JunctionTest, StopsAtTheEndsOfItsPools) {
    JunctionTable table(Mins, Maxs);
    const auto find = [&](int i) {
        const Vec3 start{static_cast<float>(i % 1024), static_cast<float>(i / 1024), 0};
        table.FindJunctionEdge(start, {start[0], start[1], 64}, 0);
    };
    for (int i = 0; i < 524288; ++i) find(i);
    find(77);
    ExpectFatal([&] { find(524288); }, "E101: Map size - too many edges!");

    for (int i = 0; i < 1048576; ++i) table.AddJunctionPoint(i % 524288, static_cast<float>(i / 524288));
    table.AddJunctionPoint(5, 0);
    ExpectFatal([&] { table.AddJunctionPoint(5, 7); }, "E103: Map size - too many edge vertices!");
}

// Rectangles of a floor and walls on a coarse raster, some a little off, so that sides overlap in many ways.
std::unique_ptr<CBspNode> RandomTree(Dice& dice, int faces) {
    auto root = MakeNode(0);
    CBspNode* node = root.get();
    for (int i = 0; i < faces; ++i) {
        if (dice.Roll(0, 9) == 0) {
            node->children[0] = MakeNode(0);
            node = node->children[0].get();
        }
        const float x0 = static_cast<float>(dice.Roll(-40, 20));
        const float y0 = static_cast<float>(dice.Roll(-4, 2) * 16);
        const float x1 = x0 + static_cast<float>(dice.Roll(1, 60));
        const float y1 = y0 + static_cast<float>(dice.Roll(1, 4) * 16);
        Points points = Rectangle(x0, y0, x1, y1);
        if (dice.Roll(0, 3) == 0) {
            for (Vec3& point : points) std::swap(point[0], point[2]);
        }
        if (dice.Roll(0, 3) == 0) {
            for (Vec3& point : points)
                point = {point[0] * 0.6F + point[1] * 0.8F, point[0] * 0.8F - point[1] * 0.6F, point[2]};
        }
        if (dice.Roll(0, 9) == 0) points[0][1] += dice.Between(-0.02F, 0.02F);
        AddFace(*node, MakeFace(0, points, i + 1));
    }
    return root;
}

struct FixedFace {
    int32_t block;
    Points points;
    int chainLength;
    bool operator==(const FixedFace&) const = default;
};

std::vector<FixedFace> Outcome(CBspNode& root) {
    std::vector<FixedFace> outcome;
    for (CBspNode* node = &root; !node->IsLeaf(); node = node->children[0].get()) {
        for (const CBlockFace& face : node->faces) {
            int length = 0;
            for (const CBlockFace* piece = face.leafCopy; piece != nullptr; piece = piece->leafCopy) ++length;
            outcome.push_back({face.sourceBlock, face.points, length});
        }
    }
    return outcome;
}

TEST_F(JunctionTest, GivesTheFacesOfPlainChainsAndPasses) {
    int added = 0;
    for (uint32_t seed = 1; seed <= 30; ++seed) {
        Dice dice(seed);
        auto root = RandomTree(dice, 80);
        Dice again(seed);
        auto plainRoot = RandomTree(again, 80);

        Repair(*root);
        test::PlainJunctions plain(Mins, Maxs);
        for (CBspNode* node = plainRoot.get(); !node->IsLeaf(); node = node->children[0].get()) {
            for (const CBlockFace& face : node->faces) plain.Enter(face);
        }
        for (CBspNode* node = plainRoot.get(); !node->IsLeaf(); node = node->children[0].get()) {
            FaceList fixed;
            while (!node->faces.empty()) plain.Fix(node->faces.pop_front(), fixed);
            node->faces = std::move(fixed);
        }
        ASSERT_EQ(Outcome(*root), Outcome(*plainRoot)) << "seed " << seed;
        added += plain.added;
    }
    EXPECT_GT(added, 1000);
}

TEST_F(JunctionTest, LeavesNoVertexInsideASide) {
    Dice dice(99);
    auto root = MakeNode(Floor());
    for (int x = 0; x < 8; ++x) {
        // Columns of a wall of bricks, each cut at heights of its own.
        float y = 0;
        while (y < 128) {
            const float top = std::min(128.0F, y + static_cast<float>(dice.Roll(8, 40)));
            const auto left = static_cast<float>(x * 16);
            AddFace(*root, MakeFace(Floor(), Rectangle(left, y, left + 16, top)));
            y = top;
        }
    }
    Repair(*root);
    MapPlanes(*root);
    MakeSurfaces(*root);
    // With every junction closed, each inner edge is walked once in each direction.
    std::vector<int> walks(Geometry().edges.size());
    for (const int32_t entry : Geometry().surfaceEdges) ++walks[static_cast<size_t>(std::abs(entry))];
    for (size_t e = 1; e < walks.size(); ++e) {
        const CEdge& edge = Geometry().edges[e];
        const Vec3& a = Geometry().vertices[edge.first];
        const Vec3& b = Geometry().vertices[edge.second];
        const bool onRim = (a[0] == b[0] && (a[0] == 0 || a[0] == 128)) || (a[1] == b[1] && (a[1] == 0 || a[1] == 128));
        EXPECT_EQ(walks[e], onRim ? 1 : 2) << a[0] << " " << a[1] << " to " << b[0] << " " << b[1];
    }
}

}  // namespace
}  // namespace k2k
