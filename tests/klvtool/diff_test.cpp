// klvtool diff.
#include <filesystem>

#include "klvtool/table_diff.h"
#include "klvtool/tool.h"

namespace k2k::test {
namespace {

class Diff : public KlvtoolTest {
  protected:
    Diff() {
        Compile(OneRoom().Light({60, 60, 100}, {200, 180, 160}, 300));
        std::filesystem::copy_file("level.klv", "other.klv");
    }
    static void ExpectDifferent(const std::string& text) {
        const ProcessResult run = Klvtool({"diff", "level.klv", "other.klv"});
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.out, text);
    }
};

TEST_F(Diff, IsSilentForEqualLevels) {
    const ProcessResult run = Klvtool({"diff", "level.klv", "other.klv"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "");
}

TEST_F(Diff, TellsTheLargestNumericDifference) {
    Damage<float>("other.klv", 1, 20 * 2 + 12, 1000.0F);
    const float before = LoadLevel("level.klv").planes[2].dist;
    const ProcessResult run = Klvtool({"diff", "level.klv", "other.klv"});
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.out, ::testing::StartsWith("chunk 1 planes: 1 of "));
    EXPECT_THAT(run.out, ::testing::EndsWith(" planes differ, first 2 (dist), largest difference " +
                                             std::to_string(static_cast<int>(1000 - before)) + " (dist of 2)\n"));
}

TEST_F(Diff, TellsFieldsOfEntities) {
    const auto level = LoadLevel("level.klv");
    uint32_t start = 0;
    std::memcpy(&start, level.Chunk(15).data() + 8, 4);  // behind the sun
    Damage<float>("other.klv", 15, start + 8, 99.5F);
    ExpectDifferent("chunk 15 entities: entity 1 start position: \"128 128 40\" and \"128 99.5 40\"\n");
}

TEST_F(Diff, TellsTexels) {
    Damage<uint8_t>("other.klv", 16, 3 * 256 * 256 + 4, 255);
    const uint8_t before = LoadLevel("level.klv").Chunk(16)[3 * 256 * 256 + 4];
    ExpectDifferent("chunk 16 lightmap pages: 1 of 131072 texels differ, first 65537 (colour), largest difference " +
                    std::to_string(255 - before) + " (colour of 65537)\n");
}

TEST_F(Diff, SeesBytesOutsideTheChunks) {
    std::vector<uint8_t> bytes = ReadBytes("other.klv");
    bytes.push_back(1);
    WriteFile("other.klv", bytes);
    ExpectDifferent("files: equal chunks in different places, or with different bytes between\n");
}

using klvtool::FieldKind;
using klvtool::FieldLayout;
using klvtool::TableDiff;

constexpr FieldLayout Pair[] = {{"first", FieldKind::U8, 1}, {"second", FieldKind::I16, 2}};

TableDiff Compared(const std::vector<uint8_t>& a, const std::vector<uint8_t>& b) {
    TableDiff diff;
    CompareTables(Pair, a, b, diff);
    return diff;
}

TEST(CompareTables, CountsRecordsOfOneSideAlone) {
    const TableDiff diff = Compared({1, 2, 0, 3, 0, 1, 2, 0, 3, 0}, {1, 2, 0, 3, 0});
    EXPECT_FALSE(diff.IsEqual());
    EXPECT_EQ(Describe(diff, "pairs"), "2 and 1 pairs");
}

TEST(CompareTables, ReadsSignedNumbers) {
    const TableDiff diff = Compared({1, 2, 0, 3, 0}, {1, 2, 0, 0xFF, 0xFF});
    EXPECT_EQ(Describe(diff, "pairs"), "1 of 1 pairs differ, first 0 (second), largest difference 4 (second of 0)");
}

TEST(CompareTables, KeepsTheFirstAndTheLargestApart) {
    const TableDiff diff = Compared({1, 0, 0, 0, 0, 1, 0, 0, 0, 0}, {2, 0, 0, 0, 0, 1, 7, 0, 0, 0});
    EXPECT_EQ(Describe(diff, "pairs"), "2 of 2 pairs differ, first 0 (first), largest difference 7 (second of 1)");
}

}  // namespace
}  // namespace k2k::test
