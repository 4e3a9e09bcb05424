// Options of light, seen in the lightmap pages, the surfaces and the settings that the sun's record carries.
#include <gmock/gmock.h>

#include "program/compile.h"
#include "program/level_bytes.h"

namespace k2k::test {
namespace {

using levelcheck::LevelView;
using levelcheck::Surface;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

// The surfaces that face along an axis (0 to 2): up it or down.
std::vector<Surface> Facing(const LevelView& level, int axis, bool up) {
    std::vector<Surface> found;
    for (const Surface& surface : level.surfaces) {
        const levelcheck::Plane& plane = level.planes[surface.plane];
        const float along = std::array{plane.nx, plane.ny, plane.nz}.at(static_cast<size_t>(axis));
        if ((surface.side == 0 ? along : -along) == (up ? 1 : -1)) found.push_back(surface);
    }
    return found;
}

using Lightmaps = SmallMapTest;

TEST_F(Lightmaps, StandOnPagesOfAVersion7Level) {
    const LevelView level = Compile(LitRoom()).level;
    EXPECT_EQ(level.version, '7');
    EXPECT_EQ(level.pageCount, 2U);
    EXPECT_EQ(SunRecord(level).flags() & SunRecord::HasPages, SunRecord::HasPages);
    EXPECT_EQ(CountLit(level), level.surfaces.size());
}

TEST_F(Lightmaps, Nod3dlmapsWritesAVersion5LevelWithout) {
    const LevelView level = Compile(LitRoom(), {"-nod3dlmaps"}).level;
    EXPECT_EQ(level.version, '5');
    EXPECT_THAT(level.Chunk(levelcheck::ChunkPages), IsEmpty());
    EXPECT_EQ(CountLit(level), 0U);
    constexpr uint32_t Start = 1, Sun = 5;
    EXPECT_EQ(ValueIn<uint32_t>(EntityRecord(level, 0), 0), Start) << "the sun stays in its place";
    EXPECT_EQ(ValueIn<uint32_t>(EntityRecord(level, 1), 0), Sun);
    constexpr size_t ShortSun = 56, Light = 36;
    EXPECT_EQ(EntityRecord(level, 1).size(), ShortSun + Light);
}

TEST_F(Lightmaps, OfALevelWithoutLightAreWrittenWithLitmapsonly) {
    EXPECT_THAT(Compile(OneRoom()).level.Chunk(levelcheck::ChunkPages), IsEmpty());
    const LevelView level = Compile({"-litmapsonly"}).level;
    EXPECT_EQ(level.pageCount, 1U);
    EXPECT_THAT(PageBytes(level, 0), Each(2)) << "the blank page";
}

TEST_F(Lightmaps, TakeTheGammaOfTheOption) {
    Write(LitRoom());
    const LevelView bright = Compile({"-gamma", "3"}).level, normal = Compile().level,
                    dark = Compile({"-gamma", "1"}).level;
    EXPECT_THAT(PageBytes(bright, 0), Each(25)) << "0.001 to the power of 1/3, of 255";
    EXPECT_THAT(PageBytes(normal, 0), Each(2));
    EXPECT_THAT(PageBytes(dark, 0), Each(0));
    EXPECT_EQ(SunRecord(bright).firstGammaValue(), 25);
    EXPECT_GT(Brightness(bright), Brightness(normal));
    EXPECT_GT(Brightness(normal), Brightness(dark));
}

TEST_F(Lightmaps, OfAmbientLightAloneAreOfItsColour) {
    const LevelView level = Compile(OneRoom(), {"-ambrgb", "100", "50", "0"}).level;
    EXPECT_THAT(SunRecord(level).ambientColour(), ElementsAre(0, 127, 255, 0));
    EXPECT_EQ(CountLit(level), level.surfaces.size());
    for (const Surface& surface : level.surfaces) {
        // 127 of 255 is 0.499; to the power of 1/1.5, of 255.
        EXPECT_THAT(FirstTexel(level, surface), ElementsAre(255, 160, 2));
    }
}

TEST_F(Lightmaps, AreGreyWithMono) {
    const auto isGrey = [](const Texel& texel) { return texel[0] == texel[1] && texel[1] == texel[2]; };
    const LevelView coloured = Compile(LitRoom({90, 0, 0})).level, grey = Compile({"-mono"}).level;
    EXPECT_FALSE(isGrey(FirstTexel(coloured, coloured.surfaces[0])));
    ASSERT_EQ(CountLit(grey), coloured.surfaces.size());
    for (size_t i = 0; i < grey.surfaces.size(); ++i) {
        const Texel texel = FirstTexel(grey, grey.surfaces[i]);
        EXPECT_TRUE(isGrey(texel));
        EXPECT_EQ(texel[0], FirstTexel(coloured, coloured.surfaces[i])[0]) << "as bright as its strongest colour";
    }
}

TEST_F(Lightmaps, AreGreyWithMonoUnderAmbientLightToo) {
    const LevelView level = Compile(OneRoom(), {"-mono", "-ambrgb", "100", "50", "0"}).level;
    for (const Surface& surface : level.surfaces) EXPECT_THAT(FirstTexel(level, surface), ElementsAre(255, 255, 255));
}

TEST_F(Lightmaps, AreBrighterAtSlantedLightWithMoreLmambient) {
    Write(LitRoom());
    const uint64_t soft = Brightness(Compile({"-lmambient", "0"}).level), normal = Brightness(Compile().level),
                   full = Brightness(Compile({"-lmambient", "100"}).level);
    EXPECT_LT(soft, normal);
    EXPECT_LT(normal, full);
    EXPECT_EQ(Brightness(Compile({"-lmambient", "50"}).level), normal) << "the default";
}

TEST_F(Lightmaps, OfSmoothSurfacesAreJittered) {
    Write(LitRoom({200, 100, 50}, PhongFlag));
    const LevelView jittered = Compile().level;
    EXPECT_EQ(jittered.bytes, Compile({"-jitter", "8"}).level.bytes) << "the default";
    EXPECT_THAT(DifferentChunks(jittered, Compile({"-jitter", "0"}).level), ElementsAre(levelcheck::ChunkPages));
}

TEST_F(Lightmaps, OfFlatSurfacesAreNot) {
    Write(LitRoom());
    EXPECT_EQ(Compile({"-jitter", "0"}).level.bytes, Compile({"-jitter", "8"}).level.bytes);
}

class TheSun : public SmallMapTest {
  protected:
    TheSun() { Write(SkyRoom()); }

    static LevelView Shine(const std::string& azimuth, const std::string& elevation) {
        return Compile({"-solidsky", "-sunrgb", "80", "60", "40", "-az", azimuth, "-el", elevation}).level;
    }
};

TEST_F(TheSun, ShinesInItsColourThroughSolidSky) {
    const LevelView level = Compile({"-solidsky", "-sunrgb", "80", "60", "40"}).level;
    EXPECT_THAT(SunRecord(level).sunColour(), ElementsAre(102, 153, 204, 0));
    EXPECT_GT(CountLit(level), 0U);
    EXPECT_EQ(CountLit(Compile({"-solidsky"}).level), 0U) << "without a colour";
    EXPECT_EQ(CountLit(Compile({"-sunrgb", "80", "60", "40"}).level), 0U)
        << "open sky does not make a hole in the roof";
}

TEST_F(TheSun, StandsAtTheElevationOfTheOption) {
    const LevelView noon = Shine("0", "90");
    EXPECT_EQ(CountLit(noon), CountLit(Facing(noon, 2, true)));
    EXPECT_GT(CountLit(noon), 0U);
    EXPECT_EQ(CountLit(Shine("0", "-90")), 0U);
}

TEST_F(TheSun, StandsAtTheAzimuthOfTheOption) {
    const LevelView east = Shine("0", "30"), north = Shine("90", "30");
    EXPECT_GT(CountLit(Facing(east, 0, true)), 0U);
    EXPECT_EQ(CountLit(Facing(east, 0, false)), 0U);
    EXPECT_EQ(CountLit(Facing(east, 1, true)), 0U);
    EXPECT_GT(CountLit(Facing(north, 1, true)), 0U);
    EXPECT_EQ(CountLit(Facing(north, 0, true)), 0U);
}

TEST_F(TheSun, StandsAt325And60Degrees) {
    EXPECT_EQ(Shine("325", "60").bytes, Compile({"-solidsky", "-sunrgb", "80", "60", "40"}).level.bytes);
}

TEST_F(TheSun, CarriesTheFogColours) {
    const SunRecord sun(
        Compile({"-fog1", "100", "0", "50", "-fog3", "10", "20", "30", "-fog4", "0", "0", "100"}).level);
    EXPECT_THAT(sun.fogColour(0), ElementsAre(127, 0, 255, 0));
    EXPECT_THAT(sun.fogColour(1), ElementsAre(0, 0, 0, 0));
    EXPECT_THAT(sun.fogColour(2), ElementsAre(76, 51, 25, 0));
    EXPECT_THAT(sun.fogColour(3), ElementsAre(255, 0, 0, 0));
    EXPECT_THAT(SunRecord(Compile({"-fog2", "0", "100", "0"}).level).fogColour(1), ElementsAre(0, 255, 0, 0));
}

}  // namespace
}  // namespace k2k::test
