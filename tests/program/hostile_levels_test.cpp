// Level files that no compiler writes: places outside of the file, counts beyond all measure, trees without an end.
#include <gmock/gmock.h>

#include <cstring>

#include "driver/build_options.h"
#include "driver/run_program.h"
#include "fuzzing.h"
#include "k2k/stages.h"
#include "levelfile/file_klv.h"
#include "levelfile/portal_data.h"
#include "program/compile.h"
#include "program/level_bytes.h"
#include "support/recording_display.h"

namespace k2k::test {
namespace {

using ::testing::HasSubstr;

constexpr const char* InvalidFormat = " \nInvalid KLV file format";

class HostileLevels : public SmallMapTest {
  protected:
    ~HostileLevels() override { fuzz::ResetBuild(); }

    static void Put(std::vector<uint8_t>& bytes, size_t at, uint32_t value) {
        std::memcpy(bytes.data() + at, &value, sizeof(value));
    }

    // An update refuses the level and leaves it as it is.
    static void ExpectRefused(const std::vector<uint8_t>& bytes) {
        WriteFile("level.klv", bytes);
        EXPECT_EQ(FailureOf({"-entsonly"}), InvalidFormat);
        EXPECT_TRUE(ReadBytes("level.klv") == bytes);
    }

    // The level with a change, lit again.
    template <typename Change>
    static std::string Relit(Change change) {
        fuzz::ResetBuild();
        {
            CFileKLV file("level.klv");
            EXPECT_TRUE(file.Open(false) && file.Load());
            change();
            EXPECT_TRUE(file.Save());
        }
        fuzz::ResetBuild();
        RecordingDisplay display;
        RunProgram("level -pal palette.raw -lightsonly -threads 1", AllStages, display);
        fuzz::ResetBuild();
        return display.text;
    }
};

TEST_F(HostileLevels, ChunksOutsideOfTheFileAreRefused) {
    const levelcheck::LevelView level = Compile(OneRoom().Light({64, 64, 64}, {200, 100, 50}, 300)).level;
    const auto size = static_cast<uint32_t>(level.bytes.size());
    int refused = 0;
    for (size_t chunk = 0; chunk < levelcheck::ChunkCount; ++chunk) {
        if (level.chunks[chunk].size == 0) continue;
        SCOPED_TRACE(chunk);
        const size_t entry = 4 + 8 * chunk;
        for (const auto& [at, value] : {std::pair(entry, size), {entry, 0xFFFFFFF0U}, {entry + 4, 0x80000000U}}) {
            std::vector<uint8_t> bytes = level.bytes;
            Put(bytes, at, value);
            ExpectRefused(bytes);
            ++refused;
        }
    }
    EXPECT_GT(refused, 40);
}

TEST_F(HostileLevels, CountsInsideOfChunksAreRefused) {
    const levelcheck::LevelView level = Compile(OneRoom(), {"-mesh"}).level;
    const size_t entities = level.chunks[levelcheck::ChunkEntities].offset;
    // Behind the number of meshes, bounds and contents of the first: its vertices, triangles and materials.
    const size_t mesh = level.chunks[levelcheck::ChunkMeshes].offset + 32;
    for (const size_t at : {entities, mesh, mesh + 4, mesh + 8}) {
        for (const uint32_t count : {0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
            std::vector<uint8_t> bytes = level.bytes;
            Put(bytes, at, count);
            ExpectRefused(bytes);
        }
    }
}

TEST_F(HostileLevels, ATreeAMillionNodesDeepIsLit) {
    Compile(OneRoom());
    const std::string text = Relit([] {
        std::vector<CRegionNode>& nodes = Portals().nodes;
        const CRegionNode first = nodes.front();
        nodes.assign(1000000, first);
        for (size_t i = 0; i + 1 < nodes.size(); ++i) nodes[i].children = {static_cast<int32_t>(i + 1), -1};
        nodes.back().children = {-1, -2};
    });
    EXPECT_THAT(text, HasSubstr("\nTime: "));
}

TEST_F(HostileLevels, ATreeWithoutAnEndIsRefused) {
    Compile(OneRoom().Light({64, 64, 64}, {200, 100, 50}, 300));
    EXPECT_THAT(Relit([] { Portals().nodes.back().children = {0, 0}; }), HasSubstr("Invalid node structure"));
}

}  // namespace
}  // namespace k2k::test
