// klvtool pages and plan.
#include <filesystem>

#include "klvtool/tool.h"
#include "texture/wad_bytes.h"

namespace k2k::test {
namespace {

using klvtool::Rgb;

size_t Count(const klvtool::Image& image, const Rgb& colour) {
    return static_cast<size_t>(std::count(image.pixels.begin(), image.pixels.end(), colour));
}

// An image of one size: a head with the pixels' place, and the pixels.
std::vector<uint8_t> FullImage(std::string_view name, uint32_t width, uint32_t height,
                               const std::vector<uint8_t>& pixels) {
    constexpr uint32_t HeadBytes = 40;
    std::vector<uint8_t> lump(HeadBytes);
    std::memcpy(lump.data(), name.data(), name.size());
    std::memcpy(lump.data() + 16, &width, 4);
    std::memcpy(lump.data() + 20, &height, 4);
    std::memcpy(lump.data() + 24, &HeadBytes, 4);
    lump.insert(lump.end(), pixels.begin(), pixels.end());
    return lump;
}

class Pages : public KlvtoolTest {};

TEST_F(Pages, WritesLightmapPagesInTheRightColours) {
    const auto level = Compile(OneRoom().Light({60, 60, 100}, {250, 120, 10}, 300)).level;
    EXPECT_EQ(Klvtool({"pages", "level.klv", "out/deep"}).status, 0);
    const klvtool::Image page = ReadPng("out/deep/page-001.png");
    ASSERT_EQ(page.width, 256U);
    ASSERT_EQ(page.height, 256U);
    const auto texels = level.Chunk(16).subspan(size_t{3} * 256 * 256);
    for (size_t i = 0; i < page.pixels.size(); i++) {
        ASSERT_EQ(page.pixels[i], (Rgb{texels[3 * i + 2], texels[3 * i + 1], texels[3 * i]})) << i;
    }
}

TEST_F(Pages, WritesTexturesThroughThePalette) {
    WriteFile("textures.$$w", Wad()
                                  .Add("floor", 68, FullImage("FLOOR", 4, 2, {9, 9, 9, 9, 9, 18, 9, 9}))
                                  .Add("wall", 68, FullImage("*WALL", 1, 1, {5}))
                                  .Add("ceiling", 68, FullImage("SHORT", 4, 2, {5}))
                                  .Bytes());
    Compile(OneRoom());
    EXPECT_EQ(Klvtool({"pages", "level.klv", "out"}).status, 0);
    const klvtool::Image palette = ReadPng("out/palette.png");
    ASSERT_EQ(palette.width, 256U);
    EXPECT_EQ(palette.At(16 * 2, 16), (Rgb{18 * 3, 18 * 3 + 1, 18 * 3 + 2}));
    const klvtool::Image floor = ReadPng("out/texture-000-FLOOR.png");
    ASSERT_EQ(floor.pixels.size(), 8U);
    EXPECT_EQ(floor.At(1, 1), (Rgb{54, 55, 56}));
    EXPECT_EQ(floor.At(0, 1), (Rgb{27, 28, 29}));
    EXPECT_TRUE(std::filesystem::exists("out/texture-002--WALL.png")) << "a name that any file system takes";
    EXPECT_FALSE(std::filesystem::exists("out/texture-001-SHORT.png")) << "its pixels are not all there";
}

TEST_F(Pages, TellsWhenTheFolderCannotBeMade) {
    Compile(OneRoom());
    WriteFile("out", "a file");
    const ProcessResult run = Klvtool({"pages", "level.klv", "out"});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err, "klvtool: can't make the folder out\n");
}

class Plan : public KlvtoolTest {
  protected:
    static constexpr Rgb Background{26, 28, 32};

    // Two rooms with a wall between them that has no opening.
    static SmallMap TwoRooms() {
        SmallMap map = OneRoom();
        map.AddRoom({272, 0, 0}, {528, 256, 128}).Start({400, 128, 40});
        return map;
    }
    static klvtool::Image Draw(std::vector<std::string> options = {}) {
        options.insert(options.begin(), {"plan", "level.klv", "plan.png", "--size", "300"});
        const ProcessResult run = Klvtool(options);
        EXPECT_EQ(run.status, 0) << run.err;
        return ReadPng("plan.png");
    }
};

TEST_F(Plan, IsAsLargeAsAskedFor) {
    Compile(TwoRooms());
    EXPECT_EQ(Draw().width, 300U);
}

TEST_F(Plan, ShowsFloorsAndLeavesSolidSpaceDark) {
    Compile(TwoRooms());
    const klvtool::Image plan = Draw();
    const uint32_t row = plan.height / 4;
    EXPECT_NE(plan.At(60, row), Background);
    EXPECT_EQ(plan.At(4, row), Background);
    EXPECT_EQ(plan.At(150, row), Background) << "the wall between the rooms";
}

TEST_F(Plan, ColoursWhatIsVisibleFromAPoint) {
    Compile(TwoRooms());
    const klvtool::Image plan = Draw({"--from", "60,60,40"});
    const auto isWarm = [](const Rgb& c) { return c.r > c.b + 40; };
    EXPECT_TRUE(isWarm(plan.At(60, plan.height / 4)));
    EXPECT_FALSE(isWarm(plan.At(240, plan.height / 4))) << "the other room";
}

TEST_F(Plan, WantsAPointInOpenSpace) {
    Compile(TwoRooms());
    for (const char* point : {"-8,60,40", "264,60,40", "60,60,9000"}) {
        const ProcessResult run = Klvtool({"plan", "level.klv", "plan.png", "--from", point});
        EXPECT_EQ(run.status, 2) << point;
        EXPECT_EQ(run.err, "klvtool: --from is not in the open space of the level\n");
    }
}

TEST_F(Plan, LeavesOutWhatIsAboveTheCut) {
    SmallMap map = OneRoom();
    map.Add({{40, 40, 60}, {216, 216, 80}, "PILLAR"});
    Compile(map);
    const auto wallInk = [](const klvtool::Image& image) { return Count(image, {240, 240, 235}); };
    const klvtool::Image above = Draw({"--cut", "70"}), below = Draw({"--cut", "50"});
    EXPECT_GT(wallInk(above), wallInk(below)) << "only the upper cut meets the slab";
}

TEST_F(Plan, DrawsMeshLevels) {
    Compile(TwoRooms(), {"-mesh"});
    const klvtool::Image plan = Draw();
    EXPECT_NE(plan.At(60, plan.height / 4), Background);
    EXPECT_EQ(plan.At(150, plan.height / 4), Background);
}

TEST_F(Plan, TellsWhenThereIsNothingToDraw) {
    Compile(SmallMap());
    const ProcessResult run = Klvtool({"plan", "level.klv", "plan.png"});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err, "klvtool: level.klv: no surfaces to draw\n");
}

}  // namespace
}  // namespace k2k::test
