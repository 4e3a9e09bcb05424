#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "light/radiosity_lighting.h"
#include "radiosity_level.h"

namespace k2k::test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

struct Outcome {
    std::vector<std::vector<uint8_t>> pages;
    std::vector<uint8_t> places;  // lightmap fields of all surfaces
    std::string text;
};

// The whole road on a level in work.
class RadiosityRoadTest : public RadiosityTest {
  protected:
    RadiosityRoadTest() {
        Options().threads = 1;
        Options().radbounce = 3;
    }

    static Outcome Run() {
        Options().lmambient = ambientSoftness;
        const RayStructures rays;
        Logged();
        GenerateRadiosityLightmaps();
        Outcome outcome{Textures().pages, {}, Logged()};
        for (const SurfaceRecord& row : Geometry().surfaces) {
            for (const uint8_t field : {row.lightShift, row.lightPage, row.lightX, row.lightY})
                outcome.places.push_back(field);
        }
        return outcome;
    }

    // A room with a table and three lights.
    static void AddRoom() {
        TestLevel level;
        const Box table{{-32, -32, 40}, {32, 32, 48}};
        level.RoomTree(SmallRoom, {table});
        level.RoomFaces(SmallRoom);
        level.BoxFaces(table);
        level.Light({-100, -90, 100}, 300, {90, 40, 20}, 1);
        level.Light({60, 70, 100}, 200, {10, 40, 80});
        level.Light({0, 0, 20}, 150, {5, 5, 5});
    }

    // The bytes of a surface's lightmap, row by row.
    static std::vector<uint8_t> MapOf(uint32_t surface, size_t width, size_t height) {
        const SurfaceRecord& row = Geometry().surfaces[surface];
        std::vector<uint8_t> bytes;
        for (size_t y = 0; y < height; y++) {
            const size_t at = ((row.lightY + y) * 256 + row.lightX) * 3;
            const auto& page = Textures().pages[row.lightPage];
            bytes.insert(bytes.end(), page.begin() + static_cast<ptrdiff_t>(at),
                         page.begin() + static_cast<ptrdiff_t>(at + width * 3));
        }
        return bytes;
    }
    static double SumOf(const Outcome& outcome) {
        double sum = 0;
        for (size_t i = 1; i < outcome.pages.size(); i++) {
            for (const uint8_t byte : outcome.pages[i]) sum += byte;
        }
        return sum;
    }

    static inline float ambientSoftness = 50;
};

TEST_F(RadiosityRoadTest, AnyNumberOfThreadsGivesTheSameBytes) {
    AddRoom();
    Options().radsubdiv = 32;
    const Outcome one = Run();
    ASSERT_GT(one.pages.size(), 1U);
    for (const int32_t threads : {1, 2, 4, 8}) {
        AddRoom();
        Options().threads = threads;
        const Outcome other = Run();
        EXPECT_EQ(one.pages, other.pages) << threads;
        EXPECT_EQ(one.places, other.places) << threads;
    }
}

TEST_F(RadiosityRoadTest, SaysWhatItDoes) {
    AddRoom();
    Options().radbounce = 2;
    Options().threads = 1;
    const std::string text = Run().text;
    EXPECT_EQ(text.find("\nUse 1 threads \nPrepare lighting ...... ok \nGenerating 3 direct lights ...."), 0U) << text;
    EXPECT_THAT(text, HasSubstr("... ok \nGenerating radiosity ...."));
    EXPECT_THAT(text, HasSubstr("... ok \ntransfer lists:   0."));
    EXPECT_THAT(text, HasSubstr(" megs \nIteration 1 of 2 ... transfered: "));
    EXPECT_THAT(text, HasSubstr(" ... ok \nIteration 2 of 2 ... transfered: "));
    EXPECT_THAT(text, HasSubstr(" ... ok \nGenerating lightmaps ...."));
}

TEST_F(RadiosityRoadTest, WithoutBouncesOrLightsThereIsNoRadiosity) {
    AddRoom();
    Options().radbounce = 0;
    EXPECT_THAT(Run().text, Not(HasSubstr("Generating radiosity")));
    AddRoom();
    ClearEntities();
    Options().radbounce = 3;
    const Outcome dark = Run();
    EXPECT_THAT(dark.text, HasSubstr("Generating 0 direct lights"));
    EXPECT_THAT(dark.text, Not(HasSubstr("Generating radiosity")));
    EXPECT_EQ(dark.pages.size(), 1U);
}

TEST_F(RadiosityRoadTest, BouncesBringLightWhereNoLightShines) {
    // Under the table.
    TestLevel level;
    const Box table{{-100, -100, 40}, {100, 100, 48}};
    level.RoomTree(SmallRoom, {table});
    level.RoomFaces(SmallRoom);
    level.BoxFaces(table);
    level.Light({0, 0, 110}, 400, {90, 90, 90});
    constexpr uint32_t underside = 10;
    ASSERT_EQ(Geometry().surfaces[underside].side, 1);
    Options().radbounce = 0;
    Run();
    EXPECT_EQ(Geometry().surfaces[underside].lightShift, 255);
    Options().radbounce = 3;
    Run();
    EXPECT_EQ(Geometry().surfaces[underside].lightShift, 4);
}

TEST_F(RadiosityRoadTest, EachOptionChangesTheResult) {
    const auto runWith = [](const std::function<void(BuildOptions&)>& change) {
        ResetAllOptionsForTest();
        AddRoom();
        Options().threads = 1;
        Options().radbounce = 3;
        ambientSoftness = 50;
        change(Options());
        return Run();
    };
    const Outcome plain = runWith([](BuildOptions&) {});
    const auto expectBrighter = [&](const char* name, const std::function<void(BuildOptions&)>& change) {
        EXPECT_GT(SumOf(runWith(change)), SumOf(plain)) << name;
    };
    const auto expectDarker = [&](const char* name, const std::function<void(BuildOptions&)>& change) {
        EXPECT_LT(SumOf(runWith(change)), SumOf(plain)) << name;
    };
    const auto expectChange = [&](const char* name, const std::function<void(BuildOptions&)>& change) {
        EXPECT_NE(runWith(change).pages, plain.pages) << name;
    };
    expectDarker("-litscale", [](BuildOptions& o) { o.litscale = 0.1F; });
    expectBrighter("-litmax", [](BuildOptions& o) { o.litmax = 255; });
    expectChange("-litcomp", [](BuildOptions& o) { o.litcomp = 0.1F; });
    expectBrighter("-radbounce", [](BuildOptions& o) { o.radbounce = 16; });
    expectChange("-radsubdiv", [](BuildOptions& o) { o.radsubdiv = 16; });
    expectBrighter("-ambrgb", [](BuildOptions& o) { o.ambrgb = {20, 20, 20}; });
    expectChange("-preview", [](BuildOptions& o) { o.preview = true; });
    expectChange("-lmambient", [](BuildOptions&) { ambientSoftness = 0; });
    expectChange("-gamma", [](BuildOptions& o) { o.gamma = 1; });
    ambientSoftness = 50;
}

TEST_F(RadiosityRoadTest, TheSunShinesUnlessOneOfItsColoursIsMissing) {
    OpenLevel level;
    level.Quad(2, 0, true, {-64, -64, 0}, {64, 64, 0});
    Options().sunrgb = {40, 0, 40};
    EXPECT_THAT(Run().text, HasSubstr("Generating 0 direct lights"));
    Options().sunrgb = {40, 20, 10};
    const Outcome outcome = Run();
    EXPECT_THAT(outcome.text, HasSubstr("Generating 1 direct lights"));
    const std::vector<uint8_t> floor = MapOf(0, 8, 8);
    EXPECT_LT(floor[0], floor[1]);
    EXPECT_LT(floor[1], floor[2]);
}

TEST_F(RadiosityRoadTest, MonoLeavesSunAndAmbientOfThisRoadAsTheyAre) {
    AddRoom();
    Options().ambrgb = {10, 20, 40};
    const Outcome coloured = Run();
    AddRoom();
    Options().mono = true;
    EXPECT_EQ(Run().pages, coloured.pages);
}

TEST_F(RadiosityRoadTest, LitmapsonlyLeavesDarkSurfacesBlank) {
    TestLevel level;
    const Box table{{-100, -100, 40}, {100, 100, 48}};
    level.RoomTree(SmallRoom, {table});
    level.RoomFaces(SmallRoom);
    level.BoxFaces(table);
    level.Light({0, 0, 110}, 400, {90, 90, 90});
    Options().radbounce = 0;
    Options().ambrgb = {1, 0, 0};  // too little for the ambient level
    Run();
    EXPECT_EQ(Geometry().surfaces[10].lightShift, 4);
    Options().litmapsonly = true;
    Run();
    EXPECT_EQ(Geometry().surfaces[10].lightShift, 255);
    EXPECT_EQ(Geometry().surfaces[11].lightShift, 4);  // the table's top
}

TEST_F(RadiosityRoadTest, ALightOfAutomaticRangeIsDark) {
    AddRoom();
    for (CEntity& entity : Entities()) entity.rawRange = 0;
    const Outcome outcome = Run();
    EXPECT_THAT(outcome.text, HasSubstr("Generating 0 direct lights"));
    EXPECT_EQ(outcome.pages.size(), 1U);
}

TEST_F(RadiosityRoadTest, TexelsAreBlueGreenRed) {
    TestLevel level;
    level.RoomTree(SmallRoom);
    level.RoomFaces(SmallRoom);
    level.Light({0, 0, 64}, 400, {90, 45, 0});
    Options().radbounce = 0;
    Run();
    const std::vector<uint8_t> floor = MapOf(4, 16, 16);
    for (size_t i = 0; i < floor.size(); i += 3) {
        ASSERT_EQ(floor[i], Lighting().GammaTable[0]);
        ASSERT_LT(floor[i + 1], floor[i + 2]);
        ASSERT_GT(floor[i + 1], 2);
    }
}

}  // namespace
}  // namespace k2k::test
