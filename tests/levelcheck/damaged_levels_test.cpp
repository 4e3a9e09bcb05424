// The checker finds what is wrong: a sound level is damaged in one place, and the fault must be told by its name.
#include <gmock/gmock.h>

#include <limits>
#include <random>

#include "levelcheck/check.h"
#include "program/compile.h"
#include "program/level_bytes.h"

namespace k2k::test {
namespace {

using levelcheck::Check;
using levelcheck::ChunkNumber;
using levelcheck::Describe;
using levelcheck::Fault;
using levelcheck::LevelView;
using levelcheck::ReadLevel;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr auto NoNumber = std::numeric_limits<float>::quiet_NaN();

// A level with two rooms, a smooth pillar, a detail block and light; compiled once for all tests.
const std::vector<uint8_t>& SoundBytes() {
    static const std::vector<uint8_t> bytes = [] {
        const InTempDir folder;
        WriteFile("level.$$M", SmallMap()
                                   .AddRoom({0, 0, 0}, {512, 256, 128})
                                   .Add({{240, 0, 0}, {256, 96, 128}})
                                   .Add({{240, 160, 0}, {256, 256, 128}})
                                   .Add({{32, 32, 0}, {64, 64, 96}, "PILLAR", BlockFlags::Detail})
                                   .Start({128, 128, 40})
                                   .Light({64, 128, 64}, {200, 100, 50}, 300, 1)
                                   .Entity("6 walk\n0\n2\n1 2 3\n4 5 6")
                                   .Sun()
                                   .Text());
        WriteFile("textures.$$w", SmallTextures());
        WriteFile("palette.raw", std::string(768, 'x'));
        return CompileLevel("level").level.bytes;
    }();
    return bytes;
}

class Damage : public ::testing::Test {
  protected:
    Damage() : bytes_(SoundBytes()), sound_(ReadLevel(bytes_)) {}

    // Where a row's field stands in the file.
    size_t At(ChunkNumber chunk, size_t rowSize, size_t row, size_t field) const {
        return sound_.chunks[chunk].offset + row * rowSize + field;
    }
    size_t At(ChunkNumber chunk, size_t field) const { return At(chunk, 0, 0, field); }

    template <typename T>
    void Set(size_t at, T value) {
        ASSERT_LE(at + sizeof(T), bytes_.size());
        std::memcpy(bytes_.data() + at, &value, sizeof(T));
    }
    void SetChunk(int chunk, uint32_t offset, uint32_t size) {
        const size_t entry = 4 + 8 * static_cast<size_t>(chunk);
        Set(entry, offset);
        Set(entry + 4, size);
    }

    // The damage so far, and nothing else, makes this fault; forgets the damage.
    void ExpectFault(const std::string& kind) {
        const std::vector<Fault> faults = Check(ReadLevel(bytes_));
        const bool found = std::any_of(faults.begin(), faults.end(),
                                       [&](const Fault& fault) { return fault.kind == kind && !fault.tolerated; });
        EXPECT_TRUE(found) << kind << " not in:\n" << Describe(faults);
        bytes_ = SoundBytes();
    }

    std::vector<uint8_t> bytes_;
    LevelView sound_;
};

constexpr uint32_t FarAway = 0x7FFFFF00;
constexpr size_t EdgeRow = 8, PlaneRow = 20, SurfaceRow = 24, RegionRow = 36, NodeRow = 40, HullRow = 16,
                 VertexRow = 12, TexinfoRow = 64;

TEST_F(Damage, OfNoKindIsSound) {
    EXPECT_THAT(Check(sound_), IsEmpty()) << Describe(Check(sound_));
    for (const ChunkNumber chunk : {levelcheck::ChunkVis, levelcheck::ChunkPages, levelcheck::ChunkHulls})
        EXPECT_GT(sound_.Chunk(chunk).size(), 0U);
}

TEST_F(Damage, OfTheHeader) {
    Set(0, 'X');
    ExpectFault("header: no level file");
    bytes_.resize(100);
    ExpectFault("header: no level file");
    for (const char version : {'4', '8'}) {
        Set(3, version);
        ExpectFault("version is none of 5, 6 and 7");
    }
    Set(3, '6');
    EXPECT_THAT(Check(ReadLevel(bytes_)), IsEmpty()) << "read as version 7";
}

TEST_F(Damage, OfTheChunkTable) {
    const auto vertices = sound_.chunks[levelcheck::ChunkVertices];
    SetChunk(levelcheck::ChunkVertices, vertices.offset, vertices.size + 4);
    ExpectFault("chunk 3: size " + std::to_string(vertices.size + 4) + " is no multiple of 12");
    SetChunk(levelcheck::ChunkVertices, vertices.offset, FarAway);
    ExpectFault("chunk 3: runs past the file's end");
    SetChunk(levelcheck::ChunkVertices, FarAway, vertices.size);
    ExpectFault("chunk 3: runs past the file's end");
    SetChunk(levelcheck::ChunkVertices, vertices.offset + 1, vertices.size);
    ExpectFault("chunk not on a multiple of 4");
    SetChunk(levelcheck::ChunkVertices, vertices.offset + 4, vertices.size);
    ExpectFault("chunk out of order, overlapping or behind a gap");
    SetChunk(levelcheck::ChunkMeshes, 400, 0);
    ExpectFault("empty chunk with an offset");
    SetChunk(levelcheck::ChunkInfo, sound_.chunks[levelcheck::ChunkInfo].offset, 156);
    ExpectFault("level info not of 160 bytes");
    SetChunk(18, 156, 4);
    ExpectFault("chunk 18 in use");
    const auto entities = sound_.chunks[levelcheck::ChunkEntities];
    bytes_.resize(entities.offset + 8);
    ExpectFault("chunk 15: runs past the file's end");
    SetChunk(levelcheck::ChunkEntities, entities.offset, entities.size - 2);
    bytes_.resize(entities.offset + entities.size - 2);
    ExpectFault("file shorter than its chunks and their padding");
}

TEST_F(Damage, OfIndices) {
    Set(At(levelcheck::ChunkEdges, EdgeRow, 3, 4), FarAway);
    ExpectFault("edge names no vertex");
    Set(At(levelcheck::ChunkSurfaceEdges, 0), FarAway);
    ExpectFault("surface edge names no edge");
    Set(At(levelcheck::ChunkSurfaceEdges, 0), 0);
    ExpectFault("surface edge names no edge");
    Set(At(levelcheck::ChunkSurfaceEdges, 0), std::numeric_limits<int32_t>::min());
    ExpectFault("surface edge names no edge");
    Set(At(levelcheck::ChunkSurfaces, SurfaceRow, 1, 4), FarAway);
    ExpectFault("surface edge range");
    Set(At(levelcheck::ChunkSurfaces, SurfaceRow, 1, 8), int16_t{2});
    ExpectFault("surface edge range");
    Set(At(levelcheck::ChunkSurfaces, SurfaceRow, 1, 20), FarAway);
    ExpectFault("surface names no plane");
    Set(At(levelcheck::ChunkSurfaces, SurfaceRow, 1, 2), uint16_t{2});
    ExpectFault("surface side not 0 or 1");
    Set(At(levelcheck::ChunkSurfaces, SurfaceRow, 1, 10), int16_t{-2});
    ExpectFault("surface names no texinfo");
    Set(At(levelcheck::ChunkRegionSurfaces, 0), FarAway);
    ExpectFault("region list entry");
    Set(At(levelcheck::ChunkRegions, RegionRow, 1, 28), FarAway);
    ExpectFault("region surface range");
    Set(At(levelcheck::ChunkNodes, NodeRow, 0, 0), FarAway);
    ExpectFault("node names no plane");
    Set(At(levelcheck::ChunkNodes, NodeRow, 0, 36), FarAway);
    ExpectFault("node surface range");
    Set(At(levelcheck::ChunkHulls, HullRow, 0, 0), FarAway);
    ExpectFault("hull node names no plane");
}

TEST_F(Damage, OfEdges) {
    const size_t first = At(levelcheck::ChunkSurfaceEdges, 0);
    Set(first, -sound_.surfaceEdges[0]);
    ExpectFault("ring does not close");
    Set(first, sound_.surfaceEdges[1]);
    ExpectFault("edge walked twice in one direction");
    Set(first, sound_.surfaceEdges[1]);
    ExpectFault("edge not used by the surface that made it");
}

TEST_F(Damage, OfPlacesInSpace) {
    Set(At(levelcheck::ChunkVertices, VertexRow, 2, 8), NoNumber);
    ExpectFault("vertex not finite");
    Set(At(levelcheck::ChunkVertices, VertexRow, 2, 8), 300.0F);
    ExpectFault("vertex far off its surface's plane");
    Set(At(levelcheck::ChunkPlanes, PlaneRow, 1, 0), 0.5F);
    ExpectFault("plane normal not of unit length");
    Set(At(levelcheck::ChunkPlanes, PlaneRow, 1, 12), NoNumber);
    ExpectFault("plane normal not of unit length");
}

TEST_F(Damage, ThatTolerancesExplainIsToldAndNoFault) {
    Set(At(levelcheck::ChunkVertices, VertexRow, 2, 8), sound_.vertices[2].z + 0.5F);
    const std::vector<Fault> faults = Check(ReadLevel(bytes_));
    EXPECT_TRUE(levelcheck::IsSound(faults));
    EXPECT_THAT(Describe(faults), HasSubstr("note: vertex off its surface's plane, 2 times, first: surface "));
}

TEST_F(Damage, OfTheTree) {
    Set(At(levelcheck::ChunkRegions, 0), -256);
    ExpectFault("row 0 is not the shared solid region");
    Set(At(levelcheck::ChunkRegions, RegionRow, 1, 0), -99);
    ExpectFault("region with no contents word");
    const size_t rootChildren = At(levelcheck::ChunkNodes, 24);
    Set(rootChildren, FarAway);
    ExpectFault("child names no node");
    Set(rootChildren, -1000);
    ExpectFault("child names no region");
    Set(rootChildren, 0);
    ExpectFault("node reached twice");
    Set(rootChildren, -1), Set(rootChildren + 4, -1);
    ExpectFault("node not reached from the root");
    Set(rootChildren, -1), Set(rootChildren + 4, -1);
    ExpectFault("region not reached exactly once");
    Set(At(levelcheck::ChunkInfo, 148), 77);
    ExpectFault("region count of the level info");
    Set(At(levelcheck::ChunkInfo, 36), FarAway);
    ExpectFault("child names no node");
}

TEST_F(Damage, OfTheHulls) {
    const size_t row = At(levelcheck::ChunkHulls, HullRow, static_cast<size_t>(sound_.info.headNodes[1]), 8);
    Set(row, -77);
    ExpectFault("hull leaf with no contents word");
    Set(row, FarAway);
    ExpectFault("child names no hull node");
    Set(row, sound_.info.headNodes[1]);
    ExpectFault("hull node reached twice");
    Set(row, FarAway);
    ExpectFault("hull child out of range");
    Set(At(levelcheck::ChunkInfo, 40), FarAway);
    ExpectFault("child names no hull node");
}

TEST_F(Damage, OfVisibility) {
    const size_t offset = At(levelcheck::ChunkRegions, RegionRow, 1, 4);
    Set(offset, FarAway);
    ExpectFault("visibility row missing or damaged");
    Set(offset, -1);
    ExpectFault("visibility row missing or damaged");
    // The rows of a level of so few regions are one byte each.
    ASSERT_LT(sound_.regions.size(), 8U);
    const size_t row = At(levelcheck::ChunkVis, static_cast<size_t>(sound_.regions[1].visOffset));
    Set(row, static_cast<uint8_t>(bytes_[row] & ~1U));
    ExpectFault("region does not see itself");
    Set(row, static_cast<uint8_t>(bytes_[row] | 0x80U));
    ExpectFault("visibility bit beyond the last region");
    SetChunk(levelcheck::ChunkVis, 0, 0);
    ExpectFault("visibility offset without visibility data");
}

TEST_F(Damage, OfLightmaps) {
    const auto lit = [&](size_t from) {
        while (!IsLit(sound_.surfaces[from])) from++;
        return from;
    };
    const size_t first = lit(0), second = lit(first + 1);
    const size_t place = At(levelcheck::ChunkSurfaces, SurfaceRow, second, 12);
    Set(place + 2, sound_.surfaces[first].lightX), Set(place + 3, sound_.surfaces[first].lightY);
    ExpectFault("lightmaps overlap");
    Set(place + 2, uint8_t{250});
    ExpectFault("lightmap outside its page");
    Set(place + 2, uint8_t{0});
    ExpectFault("lightmap outside its page");
    Set(place + 1, uint8_t{9});
    ExpectFault("surface names no lightmap page");
    Set(place, uint8_t{33});
    ExpectFault("lightmap of an unknown texel size");
}

TEST_F(Damage, OfEntities) {
    const size_t chunk = At(levelcheck::ChunkEntities, 0);
    const uint32_t size = sound_.chunks[levelcheck::ChunkEntities].size;
    const auto secondRecord = ValueIn<uint32_t>(bytes_, chunk + 8);
    SetChunk(levelcheck::ChunkEntities, static_cast<uint32_t>(chunk), 4);
    ExpectFault("entity chunk shorter than its smallest table");
    Set(chunk, FarAway);
    ExpectFault("entity table runs past the chunk");
    Set(chunk + 8, size);
    ExpectFault("entity record outside the chunk");
    Set(chunk + 8, uint32_t{4});
    ExpectFault("entity record outside the chunk");
    Set(chunk + 8, secondRecord + 4);
    ExpectFault("entity records not back to back");
    Set(chunk + secondRecord, uint32_t{9});
    ExpectFault("entity record of an unknown type");
    SetChunk(levelcheck::ChunkEntities, static_cast<uint32_t>(chunk), size - 4);
    ExpectFault("entity record runs past the chunk");
    Set(chunk, ValueIn<uint32_t>(bytes_, chunk) - 1);
    ExpectFault("bytes behind the last entity record");
}

TEST_F(Damage, OfTextures) {
    const size_t blob = At(levelcheck::ChunkTextures, 0);
    Set(blob, FarAway);
    ExpectFault("texture table runs past the blob");
    Set(blob + 4, FarAway);
    ExpectFault("texture image outside the blob");
    Set(At(levelcheck::ChunkTexinfos, TexinfoRow, 1, 32), FarAway);
    ExpectFault("texinfo names no texture");
    Set(At(levelcheck::ChunkTexinfos, TexinfoRow, 1, 40), uint8_t{1});
    ExpectFault("texinfo's fixed bytes");
    Set(At(levelcheck::ChunkTexinfos, TexinfoRow, 1, 63), 'x');
    ExpectFault("texinfo's fixed bytes");
    Set(At(levelcheck::ChunkPalette, 3), uint8_t{1});
    ExpectFault("palette lump's head not zero");
    SetChunk(levelcheck::ChunkPalette, sound_.chunks[levelcheck::ChunkPalette].offset, 768);
    ExpectFault("palette lump not of 784 bytes");
}

// Whatever stands in the file, the checker reads nothing outside of it and ends.
TEST_F(Damage, OfAnyKindIsSurvived) {
    std::mt19937 random(1);
    const size_t tables = sound_.chunks[levelcheck::ChunkPages].offset;
    for (int i = 0; i < 400; ++i) {
        for (uint32_t flips = random() % 4 + 1; flips > 0; --flips)
            bytes_[random() % tables] ^= static_cast<uint8_t>(random());
        const size_t chunk = random() % 18;
        if (i % 4 == 0) Set(4 + 8 * chunk + 4 * (random() % 2), static_cast<uint32_t>(random() % bytes_.size()));
        (void)Check(ReadLevel(bytes_));
        bytes_ = SoundBytes();
    }
    for (int i = 0; i < 100; ++i) {
        const auto length = static_cast<std::ptrdiff_t>(random() % bytes_.size());
        (void)Check(ReadLevel({bytes_.begin(), bytes_.begin() + length}));
    }
}

// A level file whose surfaces, or triangles of one surface, all name one long list of edges.
std::vector<uint8_t> LevelOfLongRings(size_t surfaces, size_t triangles) {
    constexpr size_t Ring = 32767;
    std::vector<uint8_t> bytes(levelcheck::HeaderSize);
    std::memcpy(bytes.data(), "KLV7", 4);
    const auto addChunk = [&](ChunkNumber chunk, const std::vector<uint8_t>& rows) {
        const std::array place{static_cast<uint32_t>(bytes.size()), static_cast<uint32_t>(rows.size())};
        std::memcpy(bytes.data() + 4 + 8 * static_cast<size_t>(chunk), place.data(), sizeof(place));
        bytes.insert(bytes.end(), rows.begin(), rows.end());
    };
    addChunk(levelcheck::ChunkSurfaceEdges, std::vector<uint8_t>(Ring * 4));
    std::vector<uint8_t> rows(surfaces * SurfaceRow);
    constexpr auto edgeCount = static_cast<int16_t>(Ring);
    for (size_t i = 0; i < surfaces; i++) std::memcpy(rows.data() + i * SurfaceRow + 8, &edgeCount, 2);
    addChunk(levelcheck::ChunkSurfaces, rows);
    if (triangles == 0) return bytes;
    std::vector<uint8_t> mesh(44 + 12 * triangles);
    const auto count = static_cast<uint32_t>(triangles);
    mesh[0] = 1;
    std::memcpy(mesh.data() + 36, &count, 4);
    addChunk(levelcheck::ChunkMeshes, mesh);
    return bytes;
}

TEST(EndlessLevels, SurfacesThatShareLongListsOfEdgesAreNotRead) {
    EXPECT_EQ(ReadLevel(LevelOfLongRings(20, 0)).surfaces.size(), 20U);
    const LevelView level = ReadLevel(LevelOfLongRings(40, 0));
    EXPECT_THAT(level.broken, Contains("chunk 7: the surfaces share their edges"));
    EXPECT_THAT(level.surfaces, IsEmpty());
}

TEST(EndlessLevels, TrianglesOfSurfacesOfManyEdgesAreNotRead) {
    EXPECT_EQ(ReadLevel(LevelOfLongRings(1, 1000)).meshes.at(0).triangles.size(), 1000U);
    const LevelView level = ReadLevel(LevelOfLongRings(1, 9000));
    EXPECT_THAT(level.broken, Contains("chunk 17: triangles beyond measure of surfaces of many edges"));
    EXPECT_THAT(level.meshes, IsEmpty());
}

// The middle of a level's diagonal lies on it.
TEST(EndlessLevels, TheSearchForJunctionsGoesAlongTheEdge) {
    LevelView level;
    level.version = '7';
    level.vertices = {{-16000, -16000, -16000}, {16000, 16000, 16000}, {0, 0, 0}};
    level.edges = {{0, 0}, {0, 1}, {1, 0}};
    const auto countOf = [&](uint64_t budget, const std::string& kind) -> size_t {
        for (const Fault& fault : Check(level, {.junctionBudget = budget})) {
            if (fault.kind == kind) return fault.tolerated ? fault.count : 0;
        }
        return 0;
    };
    EXPECT_EQ(countOf(20000, "edge with a vertex on it (T-junction)"), 2U);
    EXPECT_EQ(countOf(20000, "search for T-junctions ended early"), 0U);
    EXPECT_EQ(countOf(100, "edge with a vertex on it (T-junction)"), 0U);
    EXPECT_EQ(countOf(100, "search for T-junctions ended early"), 1U);
}

TEST(EndlessLevels, LightmapsAllInOnePlaceAreToldOnceEach) {
    LevelView level = ReadLevel(SoundBytes());
    level.surfaces.assign(20000, *std::find_if(level.surfaces.begin(), level.surfaces.end(), IsLit));
    const std::vector<Fault> faults = Check(level);
    const auto overlaps =
        std::find_if(faults.begin(), faults.end(), [](const Fault& f) { return f.kind == "lightmaps overlap"; });
    ASSERT_NE(overlaps, faults.end());
    EXPECT_EQ(overlaps->count, 19999U);
    EXPECT_EQ(overlaps->first, "surface 0 and 1");
}

}  // namespace
}  // namespace k2k::test
