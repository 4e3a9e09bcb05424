// What the compiler makes is sound: of every example, of every odd mix of options, of maps that nobody drew.
#include <gtest/gtest.h>

#include <random>

#include "levelcheck/check.h"
#include "program/compile.h"

namespace k2k::test {
namespace {

using levelcheck::Check;
using levelcheck::Describe;
using levelcheck::IsSound;

void ExpectSound(const levelcheck::LevelView& level) {
    const auto faults = Check(level);
    EXPECT_TRUE(IsSound(faults)) << Describe(faults);
}

struct Example {
    const char* dialect;
    const char* name;
};

class Examples : public ::testing::TestWithParam<Example> {
  protected:
    Examples() { TakeExample(GetParam().dialect, GetParam().name); }

    InTempDir folder_;
};

TEST_P(Examples, AreSound) {
    ExpectSound(CompileLevel(GetParam().name).level);
}

TEST_P(Examples, AreSoundUnderSolidSky) {
    ExpectSound(CompileLevel(GetParam().name, {"-solidsky", "-sunrgb", "60", "60", "50"}).level);
}

INSTANTIATE_TEST_SUITE_P(All, Examples,
                         ::testing::Values(Example{"", "room"}, Example{"50", "house"}, Example{"51", "house"},
                                           Example{"71", "house"}, Example{"50", "court"}, Example{"51", "court"},
                                           Example{"71", "court"}, Example{"50", "grid200"}, Example{"51", "grid200"},
                                           Example{"71", "grid200"}),
                         [](const auto& test) {
                             const std::string dialect = test.param.dialect;
                             return test.param.name + (dialect.empty() ? "" : "In" + dialect);
                         });

class HouseWith : public ::testing::TestWithParam<std::vector<std::string>> {
  protected:
    HouseWith() { TakeExample("71", "house"); }

    InTempDir folder_;
};

TEST_P(HouseWith, OptionsIsSound) {
    ExpectSound(CompileLevel("house", GetParam()).level);
}

using Words = std::vector<std::string>;
INSTANTIATE_TEST_SUITE_P(Odd, HouseWith,
                         ::testing::Values(Words{"-nofill", "-noportals", "-preview"}, Words{"-notjunc"},
                                           Words{"-mergeacross"},
                                           Words{"-mergeacross", "-solidsky", "-sizeshaded", "996"},
                                           Words{"-nod3dlmaps"}, Words{"-zoomlevel", "4"}, Words{"-nh", "-nodetail"},
                                           Words{"-forcedetail"}, Words{"-fast", "-sizeshaded", "16"},
                                           Words{"-sizeflat", "64", "-sizeturb", "64", "-preview"},
                                           Words{"-ambrgb", "10", "10", "10", "-litmapsonly"},
                                           Words{"-sethulls", "0", "2", "1", "-invisibletonone"},
                                           Words{"-litv2", "-fast", "-radbounce", "2", "-sunrgb", "60", "60", "50"},
                                           Words{"-litv2", "-mesh", "-nobsp", "-radbounce", "2"}));

class RandomMaps : public SmallMapTest {
  protected:
    // Boxes on a grid of 8 units, so that many of them touch, overlap, and share planes.
    static SmallMap Random(uint32_t seed) {
        std::mt19937 random(seed);
        const auto below = [&](uint32_t limit) { return static_cast<double>(random() % limit); };
        constexpr std::array<uint32_t, 4> Flags{0, 0, BlockFlags::Passable, BlockFlags::Detail};
        constexpr std::array<const char*, 4> Textures{"WALL", "PILLAR", "*WATER", "LAMP_OUT"};
        SmallMap map = OneRoom();
        for (int i = 0; i < 16; ++i) {
            const Corner low{8 * below(30), 8 * below(30), 8 * below(15)};
            const Corner high{low[0] + 8 + 8 * below(10), low[1] + 8 + 8 * below(10), low[2] + 8 + 8 * below(10)};
            map.Add({low, high, Textures[random() % 4], Flags[random() % 4]});
        }
        for (int i = 0; i < 3; ++i) map.Light({8 * below(32), 8 * below(32), 8 * below(16)}, {200, 150, 100}, 200, 1);
        return map;
    }
};

TEST_F(RandomMaps, AreSound) {
    for (uint32_t seed = 1; seed <= 12; ++seed) {
        SCOPED_TRACE(seed);
        ExpectSound(Compile(Random(seed)).level);
    }
}

TEST_F(RandomMaps, AreSoundWhenMerged) {
    for (uint32_t seed = 21; seed <= 26; ++seed) {
        SCOPED_TRACE(seed);
        ExpectSound(Compile(Random(seed), {"-mergeacross"}).level);
    }
}

TEST_F(SmallMapTest, ALeakingLevelIsSound) {
    SmallMap map;
    map.AddRoom({0, 0, 0}, {256, 256, 128}).Start({128, 128, 40}).Start({500, 500, 0}).Sun();
    ExpectSound(Compile(map).level);
}

TEST_F(SmallMapTest, ALevelOfEntitiesIsSound) {
    ExpectSound(Compile(SmallMap().Sun().Start({0, 0, 0})).level);
}

}  // namespace
}  // namespace k2k::test
