#include <gtest/gtest.h>

#include "surface/texel_size.h"
#include "surface_fixture.h"

namespace k2k {
namespace {

using test::Area;
using test::Dice;
using test::MakeFace;
using test::Points;
using test::Rectangle;

constexpr uint32_t Flat = TextureNoLightmap | TextureFlat;
constexpr uint32_t Turbulent = TextureNoLightmap | TextureTurbulent;

class SubdivideTest : public test::SurfaceTest {
  protected:
    FaceList Subdivide(int32_t texinfo, const Points& points, int32_t hull = 0) {
        FaceList list;
        list.push_front(MakeFace(Floor(), points));
        list.front()->texinfo = texinfo;
        return SubdivideList(std::move(list), hull);
    }
    size_t Pieces(int32_t texinfo, const Points& points) { return Subdivide(texinfo, points).size(); }
};

TEST_F(SubdivideTest, CutsShadedFacesAt236Texels) {
    EXPECT_EQ(Pieces(0, Rectangle(0, 0, 236, 236)), 1U);
    EXPECT_EQ(Pieces(0, Rectangle(0, 0, 237, 236)), 2U);
    EXPECT_EQ(Pieces(0, Rectangle(0, 0, 472, 473)), 6U);
}

TEST_F(SubdivideTest, KeepsTheGridFixedInTheTexture) {
    const FaceList pieces = Subdivide(0, Rectangle(200, 0, 300, 64));
    ASSERT_EQ(pieces.size(), 2U);
    EXPECT_EQ(pieces.front()->points, Rectangle(200, 0, 236, 64));
    EXPECT_EQ(pieces.front()->next->points[0][0], 236);
}

TEST_F(SubdivideTest, LeavesFlatFacesWholeWithoutSizeflat) {
    const int32_t flat = AddTexture(Flat);
    EXPECT_EQ(Pieces(flat, Rectangle(-20000, 0, 20000, 30000)), 1U);
    Options().sizeflat = 64;
    EXPECT_EQ(Pieces(flat, Rectangle(0, 0, 128, 64)), 2U);
}

TEST_F(SubdivideTest, LeavesTurbulentFacesWholeWithoutSizeturb) {
    const int32_t turbulent = AddTexture(Turbulent);
    EXPECT_EQ(Pieces(turbulent, Rectangle(0, 0, 3000, 3000)), 1U);
    Options().sizeturb = 128;
    EXPECT_EQ(Pieces(turbulent, Rectangle(0, 0, 256, 128)), 2U);
}

TEST_F(SubdivideTest, LeavesFacesWithoutLightmapWhole) {
    Options().sizeflat = Options().sizeturb = 64;
    EXPECT_EQ(Pieces(AddTexture(TextureNoLightmap), Rectangle(0, 0, 3000, 3000)), 1U);
    EXPECT_EQ(Pieces(AddTexture(TextureNoLightmap | TextureSky), Rectangle(0, 0, 3000, 3000)), 1U);
}

TEST_F(SubdivideTest, TriesFlatBeforeTurbulentBeforeNoLightmap) {
    Options().sizeflat = 64;
    Options().sizeturb = 128;
    const auto sizeOf = [&](uint32_t flags) {
        auto face = MakeFace(Floor(), {});
        face->texinfo = AddTexture(flags);
        TexelSize texels;
        return SurfaceTexelSize(*face, texels) ? std::pair(texels.size, texels.shaded) : std::pair(0, true);
    };
    EXPECT_EQ(sizeOf(0), std::pair(236, true));
    EXPECT_EQ(sizeOf(TextureFlat | TextureTurbulent | TextureNoLightmap), std::pair(64, false));
    EXPECT_EQ(sizeOf(TextureTurbulent | TextureNoLightmap), std::pair(128, false));
    EXPECT_EQ(sizeOf(TextureNoLightmap), std::pair(0, true));
    Options().sizeflat = 0;
    EXPECT_EQ(sizeOf(TextureFlat | TextureTurbulent), std::pair(0, true)) << "flat and auto: not cut as turbulent";
}

TEST_F(SubdivideTest, CountsInTexelsOfScaledAxes) {
    const int32_t dense = AddTexture(0, {2, 0, 0}, {0, 1, 0});
    const FaceList pieces = Subdivide(dense, Rectangle(0, 0, 236, 236));
    ASSERT_EQ(pieces.size(), 2U);
    EXPECT_EQ(pieces.front()->points, Rectangle(0, 0, 118, 236));
}

TEST_F(SubdivideTest, CutsTwiceAsFarApartAtZoom2) {
    Options().zoomlevel = 2;
    EXPECT_EQ(Pieces(0, Rectangle(0, 0, 472, 472)), 1U);
    EXPECT_EQ(Pieces(0, Rectangle(0, 0, 473, 472)), 2U);
}

TEST_F(SubdivideTest, NeverCutsOutsideTheVisibleHull) {
    EXPECT_EQ(Subdivide(0, Rectangle(0, 0, 3000, 3000), 1).size(), 1U);
    EXPECT_EQ(Subdivide(0, Rectangle(0, 0, 3000, 3000), 2).size(), 1U);
}

TEST_F(SubdivideTest, CopiesTheFieldsOfTheFace) {
    FaceList list;
    auto face = MakeFace(Floor(), Rectangle(0, 0, 300, 64), 21);
    face->planeside = 1;
    face->contents = {ContentsSolid + ContentsOpen, ContentsSolid};
    list.push_front(std::move(face));
    for (const CBlockFace& piece : SubdivideList(std::move(list), 0)) {
        EXPECT_EQ(piece.planenum, Floor());
        EXPECT_EQ(piece.planeside, 1);
        EXPECT_EQ(piece.texinfo, 0);
        EXPECT_EQ(piece.contents[0], ContentsSolid + ContentsOpen);
        EXPECT_EQ(piece.sourceBlock, 21);
        EXPECT_EQ(piece.leafCopy, nullptr);
    }
}

TEST_F(SubdivideTest, PutsPiecesInTheFacesPlace) {
    FaceList list;
    list.push_front(MakeFace(Floor(), Rectangle(0, 0, 64, 64), 3));
    list.push_front(MakeFace(Floor(), Rectangle(0, 0, 300, 64), 2));
    list.push_front(MakeFace(Floor(), Rectangle(0, 0, 64, 64), 1));
    const FaceList pieces = SubdivideList(std::move(list), 0);
    std::vector<int32_t> blocks;
    for (const CBlockFace& piece : pieces) blocks.push_back(piece.sourceBlock);
    EXPECT_EQ(blocks, (std::vector<int32_t>{1, 2, 2, 3}));
    EXPECT_EQ(pieces.front()->next->points[0][0], 0);
}

TEST_F(SubdivideTest, UsesTheLightmapAxesOnAMeshLevel) {
    Options().mesh = true;
    const int32_t skewed = AddTexture(0, {0.01F, 0.01F, 0}, {0.01F, -0.01F, 0});
    EXPECT_EQ(Pieces(skewed, Rectangle(0, 0, 472, 236)), 2U);
    Options().litres = 2;
    EXPECT_EQ(Pieces(skewed, Rectangle(0, 0, 472, 236)), 8U);
}

TEST_F(SubdivideTest, CopyLeavesTheInputAlone) {
    FaceList list;
    list.push_front(MakeFace(Floor(), Rectangle(0, 0, 300, 64), 2));
    list.push_front(MakeFace(Floor(), Rectangle(0, 0, 64, 64), 1));
    const FaceList copy = SubdivideCopy(list);
    ASSERT_EQ(copy.size(), 3U);
    EXPECT_EQ(list.size(), 2U);
    EXPECT_EQ(list.front()->next->points, Rectangle(0, 0, 300, 64));
    EXPECT_EQ(copy.front()->points, list.front()->points);
    EXPECT_NE(copy.front(), list.front());
    EXPECT_EQ(copy.front()->next->sourceBlock, 2);
}

TEST_F(SubdivideTest, CopyMarksEvery60thFace) {
    FaceList list;
    for (int i = 0; i < 130; ++i) list.push_front(MakeFace(Floor(), Rectangle(0, 0, 64, 64)));
    SubdivideCopy(list);
    EXPECT_EQ(ProgressTotal, 130);
    EXPECT_EQ(ProgressDone, 130);
    EXPECT_EQ(TakeLoggedText(), "..");
}

double RangeAlong(const Points& points, const Vec3& axis) {
    double low = 1e30;
    double high = -1e30;
    for (const Vec3& point : points) {
        low = std::min(low, Dot(point, axis));
        high = std::max(high, Dot(point, axis));
    }
    return high - low;
}

TEST_F(SubdivideTest, KeepsTheAreaAndTheSize) {
    Dice dice(4);
    for (int run = 0; run < 100; ++run) {
        const double angle = dice.Between(0, 6);
        const float scale = dice.Between(0.5F, 3);
        const auto c = static_cast<float>(std::cos(angle)) * scale;
        const auto s = static_cast<float>(std::sin(angle)) * scale;
        const Vec3 vecS{c, s, 0};
        const Vec3 vecT{-s, c, 0};
        const Points points{{dice.Between(-500, 0), dice.Between(-500, 0), 8},
                            {dice.Between(-500, 0), dice.Between(100, 500), 8},
                            {dice.Between(100, 500), dice.Between(100, 500), 8}};
        double area = 0;
        for (const CBlockFace& piece : Subdivide(AddTexture(0, vecS, vecT), points)) {
            area += Area(piece.points);
            EXPECT_LE(RangeAlong(piece.points, vecS), 236.5);
            EXPECT_LE(RangeAlong(piece.points, vecT), 236.5);
        }
        // A corner of less than three degrees is taken for a straight run, which cuts off a little.
        EXPECT_NEAR(area, Area(points), Area(points) * 1e-3);
    }
}

}  // namespace
}  // namespace k2k
