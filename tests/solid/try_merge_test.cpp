#include <algorithm>
#include <cmath>

#include "solid/csg.h"
#include "solid/merge_list.h"
#include "solid_support.h"

namespace k2k {
namespace {

using test::MakeFloorFace;

class TryMergeTest : public test::SolidTest {};

std::unique_ptr<CBlockFace> Rect(float x0, float y0, float x1, float y1) {
    return MakeFloorFace({{x0, y1, 0}, {x1, y1, 0}, {x1, y0, 0}, {x0, y0, 0}});
}

double AreaOf(const CBlockFace& face) {
    return PolygonArea(*PolygonOfFace(face));
}

TEST_F(TryMergeTest, JoinsTwoTrianglesToARectangle) {
    const auto lower = MakeFloorFace({{0, 0, 0}, {8, 8, 0}, {8, 0, 0}});
    const auto upper = MakeFloorFace({{0, 0, 0}, {0, 8, 0}, {8, 8, 0}});
    const auto merged = TryMerge(*lower, *upper);
    ASSERT_NE(merged, nullptr);
    EXPECT_EQ(merged->points, (std::vector<Vec3>{{8, 8, 0}, {8, 0, 0}, {0, 0, 0}, {0, 8, 0}}));
    EXPECT_EQ(merged->planenum, lower->planenum);
}

TEST_F(TryMergeTest, DropsPointsOnStraightLinesAcrossTheJoin) {
    const auto merged = TryMerge(*Rect(0, 0, 8, 8), *Rect(8, 0, 20, 8));
    ASSERT_NE(merged, nullptr);
    EXPECT_EQ(merged->numpoints(), 4);
    EXPECT_EQ(AreaOf(*merged), 160.0F);
}

TEST_F(TryMergeTest, KeepsAPointThatMakesAConvexCorner) {
    const auto roof = MakeFloorFace({{0, 8, 0}, {4, 12, 0}, {8, 8, 0}});
    const auto merged = TryMerge(*Rect(0, 0, 8, 8), *roof);
    ASSERT_NE(merged, nullptr);
    EXPECT_EQ(merged->numpoints(), 5);
}

TEST_F(TryMergeTest, RefusesAConcaveResult) {
    const auto spike = MakeFloorFace({{0, 8, 0}, {20, 12, 0}, {8, 8, 0}});
    EXPECT_EQ(TryMerge(*Rect(0, 0, 8, 8), *spike), nullptr) << "at the first corner or the second";
    EXPECT_EQ(TryMerge(*spike, *Rect(0, 0, 8, 8)), nullptr);
}

TEST_F(TryMergeTest, ACornerIsStraightWithinAThousandth) {
    // The upper outline, then the lower one, goes up or down by a little behind the shared edge.
    const auto mergedPoints = [](float top, float bottom) {
        const auto right = MakeFloorFace({{8, 8, 0}, {16, 8 + top, 0}, {16, bottom, 0}, {8, 0, 0}});
        const auto merged = TryMerge(*Rect(0, 0, 8, 8), *right);
        return merged == nullptr ? 0 : merged->numpoints();
    };
    EXPECT_EQ(mergedPoints(0.0009F, 0), 4);
    EXPECT_EQ(mergedPoints(0.0012F, 0), 0) << "concave";
    EXPECT_EQ(mergedPoints(-0.0009F, 0), 4);
    EXPECT_EQ(mergedPoints(-0.0012F, 0), 5) << "convex";
    EXPECT_EQ(mergedPoints(0, -0.0009F), 4);
    EXPECT_EQ(mergedPoints(0, -0.0012F), 0);
    EXPECT_EQ(mergedPoints(0, 0.0009F), 4);
    EXPECT_EQ(mergedPoints(0, 0.0012F), 5);
}

TEST_F(TryMergeTest, NeedsTheWholeEdge) {
    EXPECT_EQ(TryMerge(*Rect(0, 0, 8, 8), *Rect(8, 0, 16, 9)), nullptr);
    EXPECT_EQ(TryMerge(*Rect(0, 0, 8, 8), *Rect(9, 0, 16, 8)), nullptr);
    EXPECT_NE(TryMerge(*Rect(0, 0, 8, 8), *Rect(8.0009F, 0, 16, 8)), nullptr) << "within a thousandth";
    EXPECT_EQ(TryMerge(*Rect(0, 0, 8, 8), *Rect(8.0015F, 0, 16, 8)), nullptr);
}

TEST_F(TryMergeTest, NeedsEqualSideTextureAndContents) {
    const auto left = Rect(0, 0, 8, 8);
    for (const int field : {0, 1, 2, 3}) {
        auto right = Rect(8, 0, 16, 8);
        if (field == 0) right->planeside = 1;
        if (field == 1) right->texinfo = 1;
        if (field == 2) right->contents[0] = -126;
        if (field == 3) right->contents[1] = -126;
        EXPECT_EQ(TryMerge(*left, *right), nullptr) << field;
    }
    auto right = Rect(8, 0, 16, 8);
    right->sourceBlock = 99;
    EXPECT_NE(TryMerge(*left, *right), nullptr) << "the block may differ";
}

TEST_F(TryMergeTest, DoesNotComparePlanes) {
    auto right = Rect(8, 0, 16, 8);
    int32_t side = 0;
    right->planenum = FindPlane(test::PlaneOf({0, 0, 1}, 8), side);
    EXPECT_NE(TryMerge(*Rect(0, 0, 8, 8), *right), nullptr);
}

TEST_F(TryMergeTest, RefusesAFaceThatWasMergedAway) {
    auto right = Rect(8, 0, 16, 8);
    right->mergedAway = true;
    EXPECT_EQ(TryMerge(*Rect(0, 0, 8, 8), *right), nullptr);
}

// A face with a straight right end at x = 100, and count points.
std::unique_ptr<CBlockFace> LeftCap(size_t count) {
    std::vector<Vec3> points;
    for (size_t i = 0; i < count; ++i) {
        const double angle = M_PI * (-0.5 - static_cast<double>(i) / static_cast<double>(count - 1));
        points.push_back(Narrow({100 + 90 * std::cos(angle), 90 * std::sin(angle), 0}));
    }
    points.front()[0] = points.back()[0] = 100;
    return MakeFloorFace(std::move(points));
}
std::unique_ptr<CBlockFace> RightCap(size_t count) {
    auto cap = LeftCap(count);
    for (Vec3& point : cap->points) point = {200 - point[0], -point[1], 0};
    return cap;
}

TEST_F(TryMergeTest, MergingStopsAt40Points) {
    EXPECT_NE(TryMerge(*LeftCap(20), *RightCap(20)), nullptr);
    EXPECT_EQ(TryMerge(*LeftCap(20), *RightCap(21)), nullptr);
}

// The list operations as they are meant: a face tries each face of the list in order; taking merged faces out turns the
// list round.
class PlainMergeList {
  public:
    void Merge(std::unique_ptr<CBlockFace> face) {
        for (size_t i = 0; i < faces_.size();) {
            auto merged = TryMerge(*face, *faces_[i]);
            if (merged == nullptr) {
                ++i;
                continue;
            }
            faces_[i]->mergedAway = true;
            face = std::move(merged);
            i = 0;
        }
        faces_.insert(faces_.begin(), std::move(face));
    }
    void FreeScraps() {
        std::erase_if(faces_, [](const auto& face) { return face->mergedAway; });
        std::reverse(faces_.begin(), faces_.end());
    }
    std::vector<std::vector<Vec3>> Outlines() const {
        std::vector<std::vector<Vec3>> outlines;
        for (const auto& face : faces_) outlines.push_back(face->points);
        return outlines;
    }

  private:
    std::vector<std::unique_ptr<CBlockFace>> faces_;
};

std::vector<std::vector<Vec3>> Outlines(const FaceList& faces) {
    std::vector<std::vector<Vec3>> outlines;
    for (const CBlockFace& face : faces) outlines.push_back(face.points);
    return outlines;
}

// Cuts a square into pieces by random lines and returns them in random order, slightly disturbed.
std::vector<std::unique_ptr<CBlockFace>> Shards(test::Random& random, int cuts, float scale) {
    std::vector<std::unique_ptr<CBlockFace>> shards;
    shards.push_back(Rect(-64 * scale, -64 * scale, 64 * scale, 64 * scale));
    for (int i = 0; i < cuts; ++i) {
        Vec3 normal = random.Whole(0, 1) == 0 ? Vec3{1, 0, 0} : Vec3{0, 1, 0};
        if (random.Whole(0, 3) == 0) normal = {0.6F, 0.8F, 0};
        const CPlane line = test::PlaneOf(normal, static_cast<float>(random.Whole(-120, 120)) * 0.5F * scale);
        const auto piece = static_cast<size_t>(random.Whole(0, static_cast<int>(shards.size()) - 1));
        FacePieces pieces = SplitFace(std::move(shards[piece]), line);
        shards[piece] = std::move(pieces.front != nullptr ? pieces.front : pieces.back);
        if (pieces.back != nullptr) shards.push_back(std::move(pieces.back));
    }
    for (size_t i = shards.size(); i-- > 1;)
        std::swap(shards[i], shards[static_cast<size_t>(random.Whole(0, static_cast<int>(i)))]);
    for (auto& shard : shards) {
        if (random.Whole(0, 9) == 0) shard->texinfo = 1;
        for (Vec3& point : shard->points) {
            point[0] += static_cast<float>(random.Whole(-1, 1)) * 0.0004F;
            point[1] += static_cast<float>(random.Whole(-1, 1)) * 0.0004F;
        }
    }
    return shards;
}

TEST_F(TryMergeTest, TheIndexedListMergesAsThePlainOneDoes) {
    test::Random random(31);
    for (int round = 0; round < 300; ++round) {
        MergeList fast;
        PlainMergeList plain;
        const float scale = round % 3 == 0 ? 1.0F : round % 3 == 1 ? 0.013F : 300.0F;
        const int reverseEvery = random.Whole(1, 4);
        int count = 0;
        for (auto& shard : Shards(random, random.Whole(1, 60), scale)) {
            plain.Merge(shard->Clone());
            fast.Merge(std::move(shard));
            if (++count % reverseEvery != 0) continue;
            plain.FreeScraps();
            fast.Reverse();
        }
        plain.FreeScraps();
        fast.Reverse();
        ASSERT_EQ(Outlines(fast.Take()), plain.Outlines()) << round;
    }
}

TEST_F(TryMergeTest, MergedFacesKeepTheAreaAndStayConvex) {
    test::Random random(37);
    for (int round = 0; round < 200; ++round) {
        MergeList list;
        double before = 0;
        for (auto& shard : Shards(random, 40, 1)) {
            before += AreaOf(*shard);
            list.Merge(std::move(shard));
        }
        double after = 0;
        for (const CBlockFace& face : list.Take()) {
            after += AreaOf(face);
            const size_t count = face.points.size();
            for (size_t i = 0; i < count; ++i) {
                const Vec3 edge = Sub(face.points[(i + 1) % count], face.points[i]);
                for (const Vec3& point : face.points) EXPECT_LE(Cross(edge, Sub(point, face.points[i]))[2], 0.5F);
            }
        }
        EXPECT_NEAR(after, before, 1e-3 * before);
    }
}

TEST_F(TryMergeTest, AListStandsFacesWithoutPoints) {
    MergeList list;
    list.Merge(MakeFloorFace({}));
    list.Merge(Rect(0, 0, 8, 8));
    list.Merge(MakeFloorFace({}));
    list.Merge(Rect(8, 0, 16, 8));
    EXPECT_EQ(list.Take().size(), 3U);
    EXPECT_TRUE(list.Take().empty());
}

TEST_F(TryMergeTest, MergeSurfacesJoinsFacesWithinEachSurface) {
    SurfaceList surfaces;
    for (int i = 0; i < 2; ++i) {
        auto surface = std::make_unique<CSplitSurface>();
        surface->faces.push_front(Rect(0, 0, 8, 8));
        surface->faces.push_front(Rect(20, 0, 24, 8));
        surface->faces.push_front(Rect(8, 0, 16, 8));
        surfaces.push_front(std::move(surface));
    }
    MergeSurfaces(surfaces);
    ASSERT_EQ(surfaces.size(), 2U);
    for (const CSplitSurface& surface : surfaces) {
        ASSERT_EQ(surface.faces.size(), 2U);
        EXPECT_EQ(surface.faces.front()->points[0][0], 24.0F - 4.0F) << "turned round once";
        EXPECT_EQ(AreaOf(*surface.faces.front()->next), 128.0F);
    }
}

}  // namespace
}  // namespace k2k
