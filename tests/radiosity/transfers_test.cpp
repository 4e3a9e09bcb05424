#include "radiosity/transfers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "radiosity/worker_pool.h"
#include "support/build_state.h"
#include "test_patches.h"

namespace k2k::test {
namespace {

class Transfers : public BuildState {};

PatchSite Site(const Vec3& origin, const Vec3& normal, float area) {
    return {origin, normal, area};
}

TEST_F(Transfers, TheAmountIsThatOfTheFormFactor) {
    // 30 to the side and 40 up: the cosines are 0.8 and 0.8, the square of the distance is 2,500.
    const PatchSite from = Site({0, 0, 0}, {0, 0, 1}, 77);
    const PatchSite to = Site({30, 0, 40}, {0, 0, -1}, 500);
    const double side = 30 * std::sqrt(1.0 / 2500), up = 40 * std::sqrt(1.0 / 2500);
    EXPECT_NEAR(side, 0.6, 1e-15);
    const double cosine = static_cast<float>(up);
    EXPECT_EQ(TransferAmount(from, to), static_cast<float>(cosine * cosine * 500 * (1.0 / 2500)));
    EXPECT_NEAR(TransferAmount(to, from), 0.64 * 77 / 2500, 1e-7);
}

TEST_F(Transfers, NothingGoesAwayFromOneOfThem) {
    const PatchSite floor = Site({0, 0, 0}, {0, 0, 1}, 100);
    EXPECT_EQ(TransferAmount(floor, Site({0, 0, 10}, {0, 0, 1}, 100)), 0);
    EXPECT_EQ(TransferAmount(floor, Site({0, 0, -10}, {0, 0, -1}, 100)), 0);
    EXPECT_EQ(TransferAmount(floor, Site({10, 0, 0}, {-1, 0, 0}, 100)), 0);  // in its plane
    EXPECT_EQ(TransferAmount(floor, Site({10, 0, 10}, {0, 1, 0}, 100)), 0);  // edge on
    EXPECT_GT(TransferAmount(floor, Site({10, 0, 10}, {-1, 0, 0}, 100)), 0);
}

TEST_F(Transfers, ReachFromAHundredthUpToThreeThousandUnits) {
    const PatchSite from = Site({0, 0, 0}, {0, 0, 1}, 1);
    const auto at = [&](float height, float area) {
        return TransferAmount(from, Site({0, 0, height}, {0, 0, -1}, area));
    };
    EXPECT_EQ(at(0.0099F, 1), 0);
    EXPECT_GT(at(0.0101F, 1), 0);
    EXPECT_GT(at(2999, 1e6F), 0);
    EXPECT_EQ(at(3000, 1e6F), 0);
}

TEST_F(Transfers, TooLittleIsNothing) {
    const PatchSite from = Site({0, 0, 0}, {0, 0, 1}, 1);
    EXPECT_EQ(TransferAmount(from, Site({0, 0, 100}, {0, 0, -1}, 0.99F)), 0);
    EXPECT_GT(TransferAmount(from, Site({0, 0, 100}, {0, 0, -1}, 1.01F)), 0);
}

// All links, on the pool.
std::unique_ptr<CTransfers> MakeAll(const LightPatches& patches, const ShadowRays& rays) {
    auto transfers = std::make_unique<CTransfers>(patches, rays);
    RunOnThreads(patches.count(), false, [&](int32_t patch) { transfers->MakeTransfers(patch); });
    transfers->ShareOut();
    return transfers;
}

TEST_F(Transfers, TwoFacingPatchesGiveEachOtherEverything) {
    HandmadeLevel level;
    level.Quad(2, 0, 1, {0, 0, 0}, {32, 32, 0});
    level.Quad(2, 12, -1, {0, 0, 0}, {7, 9, 0});
    const LightPatches patches = level.Patches();
    const auto transfers = MakeAll(patches, BoxRays());
    EXPECT_EQ(transfers->count(), 2);
    ASSERT_EQ(transfers->To(0).size(), 1U);
    EXPECT_EQ(transfers->To(0)[0].patch, 1U);
    EXPECT_EQ(transfers->To(0)[0].factor, 1.0F);
    ASSERT_EQ(transfers->To(1).size(), 1U);
    EXPECT_EQ(transfers->To(1)[0].patch, 0U);
    EXPECT_EQ(transfers->To(1)[0].factor, 1.0F);
}

TEST_F(Transfers, APatchThatSeesNothingHasNone) {
    HandmadeLevel level;
    level.Quad(2, 0, 1, {0, 0, 0}, {32, 32, 0});
    level.Quad(2, 12, 1, {0, 0, 0}, {32, 32, 0});
    const LightPatches patches = level.Patches();
    BoxRays rays;
    const auto transfers = MakeAll(patches, rays);
    EXPECT_EQ(transfers->count(), 0);
    EXPECT_TRUE(transfers->To(0).empty());
    EXPECT_EQ(rays.rays, 0);
}

TEST_F(Transfers, AFactorOfZeroCastsNoRay) {
    HandmadeLevel level;
    level.Quad(2, 0, 1, {0, 0, 0}, {1, 1, 0});
    level.Quad(2, 200, -1, {0, 0, 0}, {1, 1, 0});
    level.Quad(2, 4000, -1, {0, 0, 0}, {1000, 1000, 0});
    const LightPatches patches = level.Patches();
    BoxRays rays;
    MakeAll(patches, rays);
    EXPECT_EQ(rays.rays, 0);
}

// The links of each sender, by the plain double loop.
std::vector<std::vector<Transfer>> PlainTransfers(const LightPatches& patches, const ShadowRays& rays,
                                                  int64_t& wanted) {
    const auto site = [&](int32_t i) { return PatchSite{patches[i].origin, patches[i].normal, patches[i].area}; };
    std::vector<std::vector<Transfer>> lists;
    for (int32_t me = 0; me < patches.count(); me++) {
        std::vector<Transfer> list;
        float total = 0;
        for (int32_t other = 0; other < patches.count(); other++) {
            if (other == me) continue;
            Blocker blocker;
            const float amount = TransferAmount(site(me), site(other));
            if (!(amount > 0)) continue;
            wanted++;
            if (rays.IsBlocked(patches[me].origin, patches[other].origin, blocker)) continue;
            list.push_back({static_cast<uint32_t>(other), amount});
            total += amount;
        }
        for (Transfer& link : list) link.factor /= total;
        lists.push_back(list);
    }
    return lists;
}

int64_t CountOf(const std::vector<std::vector<Transfer>>& lists) {
    int64_t count = 0;
    for (const auto& list : lists) count += static_cast<int64_t>(list.size());
    return count;
}

void ExpectEqualTransfers(const CTransfers& fast, const std::vector<std::vector<Transfer>>& plain) {
    std::vector<std::vector<Transfer>> bySender(plain.size());
    for (uint32_t to = 0; to < plain.size(); to++) {
        uint32_t last = 0;
        for (const Transfer& link : fast.To(static_cast<int32_t>(to))) {
            EXPECT_LE(last, link.patch);
            last = link.patch;
            bySender[link.patch].push_back({to, link.factor});
        }
    }
    for (size_t from = 0; from < plain.size(); from++) {
        ASSERT_EQ(bySender[from].size(), plain[from].size()) << from;
        for (size_t i = 0; i < plain[from].size(); i++) {
            ASSERT_EQ(bySender[from][i].patch, plain[from][i].patch) << from;
            ASSERT_EQ(bySender[from][i].factor, plain[from][i].factor) << from;
        }
    }
    EXPECT_EQ(fast.count(), CountOf(plain));
}

// Rooms full of blocks.
class CrowdedRoom : public Transfers {
  protected:
    void Make(uint32_t seed) {
        std::mt19937 random(seed);
        const auto real = [&](double low, double high) { return std::uniform_real_distribution(low, high)(random); };
        level_.Room({-600, -500, 0}, {600, 500, 300});
        for (int i = 0; i < 12; i++) {
            const Vec3d mins{real(-560, 400), real(-460, 350), real(1, 150)};
            const Vec3d maxs{mins[0] + real(5, 160), mins[1] + real(5, 120), mins[2] + real(5, 120)};
            level_.Block(mins, maxs);
            rays_.boxes.push_back({mins, maxs});
        }
        level_.Quad(2, 150, 1, {700, 0, 0}, {701, 1, 0});   // small, and outside
        level_.Quad(0, 0, 1, {0, 4000, 0}, {0, 4100, 90});  // out of reach
        patches_ = level_.Patches(96);
        // Smoothed normals.
        for (int32_t i = 0; i < patches_.count(); i += 3) {
            for (float& component : patches_[i].normal) component += static_cast<float>(real(-0.3, 0.3));
            Normalize(patches_[i].normal);
        }
    }
    HandmadeLevel level_;
    BoxRays rays_;
    LightPatches patches_;
};

TEST_F(CrowdedRoom, GivesExactlyTheTransfersOfThePlainDoubleLoop) {
    for (const uint32_t seed : {1U, 2U, 3U, 4U}) {
        level_ = {};
        rays_.boxes.clear();
        Make(seed);
        int64_t wanted = 0;
        const auto plain = PlainTransfers(patches_, rays_, wanted);
        for (const int32_t threads : {1, 3}) {
            Options().threads = threads;
            rays_.rays = 0;
            ExpectEqualTransfers(*MakeAll(patches_, rays_), plain);
            // The shadows answer for most of the blocked rays.
            const int64_t clear = CountOf(plain);
            EXPECT_LT(rays_.rays - clear, (wanted - clear) / 4);
        }
    }
}

TEST_F(CrowdedRoom, EndsThatAreNotOpenGetARayEach) {
    Make(5);
    rays_.open = false;
    int64_t wanted = 0;
    const auto plain = PlainTransfers(patches_, rays_, wanted);
    rays_.rays = 0;
    ExpectEqualTransfers(*MakeAll(patches_, rays_), plain);
    EXPECT_EQ(rays_.rays, wanted);
}

TEST_F(CrowdedRoom, TheSharesOfASenderSumToOne) {
    Make(6);
    const auto transfers = MakeAll(patches_, rays_);
    std::vector<double> sums(patches_.patches.size());
    for (int32_t to = 0; to < patches_.count(); to++) {
        for (const Transfer& link : transfers->To(to)) sums[link.patch] += link.factor;
    }
    int lit = 0;
    for (const double sum : sums) {
        if (sum == 0) continue;
        EXPECT_NEAR(sum, 1, 1e-5);
        lit++;
    }
    EXPECT_GT(lit, 100);
}

TEST_F(CrowdedRoom, PatchesThatAreNoNumbersTakeNoPart) {
    Make(7);
    patches_[3].origin[1] = std::nanf("");
    patches_[5].normal[0] = std::nanf("");
    patches_[8].area = std::nanf("");
    int64_t wanted = 0;
    const auto plain = PlainTransfers(patches_, rays_, wanted);
    EXPECT_TRUE(plain[3].empty());
    ExpectEqualTransfers(*MakeAll(patches_, rays_), plain);
}

TEST_F(Transfers, FreedListsAreGone) {
    HandmadeLevel level;
    level.Room({0, 0, 0}, {64, 64, 64});
    const LightPatches patches = level.Patches();
    const auto transfers = MakeAll(patches, BoxRays());
    EXPECT_EQ(transfers->count(), 30);
    transfers->FreeTransfers();
    EXPECT_EQ(transfers->count(), 30);
}

}  // namespace
}  // namespace k2k::test
