// Whatever the bytes of a level file are, reading it ends well or with a fatal error.
#include <gtest/gtest.h>

#include <random>

#include "levelfile/bytes.h"
#include "levelfile/entity_data.h"
#include "levelfile/geometry_data.h"
#include "levelfile/level_state.h"
#include "levelfile/portal_data.h"
#include "levelfile/texture_data.h"

namespace k2k {
namespace {

using namespace test;

class DamagedFile : public LevelState {
  protected:
    // A small level with something in every chunk.
    std::vector<uint8_t> SmallLevel() {
        Options().mesh = true;
        Geometry().vertices = {{0, 0, 0}, {0, 64, 0}, {64, 0, 0}};
        Geometry().edges = {{0, 0}, {0, 1}, {1, 2}, {2, 0}};
        Geometry().surfaceEdges = {1, 2, 3};
        Geometry().planes = {{{0, 0, 1}, 0, 2}};
        SurfaceRecord surface;
        surface.edgeCount = 3;
        surface.texInfoId = 1;
        surface.lightShift = 4;
        Geometry().surfaces = {surface};
        Geometry().meshes.resize(1);
        AddMeshSurface(Geometry().meshes[0], 0);
        Textures().AddTexinfo({});
        Textures().blob = Bytes().U32(1).I32(8).Zeros(16).U32(64).U32(32).get();
        Textures().paletteLump.resize(784);
        Portals().regions.resize(2);
        Portals().nodes.resize(1);
        Portals().hullNodes.resize(2);
        Portals().regionSurfaces = {0};
        Portals().visibility = {1};
        EntityRecords().block = Bytes().U32(1).U32(8).U32(5).Zeros(20).U32(1).F32(7.01F).Zeros(28).get();
        return Saved();
    }
    // True when the file was read and written again.
    bool SurvivesReading(const std::vector<uint8_t>& bytes) {
        ResetDataSetsForTest();
        WriteFile(LevelPath(), bytes);
        CFileKLV file(LevelPath());
        try {
            if (!file.Open(false) || !file.Load()) return false;
            EntityRecordViews(EntityRecords().block);
            return file.Save();
        } catch (const FatalStop&) {
            ForgetFatalError();
            return false;
        }
    }
};

TEST_F(DamagedFile, EndsWellOrFatallyForEveryChangedByte) {
    const std::vector<uint8_t> level = SmallLevel();
    ASSERT_TRUE(SurvivesReading(level));
    std::mt19937 random(5);
    int survived = 0;
    for (int i = 0; i < 1000; ++i) {
        std::vector<uint8_t> damaged = level;
        for (auto changes = 1 + random() % 3; changes > 0; --changes) {
            // Half of the changes hit the chunk table.
            const size_t range = random() % 2 == 0 ? 156 : damaged.size();
            constexpr uint8_t values[] = {0, 1, 127, 128, 255};
            damaged[random() % range] = values[random() % 5];
        }
        survived += SurvivesReading(damaged) ? 1 : 0;
    }
    EXPECT_GT(survived, 0);
    EXPECT_LT(survived, 1000);
}

TEST_F(DamagedFile, EndsWellOrFatallyForEveryLength) {
    const std::vector<uint8_t> level = SmallLevel();
    for (size_t size = 0; size < level.size(); size += 7) {
        const auto end = level.begin() + static_cast<std::ptrdiff_t>(size);
        // The last chunk's padding is nobody's.
        EXPECT_FALSE(SurvivesReading({level.begin(), end})) << size;
    }
}

}  // namespace
}  // namespace k2k
