#include "light/level_rays.h"

#include <gtest/gtest.h>

#include <random>
#include <utility>

#include "light/level_surfaces.h"
#include "radiosity/transfers.h"
#include "radiosity_level.h"

namespace k2k::test {
namespace {

constexpr Box Hall{{-512, -512, 0}, {512, 512, 256}};

// A hall with boxes at random places.
class LevelRays : public RadiosityTest {
  protected:
    void Make(uint32_t seed, int boxes) {
        std::mt19937 random(seed);
        const auto whole = [&](int low, int high) {
            return static_cast<float>(std::uniform_int_distribution(low, high)(random));
        };
        obstacles_.clear();
        for (int i = 0; i < boxes; i++) {
            const Vec3 mins{whole(-480, 400), whole(-480, 400), whole(8, 160)};
            obstacles_.push_back({mins, {mins[0] + whole(4, 90), mins[1] + whole(4, 90), mins[2] + whole(4, 80)}});
        }
        TestLevel level;
        level.RoomTree(Hall, obstacles_);
        level.RoomFaces(Hall);
        for (const Box& box : obstacles_) level.BoxFaces(box);
    }

    static LightPatches Patches(int32_t size) {
        CVertexNormals normals;
        const LevelSurfaces level(normals);
        std::vector<Vec3> centres;
        LightPatches patches = MakePatches(level, centres);
        normals.SetCentres(std::move(centres));
        SubdividePatches(patches, size, level);
        return patches;
    }

    std::vector<Box> obstacles_;
};

TEST_F(LevelRays, WhatLiesInAShadowIsHiddenFromItsEnd) {
    int64_t asked = 0;
    int64_t inShadow = 0;
    for (uint32_t seed = 1; seed <= 6; seed++) {
        Make(seed, 4);
        const RayStructures structures;
        const LightPatches patches = Patches(96);
        const CLevelRays rays(patches);
        std::mt19937 random(seed);
        const auto pick = [&] { return patches[std::uniform_int_distribution(0, patches.count() - 1)(random)].origin; };
        for (int i = 0; i < 400; i++) {
            const Vec3 end = pick();
            Blocker blocker = NoBlocker;
            if (!rays.IsOpen(end) || !rays.IsBlocked(pick(), end, blocker)) continue;
            ASSERT_NE(blocker, NoBlocker);
            ShadowVolume shadow;
            if (!rays.CastShadow(blocker, end, shadow)) continue;
            for (int k = 0; k < 60; k++) {
                const Vec3 start = pick();
                asked++;
                if (!shadow.Contains(start)) continue;
                inShadow++;
                ASSERT_TRUE(IsShadowed(start, end)) << seed;
            }
        }
    }
    EXPECT_GT(inShadow, asked / 20);
}

// Holds the transfers against those of a ray for each pair.
void ExpectPlainTransfersWithFewWalks(const LightPatches& patches) {
    const CLevelRays rays(patches);
    CTransfers transfers(patches, rays);
    TakeRayCount();
    for (int32_t i = 0; i < patches.count(); i++) transfers.MakeTransfers(i);
    const int64_t walks = TakeRayCount();

    int64_t pairs = 0;
    const auto siteOf = [](const CLightPatch& patch) { return PatchSite{patch.origin, patch.normal, patch.area}; };
    for (int32_t to = 0; to < patches.count(); to++) {
        std::vector<Transfer> plain;
        for (int32_t from = 0; from < patches.count(); from++) {
            const float amount = from == to ? 0 : TransferAmount(siteOf(patches[from]), siteOf(patches[to]));
            if (!(amount > 0)) continue;
            pairs++;
            if (!IsShadowed(patches[from].origin, patches[to].origin))
                plain.push_back({static_cast<uint32_t>(from), amount});
        }
        const auto links = transfers.To(to);
        ASSERT_EQ(links.size(), plain.size()) << to;
        for (size_t i = 0; i < plain.size(); i++) {
            ASSERT_EQ(links[i].patch, plain[i].patch);
            ASSERT_EQ(links[i].factor, plain[i].factor);
        }
    }
    int64_t clear = 0;
    for (int32_t to = 0; to < patches.count(); to++) clear += static_cast<int64_t>(transfers.To(to).size());
    // A clear pair needs its walk; of the others less than half do.
    EXPECT_LT(walks - clear, (pairs - clear) / 2);
    EXPECT_GT(pairs - clear, 1000);
}

TEST_F(LevelRays, TransfersAreThoseOfARayForEachPairWithLessThanHalfOfTheWalks) {
    Make(11, 5);
    const RayStructures structures;
    ExpectPlainTransfersWithFewWalks(Patches(64));
}

// Puts a chain of nodes above the root, all with the level behind them.
void Deepen(TestLevel& level, int32_t depth) {
    auto& nodes = Portals().nodes;
    const std::vector<CRegionNode> old = std::exchange(nodes, {});
    for (int32_t i = 0; i < depth; i++) level.Node(level.Plane({1, 0, 0}, 4000 + static_cast<float>(i)), -1, i + 1);
    for (CRegionNode node : old) {
        for (int32_t& child : node.children) {
            if (child >= 0) child += depth;
        }
        nodes.push_back(node);
    }
}

TEST_F(LevelRays, DeepTreesOfLargeLevelsHaveShadowsToo) {
    constexpr Box hall{{-3000, -3000, 0}, {3000, 3000, 256}};
    std::vector<Box> screens;
    for (const float x : {-1500.0F, 200.0F, 1800.0F}) screens.push_back({{x, -2900, 8}, {x + 100, 2900, 248}});
    TestLevel level;
    level.RoomTree(hall, screens);
    level.RoomFaces(hall);
    for (const Box& screen : screens) level.BoxFaces(screen);
    Deepen(level, 130);
    const RayStructures structures;
    ExpectPlainTransfersWithFewWalks(Patches(255));
}

TEST_F(LevelRays, WithoutAToleranceThereAreNoShadows) {
    Make(2, 4);
    for (const float eps : {0.05F, 0.0F}) {
        Options().eps = eps;
        const RayStructures structures;
        const LightPatches patches = Patches(96);
        const CLevelRays rays(patches);
        int shadows = 0;
        for (int32_t i = 1; i < patches.count(); i++) {
            Blocker blocker = NoBlocker;
            ShadowVolume shadow;
            if (!rays.IsBlocked(patches[0].origin, patches[i].origin, blocker)) continue;
            if (rays.CastShadow(blocker, patches[i].origin, shadow)) shadows++;
        }
        EXPECT_EQ(shadows > 0, eps > 0);
    }
}

TEST_F(LevelRays, MeshLevelsHaveNoShadows) {
    Make(1, 1);
    const LightPatches patches = Patches(64);
    const CLevelRays rays(patches);  // without a tree
    ShadowVolume shadow;
    EXPECT_FALSE(rays.CastShadow(0, patches[0].origin, shadow));
}

TEST_F(LevelRays, EndsAtTheFacesOfDetailLeavesAreNotOpen) {
    OpenLevel level;
    constexpr int32_t SeeThroughFlag = 16;
    const uint32_t grate = level.Quad(2, 50, true, {0, 0, 50}, {64, 64, 50}, SeeThroughFlag);
    level.Quad(2, 0, true, {-64, -64, 0}, {64, 64, 0});
    Portals().regions.back().contents = ContentsEmpty | ContentsDetail;
    Portals().regions.back().surfaceCount = 1;
    Portals().regionSurfaces = {grate};
    const RayStructures structures;
    const CLevelRays rays(Patches(0));
    EXPECT_FALSE(rays.IsOpen({32, 32, 50.05F}));
    EXPECT_TRUE(rays.IsOpen({32, 32, 51}));
}

}  // namespace
}  // namespace k2k::test
