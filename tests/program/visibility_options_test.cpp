// Options of visibility, seen in the rows of a level.
#include <gmock/gmock.h>

#include <bit>
#include <filesystem>

#include "program/compile.h"
#include "program/level_bytes.h"

namespace k2k::test {
namespace {

using levelcheck::LevelView;
using ::testing::AnyOf;
using ::testing::Each;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

// The rows of all regions, one behind the other.
std::vector<uint8_t> Rows(const LevelView& level) {
    std::vector<uint8_t> rows;
    for (size_t i = 1; i < level.regions.size(); ++i) {
        const auto row = levelcheck::VisRow(level, i).value_or(std::vector<uint8_t>{});
        rows.insert(rows.end(), row.begin(), row.end());
    }
    return rows;
}

int CountBits(const std::vector<uint8_t>& rows) {
    int count = 0;
    for (const uint8_t byte : rows) count += std::popcount(byte);
    return count;
}

bool IsPartOf(const std::vector<uint8_t>& part, const std::vector<uint8_t>& whole) {
    if (part.size() != whole.size()) return false;
    for (size_t i = 0; i < part.size(); ++i) {
        if ((part[i] & ~whole[i]) != 0) return false;
    }
    return true;
}

class VisibilityOptions : public ::testing::Test {
  protected:
    VisibilityOptions() { TakeExample("71", "house"); }

    // Sky blocks are walls then, so that the house has few regions.
    static Compiled CompileHouse(std::vector<std::string> options) {
        options.insert(options.end(), {"-solidsky", "-nh"});
        return CompileLevel("house", std::move(options));
    }

    InTempDir folder_;
};

TEST_F(VisibilityOptions, EachLevelSeesLessThanTheOneBefore) {
    const auto [text, fast] = CompileHouse({"-fast"});
    EXPECT_THAT(text, Not(HasSubstr("Calculating visibility")));
    std::vector<uint8_t> before = Rows(fast);
    for (const char* level : {"0", "1", "2", "3", "4"}) {
        const auto [levelText, compiled] = CompileHouse({"-level", level});
        EXPECT_THAT(levelText, HasSubstr(" \nCalculating visibility ..."));
        const std::vector<uint8_t> rows = Rows(compiled);
        EXPECT_TRUE(IsPartOf(rows, before)) << level;
        EXPECT_LT(CountBits(rows), CountBits(before)) << level;
        EXPECT_THAT(DifferentChunks(compiled, fast), Each(AnyOf(levelcheck::ChunkVis, levelcheck::ChunkRegions)));
        before = rows;
    }
}

TEST_F(VisibilityOptions, LevelTwoIsTheDefault) {
    EXPECT_EQ(CompileHouse({"-level", "2"}).level.bytes, CompileHouse({}).level.bytes);
}

TEST_F(VisibilityOptions, KeepportalKeepsThePortalFileAlone) {
    WriteFile("house.$$v", "old");
    WriteFile("house.$$e", "old");
    CompileHouse({"-keepportal"});
    EXPECT_THAT(ReadFile("house.$$p"), StartsWith("PORT\n82\n"));
    EXPECT_FALSE(std::filesystem::exists("house.$$v"));
    EXPECT_FALSE(std::filesystem::exists("house.$$e"));
    CompileHouse({});
    EXPECT_FALSE(std::filesystem::exists("house.$$p"));
}

}  // namespace
}  // namespace k2k::test
