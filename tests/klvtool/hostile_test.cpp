// Damaged level files: every command ends with a status, whatever the file holds.
#include <random>

#include "klvtool/entities.h"
#include "klvtool/tool.h"
#include "klvtool/tree.h"

namespace k2k::test {
namespace {

class Hostile : public KlvtoolTest {
  protected:
    // Runs all commands on the file, in this process.
    static void RunAll() {
        const std::vector<std::vector<std::string>> commands{
            {"info", "bad.klv"},
            {"info", "bad.klv", "--json"},
            {"check", "bad.klv"},
            {"diff", "bad.klv", "level.klv"},
            {"export", "bad.klv", "out.glb"},
            {"pages", "bad.klv", "out"},
            {"plan", "bad.klv", "out.png", "--size", "64"},
            {"plan", "bad.klv", "out.png", "--size", "64", "--from", "60,60,40"}};
        ::testing::internal::CaptureStdout();
        ::testing::internal::CaptureStderr();
        for (const auto& command : commands) EXPECT_LE(klvtool::RunTool(command), 2);
        ::testing::internal::GetCapturedStdout();
        ::testing::internal::GetCapturedStderr();
    }

    // Changes numbers all over the header and the chunks, with values that lie about sizes and places.
    void Shake(const std::vector<std::string>& options) {
        constexpr int Rounds = 60, ChangesInARound = 40;
        constexpr std::array<uint32_t, 8> Values{0, 1, 0x7F, 0xFF, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF, 0x7FC00000};
        const std::vector<uint8_t> sound = Compile(OneRoom().Light({60, 60, 90}, {1, 2, 3}, 100), options).level.bytes;
        std::mt19937 random(5);
        for (int round = 0; round < Rounds; round++) {
            std::vector<uint8_t> bytes = sound;
            const levelcheck::LevelView level = levelcheck::ReadLevel(sound);
            for (int i = 0; i < ChangesInARound; i++) {
                const auto chunk = level.chunks[random() % levelcheck::ChunkCount];
                const bool inHeader = chunk.size == 0 || random() % 40 == 0;
                const size_t at = inHeader ? 4 + random() % 152 : chunk.offset + random() % chunk.size;
                const uint32_t value =
                    random() % 2 == 0 ? Values[random() % Values.size()] : static_cast<uint32_t>(random());
                std::memcpy(bytes.data() + at, &value, std::min<size_t>(4, bytes.size() - at));
            }
            if (round % 10 == 9) bytes.resize(random() % bytes.size());
            WriteFile("bad.klv", bytes);
            RunAll();
        }
    }
};

TEST_F(Hostile, LevelsOfSurfacesNeverCrashACommand) {
    Shake({});
}

TEST_F(Hostile, MeshLevelsNeverCrashACommand) {
    Shake({"-mesh"});
}

TEST_F(Hostile, TreesInACircleLeadToSolid) {
    const auto level = [] {
        levelcheck::LevelView made;
        made.planes = {{1, 0, 0, 0, 0}};
        made.nodes.resize(2);
        made.nodes[0].children = {1, 1};
        made.nodes[1].children = {0, 0};
        made.regions.resize(3);
        return made;
    }();
    EXPECT_EQ(klvtool::RegionOf(level, {1, 2, 3}), 0U);
}

TEST_F(Hostile, OnePathNamedManyTimesIsNotReadManyTimes) {
    // A table of many entries that all lead to one path of many points.
    constexpr uint32_t Entries = 20000, Points = 20000;
    std::vector<uint32_t> chunk(1 + Entries + 11 + 3 * Points);
    chunk[0] = Entries;
    for (uint32_t i = 1; i <= Entries; i++) chunk[i] = 4 * (1 + Entries);
    chunk[1 + Entries] = 6;
    chunk[1 + Entries + 10] = Points;
    levelcheck::LevelView level;
    level.version = '7';
    level.bytes.resize(4 * chunk.size());
    std::memcpy(level.bytes.data(), chunk.data(), level.bytes.size());
    level.chunks[15] = {0, static_cast<uint32_t>(level.bytes.size())};
    size_t points = 0;
    for (const klvtool::Entity& entity : klvtool::ReadEntities(level)) points += entity.points.size();
    EXPECT_GE(points, Points);
    EXPECT_LE(points, 4 * Points);
}

}  // namespace
}  // namespace k2k::test
