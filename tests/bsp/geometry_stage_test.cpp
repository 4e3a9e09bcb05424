#include "bsp/geometry_stage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <filesystem>

#include "bsp/test_level.h"
#include "driver/display.h"
#include "levelfile/entity_data.h"

namespace k2k {
namespace {

using test::BlockText;
using test::RoomText;
using test::StartText;
using test::WorldText;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class GeometryStage : public test::LevelTest {
  protected:
    // A sealed room with a start point in its middle.
    static std::string RoomMap() {
        return WorldText(RoomText({16, 16, 16}, {144, 144, 144})) + StartText({80, 80, 80});
    }

    static constexpr std::string_view MissingTexture = " \nWARNING\tW050: texture ROCK not found\n";

    // Reads the level of the folder into the data sets.
    static void LoadLevel() {
        ClearDataSets();
        CFileKLV file("level.klv");
        ASSERT_TRUE(file.Open(false));
        ASSERT_TRUE(file.Load());
    }
};

TEST_F(GeometryStage, PrintsEachStepOnce) {
    EXPECT_EQ(Build(RoomMap()),
              " \nBuilding fat hull ... ok"
              " \nBuilding narrow hull ... ok"
              " \nBuilding BSP tree ... ok"
              " \nTesselating surfaces ..."
              " ok\nChecking midpoints ... ok" +
                  std::string(MissingTexture));
}

TEST_F(GeometryStage, WithNhOneCollisionHullOfZeroSizeIsBuilt) {
    Options().nh = true;
    EXPECT_THAT(Build(RoomMap()), StartsWith(" \nBuilding collision hull ... ok \nBuilding BSP tree ..."));
    LoadLevel();
    EXPECT_EQ(Geometry().info.headNodes[2], 0);
    EXPECT_EQ(Geometry().info.hullMaxs[1], (std::array<int32_t, 3>{}));
    // The room's inside in hull 1: six planes.
    EXPECT_EQ(Portals().hullNodes.size(), 6U);
}

TEST_F(GeometryStage, HullTwoStandsTwiceInTheFinalTable) {
    Build(RoomMap());
    LoadLevel();
    // Rows of hull 2 and 1 in the capture of hull 1, then hull 2 again; a box each.
    EXPECT_EQ(Portals().hullNodes.size(), 18U);
    EXPECT_EQ(Geometry().info.headNodes[1], 6);
    EXPECT_EQ(Geometry().info.headNodes[2], 12);
    EXPECT_EQ(Geometry().info.hullMins[1], (std::array<int32_t, 3>{-16, -16, -16}));
    EXPECT_EQ(Geometry().info.hullMaxs[2], (std::array<int32_t, 3>{32, 32, 16}));
    EXPECT_EQ(Geometry().info.hullMins[2], (std::array<int32_t, 3>{-32, -32, -32}));
    EXPECT_EQ(Geometry().info.hullMaxs[3], (std::array<int32_t, 3>{}));
}

TEST_F(GeometryStage, ASealedRoomKeepsOnlyItsInside) {
    Build(RoomMap());
    LoadLevel();
    EXPECT_EQ(Geometry().surfaces.size(), 6U);
    EXPECT_EQ(Geometry().vertices.size(), 8U);
    EXPECT_EQ(Portals().regions.size(), 2U);
    EXPECT_EQ(Portals().regions[1].contents, ContentsEmpty);
    EXPECT_EQ(Portals().nodes.size(), 6U);
    EXPECT_EQ(Geometry().info.visRegions, 1);
    EXPECT_EQ(test::ReadFile("level.$$p"), "PORT\n1\n0\n");
}

TEST_F(GeometryStage, TheWorldsExtentIsNoted) {
    Build(RoomMap());
    // The fat hull is the largest: walls of 144 and 64 units around.
    EXPECT_EQ(Geometry().levelExtent, 144 + 64);
}

TEST_F(GeometryStage, TwoRoomsWriteThePortalBetweenThem) {
    // A wall with a door of 32 x 48 parts the room at x = 64 .. 72.
    const std::string wall = BlockText({64, 0, 0}, {72, 32, 128}) + BlockText({64, 64, 0}, {72, 128, 128}) +
                             BlockText({64, 32, 48}, {72, 64, 128});
    Build(WorldText(RoomText({0, 0, 0}, {128, 128, 128}) + wall) + StartText({32, 32, 32}));
    const std::string text = test::ReadFile("level.$$p");
    // The rooms and the doorway.
    EXPECT_THAT(text, StartsWith("PORT\n3\n2\n"));
    EXPECT_EQ(CountOf(text, "\n"), 5U);
    EXPECT_EQ(text,
              "PORT\n3\n2\n"
              "4 0 1 (72 64 0 ) (72 32 0 ) (72 32 48 ) (72 64 48 ) \n"
              "4 1 2 (64 64 0 ) (64 32 0 ) (64 32 48 ) (64 64 48 ) \n");
}

TEST_F(GeometryStage, WithNofillTheFirstTreeStaysAndNoPortalFileIsWritten) {
    Options().nofill = true;
    const std::string text = Build(RoomMap());
    EXPECT_FALSE(std::filesystem::exists("level.$$p"));
    EXPECT_THAT(text, HasSubstr("Building fat hull ... \nBuilding narrow hull ... \n"));
    LoadLevel();
    // The faces towards the void are there as well.
    EXPECT_GT(Geometry().surfaces.size(), 6U);
}

TEST_F(GeometryStage, TheFirstTreeHalvesTheLevelAndTheSecondCutsNoFaces) {
    // A slab with a box on its middle: a wall of the box halves the level and cuts the slab, its top cuts nothing.
    const std::string level = WorldText(BlockText({0, 0, 0}, {128, 128, 8}) + BlockText({64, 48, 8}, {80, 80, 24}));
    const auto splitsAtTheWall = [](uint32_t plane) {
        const FinalPlaneRecord& root = Geometry().planes[plane];
        return root.normal == Vec3{1, 0, 0} && root.dist == 64;
    };
    Options().nh = true;
    for (const bool nofill : {true, false}) {
        Options().nofill = nofill;
        Build(level + StartText({24, 24, 64}));
        LoadLevel();
        const LevelInfo& info = Geometry().info;
        // Faces of a clipping hull stay as the first tree cut them, so the wall is the best for its second tree too.
        EXPECT_TRUE(splitsAtTheWall(Portals().hullNodes[static_cast<size_t>(info.headNodes[1])].plane));
        EXPECT_EQ(splitsAtTheWall(Portals().nodes[static_cast<size_t>(info.headNodes[0])].plane), nofill);
    }
}

TEST_F(GeometryStage, NoportalsStillWritesThePortalFile) {
    Options().noportals = true;
    Build(RoomMap());
    EXPECT_TRUE(std::filesystem::exists("level.$$p"));
}

TEST_F(GeometryStage, ALevelOfThreeEntitiesWithNoneInsideWarns) {
    const std::string room = WorldText(RoomText({16, 16, 16}, {144, 144, 144}));
    const std::string inWall = StartText({12, 80, 80});
    EXPECT_THAT(Build(room + inWall + inWall), HasSubstr("surfaces ... \nWARNING W092: Level leaking!\n ok\n"));
    EXPECT_THAT(Build(room + inWall), Not(HasSubstr("W092")));
    EXPECT_THAT(Build(room), Not(HasSubstr("W092")));
}

TEST_F(GeometryStage, ALeakKeepsTheOutwardFaces) {
    // A room without a roof.
    const std::string holed = WorldText(BlockText({8, 8, 8}, {16, 152, 152}) + BlockText({144, 8, 8}, {152, 152, 152}) +
                                        BlockText({8, 8, 8}, {152, 16, 152}) + BlockText({8, 144, 8}, {152, 152, 152}) +
                                        BlockText({8, 8, 8}, {152, 152, 16}));
    Build(holed + StartText({80, 80, 80}));
    EXPECT_EQ(WarnCount, 3);  // one a hull
    LoadLevel();
    EXPECT_GT(Geometry().surfaces.size(), 10U);
}

TEST_F(GeometryStage, BlocksOfAnotherEntityAreFatal) {
    test::WriteFile("level.$$M",
                    WorldText("") + "{\n1 0 0 0\n0 0 0\nstart\n" + BlockText({0, 0, 0}, {8, 8, 8}) + "}\n");
    test::ExpectFatal([] { RunGeometryStage(); }, "\nProcessEntity: Unexpected map entity.\n");
}

TEST_F(GeometryStage, AMapWithoutBlocksIsALevelOfEntities) {
    EXPECT_EQ(Build(WorldText("") + StartText({1, 2, 3})), "");
    EXPECT_TRUE(Options().preview);
    EXPECT_TRUE(Options().noportals);
    EXPECT_FALSE(std::filesystem::exists("level.$$p"));
    LoadLevel();
    EXPECT_TRUE(Geometry().surfaces.empty());
    EXPECT_EQ(Portals().regions.size(), 1U);
    EXPECT_FALSE(EntityRecords().block.empty());
}

TEST_F(GeometryStage, OnlyClipBlocksStopAtTheVisibleTree) {
    WriteMap(WorldText(BlockText({0, 0, 0}, {8, 8, 8}, "ROCK", "00000100")));
    test::ExpectFatal([] { RunGeometryStage(); }, "E003 - no visible blocks in map");
    EXPECT_THAT(TakeLoggedText(),
                HasSubstr("Building fat hull ... ok \nBuilding narrow hull ... ok \nBuilding BSP tree ..."));
}

TEST_F(GeometryStage, WithNobspTheBlocksBecomeMeshes) {
    Options().mesh = Options().nobsp = Options().nh = Options().noportals = Options().nodetail = true;
    EXPECT_EQ(Build(RoomMap()), " \nBuilding geometry ... ok" + std::string(MissingTexture));
    EXPECT_EQ(Geometry().meshes.size(), 6U);
    EXPECT_EQ(Geometry().surfaces.size(), 36U);
    EXPECT_EQ(Geometry().info.visRegions, -1);
    EXPECT_EQ(Geometry().info.firstSurface, -1);
    EXPECT_TRUE(Portals().nodes.empty());
    EXPECT_TRUE(Portals().hullNodes.empty());
}

TEST_F(GeometryStage, WithNobspOnlyClipBlocksAreFatal) {
    Options().mesh = Options().nobsp = Options().nh = true;
    WriteMap(WorldText(BlockText({0, 0, 0}, {8, 8, 8}, "ROCK", "00000100")));
    test::ExpectFatal([] { RunGeometryStage(); }, "E003 - no visible blocks in map");
}

TEST_F(GeometryStage, ALevelWithoutWorldHasNoTextureFile) {
    WriteMap(StartText({0, 0, 0}));
    test::ExpectFatal([] { RunGeometryStage(); }, "Texture file\tmissing!");
}

TEST_F(GeometryStage, OldFilesAreRemovedAtTheStart) {
    for (const char* name : {"level.klv", "level.$$p", "level.$$v", "level.$$e"}) test::WriteFile(name, "old");
    WriteMap("{ 0 textures.$$w\npalette.raw\n");
    test::ExpectFatal([] { RunGeometryStage(); }, " \nE715");
    for (const char* name : {"level.klv", "level.$$p", "level.$$v", "level.$$e"}) {
        EXPECT_FALSE(std::filesystem::exists(name)) << name;
    }
    EXPECT_TRUE(std::filesystem::exists("level.$$M"));
}

TEST_F(GeometryStage, EntitiesAreClearedAtTheEnd) {
    Build(RoomMap());
    EXPECT_TRUE(Entities().empty());
}

TEST_F(GeometryStage, LightsonlyLeavesEverythingAsItIs) {
    test::WriteFile("level.klv", "old");
    Options().lightsonly = true;
    EXPECT_EQ(Build(RoomMap()), "");
    EXPECT_EQ(test::ReadFile("level.klv"), "old");
    EXPECT_EQ(Paths().PortalPath, "level.$$p");
}

TEST_F(GeometryStage, EntsonlyRewritesTheEntitiesAlone) {
    Build(RoomMap());
    Options().entsonly = true;
    const std::string other =
        WorldText(RoomText({0, 0, 0}, {64, 64, 64})) + StartText({1, 2, 3}) + StartText({4, 5, 6});
    EXPECT_EQ(Build(other), "\nUpdating 2 objects...\n");
    LoadLevel();
    EXPECT_EQ(Geometry().surfaces.size(), 6U);
    // The level entity has no record.
    EXPECT_EQ(EntityRecordViews(EntityRecords().block).size(), 2U);
}

TEST_F(GeometryStage, TexsonlyReloadsTexturesAndTellsWhenTheMapChanged) {
    Build(RoomMap());
    Options().texsonly = true;
    const std::string same = Build(RoomMap());
    EXPECT_THAT(same, Not(HasSubstr("W022")));
    EXPECT_THAT(same, EndsWith(" \n1 textures"));
    const std::string changed =
        Build(WorldText(RoomText({16, 16, 16}, {144, 144, 144}) + BlockText({20, 20, 20}, {24, 24, 24}, "WOOD")) +
              StartText({80, 80, 80}));
    EXPECT_THAT(changed, HasSubstr(" \nWARNING W022: Map must be rebuilt!\n"));
    EXPECT_THAT(changed, EndsWith(" \n2 textures"));
    LoadLevel();
    EXPECT_EQ(Geometry().surfaces.size(), 6U);
}

TEST_F(GeometryStage, TexsonlyForgetsTheMappingsOfTheOldMap) {
    const std::string room = RoomText({16, 16, 16}, {144, 144, 144});
    Build(WorldText(room + BlockText({20, 20, 20}, {24, 24, 24}, "WOOD")));
    LoadLevel();
    const size_t before = Textures().texinfos.size();
    Options().texsonly = true;
    EXPECT_THAT(Build(WorldText(room)), HasSubstr("W022"));
    LoadLevel();
    EXPECT_LT(Textures().texinfos.size(), before);
}

// --- The zoom loop. The number of reads shows in the warning that a model's long file name gives, which no mode
// silences; where there is no warning, in how often the map is opened.

// Counts how often a file is opened.
class OpenWatch {
  public:
    explicit OpenWatch(const char* path) { inotify_add_watch(queue_, path, IN_OPEN | IN_CLOSE_NOWRITE); }
    ~OpenWatch() { close(queue_); }
    OpenWatch(const OpenWatch&) = delete;
    OpenWatch& operator=(const OpenWatch&) = delete;

    // Since the last call.
    int Take() {
        int opened = 0;
        inotify_event event{};  // without a name, as the watch is on a file
        while (read(queue_, &event, sizeof event) == sizeof event) opened += (event.mask & IN_OPEN) != 0 ? 1 : 0;
        return opened;
    }

  private:
    const int queue_ = inotify_init1(IN_NONBLOCK);
};

class ZoomLoop : public GeometryStage {
  protected:
    ZoomLoop() { Options().autozoom = true; }

    // A map that never reads without a warning, in a dialect that scales.
    static std::string WarningMap() { return WorldText("") + LongNameModel(); }

    // How often a build reads a map. A read may open the file more than once.
    static int ReadsOf(const std::string& map) {
        WriteMap(map);
        OpenWatch watch("level.$$M");
        ReadMap(false);
        const int once = watch.Take();
        Build(map);
        return watch.Take() / once;
    }

    static std::string LongNameModel() {
        return "{\n3 0 0 0\n0 0 0\n1 1 1\n" + std::string(40, 'x') + "\nname\nndef\n0 0 0 0 0 0 0 0\n00\n}\n";
    }
};

TEST_F(ZoomLoop, AMapWithoutWarningsIsReadOnce) {
    const std::string text = Build(RoomMap());
    EXPECT_THAT(text, StartsWith(" \nDetermining best zoom factor [1..1]\nAutozoom set to 1\n"));
    EXPECT_EQ(Options().zoomlevel, 1.0F);
    Options().zoomlevel = 4;
    EXPECT_EQ(ReadsOf(RoomMap()), 2) << "once for the zoom, once for the build";
}

TEST_F(ZoomLoop, ATieKeepsTheSmallerZoom) {
    Options().zoomlevel = 4;
    const std::string text = Build(WarningMap());
    EXPECT_THAT(text, StartsWith(" \nDetermining best zoom factor [1..4]\n"));
    EXPECT_THAT(text, HasSubstr("Autozoom set to 1\n"));
    EXPECT_EQ(Options().zoomlevel, 1.0F);
    // Zooms 1 to 4, once more at 1, and the read of the build. The file's second test warns again.
    EXPECT_EQ(CountOf(text, "W050"), 6U * 2U);
}

TEST_F(ZoomLoop, AZoomBelowOneSearchesUpToTen) {
    Options().zoomlevel = 0.5F;
    const std::string text = Build(WarningMap());
    EXPECT_THAT(text, StartsWith(" \nDetermining best zoom factor [1..10]\n"));
    EXPECT_EQ(CountOf(text, "W050"), 12U * 2U);
}

TEST_F(ZoomLoop, StopsAtTheFirstZoomWithoutWarnings) {
    // A box with one corner cut off, so little that the cut is too narrow for a face at zoom 1.
    const std::string box =
        "{\nvertices 10\nfaces 7\n"
        "0 0 0\n64 0 0\n64 64 0\n0 64 0\n0 0 64\n64 0 64\n0 64 64\n"
        "64 64 63.993\n64 63.993 64\n63.993 64 64\n"
        "{ 00000000 }\n"
        "4 0 1 2 3 : ROCK ( 1 0 0 0 ) ( 0 -1 0 0 )\n"
        "5 4 6 9 8 5 : ROCK ( 1 0 0 0 ) ( 0 -1 0 0 )\n"
        "4 0 3 6 4 : ROCK ( 0 1 0 0 ) ( 0 0 -1 0 )\n"
        "5 1 5 8 7 2 : ROCK ( 0 1 0 0 ) ( 0 0 -1 0 )\n"
        "4 0 4 5 1 : ROCK ( 1 0 0 0 ) ( 0 0 -1 0 )\n"
        "5 2 7 9 6 3 : ROCK ( 1 0 0 0 ) ( 0 0 -1 0 )\n"
        "3 7 8 9 : ROCK ( 1 0 0 0 ) ( 0 -1 0 0 )\n}\n";
    const std::string map = "version 511\n" + WorldText(box);
    Options().zoomlevel = 0.5F;
    EXPECT_THAT(Build(map), HasSubstr("[1..10]\nAutozoom set to 2\n"));
    EXPECT_EQ(Options().zoomlevel, 2.0F);
    Options().zoomlevel = 10;
    EXPECT_EQ(ReadsOf(map), 3) << "zooms 1 and 2, and the build";
}

TEST_F(ZoomLoop, ReportModesComeBack) {
    Options().verbose = true;
    Build(RoomMap());
    EXPECT_TRUE(Options().verbose);
    EXPECT_FALSE(Options().quiet);
}

TEST_F(ZoomLoop, WithoutAutozoomTheZoomStays) {
    Options().autozoom = false;
    Options().zoomlevel = 3;
    const std::string text = Build(WarningMap());
    EXPECT_THAT(text, Not(HasSubstr("zoom")));
    EXPECT_EQ(CountOf(text, "W050"), 2U * 2U);
    EXPECT_EQ(Options().zoomlevel, 3.0F);
}

// --- The detail loop.

class DetailLoop : public GeometryStage {
  protected:
    static constexpr std::string_view DetailFlag = "00010000";

    static std::string MapWith(const std::string& blocks) {
        return WorldText(RoomText({16, 16, 16}, {144, 144, 144}) + blocks) + StartText({24, 24, 120});
    }
    // In the middle of the floor: the floor would have to be cut.
    static std::string Intersecting() { return BlockText({60, 60, 12}, {100, 100, 40}, "ROCK", DetailFlag); }
    static std::string Floating() { return BlockText({20, 60, 60}, {40, 80, 80}, "ROCK", DetailFlag); }
};

TEST_F(DetailLoop, CleanDetailIsCheckedOnce) {
    EXPECT_THAT(Build(MapWith(Floating())),
                StartsWith(" \nChecking detail intersections ... ok ok \nBuilding fat hull"));
    LoadLevel();
    // The room stays one region, with the faces of the detail block in its list.
    EXPECT_EQ(Portals().regions.size(), 2U);
    EXPECT_EQ(Geometry().surfaces.size(), 12U);
    EXPECT_EQ(Portals().regions[1].surfaceCount, 12U);
    EXPECT_EQ(Portals().regions[1].contents, ContentsEmpty | ContentsDetail);
}

TEST_F(DetailLoop, IntersectingBlocksBecomePlainOnes) {
    EXPECT_THAT(Build(MapWith(Floating() + Intersecting())),
                StartsWith(" \nChecking detail intersections ... ok"
                           "\nIntersecting detail blocks (1/2)- recompiling..."
                           " \nChecking detail intersections ... ok ok \nBuilding fat hull"));
    EXPECT_EQ(Geometry().DetailReject, std::vector<int32_t>{});
    LoadLevel();
    EXPECT_GT(Portals().regions.size(), 2U);
}

TEST_F(DetailLoop, BlocksOfEarlierPassesStayPlain) {
    // The second block stands on the middle of a piece of floor that is there only when the first one is plain.
    const std::string beside = BlockText({70, 114, 12}, {90, 130, 40}, "ROCK", DetailFlag);
    EXPECT_THAT(Build(MapWith(Intersecting() + beside)),
                StartsWith(" \nChecking detail intersections ... ok"
                           "\nIntersecting detail blocks (1/2)- recompiling..."
                           " \nChecking detail intersections ... ok"
                           "\nIntersecting detail blocks (1/1)- recompiling..."
                           " \nChecking detail intersections ... ok \nBuilding fat hull"));
}

// A block whose detail textures make it detail, whatever its flags say.
std::string DetailTextured(std::string block) {
    const std::string end = " 1.000000\n";
    const std::string tail = " : 10000 0 50 0\n";
    for (size_t at = block.find(end); at != std::string::npos; at = block.find(end, at + tail.size())) {
        block.replace(at + end.size() - 1, 1, tail);
    }
    return block;
}

TEST_F(DetailLoop, EndsWhenOnlyBlocksAreListedThatStayDetail) {
    const std::string textured = DetailTextured(BlockText({60, 60, 12}, {100, 100, 40}));
    EXPECT_THAT(Build(MapWith(Floating() + textured)),
                StartsWith(" \nChecking detail intersections ... ok"
                           "\nIntersecting detail blocks (1/1)- recompiling..."
                           " \nChecking detail intersections ... ok"
                           " \nWARNING: 1 intersecting detail blocks stay detail\n ok \nBuilding fat hull"));
    LoadLevel();
    EXPECT_EQ(Portals().regions.size(), 2U);
}

TEST_F(DetailLoop, GoesOnAsLongAsNewBlocksAreListed) {
    // The second flagged block is listed when the first one is plain; the textured one, in a room of its own, always.
    const std::string textured =
        RoomText({256, 256, 256}, {384, 384, 384}) + DetailTextured(BlockText({300, 300, 252}, {340, 340, 280}));
    const std::string beside = BlockText({70, 114, 12}, {90, 130, 40}, "ROCK", DetailFlag);
    const std::string report = " intersecting detail blocks stay detail\n";
    const std::string text = Build(MapWith(Intersecting() + beside + textured));
    EXPECT_THAT(text, HasSubstr("\nIntersecting detail blocks (2/2)- recompiling..."));
    EXPECT_THAT(text, HasSubstr("\nIntersecting detail blocks (2/1)- recompiling..."));
    EXPECT_EQ(CountOf(text, "recompiling"), 2U);
    EXPECT_THAT(text, HasSubstr(" ok \nWARNING: 1" + report + " ok \nBuilding fat hull"));
    Options().quiet = true;
    EXPECT_THAT(Build(MapWith(Floating() + textured)), Not(HasSubstr(report)));
}

TEST_F(DetailLoop, KnowsNothingOfTheBuildBefore) {
    Geometry().DetailReject = {1, 2, 3, 4, 5, 6, 7};
    EXPECT_THAT(Build(MapWith(Floating())), StartsWith(" \nChecking detail intersections ... ok ok"));
}

TEST_F(DetailLoop, ForcedetailSkipsTheCheckAndOverlapsStay) {
    Options().forcedetail = true;
    EXPECT_THAT(Build(MapWith(Intersecting())), StartsWith(" \nBuilding fat hull"));
    LoadLevel();
    EXPECT_EQ(Portals().regions.size(), 2U);
}

TEST_F(DetailLoop, NodetailNeverChecks) {
    Options().nodetail = true;
    EXPECT_THAT(Build(MapWith(Intersecting())), StartsWith(" \nBuilding fat hull"));
}

TEST_F(DetailLoop, DetailInsideAWallMarksTheRoot) {
    // All its surfaces lie in solid leaves, so the tree's root is left with them; no region lists them.
    Options().forcedetail = true;
    Build(MapWith(BlockText({10, 60, 60}, {14, 70, 70}, "ROCK", DetailFlag)));
    LoadLevel();
    EXPECT_EQ(Geometry().surfaces.size(), 12U);
    EXPECT_EQ(Portals().regions[1].surfaceCount, 6U);
    EXPECT_EQ(Portals().nodes.size(), 6U);
}

TEST_F(DetailLoop, AHullOfDetailFacesAloneIsALeaf) {
    // A hull of the visible kind keeps its detail textures, and those make no nodes.
    Options().sethulls = {0, 0, 2};
    const std::string text =
        Build(WorldText(BlockText({0, 0, 0}, {64, 64, 64}, "ROCK", DetailFlag)) + StartText({100, 100, 100}));
    EXPECT_THAT(text,
                HasSubstr("Building narrow hull ... \nWARNING W051: Node could not be created. Misplaced\n detail "
                          "brushes ?\n ok \nBuilding BSP tree"));
    LoadLevel();
    // The fat hull's box alone, in both captures.
    EXPECT_EQ(Portals().hullNodes.size(), 12U);
    EXPECT_EQ(Geometry().info.headNodes[1], 6);
}

TEST_F(DetailLoop, MeshesHoldNoSurfacesOfTheChecksTrees) {
    Options().mesh = true;
    Build(MapWith(Floating() + Intersecting()));
    const CGeometryData& level = Geometry();
    ASSERT_FALSE(level.meshes.empty());
    size_t listed = 0;
    for (const CMesh& mesh : level.meshes) {
        for (const int32_t surface : mesh.surfaces) {
            ASSERT_LT(static_cast<size_t>(surface), level.surfaces.size());
            const auto first = static_cast<size_t>(*mesh.surfaces.begin());
            EXPECT_EQ(level.surfaces[static_cast<size_t>(surface)].blockId, level.surfaces[first].blockId);
            ++listed;
        }
    }
    EXPECT_LE(listed, level.surfaces.size());
}

TEST_F(DetailLoop, AMapOfDetailAloneIsSolidOutside) {
    // No structural block is left for the trees of the visible hull.
    Build(WorldText(BlockText({0, 0, 0}, {64, 64, 64}, "ROCK", DetailFlag)) + StartText({100, 100, 100}));
    LoadLevel();
    EXPECT_EQ(Geometry().surfaces.size(), 6U);
}

}  // namespace
}  // namespace k2k
