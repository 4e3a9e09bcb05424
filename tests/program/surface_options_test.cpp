// Options of surfaces: how large they may be, how they are repaired and merged.
#include <gmock/gmock.h>

#include "levelcheck/check.h"
#include "program/compile.h"
#include "program/level_bytes.h"

namespace k2k::test {
namespace {

using levelcheck::LevelView;
using ::testing::HasSubstr;

class SurfaceSizes : public SmallMapTest {
  protected:
    // A room of 256 x 256 x 128 in which all sides have one texture.
    static SmallMap RoomOf(const std::string& texture) {
        std::string text;
        SmallMap map;
        for (size_t axis = 0; axis < 3; ++axis) {
            for (const bool high : {false, true}) {
                Box wall{{-16, -16, -16}, {272, 272, 144}, texture};
                const double inside = axis == 2 ? 128 : 256;
                (high ? wall.low : wall.high)[axis] = high ? inside : 0;
                map.Add(wall);
            }
        }
        return map.Start({128, 128, 40}).Sun();
    }
    static size_t SurfaceCount(const std::vector<std::string>& options) {
        return Compile(options).level.surfaces.size();
    }

    // Of the room, when it is cut every so many units from its corner on.
    static size_t CutEvery(size_t size) {
        const size_t across = (256 + size - 1) / size, up = (128 + size - 1) / size;
        return 2 * across * across + 4 * across * up;
    }
};

TEST_F(SurfaceSizes, OfShadedSurfaces) {
    Write(RoomOf("WALL"));
    EXPECT_EQ(SurfaceCount({}), CutEvery(236));
    EXPECT_EQ(SurfaceCount({"-sizeshaded", "64"}), CutEvery(64));
    EXPECT_EQ(SurfaceCount({"-sizeshaded", "16"}), CutEvery(16));
    EXPECT_EQ(SurfaceCount({"-sizeshaded", "15"}), CutEvery(236)) << "too small to be taken";
    EXPECT_EQ(SurfaceCount({"-sizeshaded", "256"}), CutEvery(256));
    EXPECT_EQ(SurfaceCount({"-sizeflat", "64", "-sizeturb", "64"}), CutEvery(236));
}

TEST_F(SurfaceSizes, OfFlatSurfaces) {
    Write(RoomOf("LAMP_OUT"));
    EXPECT_EQ(SurfaceCount({}), 6U) << "left whole";
    EXPECT_EQ(SurfaceCount({"-sizeflat", "64"}), CutEvery(64));
    EXPECT_EQ(SurfaceCount({"-sizeshaded", "64", "-sizeturb", "64"}), 6U);
}

TEST_F(SurfaceSizes, OfTurbulentSurfaces) {
    const SmallMap pool = RoomOf("LAMP_OUT").Add({{0, 0, 0}, {256, 256, 32}, "*WATER"});
    Write(pool);
    const size_t whole = SurfaceCount({});
    EXPECT_GT(SurfaceCount({"-sizeturb", "64"}), whole);
    EXPECT_EQ(SurfaceCount({"-sizeshaded", "64"}), whole);
}

TEST_F(SurfaceSizes, EndAt996) {
    Write(SmallMap().AddRoom({0, 0, 0}, {2000, 128, 128}).Start({64, 64, 40}).Sun());
    const size_t largest = SurfaceCount({"-sizeshaded", "996"});
    EXPECT_EQ(SurfaceCount({"-sizeshaded", "1000"}), largest);
    EXPECT_GT(SurfaceCount({"-sizeshaded", "990"}), 0U);
    EXPECT_EQ(largest, 4 * 3 + 2U);
}

size_t CountJunctions(const LevelView& level) {
    for (const levelcheck::Fault& fault : levelcheck::Check(level)) {
        if (fault.kind == "edge with a vertex on it (T-junction)") return fault.count;
    }
    return 0;
}

using Junctions = SmallMapTest;

TEST_F(Junctions, AreRepairedUnlessNotjunc) {
    // Both sides of the pillar end at the wall, amid its lower edge.
    const SmallMap map =
        OneRoom().Add({{96, 0, 0}, {128, 32, 128}, "PILLAR"}).Add({{0, 64, 0}, {32, 96, 64}, "PILLAR"});
    EXPECT_EQ(CountJunctions(Compile(map).level), 0U);
    EXPECT_GT(CountJunctions(Compile({"-notjunc"}).level), 0U);
}

using Merging = SmallMapTest;

TEST_F(Merging, AcrossRegionsLeavesFewerVisibleSurfaces) {
    const SmallMap map = OneRoom().Add({{96, 96, 0}, {128, 128, 128}, "PILLAR"}).Add({{160, 32, 0}, {176, 64, 96}});
    const auto [plainText, plain] = Compile(map);
    const auto [text, merged] = Compile({"-mergeacross"});
    size_t mergedAway = 0;
    for (const levelcheck::Surface& surface : merged.surfaces) mergedAway += surface.texinfo == -1 ? 1 : 0;
    EXPECT_GT(mergedAway, 0U);
    const size_t visible = merged.surfaces.size() - mergedAway;
    EXPECT_LT(visible, plain.surfaces.size());
    EXPECT_THAT(plainText, HasSubstr("\n" + std::to_string(plain.surfaces.size()) + " visible surfaces"));
    EXPECT_THAT(text, HasSubstr("\n" + std::to_string(visible) + " visible surfaces"));
    for (const int32_t listed : merged.regionSurfaces)
        EXPECT_NE(merged.surfaces[static_cast<size_t>(listed)].texinfo, -1) << "regions list the merged surface";
    const auto faults = levelcheck::Check(merged);
    EXPECT_TRUE(levelcheck::IsSound(faults)) << levelcheck::Describe(faults);
}

}  // namespace
}  // namespace k2k::test
