// One map and one set of options make one file: run after run, with any number of workers, in every dialect.
#include <gmock/gmock.h>

#include "program/compile.h"
#include "program/level_bytes.h"

namespace k2k::test {
namespace {

using levelcheck::LevelView;
using ::testing::ElementsAre;

class SameBytes : public ::testing::TestWithParam<const char*> {
  protected:
    SameBytes() { TakeExample("71", GetParam()); }

    static std::vector<uint8_t> Bytes(const std::vector<std::string>& options) {
        return CompileLevel(GetParam(), options).level.bytes;
    }

    InTempDir folder_;
};

TEST_P(SameBytes, RunAfterRun) {
    const std::vector<uint8_t> first = Bytes({});
    EXPECT_TRUE(Bytes({}) == first) << "over the old level";
    std::filesystem::remove(std::string(GetParam()) + ".klv");
    EXPECT_TRUE(Bytes({}) == first);
}

TEST_P(SameBytes, WithAnyNumberOfThreads) {
    const std::vector<uint8_t> one = Bytes({"-threads", "1"});
    for (const char* threads : {"2", "4", "8"}) EXPECT_TRUE(Bytes({"-threads", threads}) == one) << threads;
}

TEST_P(SameBytes, OfBounceLightWithAnyNumberOfThreads) {
    const std::vector<std::string> bounces{"-litv2", "-radbounce", "2", "-threads"};
    const auto bytesOn = [&](const char* threads) {
        std::vector<std::string> options = bounces;
        options.emplace_back(threads);
        return Bytes(options);
    };
    EXPECT_TRUE(bytesOn("8") == bytesOn("1"));
}

INSTANTIATE_TEST_SUITE_P(Of, SameBytes, ::testing::Values("house", "grid200"));

class Dialects : public ::testing::Test {
  protected:
    static LevelView Compile(const std::string& dialect, const std::string& name) {
        const InTempDir folder;
        TakeExample(dialect, name);
        return CompileLevel(name).level;
    }
};

// Sections of the entity chunk aside: a sun of 7.1 has a flag of its own.
TEST_F(Dialects, OfAWholeNumberLevelGiveOneGeometry) {
    for (const char* name : {"court", "grid200"}) {
        const LevelView first = Compile("50", name), second = Compile("51", name), third = Compile("71", name);
        EXPECT_THAT(DifferentChunks(first, second), ElementsAre()) << name;
        EXPECT_THAT(DifferentChunks(first, third), ElementsAre(levelcheck::ChunkEntities)) << name;
        constexpr uint32_t FlagOf71 = 2;
        EXPECT_EQ(SunRecord(first).flags() | FlagOf71, SunRecord(third).flags());
    }
}

// The house has smooth columns, which 5.0 cannot express, and a texture mapping for them.
TEST_F(Dialects, OfTheHouseDifferInItsSmoothSurfacesAlone) {
    const LevelView plain = Compile("50", "house"), smooth = Compile("71", "house");
    EXPECT_THAT(DifferentChunks(plain, smooth), ElementsAre(levelcheck::ChunkTexinfos, levelcheck::ChunkSurfaces,
                                                            levelcheck::ChunkEntities, levelcheck::ChunkPages));
    ASSERT_EQ(plain.surfaces.size(), smooth.surfaces.size());
    for (size_t i = 0; i < plain.surfaces.size(); ++i) {
        EXPECT_EQ(plain.surfaces[i].plane, smooth.surfaces[i].plane);
        EXPECT_EQ(plain.surfaces[i].firstEdge, smooth.surfaces[i].firstEdge);
        EXPECT_EQ(plain.surfaces[i].edgeCount, smooth.surfaces[i].edgeCount);
    }
}

}  // namespace
}  // namespace k2k::test
