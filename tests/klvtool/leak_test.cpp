// klvtool leak: ways out of a room with a hole, and maps that are closed.
#include <filesystem>
#include <sstream>

#include "klvtool/tool.h"

namespace k2k::test {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::Not;
using ::testing::StartsWith;

constexpr double HoleY = 100, HoleZ = 60;

// A room of 256 x 256 x 160 with a square hole in its east wall, block 5 and on. A size of 0 leaves no hole.
SmallMap RoomWithHole(double size) {
    SmallMap map;
    map.Add({{-16, -16, -16}, {272, 272, 0}, "FLOOR"}).Add({{-16, -16, 160}, {272, 272, 176}, "CEILING"});
    map.Add({{-16, -16, 0}, {0, 272, 160}}).Add({{0, -16, 0}, {272, 0, 160}}).Add({{0, 256, 0}, {272, 272, 160}});
    const double y0 = HoleY - size / 2, y1 = HoleY + size / 2, z0 = HoleZ - size / 2, z1 = HoleZ + size / 2;
    map.Add({{256, 0, 0}, {272, y0, 160}, "PILLAR"}).Add({{256, y1, 0}, {272, 256, 160}, "PILLAR"});
    if (size > 0) map.Add({{256, y0, 0}, {272, y1, z0}, "PILLAR"}).Add({{256, y0, z1}, {272, y1, 160}, "PILLAR"});
    return map.Start({50, 200, 40});
}

class LeakSearch : public KlvtoolTest {
  protected:
    static ProcessResult LeakOf(const SmallMap& map, std::vector<std::string> options = {}) {
        Write(map);
        options.insert(options.begin(), {"leak", "level.$$M"});
        return Klvtool(options);
    }

    // The point behind "hole near", and the points of the way.
    static std::vector<Corner> PointsOf(const std::string& text) {
        std::vector<Corner> points;
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);) {
            const bool isHole = line.starts_with("hole near ");
            if (!isHole && !line.starts_with("  ")) continue;
            std::istringstream numbers(isHole ? line.substr(10) : line);
            Corner point{};
            numbers >> point[0] >> point[1] >> point[2];
            points.push_back(point);
        }
        return points;
    }

    static void ExpectLeakThroughHole(double size) {
        const ProcessResult run = LeakOf(RoomWithHole(size));
        EXPECT_EQ(run.status, 1) << run.err;
        EXPECT_THAT(run.out, StartsWith("leak from object 1, start \"player\", at 50 200 40\nhole near "));
        EXPECT_THAT(run.out, HasSubstr("\nnearest block ")) << "of those around the hole";
        EXPECT_THAT(run.out, HasSubstr(", PILLAR, from 256 "));
        const std::vector<Corner> points = PointsOf(run.out);
        ASSERT_GE(points.size(), 3U);
        EXPECT_THAT(points[0][0], AllOf(::testing::Ge(256), ::testing::Le(272))) << "the hole is in the wall";
        EXPECT_NEAR(points[0][1], HoleY, size / 2 + 0.01);
        EXPECT_NEAR(points[0][2], HoleZ, size / 2 + 0.01);
        EXPECT_THAT(points[1], ::testing::ElementsAre(50, 200, 40)) << "the way begins at the object";
        EXPECT_GT(points.back()[0], 272) << "and ends outside";
    }
};

TEST_F(LeakSearch, FindsAHoleOfOneUnit) {
    ExpectLeakThroughHole(1);
}

TEST_F(LeakSearch, FindsAHoleOfHundredUnits) {
    ExpectLeakThroughHole(100);
}

TEST_F(LeakSearch, SaysSoWhenTheMapIsSealed) {
    const ProcessResult run = LeakOf(RoomWithHole(0));
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, "sealed: none of 1 objects reaches the outside\n");
}

TEST_F(LeakSearch, SaysSoWhenNoObjectStandsInside) {
    SmallMap map;
    map.AddRoom({0, 0, 0}, {256, 256, 128}).Start({-8, 100, 40});
    const ProcessResult run = LeakOf(map);
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.out, StartsWith("no object stands in open space"));
}

TEST_F(LeakSearch, SaysSoWhenTheObjectItselfStandsOutside) {
    const ProcessResult run = LeakOf(RoomWithHole(0).Light({400, 200, 40}, {1, 1, 1}, 100));
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(
        run.out,
        StartsWith("leak from object 2, light, at 400 200 40\nthe object itself stands outside\nway, 2 points:\n"));
    EXPECT_THAT(run.out, Not(HasSubstr("hole")));
}

TEST_F(LeakSearch, AgreesWithTheCompiler) {
    for (const double size : {0.0, 1.0, 100.0}) {
        const std::string text = Compile(RoomWithHole(size), {"-verbose"}).text;
        const bool leaks = text.find("W090") != std::string::npos || text.find("W091") != std::string::npos;
        EXPECT_EQ(Klvtool({"leak", "level.$$M"}).status, leaks ? 1 : 0) << size;
    }
}

TEST_F(LeakSearch, GoesThroughDetailBlocks) {
    SmallMap map = RoomWithHole(40);
    map.Add({{256, HoleY - 20, HoleZ - 20}, {272, HoleY + 20, HoleZ + 20}, "WALL", BlockFlags::Detail});
    EXPECT_EQ(LeakOf(map, {"--options", "-forcedetail"}).status, 1);
    EXPECT_EQ(LeakOf(map, {"--options", "-nodetail"}).status, 0);
}

TEST_F(LeakSearch, TakesTheCompilersOptions) {
    SmallMap map = RoomWithHole(40);
    map.Add({{256, HoleY - 20, HoleZ - 20}, {272, HoleY + 20, HoleZ + 20}, "SKY1"});
    EXPECT_EQ(LeakOf(map, {"--options", "-solidsky"}).status, 0);
    const ProcessResult run = LeakOf(map, {"--options", "-nosuchoption"});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err, "klvtool: --options: \"-nosuchoption\" are no options of the compiler\n");
}

TEST_F(LeakSearch, TakesTheObjectThatIsNearest) {
    const ProcessResult run = LeakOf(RoomWithHole(40).Light({230, 100, 60}, {1, 1, 1}, 100));
    EXPECT_THAT(run.out, StartsWith("leak from object 2, light, at 230 100 60\n"));
}

TEST_F(LeakSearch, DrawsThePlan) {
    EXPECT_EQ(LeakOf(RoomWithHole(40), {"--png", "leak.png"}).status, 1);
    const klvtool::Image plan = ReadPng("leak.png");
    EXPECT_EQ(plan.width, 1000U);
    EXPECT_GT(std::count(plan.pixels.begin(), plan.pixels.end(), klvtool::Rgb{255, 40, 40}), 100) << "the way";
}

TEST_F(LeakSearch, WritesNothingElse) {
    LeakOf(RoomWithHole(1));
    EXPECT_FALSE(std::filesystem::exists("level.klv"));
    EXPECT_FALSE(std::filesystem::exists("level.$$p"));
}

TEST_F(LeakSearch, TellsWhatTheCompilerStopsAt) {
    WriteFile("level.$$M", "version 711\n{\n0 textures.$$w\npalette.raw\n{\nvertices");
    const ProcessResult run = Klvtool({"leak", "level.$$M"});
    EXPECT_EQ(run.status, 2);
    EXPECT_THAT(run.err, StartsWith("klvtool: "));
    EXPECT_EQ(run.err.find('\n'), run.err.size() - 1) << "one line";
    EXPECT_THAT(Klvtool({"leak", "none"}).err, HasSubstr("none.$$M"));
}

}  // namespace
}  // namespace k2k::test
