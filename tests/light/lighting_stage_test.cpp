#include "light/lighting_stage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <string>

#include "light/direct_lighting.h"
#include "light/light_finishing.h"
#include "support/files.h"
#include "surface_lighter.h"
#include "test_level.h"

namespace k2k::test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class LightingStage : public LightTest {
  protected:
    LightingStage() {
        Paths().MapPath = dir_.File("room.$$M");
        Paths().LevelPath = dir_.File("room.klv");
        Paths().PortalPath = dir_.File("room.$$p");
        Paths().VisPath = dir_.File("room.$$v");
        WriteFile(Paths().PortalPath, "PORT");
        WriteFile(Paths().VisPath, "x");
    }

    // A room with a table and the lights of `lights`, saved as the level file. A sun comes first, as in a real level.
    void SaveRoom(const std::vector<CEntity*>& = {}) {
        TestLevel level;
        const Box table{{-32, -32, 40}, {32, 32, 48}};
        level.RoomTree(SmallRoom, {table});
        level.RoomFaces(SmallRoom);
        level.BoxFaces(table);
        SaveLevel();
    }

    void AddSun() {
        CEntity& sun = NewEntity();
        AddKey(sun.keys, "type", "sun");
        AddKey(sun.keys, "sun_azm", "0");
        AddKey(sun.keys, "sun_elv", "45");
    }

    void AddLight(const std::string& origin, const std::string& brightness, const std::string& flags = "0") {
        CEntity& light = NewEntity();
        AddKey(light.keys, "type", "light");
        AddKey(light.keys, "origin", origin);
        AddKey(light.keys, "brightness", brightness);
        AddKey(light.keys, "flags", flags);
    }

    // The tables and the entity table as they stand.
    void SaveLevel() {
        AddSun();
        for (const auto& light : lights_) AddLight(light[0], light[1], light[2]);
        BuildEntityChunk(EntityKeyLists());
        CFileKLV file(Paths().LevelPath);
        ASSERT_TRUE(file.Open(false));
        file.Save();
        file.Close();
    }

    // The stage on a fresh state, as after the stages before it.
    int RunStage() {
        ClearDataSets();
        ClearEntities();
        ResetLighting();
        Options().lmambient = 50;
        return RunLightingStage();
    }

    void LoadLevel() {
        ClearDataSets();
        CFileKLV file(Paths().LevelPath);
        ASSERT_TRUE(file.Open(false));
        ASSERT_TRUE(file.Load());
    }

    // Mean of a surface's texels in the pages of the loaded level, as red, green, blue.
    std::array<double, 3> MeanOf(uint32_t surface) {
        const SurfaceRecord& row = Geometry().surfaces[surface];
        std::array<double, 3> sum{};
        int count = 0;
        for (size_t y = 0; y < 9; y++) {
            for (size_t x = 0; x < 9; x++, count++) {
                const size_t at = ((row.lightY + y) * 256 + row.lightX + x) * 3;
                for (size_t c = 0; c < 3; c++) sum[c] += Textures().pages[row.lightPage][at + 2 - c];
            }
        }
        for (double& s : sum) s /= count;
        return sum;
    }

    std::vector<std::array<std::string, 3>> lights_;
    TempDir dir_;
};

TEST_F(LightingStage, ALevelWithoutLightKeepsTheBlankBlockEverywhere) {
    SaveRoom();
    EXPECT_EQ(RunStage(), 0);
    EXPECT_EQ(Textures().pages.size(), 1U);
    EXPECT_EQ(Lighting().lightDataLength, 289U);
    LoadLevel();
    for (const SurfaceRecord& surface : Geometry().surfaces) {
        EXPECT_EQ(surface.lightShift, 255);
        EXPECT_EQ(surface.lightPage, 0);
        EXPECT_EQ(surface.lightOffset, 0U);
    }
    EXPECT_TRUE(Textures().pages.empty());  // the blank page alone is not written
}

TEST_F(LightingStage, ALightFillsPagesAndPlacesSurfaces) {
    lights_ = {{"0 0 100", "50 50 50 400", "0"}};
    SaveRoom();
    EXPECT_EQ(RunStage(), 0);
    LoadLevel();
    ASSERT_EQ(Textures().pages.size(), 2U);
    const SurfaceRecord& floor = Geometry().surfaces[4];
    EXPECT_EQ(floor.lightShift, 4);
    EXPECT_EQ(floor.lightPage, 1);
    EXPECT_GT(MeanOf(4)[0], 50);
}

TEST_F(LightingStage, SaysWhatItDoes) {
    lights_ = {{"0 0 100", "50 50 50 400", "0"}};
    SaveRoom();
    TakeLoggedText();
    RunStage();
    const std::string text = TakeLoggedText();
    EXPECT_THAT(text, ::testing::StartsWith(" \nPlacing 2 objects ..... ok \nGenerating lightmaps ...... ok"));
}

TEST_F(LightingStage, DotsComeEveryThirtySurfaces) {
    TestLevel level;
    level.RoomTree(SmallRoom);
    for (int i = 0; i < 61; i++) level.Quad(2, 0, true, SmallRoom.mins, SmallRoom.maxs);
    for (const int32_t threads : {1, 3}) {
        Options().threads = threads;
        const RayStructures rays;
        TakeLoggedText();
        GenerateLightmaps();
        EXPECT_EQ(TakeLoggedText(), " \nGenerating lightmaps ........ ok");
        EXPECT_EQ(ProgressTotal, 61);
        EXPECT_EQ(ProgressDone, 61);
    }
}

TEST_F(LightingStage, MonoTurnsARedLightGreyAtItsIntensity) {
    lights_ = {{"0 0 100", "90 10 10 400", "0"}};
    SaveRoom();
    RunStage();
    LoadLevel();
    const auto colour = MeanOf(4);
    EXPECT_GT(colour[0], colour[1] + 20);
    SaveRoom();
    Options().mono = true;
    RunStage();
    LoadLevel();
    const auto grey = MeanOf(4);
    EXPECT_EQ(grey[0], colour[0]);
    EXPECT_EQ(grey[1], colour[0]);
    EXPECT_EQ(grey[2], colour[0]);
}

TEST_F(LightingStage, MonoTurnsAmbientGrey) {
    SaveRoom();
    Options().ambrgb = {20, 40, 10};
    Options().mono = true;
    RunStage();
    LoadLevel();
    const auto grey = MeanOf(4);
    EXPECT_GT(grey[0], 0);
    EXPECT_EQ(grey[0], grey[1]);
    EXPECT_EQ(grey[2], grey[1]);
}

TEST_F(LightingStage, EntityAndTextureUpdatesLeaveItAtOnce) {
    SaveRoom();
    const auto before = ReadBytes(Paths().LevelPath);
    Options().entsonly = true;
    EXPECT_EQ(RunLightingStage(), 0);
    Options().entsonly = false;
    Options().texsonly = true;
    EXPECT_EQ(RunLightingStage(), 0);
    EXPECT_EQ(ReadBytes(Paths().LevelPath), before);
    EXPECT_TRUE(std::filesystem::exists(Paths().PortalPath));
    EXPECT_TRUE(std::filesystem::exists(Paths().VisPath));
}

TEST_F(LightingStage, WithoutALevelPathItFails) {
    Paths().LevelPath.clear();
    EXPECT_EQ(RunLightingStage(), -1);
}

TEST_F(LightingStage, WithoutALevelFileItOnlyCleansUp) {
    EXPECT_EQ(RunLightingStage(), 0);
    EXPECT_FALSE(std::filesystem::exists(Paths().LevelPath));
    EXPECT_FALSE(std::filesystem::exists(Paths().PortalPath));
}

TEST_F(LightingStage, InterimFilesGoUnlessThePortalFileIsKept) {
    SaveRoom();
    RunStage();
    EXPECT_FALSE(std::filesystem::exists(Paths().PortalPath));
    EXPECT_FALSE(std::filesystem::exists(Paths().VisPath));
    EXPECT_EQ(Paths().EntPath, dir_.File("room.$$e"));
    WriteFile(Paths().PortalPath, "PORT");
    WriteFile(Paths().VisPath, "x");
    Options().keepportal = true;
    RunStage();
    EXPECT_TRUE(std::filesystem::exists(Paths().PortalPath));
    EXPECT_FALSE(std::filesystem::exists(Paths().VisPath));
}

TEST_F(LightingStage, ALevelWithoutNodesGoesThroughUnlit) {
    TestLevel level;
    level.RoomFaces(SmallRoom);
    lights_ = {{"0 0 100", "50 50 50 400", "0"}};
    SaveLevel();
    // Nothing could stand ray structures being built here: the surfaces' planes are gone.
    const auto chunk = EntityRecords().block;
    TakeLoggedText();
    EXPECT_EQ(RunStage(), 0);
    EXPECT_THAT(TakeLoggedText(), Not(HasSubstr("Generating")));
    EXPECT_TRUE(Lighting().ActiveLights.empty());
    LoadLevel();
    EXPECT_EQ(EntityRecords().block.size(), chunk.size());
    EXPECT_EQ(Geometry().surfaces[0].lightOffset, 0xFFFFFFFF);
    EXPECT_TRUE(Textures().pages.empty());
}

TEST_F(LightingStage, ASurfaceWhoseAxesAreAlongItsNormalStaysBlankAndTheLevelIsWritten) {
    lights_ = {{"0 0 100", "50 50 50 400", "1"}};
    TestLevel level;
    level.RoomTree(SmallRoom);
    level.RoomFaces(SmallRoom);
    Texinfo& ofWall = Textures().texinfos[static_cast<size_t>(Geometry().surfaces[0].texInfoId)];
    ofWall.vecS = {1, 0, 0};
    ofWall.vecT = {2, 0, 0};
    SaveLevel();
    TakeLoggedText();
    EXPECT_EQ(RunStage(), 0);
    EXPECT_THAT(TakeLoggedText(), HasSubstr("\n W023 - Invalid texture axis \n"));
    LoadLevel();
    EXPECT_EQ(Geometry().surfaces[0].lightShift, 255);
    EXPECT_EQ(Geometry().surfaces[0].lightOffset, 0U);
    EXPECT_EQ(Geometry().surfaces[1].lightShift, 3);
}

TEST_F(LightingStage, ALightAtFullValueEndsInTheLastByteOfTheGammaTable) {
    // 255 in each component and an automatic range of 1,530; right below the light half of nearly twice that.
    lights_ = {{"0 0 2", "255 255 255 0", "0"}};
    Options().gamma = 1;
    SaveRoom();
    RunStage();
    LoadLevel();
    const SurfaceRecord& floor = Geometry().surfaces[4];
    const size_t middle = ((floor.lightY + 8U) * 256 + floor.lightX + 8U) * 3;
    for (size_t c = 0; c < 3; c++) EXPECT_EQ(Textures().pages[floor.lightPage][middle + c], 255);
}

TEST_F(LightingStage, TheSunRecordGetsTheFirstGammaValue) {
    lights_ = {{"0 0 100", "50 50 50 400", "0"}};
    SaveRoom();
    RunStage();
    LoadLevel();
    uint32_t first = 0;
    std::memcpy(&first, EntityRecords().block.data() + 4, sizeof first);
    EXPECT_EQ(EntityRecords().block[first + 32], 2);
    EXPECT_EQ(EntityRecords().block[first + 24] & 1, 1);  // it has pages
}

TEST_F(LightingStage, LitmapsonlyWithoutLightLeavesSurfacesBlank) {
    Options().litmapsonly = true;
    lights_ = {{"0 0 100", "50 50 50 60", "0"}};
    SaveRoom();
    RunStage();
    LoadLevel();
    EXPECT_EQ(Geometry().surfaces[5].lightShift, 4);    // the ceiling is near the light
    EXPECT_EQ(Geometry().surfaces[4].lightShift, 255);  // the floor is not
}

TEST_F(LightingStage, WithoutTrueColourLightmapsTheBlankBlockIsLarger) {
    Options().nod3dlmaps = true;
    lights_ = {{"0 0 100", "50 50 50 400", "0"}};
    SaveRoom();
    RunStage();
    EXPECT_EQ(Lighting().lightDataLength, 578U);
    LoadLevel();
    EXPECT_EQ(Geometry().surfaces[4].lightShift, 255);
    EXPECT_TRUE(Textures().pages.empty());
}

TEST_F(LightingStage, LightsonlyTakesTheObjectsOfTheMapFirst) {
    SaveRoom();
    WriteFile(Paths().MapPath, "{\n0 wad\npal\n}\n{\n5 0 45\n}\n{\n2 0 0 100\n0 0 0\n50 50 50 400\n}\n");
    Options().lightsonly = true;
    Options().entsonly = true;  // gives way to the other
    TakeLoggedText();
    EXPECT_EQ(RunStage(), 0);
    EXPECT_THAT(TakeLoggedText(), ::testing::StartsWith("\nUpdating 2 objects...\n \nPlacing 2 objects ..... ok \n"));
    LoadLevel();
    EXPECT_EQ(Geometry().surfaces[4].lightShift, 4);
    EXPECT_GT(MeanOf(4)[0], 50);
}

TEST_F(LightingStage, BrokenTablesOfALevelAreFatal) {
    lights_ = {{"0 0 100", "50 50 50 400", "0"}};
    const auto expectBroken = [&](auto change) {
        SaveRoom();
        change();
        BuildEntityChunk(EntityKeyLists());
        {
            CFileKLV file(Paths().LevelPath);
            ASSERT_TRUE(file.Open(false));
            file.Save();
        }
        ExpectFatal([&] { RunStage(); }, " \nInvalid KLV file format");
    };
    expectBroken([] { Geometry().surfaces[3].planeNumber = 9999; });
    expectBroken([] { Geometry().surfaces[3].edgeCount = -1; });
    expectBroken([] { Geometry().surfaces[3].firstEdge = 0xFFFFFFFF; });
    expectBroken([] { Geometry().surfaceEdges[5] = std::numeric_limits<int32_t>::min(); });
    expectBroken([] { Geometry().surfaceEdges[5] = 9999; });
    expectBroken([] { Geometry().edges[5].second = 9999; });
}

// Everything that one lighting leaves.
struct Outcome {
    std::vector<std::vector<uint8_t>> pages;
    std::vector<SurfaceRecord> surfaces;
    std::vector<FinalPlaneRecord> planes;
    std::string text;
};

bool SameBytes(const Outcome& a, const Outcome& b) {
    const auto same = [](const auto& p, const auto& q) {
        return p.size() == q.size() && std::memcmp(p.data(), q.data(), p.size() * sizeof(p[0])) == 0;
    };
    return a.pages == b.pages && same(a.surfaces, b.surfaces) && same(a.planes, b.planes) && a.text == b.text;
}

Outcome Generate(int32_t threads) {
    Options().threads = threads;
    Options().lmambient = 50;
    const RayStructures rays;
    TakeLoggedText();
    GenerateLightmaps();
    return {Textures().pages, Geometry().surfaces, Geometry().planes, TakeLoggedText()};
}

class LightingThreads : public LightTest {};

TEST_F(LightingThreads, AnyNumberOfThreadsGivesTheSameBytes) {
    const auto make = [] {
        TestLevel level;
        const Box room{{-192, -192, 0}, {192, 192, 128}};
        const std::vector<Box> boxes{{{-100, -100, 0}, {-20, 0, 90}}, {{100, 40, 30}, {160, 160, 60}}};
        level.RoomTree(room, boxes);
        for (int i = 0; i < 4; i++) level.RoomFaces(room, i % 2 == 0 ? TexturePhong : 0);
        for (const Box& box : boxes) level.BoxFaces(box, TexturePhong);
        for (int i = 0; i < 7; i++) {
            const auto v = static_cast<float>(i);
            level.Light({v * 36 - 180, v * 30 - 150, 10 + v * 11}, 80 + v * 20, {20 + v, 60 - v, v * 4}, i % 3 == 0);
        }
        Options().sunrgb = {5, 6, 7};
    };
    make();
    const Outcome one = Generate(1);
    EXPECT_GT(one.pages.size(), 1U);
    for (const int32_t threads : {2, 4, 8}) {
        make();
        EXPECT_TRUE(SameBytes(Generate(threads), one)) << threads;
    }
}

TEST_F(LightingThreads, AFatalErrorOnAWorkerEndsTheStep) {
    TestLevel level;
    const Box hall{{0, 0, 0}, {4096, 2048, 512}};
    level.RoomTree(hall);
    for (int i = 0; i < 4; i++) level.Quad(2, 0, true, hall.mins, hall.maxs);
    level.Light({100, 100, 64}, 300, {50, 50, 50}, 1);
    Options().preview = true;
    for (const int32_t threads : {1, 3}) ExpectFatal([&] { Generate(threads); }, "E023");
}

// Long strips of smooth surfaces whose samples are jittered so far that the walk onto the neighbours gives up.
class NegatedPlanes : public LightingThreads {
  protected:
    static void MakeStrips(uint16_t side) {
        TestLevel level;
        const Box hall{{-64, -64, -64}, {2000, 512, 128}};
        level.RoomTree(hall, {{{100, 0, 8}, {300, 200, 16}}});
        const uint32_t plane = level.Plane({0, 0, side == 0 ? 1.0F : -1.0F}, 0);
        // One texture unit is 50 units along the strips: the jitter moves samples over many surfaces.
        const int16_t texinfo = level.Texture(TexturePhong, {0.02F, 0, 0}, {0, -1, 0});
        for (int row = 0; row < 2; row++) {
            for (int i = 0; i < 100; i++) {
                const float x0 = static_cast<float>(i) * 16, x1 = x0 + 16;
                const float y0 = static_cast<float>(row) * 32, y1 = y0 + 32;
                level.Surface({{x0, y0, 0}, {x0, y1, 0}, {x1, y1, 0}, {x1, y0, 0}}, plane, side, texinfo);
            }
        }
        level.Light({500, 50, 60}, 900, {50, 40, 30});
        level.Light({900, 10, 90}, 700, {20, 40, 60}, 1);
        Options().jitter = 24;
        Options().verbose = true;
    }
};

TEST_F(NegatedPlanes, TheOrderOfOneWorkerHoldsOnAnyNumberOfThreads) {
    for (const uint16_t side : {uint16_t{0}, uint16_t{1}}) {
        MakeStrips(side);
        const Outcome one = Generate(1);
        EXPECT_THAT(one.text, HasSubstr("W081"));
        for (const int32_t threads : {2, 4}) {
            MakeStrips(side);
            EXPECT_TRUE(SameBytes(Generate(threads), one)) << side << " " << threads;
        }
    }
}

TEST_F(NegatedPlanes, EqualsAPlainPassOverTheSurfaces) {
    MakeStrips(1);
    const Outcome result = Generate(3);
    MakeStrips(1);
    Options().lmambient = 50;
    OpenDirectRoad();
    SurfaceLighter lighter(PlaneFlips::Apply);
    std::vector<std::unique_ptr<CLightFace>> faces;
    for (uint32_t i = 0; i < Geometry().surfaces.size(); i++) faces.push_back(MakeLightFace(i));
    for (const auto& face : faces) {
        if (auto block = LightSurface(*face, lighter.scratch)) LightBlocks().push_back(std::move(*block));
    }
    FinishLightmaps(0);
    EXPECT_TRUE(SameBytes({Textures().pages, Geometry().surfaces, Geometry().planes, result.text}, result));
    EXPECT_NE(Textures().pages.size(), 1U);
}

TEST_F(NegatedPlanes, DotsAreNotPrintedTwice) {
    MakeStrips(1);
    const std::string text = Generate(1).text;
    EXPECT_EQ(std::count(text.begin(), text.end(), '.'), 3 + 6 + 3);
}

}  // namespace
}  // namespace k2k::test
