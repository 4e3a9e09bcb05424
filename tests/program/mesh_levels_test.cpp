// Mesh levels from outside: the default settings, builds without BSP, concave blocks, updates.
#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <numbers>
#include <set>

#include "levelcheck/check.h"
#include "program/compile.h"

namespace k2k::test {
namespace {

using levelcheck::LevelView;
using ::testing::HasSubstr;

constexpr int MeshChunk = 17;
using Options = std::vector<std::string>;

const Options DefaultSettings{"-solidsky", "-litmapsonly", "-mergeacross", "-mesh", "-hiprec", "-quiet"};
const Options WithoutBsp{"-solidsky", "-nobsp", "-mesh"};

std::string FaultsOf(const LevelView& level, float litres = 1) {
    const auto faults = levelcheck::Check(level, {.litres = litres});
    return levelcheck::IsSound(faults) ? "" : levelcheck::Describe(faults);
}

std::vector<uint8_t> Bytes(const LevelView& level, int chunk) {
    const auto bytes = level.Chunk(chunk);
    return {bytes.begin(), bytes.end()};
}

// Twice the area of a triangle of the mesh.
double DoubleArea(const levelcheck::Mesh& mesh, const levelcheck::MeshTriangleRow& triangle) {
    const auto& a = mesh.vertices[static_cast<size_t>(triangle.vertices[0])].position;
    std::array<double, 3> u{}, v{};
    for (size_t k = 0; k < 3; k++) {
        u[k] = double{mesh.vertices[static_cast<size_t>(triangle.vertices[1])].position[k]} - a[k];
        v[k] = double{mesh.vertices[static_cast<size_t>(triangle.vertices[2])].position[k]} - a[k];
    }
    return std::hypot(u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]);
}

// The area of a level's triangles that lie in the plane y = `at` between two places along x.
double AreaAt(const LevelView& level, float at, float lowX, float highX) {
    double area = 0;
    for (const levelcheck::Mesh& mesh : level.meshes) {
        for (const auto& triangle : mesh.triangles) {
            const bool inside = std::all_of(triangle.vertices.begin(), triangle.vertices.end(), [&](int16_t number) {
                const auto& p = mesh.vertices[static_cast<size_t>(number)].position;
                return p[1] == at && p[0] >= lowX && p[0] <= highX;
            });
            if (inside) area += DoubleArea(mesh, triangle) / 2;
        }
    }
    return area;
}

struct Example {
    const char* dialect;
    const char* name;
};
constexpr Example Examples[] = {{"", "room"}, {"71", "house"}, {"71", "court"}, {"71", "grid200"}, {"71", "gallery"}};

class MeshExamples : public ::testing::TestWithParam<Example> {
  protected:
    void ExpectSound(const Options& options) {
        TakeExample(GetParam().dialect, GetParam().name);
        const LevelView level = CompileLevel(GetParam().name, options).level;
        EXPECT_FALSE(level.meshes.empty());
        EXPECT_EQ(FaultsOf(level), "");
    }
    InTempDir folder_;
};

TEST_P(MeshExamples, AreSoundWithTheDefaultSettings) {
    ExpectSound(DefaultSettings);
}

TEST_P(MeshExamples, AreSoundWithoutBsp) {
    ExpectSound(WithoutBsp);
}

INSTANTIATE_TEST_SUITE_P(All, MeshExamples, ::testing::ValuesIn(Examples),
                         [](const auto& test) { return std::string(test.param.name); });

class MeshLevels : public ::testing::Test {
  protected:
    static LevelView Gallery(Options options = {}) {
        if (!std::filesystem::exists("gallery.$$M")) TakeExample("71", "gallery");
        options.insert(options.begin(), {"-mesh", "-solidsky"});
        return CompileLevel("gallery", options).level;
    }
    InTempDir folder_;
};

TEST_F(MeshLevels, TrianglesOfConcaveSidesCoverTheirPolygon) {
    const LevelView level = Gallery({"-nobsp"});
    // The arch stands at y -64 to -32 around x -256: a wall of 256 x 192 less its opening, which is 96 to each side of
    // the middle, 96 high, and has half a polygon of 24 corners on top.
    const double opening = 192.0 * 96 + 12 * 0.5 * 96 * 96 * std::sin(std::numbers::pi / 12);
    EXPECT_NEAR(AreaAt(level, -64, -384, -128), 256.0 * 192 - opening, 0.05);
    EXPECT_NEAR(AreaAt(level, -32, -384, -128), 256.0 * 192 - opening, 0.05);
    // The gear at y -256 around x 256: 40 triangles from its middle to neighbouring corners. Triangles with a corner of
    // less than 2.6 degrees from straight lose it where faces are cut to the size of their lightmaps, and vanish.
    const double gear = 40 * 0.5 * 80 * 56 * std::sin(2 * std::numbers::pi / 40);
    EXPECT_LE(AreaAt(level, -256, 170, 340), gear + 0.05);
    EXPECT_GE(AreaAt(level, -256, 170, 340), gear * 0.98);
}

TEST_F(MeshLevels, ASelfCrossingSideIsCutWhereItCrosses) {
    const LevelView level = Gallery({"-nobsp"});
    // The ribbon at y -256 around the middle: a triangle of 160 x 80 to the right, and one with a notch of 160 x 40.
    EXPECT_NEAR(AreaAt(level, -256, -90, 90), 6400 + 6400 - 3200, 0.01);
}

TEST_F(MeshLevels, ASideOf41VerticesIsFatal) {
    TakeExample("71", "toowide");
    const ProcessResult result = RunK2k({"toowide", "-pal", "palette.raw", "-mesh"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.out, HasSubstr("E09E - block 6 has too many edges"));
}

TEST_F(MeshLevels, AreMeshLevelsWithoutTheOptionWhenABlockIsConcave) {
    TakeExample("71", "gallery");
    const LevelView level = CompileLevel("gallery", {"-solidsky"}).level;
    EXPECT_FALSE(level.meshes.empty());
}

TEST_F(MeshLevels, WithoutASunTheMeshesAreLostAtTheNextSave) {
    TakeExample("71", "nosun");
    const LevelView level = CompileLevel("nosun", {"-mesh", "-solidsky"}).level;
    EXPECT_TRUE(level.meshes.empty());
    EXPECT_LE(level.Chunk(MeshChunk).size(), 4U);
}

TEST_F(MeshLevels, KeepTheirMeshesByteByByteAtFurtherSaves) {
    const LevelView built = Gallery();
    ASSERT_FALSE(built.meshes.empty());
    for (const char* update : {"-entsonly", "-texsonly", "-lightsonly"}) {
        const LevelView updated = Gallery({update});
        EXPECT_EQ(FaultsOf(updated), "") << update;
        for (const int chunk : {1, 3, 5, 7, 11, 12, 13, 16, MeshChunk}) {
            EXPECT_TRUE(Bytes(updated, chunk) == Bytes(built, chunk)) << update << ", chunk " << chunk;
        }
    }
}

TEST_F(MeshLevels, StayMeshLevelsWhenTheyAreUpdatedWithoutTheOption) {
    const std::string map = "level";
    WriteFile("level.$$M", LitRoom().Text());
    WriteFile("textures.$$w", SmallTextures());
    WriteFile("palette.raw", std::string(768, 'p'));
    const LevelView built = CompileLevel(map, {"-mesh"}).level;
    ASSERT_FALSE(built.meshes.empty());
    for (const char* update : {"-entsonly", "-texsonly", "-lightsonly"}) {
        const LevelView updated = CompileLevel(map, {update}).level;
        EXPECT_EQ(FaultsOf(updated), "") << update;
        for (const int chunk : {1, 3, 5, 7, 11, 12, 13, 16, MeshChunk}) {
            EXPECT_TRUE(Bytes(updated, chunk) == Bytes(built, chunk)) << update << ", chunk " << chunk;
        }
    }
}

TEST_F(MeshLevels, NewLightsMoveLightmapCoordinatesAlone) {
    const LevelView built = Gallery();
    const LevelView relit = Gallery({"-lightsonly", "-litres", "2"});
    EXPECT_EQ(FaultsOf(relit, 2), "");
    EXPECT_TRUE(Bytes(relit, 3) == Bytes(built, 3));
    EXPECT_FALSE(Bytes(relit, MeshChunk) == Bytes(built, MeshChunk));
    ASSERT_EQ(relit.meshes.size(), built.meshes.size());
    for (size_t i = 0; i < built.meshes.size(); i++) {
        EXPECT_EQ(relit.meshes[i].triangles.size(), built.meshes[i].triangles.size());
    }
}

class MeshResolution : public MeshLevels, public ::testing::WithParamInterface<float> {};

TEST_P(MeshResolution, IsSound) {
    const LevelView level = Gallery({"-litres", std::to_string(GetParam())});
    EXPECT_EQ(FaultsOf(level, GetParam()), "");
    const auto lit = [](const levelcheck::Surface& s) { return s.lightShift != 255; };
    EXPECT_TRUE(std::any_of(level.surfaces.begin(), level.surfaces.end(), lit));
}

INSTANTIATE_TEST_SUITE_P(Litres, MeshResolution, ::testing::Values(0.02F, 0.1F, 0.5F, 1.0F, 2.0F, 8.0F));

TEST_F(MeshLevels, AHundredthOfAResolutionGivesNoAxes) {
    TakeExample("71", "gallery");
    const Compiled compiled = CompileLevel("gallery", {"-mesh", "-solidsky", "-litres", "0.01"});
    EXPECT_THAT(compiled.text, HasSubstr("W023 - Invalid texture axis"));
    for (const levelcheck::Surface& surface : compiled.level.surfaces) ASSERT_EQ(surface.lightShift, 255);
}

TEST_F(MeshLevels, PagesGrowWithTheResolutionUpTo1024) {
    const LevelView coarse = Gallery({"-litres", "0.1"}), fine = Gallery({"-litres", "8"});
    EXPECT_EQ(coarse.pageSize, 256U);
    EXPECT_EQ(fine.pageSize, 1024U);
    uint32_t furthestX = 0, furthestY = 0;
    for (const levelcheck::Surface& surface : fine.surfaces) {
        if (surface.lightShift == 255) continue;
        EXPECT_EQ(surface.lightX, 255);
        EXPECT_EQ(surface.lightY, 255);
        furthestX = std::max(furthestX, surface.lightOffset & 0xFFFFU);
        furthestY = std::max(furthestY, surface.lightOffset >> 16U);
    }
    EXPECT_GT(furthestX, 255U) << "more than a byte can hold";
    EXPECT_GT(furthestY, 255U);
}

TEST_F(MeshLevels, NameEachMeshOnceInARegion) {
    const LevelView level = Gallery();
    for (const levelcheck::Region& region : level.regions) {
        std::set<int32_t> meshes;
        for (uint32_t i = 0; i < region.surfaceCount; i++) {
            const int32_t mesh = level.regionSurfaces[region.firstSurface + i];
            EXPECT_LT(mesh, static_cast<int32_t>(level.meshes.size()));
            EXPECT_TRUE(meshes.insert(mesh).second);
        }
    }
}

}  // namespace
}  // namespace k2k::test
