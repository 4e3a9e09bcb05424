#include "levelfile/mesh.h"

#include <gmock/gmock.h>

#include <limits>
#include <random>

#include "levelfile/bytes.h"
#include "levelfile/entity_data.h"
#include "levelfile/geometry_data.h"
#include "levelfile/level_state.h"
#include "levelfile/mesh_chunk.h"
#include "levelfile/texture_data.h"

namespace k2k {
namespace {

using namespace test;
using testing::ElementsAre;

constexpr const char* InvalidFormat = " \nInvalid KLV file format";

class Mesh : public LevelState {
  protected:
    Mesh() {
        Options().mesh = true;
        Geometry().edges.resize(1);
        Texinfo texinfo;
        texinfo.vecS = {1, 0, 0};
        texinfo.shiftS = 8;
        texinfo.vecT = {0, -1, 0};
        texinfo.shiftT = 4;
        Textures().AddTexinfo(texinfo);
        Textures().blob = Bytes().U32(1).I32(8).Zeros(16).U32(64).U32(32).get();
    }

    // A surface with these corners on a plane of that type, every edge walked forwards.
    static int32_t AddSurface(const std::vector<Vec3>& corners, int32_t planeType = 2, const Vec3& normal = {0, 0, 1}) {
        CGeometryData& geometry = Geometry();
        SurfaceRecord surface;
        surface.firstEdge = static_cast<uint32_t>(geometry.surfaceEdges.size());
        surface.edgeCount = static_cast<int16_t>(corners.size());
        surface.texInfoId = 1;
        surface.planeNumber = static_cast<uint32_t>(geometry.planes.size());
        geometry.planes.push_back({normal, 0, planeType});
        const auto first = static_cast<uint32_t>(geometry.vertices.size());
        for (uint32_t i = 0; i < corners.size(); ++i) {
            geometry.vertices.push_back(corners[i]);
            geometry.surfaceEdges.push_back(static_cast<int32_t>(geometry.edges.size()));
            geometry.edges.push_back({first + i, first + (i + 1) % static_cast<uint32_t>(corners.size())});
        }
        geometry.surfaces.push_back(surface);
        return static_cast<int32_t>(geometry.surfaces.size()) - 1;
    }
    static int32_t AddSquare(float x = 0) {
        return AddSurface({{x, 0, 0}, {x, 64, 0}, {x + 64, 64, 0}, {x + 64, 0, 0}});
    }

    static CMesh Prepared(std::initializer_list<int32_t> surfaces) {
        CMesh mesh;
        for (const int32_t surface : surfaces) AddMeshSurface(mesh, surface);
        PrepareMesh(mesh);
        return mesh;
    }
    static SurfaceRecord& Surface(int32_t number) { return Geometry().surfaces[static_cast<size_t>(number)]; }
};

// ---- Vertices

TEST_F(Mesh, AVertexEqualInAllSevenFloatsKeepsItsNumber) {
    CMesh mesh;
    const MeshVertex vertex{{1, 2, 3}, 4, 5, 6, 7};
    EXPECT_EQ(AddMeshVertex(mesh, vertex), 0);
    EXPECT_EQ(AddMeshVertex(mesh, vertex), 0);
    for (float MeshVertex::*coordinate : {&MeshVertex::u, &MeshVertex::v, &MeshVertex::s, &MeshVertex::t}) {
        MeshVertex other = vertex;
        other.*coordinate += 1;
        const auto next = static_cast<int32_t>(mesh.vertices.size());
        EXPECT_EQ(AddMeshVertex(mesh, other), next);
        EXPECT_EQ(AddMeshVertex(mesh, other), next);
    }
}

TEST_F(Mesh, VerticesOfABucketAreChained) {
    CMesh mesh;
    AddMeshVertex(mesh, {{10, 0, 0}});
    AddMeshVertex(mesh, {{99, 0, 0}});
    AddMeshVertex(mesh, {{100, 0, 0}});
    AddMeshVertex(mesh, {{0, 20, 0}});
    EXPECT_THAT(mesh.vertexLinks, ElementsAre(1, 3, -1, -1));
    EXPECT_EQ(mesh.vertexBuckets.at(0), 0);
    EXPECT_EQ(mesh.vertexBuckets.at(1), 2);
}

TEST_F(Mesh, VerticesAreFoundAsByALinearSearch) {
    std::mt19937 random(4);
    CMesh mesh;
    std::vector<MeshVertex> plain;
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    constexpr float infinity = std::numeric_limits<float>::infinity();
    constexpr float floats[] = {0.0F, -0.0F, 1.0F, 150.0F, -150.0F, infinity, nan};
    for (int i = 0; i < 5000; ++i) {
        const auto pick = [&] { return floats[random() % 30 == 0 ? 5 + random() % 2 : random() % 5]; };
        const MeshVertex vertex{{pick(), pick(), pick()}, pick(), 0, pick(), 0};
        const auto same = [&](const MeshVertex& other) {
            return vertex.position[0] == other.position[0] && vertex.position[1] == other.position[1] &&
                   vertex.position[2] == other.position[2] && vertex.u == other.u && vertex.s == other.s;
        };
        auto found = std::find_if(plain.begin(), plain.end(), same);
        if (found == plain.end()) found = plain.insert(plain.end(), vertex);
        ASSERT_EQ(AddMeshVertex(mesh, vertex), found - plain.begin());
    }
}

TEST_F(Mesh, MoreVerticesThan16BitsCanNumberAreFatal) {
    CMesh mesh;
    for (int i = 0; i < 32767; ++i) AddMeshVertex(mesh, {{static_cast<float>(i) * 100, 0, 0}});
    EXPECT_EQ(AddMeshVertex(mesh, {{100, 0, 0}}), 1);
    ExpectFatal([&] { AddMeshVertex(mesh, {{50, 0, 0}}); }, "E015: Map size - too many vertices");
    EXPECT_EQ(mesh.vertices.size(), 32767U);
}

// ---- Triangles

TEST_F(Mesh, ASurfaceOfThreeEdgesGivesOneTriangle) {
    const CMesh mesh = Prepared({AddSurface({{0, 0, 0}, {0, 64, 0}, {64, 0, 0}})});
    ASSERT_EQ(mesh.triangles.size(), 1U);
    EXPECT_THAT(mesh.triangles[0].vertices, ElementsAre(0, 1, 2));
    EXPECT_EQ(mesh.vertices[1].position, (Vec3{0, 64, 0}));
}

TEST_F(Mesh, ASurfaceOfFiveEdgesGivesThreeTrianglesThatShareTheFirstVertex) {
    const CMesh mesh = Prepared({AddSurface({{0, 0, 0}, {0, 64, 0}, {32, 96, 0}, {64, 64, 0}, {64, 0, 0}})});
    ASSERT_EQ(mesh.triangles.size(), 3U);
    EXPECT_THAT(mesh.triangles[0].vertices, ElementsAre(0, 1, 2));
    EXPECT_THAT(mesh.triangles[1].vertices, ElementsAre(0, 2, 3));
    EXPECT_THAT(mesh.triangles[2].vertices, ElementsAre(0, 3, 4));
}

TEST_F(Mesh, TheRingFollowsTheSignsOfTheEdges) {
    const std::vector<Vec3> corners{{0, 0, 0}, {0, 64, 0}, {64, 64, 0}, {64, 0, 0}};
    const int32_t forwards = AddSurface(corners);
    const int32_t mixed = AddSurface(corners);
    // Turn every other edge of the second surface round: the walk is the same.
    for (size_t i = 4; i < 8; i += 2) {
        int32_t& edge = Geometry().surfaceEdges[i];
        std::swap(Geometry().edges[static_cast<size_t>(edge)].first,
                  Geometry().edges[static_cast<size_t>(edge)].second);
        edge = -edge;
    }
    const CMesh mesh = Prepared({forwards, mixed});
    EXPECT_EQ(mesh.vertices.size(), 4U);
    EXPECT_EQ(mesh.triangles[2].vertices, mesh.triangles[0].vertices);
    EXPECT_EQ(mesh.triangles[3].vertices, mesh.triangles[1].vertices);
}

TEST_F(Mesh, SurfacesComeInRisingOrder) {
    const int32_t first = AddSquare(), second = AddSquare(1000);
    const CMesh mesh = Prepared({second, first});
    EXPECT_EQ(mesh.triangles[0].surface, first);
    EXPECT_EQ(mesh.triangles[2].surface, second);
}

TEST_F(Mesh, ASurfaceWithoutEdgesHasAMaterialAndNoTriangles) {
    const CMesh mesh = Prepared({AddSurface({})});
    EXPECT_EQ(mesh.materials.size(), 1U);
    EXPECT_TRUE(mesh.triangles.empty());
}

// ---- Texture and lightmap coordinates

TEST_F(Mesh, TextureCoordinatesCountInImageSizes) {
    const CMesh mesh = Prepared({AddSquare()});
    EXPECT_EQ(mesh.vertices[2].u, (64 + 8) / 64.0F);
    EXPECT_EQ(mesh.vertices[2].v, (-64 + 4) / 32.0F);
}

TEST_F(Mesh, ATextureWithoutAnImageCountsAs1x1) {
    Textures().blob.clear();
    const CMesh mesh = Prepared({AddSquare()});
    EXPECT_EQ(mesh.vertices[2].u, 72.0F);
}

TEST_F(Mesh, BeforeLightingTheLightmapCoordinatesAreZero) {
    const int32_t square = AddSquare();
    Surface(square).lightOffset = 0xFFFFFFFF;
    const CMesh mesh = Prepared({square});
    EXPECT_EQ(mesh.vertices[2].s, 0.0F);
    EXPECT_EQ(mesh.vertices[2].t, 0.0F);
}

TEST_F(Mesh, ASurfaceOnTheBlankPageSamplesOneTexel) {
    const int32_t square = AddSquare();
    Surface(square).lightShift = NoLightmapShift;
    const CMesh mesh = Prepared({square});
    for (const MeshVertex& vertex : mesh.vertices) {
        EXPECT_EQ(vertex.s, 1.5F / 256);
        EXPECT_EQ(vertex.t, 1.5F / 256);
    }
}

TEST_F(Mesh, ALitSurfacesCornersLieOnItsPartOfThePage) {
    const int32_t square = AddSquare();
    Surface(square).lightShift = 4;  // 16 units a texel
    Surface(square).lightPage = 1;
    Surface(square).SetMeshPosition(1, 2);
    const CMesh mesh = Prepared({square});
    // The T axis is -y, so the square spans -64 to 0 on it.
    const auto coordinate = [](double fromFirstTexel, double texels) {
        const double inverse = 1.0 / (256 * 16);
        return static_cast<float>(((1 - inverse) * (fromFirstTexel + texels * 16) + 8) * inverse);
    };
    EXPECT_EQ(mesh.vertices[0].s, coordinate(0, 1));
    EXPECT_EQ(mesh.vertices[0].t, coordinate(64, 2));
    EXPECT_EQ(mesh.vertices[2].s, coordinate(64, 1));
    EXPECT_EQ(mesh.vertices[2].t, coordinate(0, 2));
    EXPECT_NEAR(mesh.vertices[0].s, 1.5 / 256, 1e-6);  // the middle of the first texel, less a hair
}

TEST_F(Mesh, CoordinatesCountInSizesOfThePage) {
    const int32_t square = AddSquare();
    Surface(square).lightShift = 3;
    Surface(square).SetMeshPosition(5, 5);
    Textures().lightmapSizeCode = 1;
    const double inverse = 1.0 / (512 * 8);
    EXPECT_EQ(Prepared({square}).vertices[0].s, static_cast<float>(((1 - inverse) * (5 * 8) + 4) * inverse));
}

TEST_F(Mesh, TheFirstTexelIsThatOfTheSmallestCorner) {
    const int32_t square = AddSquare(-40);  // floor(-40 / 16) * 16 = -48
    Surface(square).lightShift = 4;
    Surface(square).SetMeshPosition(1, 1);
    const double inverse = 1.0 / 4096;
    EXPECT_EQ(Prepared({square}).vertices[0].s, static_cast<float>(((1 - inverse) * (8 + 16) + 8) * inverse));
}

TEST_F(Mesh, TheFirstTexelIsThatOfTheLightmapWhoseExtentsHave32Bits) {
    Options().litres = 0.4F;
    const int32_t square = AddSquare(-40);
    Surface(square).lightShift = 4;
    Surface(square).SetMeshPosition(1, 1);
    const double smallest = -40 * double{0.4F};  // a hair below -16, which it is in 32 bits
    ASSERT_LT(smallest, -16);
    const double inverse = 1.0 / 4096;
    EXPECT_EQ(Prepared({square}).vertices[0].s,
              static_cast<float>(((1 - inverse) * (smallest + 16 + 16) + 8) * inverse));
}

TEST_F(Mesh, AxesThatCannotBeFoundMakeTheSurfaceFlat) {
    const int32_t square = AddSurface({{0, 0, 0}, {0, 64, 0}, {64, 64, 0}}, 0, {0, 0, 1});
    Surface(square).lightShift = 4;
    Surface(square).SetMeshPosition(1, 1);
    EXPECT_EQ(Prepared({square}).vertices[0].s, 1.5F / 256);
}

TEST_F(Mesh, WithoutMeshModeTheTextureAxesServeTheLightmap) {
    Options().mesh = false;
    const int32_t square = AddSurface({{0, 0, 0}, {0, 64, 0}, {64, 64, 0}}, 0, {0, 0, 1});
    Surface(square).lightShift = 4;
    Surface(square).lightPage = 1;
    Surface(square).lightOffset = 0;
    const double inverse = 1.0 / 4096;
    // S is x + 8, which begins in the texel at 0.
    EXPECT_EQ(Prepared({square}).vertices[0].s, static_cast<float>(((1 - inverse) * 8 + 8) * inverse));
}

TEST_F(Mesh, TwoSurfacesWithOneCornerAndTwoLightmapPlacesMakeTwoVertices) {
    const int32_t first = AddSquare(), second = AddSquare();
    for (const int32_t square : {first, second}) Surface(square).lightShift = 4;
    Surface(first).SetMeshPosition(1, 1);
    Surface(second).SetMeshPosition(20, 1);
    EXPECT_EQ(Prepared({first, second}).vertices.size(), 8U);
    Surface(second).SetMeshPosition(1, 1);
    EXPECT_EQ(Prepared({first, second}).vertices.size(), 4U);
}

// ---- Materials

TEST_F(Mesh, AMaterialIsFilledFromSurfaceAndTexinfo) {
    Texinfo texinfo;
    texinfo.texture = 0x12345;
    texinfo.flags = 0x4001;
    texinfo.ambient = 255;
    texinfo.albedo = 100;
    texinfo.material = {'S', 'T', 'O', 'N', 'E'};
    const int32_t square = AddSquare();
    Surface(square).texInfoId = static_cast<int16_t>(Textures().AddTexinfo(texinfo));
    Surface(square).lightPage = 3;
    const CMesh mesh = Prepared({square});
    const MeshMaterial expected{0x2345, 3, 2, -1.0F, 100.0F, 0x4001};
    EXPECT_EQ(mesh.materials.at(0), expected);
}

TEST_F(Mesh, AnUndefinedMaterialNameSharesWithAnEmptyOne) {
    const int32_t empty = AddSquare(), undefined = AddSquare(1000), named = AddSquare(2000);
    Texinfo texinfo = Textures().texinfos[1];
    texinfo.material = {'N', 'd', 'E', 'f'};
    Surface(undefined).texInfoId = static_cast<int16_t>(Textures().AddTexinfo(texinfo));
    texinfo.material = {'W', 'O', 'O', 'D'};
    Surface(named).texInfoId = static_cast<int16_t>(Textures().AddTexinfo(texinfo));
    const CMesh mesh = Prepared({empty, undefined, named});
    ASSERT_EQ(mesh.materials.size(), 2U);
    EXPECT_EQ(mesh.materials[0].texinfo, 0);
    EXPECT_EQ(mesh.materials[1].texinfo, 3);
    EXPECT_EQ(mesh.triangles[2].material, 0);
    EXPECT_EQ(mesh.triangles[4].material, 1);
}

TEST_F(Mesh, MoreMaterialsThan16BitsCanNumberAreFatal) {
    CMesh mesh;
    mesh.materials.resize(MaxMeshMaterials);
    EXPECT_EQ(AddMeshMaterial(mesh, {}), 0);
    ExpectFatal([&] { AddMeshMaterial(mesh, {.texture = 1}); }, "E020: Texture size overrun");
}

// ---- Preparing

TEST_F(Mesh, APreparedMeshIsLeftAlone) {
    CMesh mesh;
    mesh.prepared = true;
    AddMeshSurface(mesh, AddSquare());
    PrepareMesh(mesh);
    EXPECT_TRUE(mesh.triangles.empty());
}

TEST_F(Mesh, ATableNumberOutsideItsTableIsFatal) {
    const auto expectInvalid = [&](auto change) {
        const int32_t square = AddSquare();
        change(Surface(square), Geometry());
        ExpectFatal([&] { Prepared({square}); }, InvalidFormat);
    };
    expectInvalid([](SurfaceRecord& surface, CGeometryData&) { surface.firstEdge = 0xFFFFFFFF; });
    expectInvalid([](SurfaceRecord& surface, CGeometryData&) { surface.planeNumber = 1000; });
    expectInvalid([](SurfaceRecord& surface, CGeometryData&) { surface.texInfoId = 1000; });
    expectInvalid([](SurfaceRecord& surface, CGeometryData& geometry) {
        geometry.surfaceEdges[surface.firstEdge] = std::numeric_limits<int32_t>::min();
    });
    expectInvalid(
        [](SurfaceRecord&, CGeometryData& geometry) { geometry.edges[geometry.edges.size() - 4].first = 1U << 31; });
    ExpectFatal([&] { Prepared({1000}); }, InvalidFormat);
}

// ---- The chunk

TEST_F(Mesh, AMeshStandsByteByByte) {
    CMesh mesh = Prepared({AddSurface({{0, 0, 0}, {0, 64, 0}, {64, 0, 0}})});
    mesh.mins = {1, 2, 3};
    mesh.maxs = {4, 5, 6};
    mesh.contents = -128;
    std::vector<CMesh> meshes{mesh};
    Bytes expected;
    expected.U32(1).Floats({1, 2, 3, 4, 5, 6}).I32(-128).U32(3).U32(1).U32(1);
    expected.Floats({0, 0, 0, 8 / 64.0F, 4 / 32.0F, 0, 0});
    expected.Floats({0, 64, 0, 8 / 64.0F, -60 / 32.0F, 0, 0});
    expected.Floats({64, 0, 0, 72 / 64.0F, 4 / 32.0F, 0, 0});
    expected.I16(0).I16(1).I16(2).I16(0).I32(0);
    expected.U16(0).U16(0).I32(0).F32(0).F32(50).U32(0);
    EXPECT_EQ(WriteMeshes(meshes), expected.get());
}

TEST_F(Mesh, AMeshThatWasReadIsRebuiltTheSameAtTheNextSave) {
    std::vector<CMesh> meshes(2);
    AddMeshSurface(meshes[0], AddSquare());
    AddMeshSurface(meshes[0], AddSquare(100));
    AddMeshSurface(meshes[1], AddSquare(200));
    meshes[1].contents = 4;
    const std::vector<uint8_t> chunk = WriteMeshes(meshes);
    std::vector<CMesh> read = ReadMeshes(chunk, 3);
    ASSERT_EQ(read.size(), 2U);
    EXPECT_FALSE(read[0].prepared);
    EXPECT_EQ(read[0].surfaces, meshes[0].surfaces);
    EXPECT_EQ(read[1].contents, 4);
    EXPECT_EQ(read[0].triangles.size(), 4U);
    EXPECT_EQ(read[0].vertices.size(), meshes[0].vertices.size());
    EXPECT_EQ(WriteMeshes(read), chunk);
}

TEST_F(Mesh, NewLightmapPlacesAreTakenAtTheNextSave) {
    std::vector<CMesh> meshes(1);
    AddMeshSurface(meshes[0], AddSquare());
    std::vector<CMesh> read = ReadMeshes(WriteMeshes(meshes), 1);
    Surface(0).lightShift = NoLightmapShift;
    WriteMeshes(read);
    EXPECT_EQ(read[0].vertices[0].s, 1.5F / 256);
}

TEST_F(Mesh, ReadingGoesByTheBytesAndNotByTheCount) {
    std::vector<CMesh> meshes(1);
    AddMeshSurface(meshes[0], AddSquare());
    std::vector<uint8_t> chunk = WriteMeshes(meshes);
    chunk[0] = 77;
    EXPECT_EQ(ReadMeshes(chunk, 1).size(), 1U);
}

TEST_F(Mesh, RowsThatOccurTwiceInAFileAreReadAsOne) {
    Bytes chunk;
    chunk.U32(1).Zeros(28).U32(4).U32(1).U32(2);
    chunk.Floats({1, 0, 0, 0, 0, 0, 0}).Floats({1, 0, 0, 0, 0, 0, 0});
    chunk.Floats({2, 0, 0, 0, 0, 0, 0}).Floats({3, 0, 0, 0, 0, 0, 0});
    chunk.I16(1).I16(2).I16(3).I16(1).I32(0);
    chunk.Zeros(40);
    const CMesh mesh = ReadMeshes(chunk.get(), 1).at(0);
    EXPECT_EQ(mesh.vertices.size(), 3U);
    EXPECT_EQ(mesh.materials.size(), 1U);
    EXPECT_THAT(mesh.triangles.at(0).vertices, ElementsAre(0, 1, 2));
    EXPECT_EQ(mesh.triangles[0].material, 0);
}

TEST_F(Mesh, AChunkThatEndsInAMeshIsFatal) {
    std::vector<CMesh> meshes(1);
    AddMeshSurface(meshes[0], AddSquare());
    const std::vector<uint8_t> chunk = WriteMeshes(meshes);
    for (size_t size = 1; size < chunk.size(); ++size) {
        if (size == 4) continue;  // no mesh at all
        ExpectFatal([&] { ReadMeshes(std::span(chunk).first(size), 1); }, InvalidFormat);
    }
}

TEST_F(Mesh, NumbersThatLeadOutsideAreFatal) {
    const auto chunk = [](int16_t vertex, int16_t material, int32_t surface, uint32_t vertexCount) {
        Bytes bytes;
        bytes.U32(1).Zeros(28).U32(vertexCount).U32(1).U32(1).Zeros(28);
        bytes.I16(0).I16(0).I16(vertex).I16(material).I32(surface).Zeros(20);
        return bytes.get();
    };
    EXPECT_EQ(ReadMeshes(chunk(0, 0, 0, 1), 1).size(), 1U);
    for (const auto& bytes : {chunk(1, 0, 0, 1), chunk(-1, 0, 0, 1), chunk(0, 1, 0, 1), chunk(0, -1, 0, 1),
                              chunk(0, 0, 1, 1), chunk(0, 0, -1, 1), chunk(0, 0, 0, 0xFFFFFFFF)}) {
        ExpectFatal([&] { ReadMeshes(bytes, 1); }, InvalidFormat);
    }
}

TEST_F(Mesh, MeshesGoThroughTheLevelFile) {
    EntityRecords().block = Bytes().U32(1).U32(8).U32(5).Zeros(20).U32(0).F32(7.01F).Zeros(28).get();
    Geometry().meshes.resize(1);
    AddMeshSurface(Geometry().meshes[0], AddSquare());
    const std::vector<uint8_t> first = Saved();
    ResetDataSetsForTest();
    Load(first);
    EXPECT_EQ(Geometry().meshes.size(), 1U);
    EXPECT_EQ(Saved(), first);
}

}  // namespace
}  // namespace k2k
