// Options of the geometry stage, seen in the trees, planes and surfaces of a level.
#include <gmock/gmock.h>

#include <filesystem>

#include "levelcheck/point_lookup.h"
#include "program/compile.h"
#include "program/level_bytes.h"

namespace k2k::test {
namespace {

using levelcheck::HullContentsAt;
using levelcheck::LevelView;
using levelcheck::RegionAt;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr int32_t Empty = -256, Solid = -128, OpenFlag = 2, DetailFlag = 16;

int32_t ContentsAt(const LevelView& level, const Corner& point) {
    return level.regions[RegionAt(level, point)].contents;
}

bool IsSolid(const LevelView& level, const Corner& point) {
    return RegionAt(level, point) == 0;
}

bool HullIsSolid(const LevelView& level, size_t hull, const Corner& point) {
    return HullContentsAt(level, hull, point) == Solid;
}

size_t CountFlagged(const LevelView& level, uint32_t flags) {
    size_t count = 0;
    for (const levelcheck::Surface& surface : level.surfaces) {
        if (surface.texinfo >= 0) count += level.texinfos[static_cast<size_t>(surface.texinfo)].flags == flags ? 1 : 0;
    }
    return count;
}

using Hulls = SmallMapTest;

TEST_F(Hulls, StandOffTheWallsByHalfTheirBoxes) {
    const auto [text, level] = Compile(OneRoom());
    EXPECT_THAT(text, HasSubstr(" \nBuilding fat hull ... ok \nBuilding narrow hull ... ok \nBuilding BSP tree ..."));
    EXPECT_THAT(level.info.hullMins[1], ElementsAre(-16, -16, -16));
    EXPECT_THAT(level.info.hullMaxs[1], ElementsAre(16, 16, 16));
    EXPECT_THAT(level.info.hullMins[2], ElementsAre(-32, -32, -32));
    EXPECT_THAT(level.info.hullMaxs[2], ElementsAre(32, 32, 16));
    const Corner nearWall{20, 128, 64};
    EXPECT_FALSE(IsSolid(level, nearWall));
    EXPECT_FALSE(HullIsSolid(level, 1, nearWall));
    EXPECT_TRUE(HullIsSolid(level, 2, nearWall));
    EXPECT_TRUE(HullIsSolid(level, 1, {12, 128, 64}));
}

TEST_F(Hulls, NhBuildsOneOfZeroSize) {
    const auto [text, level] = Compile(OneRoom(), {"-nh"});
    EXPECT_THAT(text, HasSubstr(" \nBuilding collision hull ... ok \nBuilding BSP tree ..."));
    EXPECT_THAT(text, Not(HasSubstr("fat hull")));
    EXPECT_THAT(level.info.hullMins[1], ElementsAre(0, 0, 0));
    EXPECT_FALSE(HullIsSolid(level, 1, {1, 1, 1}));
    EXPECT_TRUE(HullIsSolid(level, 1, {-1, 1, 1}));
    EXPECT_LT(level.hullNodes.size(), Compile().level.hullNodes.size());
}

TEST_F(Hulls, NarrowAndFatTakeWidthHeightAndOffset) {
    const LevelView level = Compile(OneRoom(), {"-narrow", "8", "40", "4", "-fat", "100", "60", "-10"}).level;
    EXPECT_THAT(level.info.hullMins[1], ElementsAre(-4, -4, -24));
    EXPECT_THAT(level.info.hullMaxs[1], ElementsAre(4, 4, 16));
    EXPECT_THAT(level.info.hullMins[2], ElementsAre(-50, -50, -20));
    EXPECT_THAT(level.info.hullMaxs[2], ElementsAre(50, 50, 40));
    EXPECT_FALSE(HullIsSolid(level, 1, {5, 128, 64}));
    EXPECT_FALSE(HullIsSolid(level, 1, {128, 128, 128 - 25}));
    EXPECT_TRUE(HullIsSolid(level, 1, {128, 128, 128 - 23}));
    EXPECT_TRUE(HullIsSolid(level, 2, {49, 128, 64}));
    EXPECT_FALSE(HullIsSolid(level, 2, {128, 128, 41}));
    EXPECT_TRUE(HullIsSolid(level, 2, {128, 128, 39}));
}

// A row takes the box of its kind, and the hull of a row is built with the box of the row that its kind names.
TEST_F(Hulls, SethullsActsTwice) {
    const LevelView level = Compile(OneRoom(), {"-sethulls", "0", "2", "1"}).level;
    EXPECT_THAT(level.info.hullMins[1], ElementsAre(-32, -32, -32)) << "row 1 has the fat box";
    EXPECT_THAT(level.info.hullMins[2], ElementsAre(-16, -16, -16));
    const Corner nearWall{20, 128, 64};
    EXPECT_FALSE(HullIsSolid(level, 1, nearWall)) << "hull 1 is built with row 2, the narrow box";
    EXPECT_TRUE(HullIsSolid(level, 2, nearWall));
}

TEST_F(Hulls, SethullsCanGiveTwoHullsOneBox) {
    const LevelView level = Compile(OneRoom(), {"-sethulls", "0", "2", "2"}).level;
    EXPECT_THAT(level.info.hullMins[1], ElementsAre(-32, -32, -32));
    EXPECT_TRUE(HullIsSolid(level, 1, {20, 128, 64}));
}

using Blocks = SmallMapTest;

TEST_F(Blocks, SolidskyMakesWallsOfSky) {
    const Corner inSky{128, 128, 120};
    const LevelView open = Compile(SkyRoom()).level;
    EXPECT_EQ(ContentsAt(open, inSky), Solid | OpenFlag);
    const LevelView solid = Compile({"-solidsky"}).level;
    EXPECT_TRUE(IsSolid(solid, inSky));
    EXPECT_LT(solid.regions.size(), open.regions.size());
}

TEST_F(Blocks, NodetailMakesWallsOfDetail) {
    const SmallMap map = OneRoom().Add({{16, 16, 0}, {48, 48, 64}, "PILLAR", BlockFlags::Detail});
    const Corner inBlock{32, 32, 32};
    const auto [text, detail] = Compile(map);
    EXPECT_THAT(text, HasSubstr("Checking detail intersections"));
    EXPECT_EQ(detail.regions.size(), 2U) << "the block cuts no region, and no surface has its middle in it";
    EXPECT_EQ(ContentsAt(detail, inBlock), Empty | DetailFlag);
    const auto [plainText, plain] = Compile({"-nodetail"});
    EXPECT_THAT(plainText, Not(HasSubstr("Checking detail")));
    EXPECT_TRUE(IsSolid(plain, inBlock));
    EXPECT_GT(plain.regions.size(), 2U);
}

class Detail : public SmallMapTest {
  protected:
    // A detail block around the end of a pillar: the pillar's top lies inside it, its foot outside.
    static SmallMap BuriedPillar() {
        return OneRoom()
            .Add({{112, 112, 0}, {144, 144, 96}, "PILLAR"})
            .Add({{96, 96, 40}, {160, 160, 72}, "PILLAR", BlockFlags::Detail});
    }
};

TEST_F(Detail, ThatCutsASurfaceBecomesAWall) {
    const auto [text, level] = Compile(BuriedPillar());
    EXPECT_THAT(text, HasSubstr("\nIntersecting detail blocks (1/1)- recompiling..."));
    EXPECT_TRUE(IsSolid(level, {100, 100, 56}));
}

TEST_F(Detail, StaysDetailWithForcedetail) {
    const auto [text, level] = Compile(BuriedPillar(), {"-forcedetail"});
    EXPECT_THAT(text, Not(HasSubstr("detail intersections")));
    EXPECT_THAT(text, Not(HasSubstr("recompiling")));
    EXPECT_FALSE(IsSolid(level, {100, 100, 56}));
    EXPECT_EQ(ContentsAt(level, {100, 100, 56}) & DetailFlag, DetailFlag);
}

TEST_F(Blocks, InvisibletononeShowsInvisibleBlocks) {
    constexpr uint32_t FlagsOfNone = 11;
    const Corner inBlock{128, 128, 32};
    const SmallMap map = OneRoom().Add({{96, 96, 0}, {160, 160, 64}, "PILLAR", BlockFlags::Invisible});
    const LevelView hidden = Compile(map).level;
    EXPECT_FALSE(IsSolid(hidden, inBlock));
    EXPECT_TRUE(HullIsSolid(hidden, 1, inBlock)) << "walkers meet it all the same";
    EXPECT_EQ(CountFlagged(hidden, FlagsOfNone), 0U);
    const LevelView shown = Compile({"-invisibletonone"}).level;
    EXPECT_TRUE(IsSolid(shown, inBlock));
    EXPECT_TRUE(HullIsSolid(shown, 1, inBlock));
    EXPECT_EQ(CountFlagged(shown, FlagsOfNone), 5U) << "every side but the one on the floor";
}

using Outside = SmallMapTest;

TEST_F(Outside, IsFilled) {
    const LevelView level = Compile(OneRoom()).level;
    EXPECT_TRUE(IsSolid(level, {-30, 128, 64}));
    EXPECT_EQ(level.regions.size(), 2U);
}

TEST_F(Outside, StaysOpenWithNofillAndThenThereAreNoPortals) {
    Write(OneRoom());
    EXPECT_EQ(FailureOf({"-nofill"}), " \nCan't read interim file level.$$p\n");
    const LevelView left = LoadLevel("level.klv");
    EXPECT_FALSE(IsSolid(left, {-30, 128, 64}));
    EXPECT_FALSE(std::filesystem::exists("level.$$p"));
}

TEST_F(Outside, StaysOpenWithNofillWhereNobodyWantsPortals) {
    const LevelView level = Compile(OneRoom(), {"-nofill", "-noportals", "-preview"}).level;
    EXPECT_EQ(ContentsAt(level, {-30, 128, 64}), Empty);
    EXPECT_GT(level.surfaces.size(), Compile().level.surfaces.size());
}

using Zoom = SmallMapTest;

// A step whose top lies on a quarter of a unit: planes are kept on halves.
SmallMap QuarterStep() {
    return OneRoom().Add({{96, 96, 0}, {160, 160, 10.25}, "PILLAR"});
}

std::vector<float> HeightsOf(const LevelView& level) {
    std::vector<float> heights;
    for (const levelcheck::Point& vertex : level.vertices) heights.push_back(vertex.z);
    return heights;
}

TEST_F(Zoom, KeepsFinerPlanesAndIsUndone) {
    const LevelView plain = Compile(QuarterStep()).level;
    const LevelView zoomed = Compile({"-zoomlevel", "2"}).level;
    EXPECT_THAT(HeightsOf(plain), Contains(10));
    EXPECT_THAT(HeightsOf(plain), Not(Contains(10.25)));
    EXPECT_THAT(HeightsOf(zoomed), Contains(10.25));
    EXPECT_THAT(HeightsOf(zoomed), Contains(128));
    EXPECT_EQ(zoomed.surfaces.size(), plain.surfaces.size()) << "surfaces are cut at the same texels";
}

TEST_F(Zoom, ShrinksTheHulls) {
    const LevelView zoomed = Compile(OneRoom(), {"-zoomlevel", "2"}).level;
    EXPECT_THAT(zoomed.info.hullMins[1], ElementsAre(-8, -8, -8));
    EXPECT_TRUE(HullIsSolid(zoomed, 1, {7, 128, 64}));
    EXPECT_FALSE(HullIsSolid(zoomed, 1, {9, 128, 64}));
}

// A plate thinner than the planes' halves: its two sides fall together until the zoom has pulled them apart.
SmallMap ThinPlate() {
    return OneRoom().Add({{96, 96, 10}, {160, 160, 10.3}, "PILLAR"});
}

TEST_F(Zoom, IsFoundByAutozoom) {
    const auto [plainText, plain] = Compile(ThinPlate());
    EXPECT_THAT(plainText, HasSubstr("WARNING W071"));
    const auto [text, zoomed] = Compile({"-autozoom", "-zoomlevel", "0"});
    EXPECT_THAT(text, HasSubstr(" \nDetermining best zoom factor [1..10]\nAutozoom set to 2\n"));
    EXPECT_THAT(text, Not(HasSubstr("WARNING")));
    EXPECT_THAT(HeightsOf(plain), Not(Contains(10.25)));
    EXPECT_THAT(HeightsOf(zoomed), Contains(10.25));
}

TEST_F(Zoom, IsSearchedUpToTheLevelGiven) {
    EXPECT_THAT(Compile(ThinPlate(), {"-autozoom"}).text, HasSubstr(" [1..1]\nAutozoom set to 1\n"));
    EXPECT_THAT(Compile({"-autozoom", "-zoomlevel", "4"}).text, HasSubstr(" [1..4]\nAutozoom set to 2\n"));
}

// The trial reads are silent, and the first warning of its kind was one of theirs.
TEST_F(Zoom, SearchLeavesOnlyVerboseWarnings) {
    const auto warns = HasSubstr("WARNING W071");
    EXPECT_THAT(Compile(ThinPlate(), {"-autozoom"}).text, Not(warns));
    EXPECT_THAT(Compile({"-autozoom", "-verbose"}).text, warns);
}

TEST_F(Zoom, StaysOneWhereNothingWarns) {
    EXPECT_THAT(Compile(OneRoom(), {"-autozoom", "-zoomlevel", "4"}).text, HasSubstr(" [1..4]\nAutozoom set to 1\n"));
}

TEST_F(Blocks, ThinnerThanTheEpsilonHaveNoPlaneOfTheirOwn) {
    Write(OneRoom().Add({{96, 96, 10}, {160, 160, 10.5}, "PILLAR"}));
    EXPECT_THAT(Compile().text, Not(HasSubstr("WARNING W071")));
    EXPECT_THAT(Compile({"-eps", "0.6"}).text, HasSubstr("WARNING W071"));
}

TEST_F(Blocks, BeyondTheBoundStopTheBuild) {
    Write(OneRoom());
    EXPECT_EQ(FailureOf({"-bound", "200"}), "Block outside level boundaries !\nUse -bound XXX to increase size !\n");
    Compile({"-bound", "300"});
}

}  // namespace
}  // namespace k2k::test
