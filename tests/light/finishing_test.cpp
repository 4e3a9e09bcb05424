#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>

#include "light/finish_steps.h"
#include "light/light_finishing.h"
#include "radiosity/worker_pool.h"
#include "test_level.h"

namespace k2k::test {
namespace {

class Finishing : public LightTest {
  protected:
    Finishing() {
        Lighting().LightStore.Open();
        for (size_t i = 0; i < 256; i++) Lighting().GammaTable[i] = static_cast<uint8_t>(i);
    }

    // A block of one colour for a new surface.
    LightBlock& AddBlock(uint32_t width, uint32_t height, const Vec3& colour, uint32_t group = 1) {
        LightBlock& block = NewLightBlock(1, width, height, 1);
        std::fill(block.texels.begin(), block.texels.end(), colour);
        block.group = group;
        block.lightShift = 4;
        block.surfaceIndex = static_cast<uint32_t>(surfaces_.size());
        surfaces_.emplace_back();
        return block;
    }

    TLightFinishing Run(int32_t version = 0) {
        TLightFinishing finishing;
        finishing.AddBlocks(LightBlocks());
        finishing.AllocatePages(pages_, surfaces_, 0);
        finishing.Finish(pages_, surfaces_, version, 0);
        return finishing;
    }

    // The three bytes of a texel.
    std::vector<int> Texel(size_t page, size_t x, size_t y, size_t pageWidth = 256) const {
        const uint8_t* at = pages_[page].data() + (y * pageWidth + x) * 3;
        return {at[0], at[1], at[2]};
    }

    std::vector<SurfaceRecord> surfaces_;
    PixelPages pages_;
};

using Bytes = std::vector<int>;

TEST_F(Finishing, WithoutAnyLightThereIsTheBlankPageAlone) {
    AddBlock(4, 4, {0, 0, 0});
    AddBlock(4, 4, {0.0001F, -0.0001F, 0});
    Lighting().GammaTable[0] = 7;
    const TLightFinishing finishing = Run();
    EXPECT_TRUE(finishing.nodes.empty());
    EXPECT_EQ(finishing.maxLevel, 0U);
    ASSERT_EQ(pages_.size(), 1U);
    EXPECT_EQ(pages_[0], std::vector<uint8_t>(256 * 256 * 3, 7));
    for (const SurfaceRecord& surface : surfaces_) EXPECT_EQ(surface.lightShift, NoLightmapShift);
}

TEST_F(Finishing, OneComponentAboveTheThresholdKeepsABlock) {
    AddBlock(2, 2, {0, 0, 0}).texels[3] = {0, 0.00011F, 0};
    Run();
    EXPECT_EQ(pages_.size(), 2U);
    EXPECT_EQ(surfaces_[0].lightShift, 4);
}

TEST_F(Finishing, ABlockOfOneTexelFillsNine) {
    AddBlock(1, 1, {10, 20, 30});
    Run();
    for (size_t y = 0; y < 3; y++) {
        for (size_t x = 0; x < 3; x++) EXPECT_EQ(Texel(1, x, y), (Bytes{30, 20, 10}));
    }
    EXPECT_EQ(Texel(1, 3, 0), (Bytes{0, 0, 0}));
    EXPECT_EQ(surfaces_[0].lightX, 1);
    EXPECT_EQ(surfaces_[0].lightY, 1);
    EXPECT_EQ(surfaces_[0].lightPage, 1);
}

TEST_F(Finishing, PlainTexelsAreTruncatedHeldInAByteAndReversed) {
    LightBlock& block = AddBlock(3, 1, {1, 1, 1});
    block.texels[0] = {99.99F, 255.5F, 1e30F};
    block.texels[1] = {-5, -0.5F, 0.99F};
    block.texels[2] = {std::numeric_limits<float>::quiet_NaN(), 1, 2};
    for (size_t i = 0; i < 256; i++) Lighting().GammaTable[i] = static_cast<uint8_t>(255 - i);
    Run();
    EXPECT_EQ(Texel(1, 1, 1), (Bytes{0, 0, 156}));
    EXPECT_EQ(Texel(1, 2, 1), (Bytes{255, 255, 255}));
    EXPECT_EQ(Texel(1, 3, 1), (Bytes{253, 254, 255}));
}

TEST_F(Finishing, TheBorderRepeatsTheOutermostTexels) {
    LightBlock& block = AddBlock(2, 2, {});
    for (size_t i = 0; i < 4; i++) block.texels[i] = {0, 0, static_cast<float>(i + 1)};
    Run();
    const int expected[4][4] = {{1, 1, 2, 2}, {1, 1, 2, 2}, {3, 3, 4, 4}, {3, 3, 4, 4}};
    for (size_t y = 0; y < 4; y++) {
        for (size_t x = 0; x < 4; x++) EXPECT_EQ(Texel(1, x, y)[0], expected[y][x]) << x << " " << y;
    }
}

TEST_F(Finishing, CompressionKeepsColoursUpToTheKnee) {
    Options().litmax = 196;
    Options().litcomp = 0.5F;
    Lighting().ExposureReference = 298;
    LightBlock& block = AddBlock(5, 1, {});
    block.texels[0] = {98, 49, 10.9F};  // at the knee
    block.texels[1] = {198, 99, 0};     // half way to the reference: 98 + 0.75 * 98
    block.texels[2] = {298, 149, 0};    // at the reference
    block.texels[3] = {1000, 0, 500};   // above it
    block.texels[4] = {0, 0, 0};        // black
    Run(1);
    EXPECT_EQ(Texel(1, 1, 1), (Bytes{98, 49, 10}));
    EXPECT_EQ(Texel(1, 2, 1), (Bytes{171, 85, 0}));
    EXPECT_EQ(Texel(1, 3, 1), (Bytes{196, 98, 0}));
    EXPECT_EQ(Texel(1, 4, 1), (Bytes{196, 0, 98}));
    EXPECT_EQ(Texel(1, 5, 1), (Bytes{0, 0, 0}));
}

TEST_F(Finishing, WithoutAReferenceBrightTexelsCountAsBeingAtIt) {
    for (const double reference : {0.0, 98.0}) {
        LightBlocks().clear();
        surfaces_.clear();
        Lighting().ExposureReference = reference;
        AddBlock(1, 1, {120, 60, 0});
        Run(1);
        EXPECT_EQ(Texel(1, 1, 1), (Bytes{196, 98, 0})) << reference;
    }
}

TEST_F(Finishing, CompressedTexelsAreComputedInDouble) {
    // A 32-bit product rounds up to the next whole number here.
    Lighting().ExposureReference = 298;
    LightBlock& block = AddBlock(2, 1, {});
    block.texels[0] = {101.71875F, 88.09375F, 0};
    block.texels[1] = {232.875F, 58.96875F, 0};
    Run(1);
    EXPECT_EQ(Texel(1, 1, 1)[1], 87);
    EXPECT_EQ(Texel(1, 2, 1)[1], 46);
}

TEST_F(Finishing, UnknownFormatsAndStepsAreFatal) {
    TLightFinishing finishing;
    ExpectFatal([&] { finishing.AllocatePages(pages_, surfaces_, 3); }, "\nUnknown Lightmap Format");
    ExpectFatal([&] { finishing.Finish(pages_, surfaces_, 0, -1); }, "\nUnknown Lightmap Format");
    ExpectFatal([&] { finishing.Finish(pages_, surfaces_, 0, 1); }, "No end step routine found for (v0 HDR1)");
    ExpectFatal([&] { finishing.Finish(pages_, surfaces_, 2, 0); }, "No end step routine found for (v2 HDR0)");
}

TEST_F(Finishing, TheOtherFormatsHaveBlankPagesOfTheirOwn) {
    TLightFinishing finishing;
    finishing.AllocatePages(pages_, surfaces_, 1);
    ASSERT_EQ(pages_[0].size(), 65536U * 8);
    EXPECT_EQ(std::vector<uint8_t>(pages_[0].end() - 8, pages_[0].end()),
              (std::vector<uint8_t>{0, 0, 0, 0, 0, 0, 1, 0}));
    finishing.AllocatePages(pages_, surfaces_, 2);
    ASSERT_EQ(pages_.size(), 1U);
    ASSERT_EQ(pages_[0].size(), 65536U * 16);
    std::array<float, 4> texel{};
    std::memcpy(texel.data(), pages_[0].data() + 16, 16);
    EXPECT_EQ(texel, (std::array<float, 4>{0, 0, 0, 1}));
}

TEST_F(Finishing, SurfacesStartOnABlankBlockOf289Bytes) {
    AllocLightData(3);
    surfaces_.resize(2);
    TLightFinishing finishing;
    finishing.AllocatePages(pages_, surfaces_, 0);
    for (const SurfaceRecord& surface : surfaces_) {
        EXPECT_EQ(surface.lightOffset, 4U);
        EXPECT_EQ(surface.lightX, 0);
        EXPECT_EQ(surface.lightY, 0);
        EXPECT_EQ(surface.lightPage, 0);
    }
    EXPECT_EQ(Lighting().LightStore.length(), 4U + 289);
    for (const uint8_t byte : Lighting().LightStore.At(4, 289)) EXPECT_EQ(byte, 0);
    Options().nod3dlmaps = true;
    finishing.AllocatePages(pages_, surfaces_, 0);
    EXPECT_EQ(Lighting().LightStore.length(), 296U + 578);
}

TEST_F(Finishing, PlacedSurfacesKeepTheBlankBlocksOffset) {
    AllocLightData(8);
    AddBlock(2, 2, {1, 1, 1});
    Run();
    EXPECT_EQ(surfaces_[0].lightOffset, 8U);
    EXPECT_EQ(surfaces_[0].lightShift, 4);
}

TEST_F(Finishing, OnMeshLevelsPositionsAbove255AreHeldByTheWideFieldsAlone) {
    Options().mesh = true;
    AddBlock(398, 298, {1, 1, 1}, 1);
    AddBlock(50, 50, {2, 2, 2}, 1);
    AddBlock(50, 50, {0, 0, 0}, 1);
    const TLightFinishing finishing = Run();
    EXPECT_EQ(finishing.maxLevel, 1U);
    EXPECT_EQ(surfaces_[1].lightX, 255);
    EXPECT_EQ(surfaces_[1].lightY, 255);
    EXPECT_EQ(surfaces_[1].meshX(), 401);
    EXPECT_EQ(surfaces_[1].meshY(), 1);
    EXPECT_EQ(Texel(1, 401, 1, 512), (Bytes{2, 2, 2}));
    EXPECT_EQ(surfaces_[2].meshX(), 0);
    EXPECT_EQ(surfaces_[2].lightX, 255);
    EXPECT_EQ(Lighting().LightStore.length(), 0U);
}

TEST_F(Finishing, AllPagesLeaveWithTheSizeOfTheLargest) {
    Options().mesh = true;
    AddBlock(600, 20, {1, 1, 1}, 1);
    AddBlock(254, 254, {2, 2, 2}, 2);
    AddBlock(254, 254, {3, 3, 3}, 2);
    AddBlock(254, 254, {3, 3, 3}, 2);
    AddBlock(254, 254, {3, 3, 3}, 3);
    const TLightFinishing finishing = Run();
    EXPECT_EQ(finishing.maxLevel, 2U);
    for (const auto& page : pages_) EXPECT_EQ(page.size(), 1024U * 1024 * 3);
    for (const LightPage& page : finishing.pages) EXPECT_EQ(page.width, 1024U);
    for (size_t i = 0; i < 5; i++) {
        const auto x = static_cast<size_t>(surfaces_[i].meshX()), y = static_cast<size_t>(surfaces_[i].meshY());
        EXPECT_EQ(Texel(surfaces_[i].lightPage, x, y, 1024)[0], static_cast<int>(LightBlocks()[i].texels[0][0]));
    }
}

TEST_F(Finishing, GroupsShareAPageAndPagesHaveNumbersFromOneOn) {
    for (uint32_t group = 0; group < 3; group++) {
        for (int i = 0; i < 4; i++) AddBlock(100, 100, {1, 1, 1}, group);
    }
    Run();
    EXPECT_EQ(pages_.size(), 4U);
    for (size_t i = 0; i < 12; i++) EXPECT_EQ(surfaces_[i].lightPage, surfaces_[i / 4 * 4].lightPage);
}

TEST_F(Finishing, TheWholeStepLeavesPagesAndSizeCode) {
    Options().mesh = true;
    Textures().pages.assign(3, {});
    Geometry().surfaces.resize(1);
    LightBlock& block = NewLightBlock(1, 300, 2, 1);
    block.texels[0] = {1, 2, 3};
    FinishLightmaps(0);
    EXPECT_EQ(Textures().pages.size(), 2U);
    EXPECT_EQ(Textures().lightmapSizeCode, 1);
    EXPECT_TRUE(LightBlocks().empty());
}

TEST_F(Finishing, NewBlocksAreBlackAndStayWhereTheyAre) {
    LightBlock& first = NewLightBlock(2, 3, 4, 1);
    EXPECT_EQ(first.texels, std::vector<Vec3>(24));
    for (int i = 0; i < 1000; i++) NewLightBlock(1, 1, 1, 1);
    EXPECT_EQ(&first, &LightBlocks().front());
    RunOnThreads(3, false, [](int32_t) { NewLightBlock(1, 1, 1, 1); });
    EXPECT_EQ(LightBlocks().size(), 1004U);
}

TEST_F(Finishing, DarkFinishedBlocksAreDroppedUnderLitmapsonly) {
    AddFinishedBlock(MakeLightBlock(1, 2, 2, 1));
    EXPECT_EQ(LightBlocks().size(), 1U);
    Options().litmapsonly = true;
    LightBlock negative = MakeLightBlock(1, 1, 1, 1);
    negative.texels[0] = {-1, 0, 0};
    AddFinishedBlock(negative);
    EXPECT_EQ(LightBlocks().size(), 1U);
    negative.texels[0] = {-1, 0, 0.00001F};
    AddFinishedBlock(negative);
    EXPECT_EQ(LightBlocks().size(), 2U);
}

}  // namespace
}  // namespace k2k::test
