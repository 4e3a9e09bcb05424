#include "solid/csg.h"

#include <algorithm>
#include <map>

#include "solid/block_index.h"
#include "solid_support.h"

namespace k2k {
namespace {

using test::BoxBlock;
using test::Logged;
using test::SetOf;

class CsgTest : public test::SolidTest {
  protected:
    using Blocks = std::vector<std::unique_ptr<MapBlock>>;

    static Blocks Two(std::unique_ptr<MapBlock> a, std::unique_ptr<MapBlock> b) {
        Blocks blocks;
        blocks.push_back(std::move(a));
        blocks.push_back(std::move(b));
        return blocks;
    }
    static std::vector<const CBlockFace*> AllFaces(const SurfaceList& surfaces) {
        std::vector<const CBlockFace*> faces;
        for (const CSplitSurface& surface : surfaces) {
            for (const CBlockFace& face : surface.faces) faces.push_back(&face);
        }
        return faces;
    }
    static double Area(const SurfaceList& surfaces) {
        double area = 0;
        for (const CBlockFace* face : AllFaces(surfaces)) area += PolygonArea(*PolygonOfFace(*face));
        return area;
    }
};

TEST_F(CsgTest, ABlockAloneKeepsItsFacesByPlaneFromTheHighestDown) {
    const SurfaceList surfaces = CSGFaces(SetOf(BoxBlock({0, 0, 0}, {8, 8, 8}, 3)), false);
    ASSERT_EQ(surfaces.size(), 6U);
    int32_t plane = static_cast<int32_t>(PlaneTable().size());
    for (const CSplitSurface& surface : surfaces) {
        EXPECT_EQ(surface.planenum, --plane);
        EXPECT_EQ(surface.faces.size(), 1U);
        EXPECT_EQ(surface.sourceBlock, 3);
        EXPECT_EQ(surface.contents, (std::array<int32_t, 2>{ContentsEmpty, ContentsSolid}));
        EXPECT_EQ(surface.faces.front()->contents, surface.contents);
        EXPECT_FALSE(surface.onNode);
    }
    EXPECT_EQ(surfaces.front()->mins, (Vec3{0, 0, 0}));
    EXPECT_EQ(surfaces.front()->maxs, (Vec3{8, 8, 0}));
}

TEST_F(CsgTest, BoxesThatTouchLoseBothTouchingFaces) {
    const SurfaceList surfaces =
        CSGFaces(SetOf(Two(BoxBlock({0, 0, 0}, {8, 8, 8}, 1), BoxBlock({8, 0, 0}, {16, 8, 8}, 2))), false);
    // A box of 16 x 8 x 8, and its long sides are one face each.
    EXPECT_EQ(AllFaces(surfaces).size(), 6U);
    EXPECT_EQ(Area(surfaces), 640.0);
    for (const CSplitSurface& surface : surfaces) {
        EXPECT_FALSE(surface.mins[0] == 8 && surface.maxs[0] == 8) << "nothing is left where they touch";
    }
}

TEST_F(CsgTest, OfTwoEqualBlocksTheLaterOneKeepsItsFaces) {
    const CBlockSet set = SetOf(Two(BoxBlock({0, 0, 0}, {8, 8, 8}, 1), BoxBlock({0, 0, 0}, {8, 8, 8}, 2)));
    const int32_t later = set.blocks.front()->next->blockNumber;
    const SurfaceList surfaces = CSGFaces(set, false);
    EXPECT_EQ(AllFaces(surfaces).size(), 6U);
    for (const CBlockFace* face : AllFaces(surfaces)) EXPECT_EQ(face->sourceBlock, later);
}

TEST_F(CsgTest, OverlappingBlocksKeepTheirOutsideOnly) {
    const SurfaceList surfaces =
        CSGFaces(SetOf(Two(BoxBlock({0, 0, 0}, {8, 8, 8}, 1), BoxBlock({4, 4, 4}, {12, 12, 12}, 2))), false);
    EXPECT_EQ(Area(surfaces), 2.0 * 6 * 64 - 6 * 16);
}

TEST_F(CsgTest, ASolidBlockInAVolumeKeepsItsFacesLookingIntoIt) {
    const SurfaceList surfaces = CSGFaces(
        SetOf(Two(BoxBlock({2, 2, 2}, {6, 6, 6}, 1), BoxBlock({0, 0, 0}, {8, 8, 8}, 2, BlockPassable | BlockMarked))),
        false);
    int inner = 0;
    for (const CBlockFace* face : AllFaces(surfaces)) {
        if (face->sourceBlock != 1) continue;
        ++inner;
        EXPECT_EQ(face->contents, (std::array<int32_t, 2>{-125, ContentsSolid})) << "the volume's own word";
    }
    EXPECT_EQ(inner, 6);
}

TEST_F(CsgTest, AVolumesFacesAreSeenFromBothSides) {
    const SurfaceList surfaces = CSGFaces(SetOf(BoxBlock({0, 0, 0}, {8, 8, 8}, 1, BlockPassable)), false);
    ASSERT_EQ(AllFaces(surfaces).size(), 12U);
    for (const CSplitSurface& surface : surfaces) {
        ASSERT_EQ(surface.faces.size(), 2U);
        const CBlockFace& a = *surface.faces.front();
        const CBlockFace& b = *a.next;
        EXPECT_NE(a.planeside, b.planeside);
        EXPECT_EQ(a.contents[0], b.contents[1]);
        EXPECT_EQ(a.contents[1], b.contents[0]);
        EXPECT_EQ(a.points, std::vector<Vec3>(b.points.rbegin(), b.points.rend()));
    }
}

TEST_F(CsgTest, DetailBlocksAreNotMirrored) {
    EXPECT_EQ(AllFaces(CSGFaces(SetOf(BoxBlock({0, 0, 0}, {8, 8, 8}, 1, BlockDetail)), false)).size(), 6U);
}

TEST_F(CsgTest, CopyBlockFacesClipsNothing) {
    const CBlockSet set = SetOf(Two(BoxBlock({0, 0, 0}, {8, 8, 8}, 1), BoxBlock({4, 4, 4}, {12, 12, 12}, 2)));
    EXPECT_EQ(Area(CopyBlockFaces(set, false)), 2.0 * 6 * 64);
}

TEST_F(CsgTest, MarksProgressAtEvery60thBlock) {
    Blocks blocks;
    for (int32_t i = 0; i < 125; ++i) {
        const auto at = static_cast<float>(i * 20);
        blocks.push_back(BoxBlock({at, 0, 0}, {at + 8, 8, 8}, i + 1));
    }
    const CBlockSet set = SetOf(std::move(blocks));
    Logged();
    CSGFaces(set, true);
    EXPECT_EQ(Logged(), ".. ok");
    EXPECT_EQ(ProgressTotal, 125);
    EXPECT_EQ(ProgressDone, 125);
    CSGFaces(set, false);
    EXPECT_EQ(Logged(), "..");
    CopyBlockFaces(set, true);
    EXPECT_EQ(Logged(), " ok");
}

TEST_F(CsgTest, GatherTreeSurfacesTakesFacesInPreOrderAndDropsEmptiedOnes) {
    auto root = std::make_unique<CBspNode>();
    const auto node = [](CBspNode& parent, size_t child) -> CBspNode& {
        parent.children[child] = std::make_unique<CBspNode>();
        return *parent.children[child];
    };
    const auto add = [](CBspNode& to, float x) {
        to.faces.push_front(test::MakeFloorFace({{x, 0, 0}, {x, 8, 0}, {x + 1, 0, 0}}));
    };
    CBspNode& front = node(*root, 0);
    CBspNode& back = node(*root, 1);
    node(front, 0).contents = ContentsEmpty;
    node(front, 1).contents = ContentsSolid;
    back.contents = ContentsSolid;
    add(*root, 1);
    add(*root, 2);
    add(front, 3);
    add(front, 4);
    front.faces.front()->points.clear();
    const SurfaceList surfaces = GatherTreeSurfaces(std::move(root));
    ASSERT_EQ(surfaces.size(), 1U);
    std::vector<float> order;
    for (const CBlockFace& face : surfaces.front()->faces) order.push_back(face.points[0][0]);
    EXPECT_EQ(order, (std::vector<float>{3, 1, 2})) << "each face went to the head";
}

TEST_F(CsgTest, GatherTreeSurfacesStandsADeepTreeAndNone) {
    EXPECT_TRUE(GatherTreeSurfaces(nullptr).empty());
    auto root = std::make_unique<CBspNode>();
    CBspNode* node = root.get();
    for (int i = 0; i < 300000; ++i) {
        node->children[0] = std::make_unique<CBspNode>();
        node = node->children[0].get();
    }
    EXPECT_TRUE(GatherTreeSurfaces(std::move(root)).empty());
}

// The clipping as it is meant: lists with their heads at the front, every pair of blocks.
class PlainCsg {
  public:
    using List = std::vector<std::unique_ptr<CBlockFace>>;

    std::map<int32_t, List> Run(const CBlockSet& set) {
        for (const CBlock& b1 : set.blocks) {
            for (const CBlockFace& face : b1.faces) {
                auto copy = face.Clone();
                copy->sourceBlock = b1.blockNumber;
                copy->contents = {-256, b1.contents};
                PushHead(outside_, std::move(copy));
            }
            bool precedence = false;
            for (const CBlock& b2 : set.blocks) {
                if (&b2 == &b1) {
                    precedence = true;
                    continue;
                }
                if (!Meet(b1, b2)) continue;
                inside_ = std::move(outside_);
                outside_.clear();
                for (const CBlockFace& face : b2.faces) ClipInside(face.planenum, face.planeside, precedence);
                FreeInside(Masked(b1.contents) == -128 && Masked(b2.contents) == -126 ? b2.contents : -128);
            }
            Save(Masked(b1.contents) != -128);
        }
        return std::move(planes_);
    }

  private:
    static int32_t Masked(int32_t contents) { return contents & ~17; }
    static void PushHead(List& list, std::unique_ptr<CBlockFace> face) { list.insert(list.begin(), std::move(face)); }
    static bool Meet(const CBlock& b1, const CBlock& b2) {
        for (size_t axis = 0; axis < 3; ++axis) {
            if (b2.maxs[axis] < b1.mins[axis] || b2.mins[axis] > b1.maxs[axis]) return false;
        }
        return true;
    }
    void ClipInside(int32_t planenum, int32_t side, bool precedence) {
        List newInside;
        for (auto& face : inside_) {
            std::array<std::unique_ptr<CBlockFace>, 2> fragments;
            const auto outer = static_cast<size_t>(side);
            if (face->planenum != planenum) {
                FacePieces pieces = SplitFace(std::move(face), TablePlane(planenum));
                fragments = {std::move(pieces.front), std::move(pieces.back)};
            } else if (face->planeside == side && !precedence) {
                fragments[outer] = std::move(face);
            } else {
                fragments[1 - outer] = std::move(face);
            }
            if (fragments[outer] != nullptr) PushHead(outside_, std::move(fragments[outer]));
            if (fragments[1 - outer] != nullptr) PushHead(newInside, std::move(fragments[1 - outer]));
        }
        inside_ = std::move(newInside);
    }
    void FreeInside(int32_t contents) {
        for (auto& face : inside_) {
            if (Masked(contents) == -128) continue;
            face->contents[0] = contents;
            PushHead(outside_, std::move(face));
        }
        inside_.clear();
    }
    static void MergeTo(std::unique_ptr<CBlockFace> face, List& list) {
        for (size_t i = 0; i < list.size();) {
            auto merged = TryMerge(*face, *list[i]);
            if (merged == nullptr) {
                ++i;
                continue;
            }
            list[i]->mergedAway = true;
            face = std::move(merged);
            i = 0;
        }
        PushHead(list, std::move(face));
    }
    void Save(bool mirror) {
        for (auto& face : outside_) {
            List& list = planes_[face->planenum];
            std::unique_ptr<CBlockFace> twin;
            if (mirror) {
                twin = face->Clone();
                twin->planeside ^= 1;
                std::swap(twin->contents[0], twin->contents[1]);
                std::reverse(twin->points.begin(), twin->points.end());
            }
            MergeTo(std::move(face), list);
            if (twin != nullptr) MergeTo(std::move(twin), list);
            std::erase_if(list, [](const auto& f) { return f->mergedAway; });
            std::reverse(list.begin(), list.end());
        }
        outside_.clear();
    }

    List outside_, inside_;
    std::map<int32_t, List> planes_;
};

// Boxes and boxes with a corner cut off, on a coarse grid so that many planes are shared.
std::unique_ptr<MapBlock> RandomBlock(test::Random& random, int32_t number) {
    constexpr std::array<uint32_t, 8> Flags{
        0, 0, 0, 0, BlockPassable, BlockDetail, BlockMarked, BlockPassable | BlockMarked};
    Vec3 mins, maxs;
    for (size_t axis = 0; axis < 3; ++axis) {
        mins[axis] = static_cast<float>(random.Whole(0, 12) * 8);
        maxs[axis] = mins[axis] + static_cast<float>(random.Whole(1, 6) * 8);
    }
    auto block = BoxBlock(mins, maxs, number, Flags[static_cast<size_t>(random.Whole(0, 7))]);
    if (random.Whole(0, 2) == 0) {
        Vec3 normal{0.6F, 0, 0.8F};
        if (random.Whole(0, 1) == 0) normal = random.UnitVector();
        Vec3d middle = Widen(Add(mins, maxs));
        for (double& at : middle) at /= 2;
        block->faces.push_back(test::MapFaceOf(
            normal, static_cast<float>(std::floor(2 * (Dot(normal, middle) + 3)) / 2), block->faces.front().texinfo));
    }
    return block;
}

TEST_F(CsgTest, ClipsRandomBlocksAsAllPairsDo) {
    test::Random random(41);
    for (int round = 0; round < 60; ++round) {
        Blocks blocks;
        const int count = random.Whole(2, 40);
        for (int32_t i = 0; i < count; ++i) blocks.push_back(RandomBlock(random, i + 1));
        const CBlockSet set = SetOf(std::move(blocks));
        const auto expected = PlainCsg().Run(set);
        const SurfaceList surfaces = CSGFaces(set, false);
        auto surface = surfaces.begin();
        size_t compared = 0;
        for (auto plane = expected.rbegin(); plane != expected.rend(); ++plane) {
            if (plane->second.empty()) continue;
            ASSERT_NE(surface, surfaces.end());
            ASSERT_EQ(surface->planenum, plane->first);
            ASSERT_EQ(surface->sourceBlock, plane->second.front()->sourceBlock);
            auto face = surface->faces.begin();
            ASSERT_EQ(surface->faces.size(), plane->second.size());
            for (const auto& wanted : plane->second) {
                ASSERT_EQ(face->points, wanted->points);
                ASSERT_EQ(face->contents, wanted->contents);
                ASSERT_EQ(face->planeside, wanted->planeside);
                ASSERT_EQ(face->sourceBlock, wanted->sourceBlock);
                ++face;
                ++compared;
            }
            ++surface;
        }
        EXPECT_EQ(surface, surfaces.end());
        EXPECT_GT(compared, 0U);
    }
}

TEST_F(CsgTest, TheBlockIndexFindsAllThatMeetInSetOrder) {
    test::Random random(43);
    for (int round = 0; round < 30; ++round) {
        CBlockSet set;
        const int count = random.Whole(0, 200);
        for (int i = 0; i < count; ++i) {
            auto block = std::make_unique<CBlock>();
            for (size_t axis = 0; axis < 3; ++axis) {
                block->mins[axis] = static_cast<float>(random.Whole(0, 20));
                block->maxs[axis] = block->mins[axis] + static_cast<float>(random.Whole(-1, 5));
            }
            set.blocks.push_front(std::move(block));
        }
        BlockIndex index(set);
        for (const CBlock& b1 : set.blocks) {
            std::vector<int32_t> expected;
            int32_t number = 0;
            for (const CBlock& b2 : set.blocks) {
                bool isMeeting = true;
                for (size_t axis = 0; axis < 3; ++axis) {
                    if (b2.maxs[axis] < b1.mins[axis] || b2.mins[axis] > b1.maxs[axis]) isMeeting = false;
                }
                if (isMeeting) expected.push_back(number);
                ++number;
            }
            EXPECT_EQ(index.Meeting(b1), expected);
        }
    }
}

}  // namespace
}  // namespace k2k
