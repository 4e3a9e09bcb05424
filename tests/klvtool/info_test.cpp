// klvtool info and check on a small level.
#include "klvtool/tool.h"

namespace k2k::test {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class Info : public KlvtoolTest {
  protected:
    Info() {
        SmallMap map = OneRoom();
        map.Light({60, 60, 100}, {200, 180, 160}, 300);
        map.Entity("3 10 20 30\n45 0 0\n1 1 1\naverylongname.mdl\nvase\nndef\n1 2 3 4 5 6 7 8\n00000010");
        map.Entity("6 walk\n0\n2\n1 2 3\n4 5 6");
        level_ = Compile(map).level;
    }
    static std::string Text(std::vector<std::string> options = {}) {
        options.insert(options.begin(), {"info", "level.klv"});
        const ProcessResult run = Klvtool(options);
        EXPECT_EQ(run.status, 0) << run.err;
        return run.out;
    }
    levelcheck::LevelView level_;
};

TEST_F(Info, TellsVersionChunksAndCounts) {
    const std::string text = Text();
    EXPECT_THAT(text,
                StartsWith("version 7, " + std::to_string(level_.bytes.size()) + " bytes, a level of surfaces\n"));
    EXPECT_THAT(text, HasSubstr("\n  14 info                    156        160\n"));
    EXPECT_THAT(text, HasSubstr("\nsurfaces               16\n"));
    EXPECT_THAT(text, HasSubstr("\nregions: 1, mean visible 1.0\n"));
}

TEST_F(Info, TellsHullBoxes) {
    EXPECT_THAT(Text(), HasSubstr("box -16 -16 -16 to 16 16 16\n"));
}

TEST_F(Info, TellsTexturesInUseWithTheirSizes) {
    EXPECT_THAT(Text(), AllOf(HasSubstr(" 64 x 64         4 faces"), HasSubstr(", 3 of them used\n")));
}

TEST_F(Info, TellsHowFullThePagesAre) {
    EXPECT_THAT(Text(), HasSubstr("\nlightmap pages: 2 of 256 x 256 texels\n     1     16 surfaces "));
}

TEST_F(Info, DecodesEntities) {
    const std::string text = Text();
    EXPECT_THAT(text, HasSubstr("  light\n      position           60 60 100\n      colour             200 180 160\n"
                                "      range              300\n"));
    EXPECT_THAT(text, HasSubstr("      skills             1 2 3 4 5 6 7 8\n"));
    EXPECT_THAT(text, HasSubstr("      point              1 2 3\n      point              4 5 6\n"));
    EXPECT_THAT(
        text,
        HasSubstr("  sun\n      azimuth            0\n      elevation          45\n      flags              0x23\n"
                  "      compiler_version   7.01\n"));
}

TEST_F(Info, WritesJson) {
    const std::string json = Text({"--json"});
    EXPECT_THAT(json, StartsWith("{\"version\":\"7\",\"bytes\":"));
    EXPECT_THAT(json, HasSubstr("\"surfaces\":16,"));
    EXPECT_THAT(json,
                HasSubstr("{\"type\":\"start\",\"position\":[128,128,40],\"angles\":[0,0,0],\"name\":\"player\"}"));
    EXPECT_THAT(json, HasSubstr(",\"points\":[[1,2,3],[4,5,6]]}"));
    EXPECT_THAT(json, HasSubstr("\"sun\":{\"type\":\"sun\",\"azimuth\":0,\"elevation\":45,"));
    EXPECT_THAT(json, ::testing::EndsWith("}\n"));
}

TEST_F(Info, NamesWhatIsDamaged) {
    Damage<uint32_t>("level.klv", 15, 0, 0x7FFFFFFF);  // far more records than there are
    std::vector<uint8_t> bytes = ReadBytes("level.klv");
    bytes[4 + 8 * 3] = 255;  // the vertices begin elsewhere
    bytes[4 + 8 * 3 + 3] = 255;
    WriteFile("level.klv", bytes);
    EXPECT_THAT(Text(), HasSubstr("damaged: chunk 3: runs past the file's end\n"));
}

TEST_F(Info, SaysSoWhenThereIsNoSun) {
    EXPECT_THAT(Text(), Not(HasSubstr("no sun")));
    SmallMap map;
    map.AddRoom({0, 0, 0}, {256, 256, 128}).Start({128, 128, 40});
    Compile(map);
    EXPECT_THAT(Text(), HasSubstr("\nno sun: "));
}

using Check = Info;

TEST_F(Check, EndsWithZeroForASoundLevel) {
    const ProcessResult run = Klvtool({"check", "level.klv"});
    EXPECT_EQ(run.status, 0) << run.out;
    EXPECT_EQ(run.out, "sound\n");
}

TEST_F(Check, EndsWithOneAndALineForEachFault) {
    constexpr size_t PlaneOfSurface = 20;
    Damage<uint32_t>("level.klv", 7, PlaneOfSurface, 9999);
    const ProcessResult run = Klvtool({"check", "level.klv"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "fault: surface names no plane, 1 times, first: surface 0\n");
}

}  // namespace
}  // namespace k2k::test
