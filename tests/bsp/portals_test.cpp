#include "bsp/portals.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <list>
#include <map>
#include <random>
#include <tuple>

#include "bsp/portal_file.h"
#include "bsp/test_blocks.h"
#include "bsp/tree_build.h"
#include "solid/csg.h"

namespace k2k {
namespace {

using test::Box;
using test::BoxSet;
using test::RoomWalls;

std::vector<const CPortal*> PortalsOf(const CBspNode& node) {
    std::vector<const CPortal*> list;
    for (const CPortal* portal = node.portals; portal != nullptr; portal = portal->NextAt(node)) list.push_back(portal);
    return list;
}

// Portals as plain lists of numbers: each node's list is searched for what leaves it.
class PlainPortals {
  public:
    // The sides of the tree's box, as they stand before the root is cut.
    PlainPortals(const TreePortals& box, const CBspNode& root) {
        for (const CPortal& side : box.store) {
            portals_.push_back({side.planenum, side.nodes, side.polygon});
        }
        lists_[&root] = lists_[&box.outside] = {5, 4, 3, 2, 1, 0};
        Cut(root);
    }

    // Plane, points, and whether the node is the first one, in list order.
    using Seen = std::tuple<int32_t, std::vector<Vec3d>, bool>;
    std::vector<Seen> At(const CBspNode& node) {
        std::vector<Seen> seen;
        for (const size_t number : lists_[&node]) {
            const Portal& portal = portals_[number];
            seen.emplace_back(portal.planenum, portal.polygon->points, portal.nodes[0] == &node);
        }
        return seen;
    }

  private:
    struct Portal {
        int32_t planenum;
        std::array<CBspNode*, 2> nodes;
        PolygonRef polygon;
    };

    void Attach(size_t number) {
        for (const CBspNode* node : portals_[number].nodes) lists_[node].push_front(number);
    }

    void Cut(const CBspNode& node) {
        if (node.IsLeaf()) return;
        const CPlane plane = TablePlane(node.planenum);
        PolygonRef opening = BasePolygonForPlane(plane.normal, plane.dist);
        for (const size_t number : lists_[&node]) {
            const CPlane& bound = TablePlane(portals_[number].planenum);
            const bool isFirst = portals_[number].nodes[0] == &node;
            opening = ClipPolygon(opening, isFirst ? bound : FlippedPlane(bound), true, Options().eps);
        }
        CBspNode* front = node.children[0].get();
        CBspNode* back = node.children[1].get();
        portals_.push_back({node.planenum, {front, back}, opening});
        Attach(portals_.size() - 1);
        for (const size_t number : std::list<size_t>(lists_[&node])) {
            for (const CBspNode* end : portals_[number].nodes) lists_[end].remove(number);
            const size_t side = portals_[number].nodes[0] == &node ? 0 : 1;
            const PolygonPieces pieces = SplitPolygon(portals_[number].polygon, plane, 0.0);
            portals_[number].nodes[side] = pieces.front ? front : back;
            const Portal whole = portals_[number];
            if (pieces.front) portals_[number].polygon = pieces.front;
            Attach(number);
            if (!pieces.front || !pieces.back) continue;
            portals_.push_back(whole);
            portals_.back().polygon = pieces.back;
            portals_.back().nodes[side] = back;
            Attach(portals_.size() - 1);
        }
        Cut(*front);
        Cut(*back);
    }

    std::vector<Portal> portals_;
    std::map<const CBspNode*, std::list<size_t>> lists_;
};

std::vector<PlainPortals::Seen> SeenAt(const CBspNode& node) {
    std::vector<PlainPortals::Seen> seen;
    for (const CPortal* portal : PortalsOf(node)) {
        seen.emplace_back(portal->planenum, portal->polygon->points, portal->nodes[0] == &node);
    }
    return seen;
}

class TreePortalTest : public test::LevelTest {
  protected:
    TreePortalTest() { plain_ = test::AddTexture(TextureNoLightmap); }

    void AddEntity(const Vec3& origin) { NewEntity().origin = origin; }

    std::unique_ptr<CBspNode> TreeOf(const CBlockSet& set, bool midSplit = true) {
        return SolidBsp(CSGFaces(set, false), midSplit, 0, set);
    }

    // A room of 64 units a side with an entity at its middle; the roof is shifted away by gap.
    CBlockSet Room(float gap = 0) {
        std::vector<Box> walls = RoomWalls({0, 0, 0}, {64, 64, 64}, 8, plain_);
        walls.back().mins[2] += gap;
        walls.back().maxs[2] += gap;
        return BoxSet(walls);
    }

    int32_t plain_ = 0;
};

TEST_F(TreePortalTest, ASingleLeafGetsOnlyTheSixSidesOfItsBox) {
    CBlockSet set;
    set.mins = {0, 0, 0};
    set.maxs = {16, 16, 16};
    auto root = SolidBsp({}, true, 0, set);
    TreePortals portals;
    MakeTreePortals(portals, *root, set, 0);
    const auto sides = PortalsOf(*root);
    ASSERT_EQ(sides.size(), 6U);
    for (const CPortal* side : sides) {
        EXPECT_EQ(&side->FarSide(*root), &portals.outside);
        Vec3d mins, maxs;
        PolygonBounds(*side->polygon, mins, maxs);
        for (size_t i = 0; i < 3; ++i) {
            EXPECT_TRUE(mins[i] == -24 || mins[i] == 40);
            EXPECT_TRUE(maxs[i] == -24 || maxs[i] == 40);
        }
    }
    Paths().PortalPath = "level.$$p";
    WritePortalFile(*root);
    EXPECT_EQ(test::ReadFile("level.$$p"), "PORT\n0\n0\n");
}

TEST_F(TreePortalTest, TheBoxSidesStandInTheOrderOfAxesAndFaceInwards) {
    CBlockSet set;
    set.mins = {0, 0, 0};
    set.maxs = {16, 16, 16};
    auto root = SolidBsp({}, true, 0, set);
    TreePortals portals;
    MakeHeadnodePortals(portals, *root, set);
    // Low x, high x, low y ... were pushed at the head one by one.
    const auto sides = PortalsOf(portals.outside);
    ASSERT_EQ(sides.size(), 6U);
    for (size_t n = 0; n < 6; ++n) {
        const CPortal& side = *sides[5 - n];
        const CPlane& plane = TablePlane(side.planenum);
        EXPECT_EQ(plane.type, static_cast<int32_t>(n / 2));
        EXPECT_EQ(plane.dist, n % 2 == 0 ? -24.0F : 40.0F);
        EXPECT_EQ(side.nodes[0], n % 2 == 0 ? root.get() : &portals.outside);
    }
}

TEST_F(TreePortalTest, EveryPortalLiesInBothItsNodesLists) {
    const CBlockSet set = Room();
    auto root = TreeOf(set);
    TreePortals portals;
    MakeTreePortals(portals, *root, set, 0);
    size_t listed = PortalsOf(portals.outside).size();
    for (const CBspNode* leaf : test::LeavesOf(*root)) {
        const auto list = PortalsOf(*leaf);
        listed += list.size();
        for (const CPortal* portal : list) {
            const auto other = PortalsOf(portal->FarSide(*leaf));
            EXPECT_EQ(std::count(other.begin(), other.end(), portal), 1);
        }
    }
    EXPECT_EQ(listed, 2 * portals.store.size());
    EXPECT_EQ(root->portals, nullptr);
    EXPECT_EQ(ProgressTotal, static_cast<int32_t>(2 * PlaneTable().size()));
}

TEST_F(TreePortalTest, PortalsStandAsInPlainLists) {
    std::mt19937 random(5);
    const auto coordinate = [&random] { return static_cast<float>(8 * std::uniform_int_distribution(0, 8)(random)); };
    for (int round = 0; round < 20; ++round) {
        std::vector<Box> boxes = RoomWalls({0, 0, 0}, {64, 64, 64}, 8, plain_);
        for (int i = 0; i < 6; ++i) {
            Box box{{}, {}, ContentsSolid, plain_};
            for (size_t axis = 0; axis < 3; ++axis) {
                box.mins[axis] = coordinate();
                box.maxs[axis] = box.mins[axis] + 8 + coordinate();
            }
            boxes.push_back(box);
        }
        const CBlockSet set = BoxSet(boxes);
        auto root = TreeOf(set, round % 2 == 0);
        TreePortals box;
        MakeHeadnodePortals(box, *root, set);
        PlainPortals plain(box, *root);
        TreePortals portals;
        MakeTreePortals(portals, *root, set, 0);
        const std::vector<CBspNode*> leaves = test::LeavesOf(*root);
        ASSERT_GT(leaves.size(), 12U);
        for (const CBspNode* leaf : leaves) ASSERT_EQ(SeenAt(*leaf), plain.At(*leaf)) << "round " << round;
        ASSERT_EQ(SeenAt(portals.outside), plain.At(box.outside)) << "round " << round;
    }
}

TEST_F(TreePortalTest, FreeingTakesThePortalsOffAllNodes) {
    const CBlockSet set = Room();
    auto root = TreeOf(set);
    TreePortals portals;
    MakeTreePortals(portals, *root, set, 0);
    FreeTreePortals(portals, *root);
    EXPECT_TRUE(portals.store.empty());
    EXPECT_EQ(portals.outside.portals, nullptr);
    for (const CBspNode* leaf : test::LeavesOf(*root)) EXPECT_EQ(leaf->portals, nullptr);
    // A second set of portals can be made on the same tree.
    MakeTreePortals(portals, *root, set, 0);
    EXPECT_FALSE(portals.store.empty());
}

TEST_F(TreePortalTest, APortalIsAddedAtTheHeadOfBothListsAndOnlyOnce) {
    CBspNode front, back;
    CPortal first, second;
    AddPortalToNodes(first, front, back);
    AddPortalToNodes(second, back, front);
    EXPECT_THAT(PortalsOf(front), testing::ElementsAre(&second, &first));
    EXPECT_THAT(PortalsOf(back), testing::ElementsAre(&second, &first));
    test::ExpectFatal([&] { AddPortalToNodes(first, front, back); }, "E071");
}

TEST_F(TreePortalTest, RemovingKeepsTheOrderOfTheOthers) {
    CBspNode front, back;
    std::array<CPortal, 4> list;
    for (size_t i = 0; i < 4; ++i) AddPortalToNodes(list[i], i % 2 == 0 ? front : back, i % 2 == 0 ? back : front);
    RemovePortalFromNode(list[2], front);
    EXPECT_THAT(PortalsOf(front), testing::ElementsAre(&list[3], &list[1], &list[0]));
    EXPECT_THAT(PortalsOf(back), testing::ElementsAre(&list[3], &list[2], &list[1], &list[0]));
    RemovePortalFromNode(list[3], front);
    RemovePortalFromNode(list[0], front);
    EXPECT_THAT(PortalsOf(front), testing::ElementsAre(&list[1]));
    EXPECT_EQ(list[2].nodes[0], nullptr);
}

TEST_F(TreePortalTest, RemovingAPortalThatIsNotInTheListIsFatal) {
    CBspNode front, back, other;
    CPortal portal, loose;
    AddPortalToNodes(portal, front, back);
    test::ExpectFatal([&] { RemovePortalFromNode(portal, other); }, "E072");
    loose.nodes = {&front, &back};
    test::ExpectFatal([&] { RemovePortalFromNode(loose, front); }, "E072");
}

TEST_F(TreePortalTest, AListEntryThatDoesNotNameTheNodeIsFatal) {
    CBspNode front, back;
    CPortal first, second;
    AddPortalToNodes(first, front, back);
    AddPortalToNodes(second, front, back);
    second.nodes[0] = nullptr;
    test::ExpectFatal([&] { RemovePortalFromNode(first, front); }, "E073");
}

TEST_F(TreePortalTest, AForeignPortalInANodesListIsFatal) {
    const CBlockSet set = Room();
    auto root = TreeOf(set);
    CBspNode stranger;
    TreePortals portals;
    MakeHeadnodePortals(portals, *root, set);
    root->portals->nodes = {&stranger, &stranger};
    test::ExpectFatal([&] { CutNodePortals(portals, *root, 0); }, "E076");
}

TEST_F(TreePortalTest, ASealedRoomLosesItsOutside) {
    const CBlockSet set = Room();
    AddEntity({});
    AddEntity({32, 32, 32});
    auto root = TreeOf(set);
    TreePortals portals;
    MakeTreePortals(portals, *root, set, 0);
    EXPECT_TRUE(FillOutside(portals, *root));
    EXPECT_EQ(WarnCount, 0);
    EXPECT_EQ(TakeLoggedText(), "");
    size_t open = 0;
    for (const CBspNode* leaf : test::LeavesOf(*root)) open += leaf->contents == ContentsEmpty;
    EXPECT_EQ(open, 1U);
    EXPECT_EQ(PointInLeaf(*root, {32, 32, 32}).occupied, 1);
    FreeTreePortals(portals, *root);
    // Only the faces that look into the room are left.
    size_t faces = 0;
    const SurfaceList surfaces = GatherTreeSurfaces(std::move(root));
    for (const CSplitSurface& surface : surfaces) {
        for (const CBlockFace& face : surface.faces) {
            ++faces;
            for (const Vec3& point : face.points) {
                for (const float v : point) EXPECT_TRUE(v >= 0 && v <= 64);
            }
        }
    }
    EXPECT_EQ(faces, 6U);
}

TEST_F(TreePortalTest, ALeakCountsOneWarningAndKeepsTheOutside) {
    const CBlockSet set = Room(12);
    AddEntity({});
    AddEntity({32, 32, 32});
    auto root = TreeOf(set);
    const auto facesBefore = [&root] {
        size_t points = 0;
        for (const CBspNode* leaf : test::LeavesOf(*root)) {
            for (const CBlockFace* face : leaf->markFaces) points += face->points.size();
        }
        return points;
    };
    const size_t before = facesBefore();
    TreePortals portals;
    MakeTreePortals(portals, *root, set, 0);
    EXPECT_TRUE(FillOutside(portals, *root));
    EXPECT_EQ(WarnCount, 1);
    EXPECT_EQ(facesBefore(), before);
    // The start leaf holds no entity: without -verbose there is no text.
    EXPECT_EQ(TakeLoggedText(), "");
}

TEST_F(TreePortalTest, UnderVerboseALeakIsToldEveryTime) {
    Options().verbose = true;
    const CBlockSet set = Room(12);
    AddEntity({});
    AddEntity({32, 32, 32});
    for (int run = 0; run < 2; ++run) {
        auto root = TreeOf(set);
        TreePortals portals;
        MakeTreePortals(portals, *root, set, 0);
        FillOutside(portals, *root);
        EXPECT_EQ(TakeLoggedText(), " \nWARNING W090: Region leaking!\n");
    }
}

TEST_F(TreePortalTest, AnEntityInTheStartLeafIsToldOnce) {
    const CBlockSet set = Room();
    auto root = TreeOf(set);
    TreePortals portals;
    MakeTreePortals(portals, *root, set, 0);
    const CBspNode& start = portals.outside.portals->FarSide(portals.outside);
    AddEntity({});
    AddEntity(Add(start.mins, {1, 1, 1}));
    ASSERT_EQ(&PointInLeaf(*root, Entities()[1].origin), &start);
    FillOutside(portals, *root);
    FillOutside(portals, *root);
    EXPECT_EQ(TakeLoggedText(), " \nWARNING W091: Region disaligned!\n");
    EXPECT_EQ(WarnCount, 2);
}

TEST_F(TreePortalTest, QuietLeaksAreCountedAllTheSame) {
    Options().quiet = Options().verbose = true;
    const CBlockSet set = Room(12);
    AddEntity({});
    AddEntity({32, 32, 32});
    auto root = TreeOf(set);
    TreePortals portals;
    MakeTreePortals(portals, *root, set, 0);
    FillOutside(portals, *root);
    EXPECT_EQ(TakeLoggedText(), "");
    EXPECT_EQ(WarnCount, 1);
}

TEST_F(TreePortalTest, TheFloodNeedsAnEntityInAnOpenLeaf) {
    const CBlockSet set = Room();
    auto root = TreeOf(set);
    TreePortals portals;
    MakeTreePortals(portals, *root, set, 0);
    EXPECT_FALSE(FillOutside(portals, *root));
    AddEntity({32, 32, 32});  // the level's own row never counts
    EXPECT_FALSE(FillOutside(portals, *root));
    AddEntity({-4, 32, 32});  // inside a wall
    EXPECT_FALSE(FillOutside(portals, *root));
    EXPECT_EQ(PointInLeaf(*root, {-4, 32, 32}).occupied, 0);
    AddEntity({0, 32, 32});  // on the wall's face: behind it
    EXPECT_FALSE(FillOutside(portals, *root));
    Options().nofill = true;
    AddEntity({32, 32, 32});
    EXPECT_FALSE(FillOutside(portals, *root));
    Options().nofill = false;
    EXPECT_TRUE(FillOutside(portals, *root));
}

TEST_F(TreePortalTest, PassableSolidsDoNotStopTheFlood) {
    std::vector<Box> walls = RoomWalls({0, 0, 0}, {64, 64, 64}, 8, plain_);
    walls.back().contents = ContentsSolid + ContentsOpen;
    std::swap(walls.front(), walls.back());  // blocks that are not solid come first
    const CBlockSet set = BoxSet(walls);
    AddEntity({});
    AddEntity({32, 32, 32});
    auto root = TreeOf(set);
    TreePortals portals;
    MakeTreePortals(portals, *root, set, 0);
    FillOutside(portals, *root);
    EXPECT_EQ(WarnCount, 1);
}

// A row of many cells: the flood's path is as long as the row.
TEST_F(TreePortalTest, ALongPathDoesNotEndTheFlood) {
    constexpr int Cells = 2000;
    std::vector<Box> boxes;
    for (int i = 0; i < Cells; ++i) {
        const auto x = static_cast<float>(32 * i);
        boxes.push_back({{x, 0, 0}, {x + 8, 8, 8}, ContentsSolid, plain_});
    }
    const CBlockSet set = BoxSet(boxes);
    AddEntity({});
    AddEntity({-20, -20, -20});
    auto root = TreeOf(set);
    TreePortals portals;
    MakeTreePortals(portals, *root, set, 0);
    EXPECT_TRUE(FillOutside(portals, *root));
    EXPECT_EQ(WarnCount, 1);
}

// A chain of leaves, each behind the one before, without the geometry that would make it.
TEST_F(TreePortalTest, APathOfAMillionLeavesDoesNotEndTheFlood) {
    constexpr int Depth = 1000000;
    int32_t side = 0;
    const int32_t plane = FindPlane({{1, 0, 0}, 0, 0}, side);
    TreePortals portals;
    portals.outside.contents = ContentsSolid;
    CBspNode root;
    CBspNode* node = &root;
    CBspNode* last = &portals.outside;
    for (int i = 0; i < Depth; ++i) {
        for (auto& child : node->children) child = std::make_unique<CBspNode>();
        node->planenum = plane;
        CBspNode& leaf = *node->children[1];
        leaf.contents = ContentsEmpty;
        AddPortalToNodes(portals.NewPortal(plane, nullptr), *last, leaf);
        last = &leaf;
        node = node->children[0].get();
    }
    node->contents = ContentsEmpty;
    AddPortalToNodes(portals.NewPortal(plane, nullptr), *last, *node);
    AddEntity({});
    AddEntity({8, 0, 0});  // in front of every plane
    EXPECT_TRUE(FillOutside(portals, root));
    EXPECT_EQ(WarnCount, 1) << "the walk has met it";
    FreeTreePortals(portals, root);
    EXPECT_EQ(node->portals, nullptr);
}

}  // namespace
}  // namespace k2k
