#include <gtest/gtest.h>

#include <set>

#include "plain_merge.h"
#include "surface_fixture.h"

namespace k2k {
namespace {

using test::AddFace;
using test::Area;
using test::Dice;
using test::MakeFace;
using test::MakeLeaf;
using test::MakeNode;
using test::PlainMerge;
using test::Points;
using test::Rectangle;

class MergeAcrossTest : public test::SurfaceTest {
  protected:
    MergeAcrossTest() : floor_(Floor()), root_(MakeNode(floor_, MakeNode(floor_))) {}

    CBlockFace& Add(const Points& points, int32_t block = 1) {
        return AddFace(*root_, MakeFace(floor_, points, block));
    }
    // The leaf in front of the inner node, the one behind it, and the one behind the root.
    CBspNode& Leaf(int number) {
        CBspNode& inner = *root_->children[0];
        return number == 0 ? *inner.children[0] : number == 1 ? *inner.children[1] : *root_->children[1];
    }
    void List(int leaf, std::vector<CBlockFace*> faces) {
        Leaf(leaf).contents = ContentsEmpty;
        Leaf(leaf).markFaces = std::move(faces);
    }
    void Merge() { MergeAcross(*root_); }

    int32_t floor_;
    std::unique_ptr<CBspNode> root_;
};

TEST_F(MergeAcrossTest, JoinsFacesOfDifferentRegions) {
    CBlockFace& a = Add(Rectangle(0, 0, 64, 64), 5);
    CBlockFace& b = Add(Rectangle(64, 0, 128, 64), 6);
    List(0, {&a});
    List(1, {&b});
    Merge();
    ASSERT_EQ(State().MergedFaces.size(), 1U);
    const CBlockFace& merged = *State().MergedFaces[0];
    EXPECT_EQ(a.surfaceOut, &merged);
    EXPECT_EQ(b.surfaceOut, &merged);
    EXPECT_EQ(merged.numpoints(), 4);
    EXPECT_EQ(Area(merged.points), 128 * 64);
    EXPECT_EQ(merged.sourceBlock, 5) << "the earlier face gives its fields";
    EXPECT_EQ(Geometry().SurfaceFaceCount, 1);
    EXPECT_EQ(a.points, Rectangle(0, 0, 64, 64));
}

TEST_F(MergeAcrossTest, LeavesFacesAloneThatDoNotJoin) {
    CBlockFace& a = Add(Rectangle(0, 0, 64, 64));
    CBlockFace& b = Add(Rectangle(65, 0, 128, 64));
    a.surfaceOut = &b;
    List(0, {&a, &b});
    Merge();
    EXPECT_EQ(a.surfaceOut, nullptr);
    EXPECT_EQ(b.surfaceOut, nullptr);
    EXPECT_TRUE(State().MergedFaces.empty());
}

TEST_F(MergeAcrossTest, StartsOverWithEachModel) {
    CBlockFace& a = Add(Rectangle(0, 0, 64, 64));
    CBlockFace& b = Add(Rectangle(64, 0, 128, 64));
    List(0, {&a, &b});
    Merge();
    List(0, {&a});
    Merge();
    EXPECT_TRUE(State().MergedFaces.empty());
    EXPECT_EQ(a.surfaceOut, nullptr);
    EXPECT_EQ(Geometry().SurfaceFaceCount, 0);
}

TEST_F(MergeAcrossTest, KeepsPlanesApart) {
    CBlockFace& a = Add(Rectangle(0, 0, 64, 64));
    CBlockFace& b = Add(Rectangle(64, 0, 128, 64));
    b.planenum = Floor(1);
    List(0, {&a, &b});
    Merge();
    EXPECT_EQ(a.surfaceOut, nullptr);
}

TEST_F(MergeAcrossTest, JoinsUpToTheSizeOfALightmapPiece) {
    const auto merges = [&](float width) {
        CBlockFace& a = Add(Rectangle(0, 0, 64, 64));
        CBlockFace& b = Add(Rectangle(64, 0, width, 64));
        List(0, {&a, &b});
        Merge();
        return Geometry().SurfaceFaceCount;
    };
    EXPECT_EQ(merges(236.5F), 1);
    EXPECT_EQ(merges(236.5F + 0.0001F), 0);
    Options().zoomlevel = 2;
    EXPECT_EQ(merges(473), 1);
    EXPECT_EQ(merges(473.001F), 0);
}

TEST_F(MergeAcrossTest, MeasuresAlongTheAxesOfTheTexture) {
    const int32_t dense = AddTexture(0, {2, 0, 0}, {0, 1, 0});
    CBlockFace& a = Add(Rectangle(0, 0, 64, 64));
    CBlockFace& b = Add(Rectangle(64, 0, 128, 64));
    a.texinfo = b.texinfo = dense;
    List(0, {&a, &b});
    Merge();
    EXPECT_EQ(Geometry().SurfaceFaceCount, 0);
}

TEST_F(MergeAcrossTest, MeasuresInDouble) {
    Options().zoomlevel = 1.3F;
    const double limit = 236.5 * double{1.3F};
    const int32_t texture = AddTexture(0, {3.9928569793701172F, 0, 0}, {0, 1, 0});
    const double range = 77 * double{3.9928569793701172F};
    ASSERT_LT(range, limit);
    ASSERT_GT(range, static_cast<float>(limit)) << "no room in 32 bits";
    CBlockFace& a = Add(Rectangle(0, 0, 32, 64));
    CBlockFace& b = Add(Rectangle(32, 0, 77, 64));
    a.texinfo = b.texinfo = texture;
    List(0, {&a, &b});
    Merge();
    EXPECT_EQ(Geometry().SurfaceFaceCount, 1);
}

TEST_F(MergeAcrossTest, SetsNoLimitToFacesWithoutLightmap) {
    const int32_t sky = AddTexture(TextureNoLightmap | TextureSky);
    CBlockFace& a = Add(Rectangle(0, 0, 6400, 64));
    CBlockFace& b = Add(Rectangle(6400, 0, 12800, 64));
    a.texinfo = b.texinfo = sky;
    List(0, {&a, &b});
    Merge();
    EXPECT_EQ(Geometry().SurfaceFaceCount, 1);
}

TEST_F(MergeAcrossTest, LooksAtListedFacesOnly) {
    CBlockFace& a = Add(Rectangle(0, 0, 64, 64));
    Add(Rectangle(64, 0, 128, 64));
    List(0, {&a, nullptr, root_->faces.front()->next});
    Merge();
    EXPECT_EQ(Geometry().SurfaceFaceCount, 0);
}

// Partners that come before a match are not tried again with the joined face in the same pass, but in a later one.
TEST_F(MergeAcrossTest, GoesOnBehindTheMatch) {
    CBlockFace& a = Add(Rectangle(0, 0, 32, 64));
    CBlockFace& wide = Add(Rectangle(0, 64, 64, 128));
    CBlockFace& b = Add(Rectangle(32, 0, 64, 64));
    List(0, {&a, &wide, &b});
    Merge();
    ASSERT_EQ(State().MergedFaces.size(), 1U);
    EXPECT_EQ(Geometry().SurfaceFaceCount, 2);
    EXPECT_EQ(wide.surfaceOut, a.surfaceOut);
    // The wide face met the joined one as the earlier partner, so the ring starts with its points.
    EXPECT_EQ(Area(a.surfaceOut->points), 128 * 64);
}

TEST_F(MergeAcrossTest, NumbersMergedFacesInTheOrderOfTheLeaves) {
    const int32_t upper = Floor(8);
    CBlockFace& a = Add(Rectangle(0, 0, 64, 64, 8));
    CBlockFace& b = Add(Rectangle(64, 0, 128, 64, 8));
    a.planenum = b.planenum = upper;
    CBlockFace& c = Add(Rectangle(0, 0, 64, 64));
    CBlockFace& d = Add(Rectangle(64, 0, 128, 64));
    List(0, {&a, &c});
    List(1, {&d, &b});
    Merge();
    ASSERT_EQ(State().MergedFaces.size(), 2U);
    EXPECT_EQ(a.surfaceOut, State().MergedFaces[0].get());
    EXPECT_EQ(c.surfaceOut, State().MergedFaces[1].get());
}

TEST_F(MergeAcrossTest, WritesTheMergedSurfaceAndClearsTheTexturesOfTheOthers) {
    CBlockFace& a = Add(Rectangle(0, 0, 64, 64));
    CBlockFace& b = Add(Rectangle(64, 0, 128, 64));
    List(0, {&a, &b});
    List(1, {&b});
    Merge();
    MapPlanes(*root_);
    MakeSurfaces(*root_);
    EmitMergedFaces();
    WriteRegions(*root_);
    ASSERT_EQ(Geometry().surfaces.size(), 3U);
    EXPECT_EQ(Geometry().surfaces[0].texInfoId, -1);
    EXPECT_EQ(Geometry().surfaces[1].texInfoId, -1);
    EXPECT_EQ(Geometry().surfaces[2].texInfoId, 0);
    EXPECT_EQ(Geometry().surfaces[2].edgeCount, 4);
    EXPECT_EQ(Geometry().SurfaceFaceCount, 2);
    EXPECT_EQ(Portals().regionSurfaces, (std::vector<uint32_t>{2, 2, 2})) << "once for each listing";
}

// Rectangles of a floor that is cut up at random, listed several times in random order.
struct Patchwork {
    std::vector<std::unique_ptr<CBlockFace>> faces;
    std::vector<CBlockFace*> entries;

    Patchwork(Dice& dice, int32_t planenum) {
        Cut(dice, planenum, 0, 0, 256, 256, 6);
        for (const auto& face : faces) {
            for (int i = dice.Roll(1, 3); i > 0; --i) entries.push_back(face.get());
        }
        for (size_t i = entries.size(); i > 1; --i) {
            std::swap(entries[i - 1], entries[static_cast<size_t>(dice.Roll(0, static_cast<int>(i) - 1))]);
        }
    }

    void Cut(Dice& dice, int32_t planenum, float x0, float y0, float x1, float y1, int depth) {
        const bool alongX = dice.Roll(0, 1) == 0;
        const float size = alongX ? x1 - x0 : y1 - y0;
        if (depth == 0 || size < 8 || dice.Roll(0, 7) == 0) {
            faces.push_back(MakeFace(planenum, Rectangle(x0, y0, x1, y1), static_cast<int32_t>(faces.size()) + 1));
            for (Vec3& point : faces.back()->points) {
                if (dice.Roll(0, 19) == 0) point[0] += dice.Between(-0.0015F, 0.0015F);
            }
            return;
        }
        const float at = std::floor(size / 2);
        if (alongX) {
            Cut(dice, planenum, x0, y0, x0 + at, y1, depth - 1);
            Cut(dice, planenum, x0 + at, y0, x1, y1, depth - 1);
        } else {
            Cut(dice, planenum, x0, y0, x1, y0 + at, depth - 1);
            Cut(dice, planenum, x0, y0 + at, x1, y1, depth - 1);
        }
    }
};

TEST_F(MergeAcrossTest, GivesTheFacesOfComparingAllPairs) {
    int merges = 0;
    for (uint32_t seed = 1; seed <= 60; ++seed) {
        Dice dice(seed);
        Patchwork patchwork(dice, floor_);
        PlainMerge plain(patchwork.entries);
        PlaneMerger merger(patchwork.entries);
        const int plainMerges = plain.Run();
        ASSERT_EQ(merger.Run(), plainMerges) << "seed " << seed;
        merges += plainMerges;

        const auto merged = merger.TakeMergedFaces();
        std::set<const CBlockFace*> inForce;
        double area = 0;
        for (size_t i = 0; i < patchwork.entries.size(); ++i) {
            const CBlockFace* entry = patchwork.entries[i];
            const CBlockFace* current = entry->surfaceOut != nullptr ? entry->surfaceOut : entry;
            ASSERT_EQ(current->points, plain.Current(i)->points) << "seed " << seed << " entry " << i;
            ASSERT_EQ(current->sourceBlock, plain.Current(i)->sourceBlock);
            ASSERT_EQ(entry->surfaceOut == nullptr, plain.Current(i) == entry);
            if (inForce.insert(current).second) area += Area(current->points);
        }
        EXPECT_NEAR(area, 256 * 256, 1);
    }
    EXPECT_GT(merges, 500);
}

}  // namespace
}  // namespace k2k
