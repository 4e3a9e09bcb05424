// -litv2 and its options, seen in what the program says and in the lightmap pages.
#include <gmock/gmock.h>

#include <algorithm>

#include "program/compile.h"
#include "program/level_bytes.h"

namespace k2k::test {
namespace {

using levelcheck::LevelView;
using levelcheck::Surface;
using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::Not;

using Words = std::vector<std::string>;

// A lamp over a table, under which no direct light comes.
SmallMap TableRoom(const Corner& colour = {200, 100, 50}, double range = 300) {
    return OneRoom().Add({{64, 64, 40}, {192, 192, 48}, "PILLAR"}).Light({128, 128, 112}, colour, range);
}

bool IsUnderTheTable(const LevelView& level, const Surface& surface) {
    const levelcheck::Plane& plane = level.planes[surface.plane];
    return plane.nz == 1 && plane.dist == 40 && surface.side != 0;
}

bool IsLitUnderTheTable(const LevelView& level) {
    return std::any_of(level.surfaces.begin(), level.surfaces.end(),
                       [&](const Surface& surface) { return IsUnderTheTable(level, surface) && IsLit(surface); });
}

std::vector<uint8_t> Pages(const LevelView& level) {
    return ChunkBytes(level, levelcheck::ChunkPages);
}

class RadiosityRoad : public SmallMapTest {
  protected:
    static Compiled Run(const SmallMap& map, Words options = {}) {
        options.insert(options.begin(), "-litv2");
        return Compile(map, std::move(options));
    }
    static LevelView Light(const SmallMap& map, Words options = {}) { return Run(map, std::move(options)).level; }
    static LevelView Light(Words options = {}) { return Light(TableRoom(), std::move(options)); }
};

TEST_F(RadiosityRoad, SaysWhatItDoes) {
    const std::string text = Run(TableRoom(), {"-radbounce", "2", "-threads", "1"}).text;
    const size_t from = text.find("\nUse 1 threads"), to = text.find(" \n ", from);
    ASSERT_NE(from, std::string::npos) << text;
    EXPECT_THAT(text.substr(from, to - from),
                MatchesRegex("\nUse 1 threads \nPrepare lighting ...... ok \nGenerating 1 direct lights ....... ok "
                             "\nGenerating radiosity [.]+ ok \ntransfer lists:   0.[0-9] megs "
                             "\nIteration 1 of 2 ... transfered: [0-9]+[.][0-9]+ ... ok "
                             "\nIteration 2 of 2 ... transfered: [0-9]+[.][0-9]+ ... ok "
                             "\nGenerating lightmaps ....... ok.*"));
}

TEST_F(RadiosityRoad, LightsWhereDirectLightDoesNotCome) {
    const LevelView direct = Compile(TableRoom()).level, bounced = Light();
    EXPECT_THAT(DifferentChunks(direct, bounced), Contains(levelcheck::ChunkPages));
    EXPECT_FALSE(IsLitUnderTheTable(direct));
    EXPECT_TRUE(IsLitUnderTheTable(bounced));
}

TEST_F(RadiosityRoad, GivesTheSameBytesOnAnyNumberOfThreads) {
    for (const Words& build : {Words{}, {"-mesh"}, {"-mesh", "-nobsp"}}) {
        const auto bytesOn = [&](const std::string& threads) {
            Words options{"-radsubdiv", "16", "-threads", threads};
            options.insert(options.end(), build.begin(), build.end());
            return Light(options).bytes;
        };
        const std::vector<uint8_t> one = bytesOn("1");
        for (const char* threads : {"2", "4", "8"}) EXPECT_TRUE(bytesOn(threads) == one) << threads;
    }
}

TEST_F(RadiosityRoad, BouncesAsOftenAsRadbounceSays) {
    const Compiled none = Run(TableRoom(), {"-radbounce", "0"});
    EXPECT_THAT(none.text, Not(HasSubstr("Generating radiosity")));
    EXPECT_FALSE(IsLitUnderTheTable(none.level));
    const LevelView once = Light({"-radbounce", "1"}), often = Light({"-radbounce", "16"});
    EXPECT_TRUE(IsLitUnderTheTable(once));
    EXPECT_GT(Brightness(often), Brightness(once));
    EXPECT_EQ(often.bytes, Light().bytes) << "the default";
}

TEST_F(RadiosityRoad, CutsPatchesByRadsubdiv) {
    const LevelView normal = Light();
    EXPECT_EQ(Light({"-radsubdiv", "64"}).bytes, normal.bytes) << "the default";
    for (const char* size : {"0", "16"}) {
        EXPECT_THAT(DifferentChunks(Light({"-radsubdiv", size}), normal), ElementsAre(levelcheck::ChunkPages)) << size;
    }
}

TEST_F(RadiosityRoad, ScalesLightByLitscale) {
    EXPECT_LT(Brightness(Light({"-litscale", "0.1"})), Brightness(Light({"-litscale", "0.5"})));
    EXPECT_EQ(CountLit(Light({"-litscale", "0"})), 0U);
}

TEST_F(RadiosityRoad, EndsAtLitmax) {
    for (const int ceiling : {100, 196, 255}) {
        const std::vector<uint8_t> pages = Pages(Light({"-gamma", "1", "-litmax", std::to_string(ceiling)}));
        EXPECT_EQ(*std::max_element(pages.begin(), pages.end()), ceiling);
    }
}

TEST_F(RadiosityRoad, CutsWhatIsTooBrightInsteadOfCompressingItWithALitcompOf1) {
    const auto atTheCeiling = [](const char* knee) {
        const std::vector<uint8_t> pages = Pages(Light({"-gamma", "1", "-litcomp", knee}));
        return std::count(pages.begin(), pages.end(), uint8_t{196});
    };
    EXPECT_GT(atTheCeiling("1"), 2 * atTheCeiling("0.5"));
}

TEST_F(RadiosityRoad, IsBrighterAtSlantedLightWithMoreLmambient) {
    const uint64_t hard = Brightness(Light({"-lmambient", "0"})), normal = Brightness(Light());
    EXPECT_LT(hard, normal);
    EXPECT_LT(normal, Brightness(Light({"-lmambient", "100"})));
}

TEST_F(RadiosityRoad, TakesWholeTexelsUnderPreview) {
    const LevelView level = Light({"-preview", "-noportals"});
    EXPECT_THAT(DifferentChunks(level, Light({"-noportals"})), Contains(levelcheck::ChunkPages));
    EXPECT_EQ(CountLit(level), level.surfaces.size());
}

TEST_F(RadiosityRoad, AddsAmbientLightInItsColour) {
    const LevelView level = Light(OneRoom(), {"-ambrgb", "100", "50", "0", "-gamma", "1"});
    ASSERT_EQ(CountLit(level), level.surfaces.size());
    // The largest component comes down to 196, and takes the others with it.
    for (const Surface& surface : level.surfaces) EXPECT_THAT(FirstTexel(level, surface), ElementsAre(196, 98, 0));
}

TEST_F(RadiosityRoad, LeavesDarkSurfacesBlankWithLitmapsonly) {
    // Too little for the ambient level.
    const Words dim{"-radbounce", "0", "-ambrgb", "1", "0", "0"};
    EXPECT_TRUE(IsLitUnderTheTable(Light(dim)));
    Words only = dim;
    only.push_back("-litmapsonly");
    EXPECT_FALSE(IsLitUnderTheTable(Light(only)));
}

TEST_F(RadiosityRoad, IsGreyWithMono) {
    const LevelView coloured = Light(TableRoom({90, 0, 0})), grey = Light(TableRoom({90, 0, 0}), {"-mono"});
    ASSERT_EQ(grey.surfaces.size(), coloured.surfaces.size());
    for (size_t i = 0; i < grey.surfaces.size(); ++i) {
        const Texel texel = FirstTexel(grey, grey.surfaces[i]);
        const int strongest = FirstTexel(coloured, coloured.surfaces[i])[0];
        EXPECT_THAT(texel, Each(strongest));
    }
}

TEST_F(RadiosityRoad, HasNoSunWithoutOneOfItsColours) {
    const Words red{"-solidsky", "-sunrgb", "100", "0", "0"};
    EXPECT_GT(CountLit(Compile(SkyRoom(), red).level), 0U);
    EXPECT_EQ(CountLit(Light(SkyRoom(), red)), 0U);
    EXPECT_GT(CountLit(Light(SkyRoom(), {"-solidsky", "-sunrgb", "80", "60", "40"})), 0U);
}

TEST_F(RadiosityRoad, HasNoLightOfAutomaticRange) {
    const SmallMap room = TableRoom({200, 100, 50}, 0);
    EXPECT_GT(CountLit(Compile(room).level), 0U);
    EXPECT_EQ(CountLit(Light(room)), 0U);
}

}  // namespace
}  // namespace k2k::test
