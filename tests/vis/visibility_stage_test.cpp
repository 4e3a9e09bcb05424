// The second stage as a whole: a level file and a portal file in, rows in the level file out.
#include "vis/visibility_stage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "levelfile/file_klv.h"
#include "levelfile/geometry_data.h"
#include "levelfile/portal_data.h"
#include "support/build_state.h"
#include "support/files.h"
#include "vis/graph_text.h"

namespace k2k::test {
namespace {

using testing::ElementsAre;

const ResetBeforeTests resetLevel([] {
    ClearDataSets();
    Geometry().info = {};
});

class VisibilityStageTest : public BuildState {
  protected:
    VisibilityStageTest() {
        Paths().LevelPath = folder.File("level.klv");
        Options().threads = 1;
    }

    // Writes a level with a plane, and a portal file beside it.
    void MakeLevel(int32_t regionCount, const std::string& portals) {
        CRegion region;
        region.contents = ContentsEmpty;
        region.visOffset = -1;
        k2k::Portals().regions.assign(static_cast<size_t>(regionCount) + 1, region);
        Geometry().planes = {{{1, 0, 0}, 96, 0}};
        CFileKLV file(Paths().LevelPath);
        ASSERT_TRUE(file.Open(false));
        ASSERT_TRUE(file.Save());
        ASSERT_TRUE(file.Close());
        WriteFile(folder.File("level.$$p"), portals);
        ClearDataSets();
    }

    void Reload() {
        ClearDataSets();
        CFileKLV file(Paths().LevelPath);
        ASSERT_TRUE(file.Open(false));
        ASSERT_TRUE(file.Load());
    }

    std::vector<int32_t> Offsets() {
        std::vector<int32_t> offsets;
        for (size_t row = 1; row < k2k::Portals().regions.size(); ++row) {
            offsets.push_back(k2k::Portals().regions[row].visOffset);
        }
        return offsets;
    }

    TempDir folder;
};

// Three regions; 0 sees 2 only past a corner, that is not at all.
const std::string Corner = PortalFileText(
    4, {SlotOpening(0, 1, {64, 0, 8}), SlotOpening(1, 2, {128, 56, 64}), SlotOpening(2, 3, {192, 0, 8})});

TEST_F(VisibilityStageTest, WritesTheRowsIntoTheLevel) {
    MakeLevel(4, Corner);
    EXPECT_EQ(VisibilityStage(), 0);
    EXPECT_EQ(TakeLoggedText(), " \nGenerating 3 portals ... ok \nCalculating visibility ... ok");
    Reload();
    EXPECT_THAT(k2k::Portals().visibility, ElementsAre(7, 15, 15, 14));
    EXPECT_THAT(Offsets(), ElementsAre(0, 1, 2, 3));
    EXPECT_EQ(Geometry().planes[0].dist, 96);
}

TEST_F(VisibilityStageTest, AFileWithoutPortalsGivesEachRegionItself) {
    MakeLevel(3, PortalFileText(3, {}));
    VisibilityStage();
    Reload();
    EXPECT_THAT(k2k::Portals().visibility, ElementsAre(1, 2, 4));
}

TEST_F(VisibilityStageTest, FastStopsAtWhatMightBeSeen) {
    MakeLevel(4, Corner);
    Options().fast = true;
    VisibilityStage();
    EXPECT_EQ(TakeLoggedText(), " \nGenerating 3 portals ... ok");
    Reload();
    EXPECT_THAT(k2k::Portals().visibility, ElementsAre(15, 15, 15, 15));
}

TEST_F(VisibilityStageTest, PreviewOrNoPortalsAloneIsFastAtLevel2) {
    for (bool BuildOptions::*option : {&BuildOptions::preview, &BuildOptions::noportals}) {
        ResetAllOptionsForTest();
        Paths().LevelPath = folder.File("level.klv");
        MakeLevel(4, Corner);
        Options().level = 4;
        Options().*option = true;
        VisibilityStage();
        EXPECT_TRUE(Options().fast);
        EXPECT_EQ(Options().level, 2);
        Reload();
        EXPECT_THAT(k2k::Portals().visibility, ElementsAre(15, 15, 15, 15));
    }
}

TEST_F(VisibilityStageTest, NoPortalsWithPreviewOnlyUndoesTheZoom) {
    MakeLevel(4, Corner);
    Options().noportals = Options().preview = true;
    Options().zoomlevel = 4;
    EXPECT_EQ(VisibilityStage(), 0);
    EXPECT_EQ(TakeLoggedText(), "");
    Reload();
    EXPECT_TRUE(k2k::Portals().visibility.empty());
    EXPECT_EQ(k2k::Portals().regions[1].visOffset, -1);
    EXPECT_EQ(Geometry().planes[0].dist, 24);
}

TEST_F(VisibilityStageTest, NoPortalsWithPreviewLeavesALevelWithoutZoomAlone) {
    Options().noportals = Options().preview = true;
    for (const float zoom : {0.0F, 1.0F}) {
        Options().zoomlevel = zoom;
        VisibilityStage();
        EXPECT_FALSE(std::filesystem::exists(Paths().LevelPath)) << "not even opened";
    }
}

TEST_F(VisibilityStageTest, UndoesTheZoomBehindTheRows) {
    MakeLevel(4, Corner);
    Options().zoomlevel = 2;
    VisibilityStage();
    Reload();
    EXPECT_THAT(k2k::Portals().visibility, ElementsAre(7, 15, 15, 14));
    EXPECT_EQ(Geometry().planes[0].dist, 48);
}

TEST_F(VisibilityStageTest, AZoomOf0IsNone) {
    MakeLevel(4, Corner);
    Options().zoomlevel = 0;
    VisibilityStage();
    Reload();
    EXPECT_EQ(Geometry().planes[0].dist, 96);
}

TEST_F(VisibilityStageTest, PartialBuildsSkipTheStage) {
    for (bool BuildOptions::*option :
         {&BuildOptions::lightsonly, &BuildOptions::entsonly, &BuildOptions::texsonly, &BuildOptions::nobsp}) {
        ResetAllOptionsForTest();
        Options().*option = true;
        EXPECT_EQ(VisibilityStage(), 0);
        EXPECT_EQ(TakeLoggedText(), "");
    }
}

TEST_F(VisibilityStageTest, WithoutALevelPathTheResultIsMinus1) {
    Paths().LevelPath.clear();
    EXPECT_EQ(VisibilityStage(), -1);
}

TEST_F(VisibilityStageTest, ALevelThatHasGoneIsNotMadeAnew) {
    MakeLevel(4, Corner);
    std::filesystem::remove(Paths().LevelPath);
    ExpectFatal([] { VisibilityStage(); }, "Can't open " + Paths().LevelPath + " - No such file or directory");
    EXPECT_FALSE(std::filesystem::exists(Paths().LevelPath));
}

TEST_F(VisibilityStageTest, WithoutAPortalFileTheStageFails) {
    MakeLevel(4, Corner);
    std::filesystem::remove(folder.File("level.$$p"));
    ExpectFatal([] { VisibilityStage(); }, " \nCan't read interim file " + folder.File("level.$$p") + "\n");
}

TEST_F(VisibilityStageTest, APortalFileOfAnotherLevelIsRejected) {
    MakeLevel(5, Corner);
    ExpectFatal([] { VisibilityStage(); }, "E11A");
}

TEST_F(VisibilityStageTest, TheLevelHasTheSameBytesOnAnyNumberOfThreads) {
    RoomGridOptions options;
    options.size = {5, 4, 2};
    const RoomGrid grid = MakeRoomGrid(options);
    const auto compiled = [&](int32_t threads) {
        MakeLevel(grid.RoomCount(), PortalFileText(grid.RoomCount(), grid.openings));
        Options().threads = threads;
        VisibilityStage();
        return ReadBytes(Paths().LevelPath);
    };
    const std::vector<uint8_t> expected = compiled(1);
    EXPECT_EQ(compiled(2), expected);
    EXPECT_EQ(compiled(8), expected);
}

}  // namespace
}  // namespace k2k::test
