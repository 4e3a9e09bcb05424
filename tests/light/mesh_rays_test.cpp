// Rays and lighting on levels without a tree, over the triangles of their meshes.
#include <gtest/gtest.h>

#include "light/direct_lighting.h"
#include "light/light_face.h"
#include "light/phong_table.h"
#include "light/rays.h"
#include "test_level.h"

namespace k2k::test {
namespace {

class MeshRays : public LightTest {
  protected:
    MeshRays() { Options().mesh = true; }

    // One mesh of two triangles, the square from (-32, -32) to (32, 32) at the height z, for a surface.
    static void AddSquare(float z, int32_t surface, uint32_t flags = 0) {
        CMesh mesh;
        mesh.mins = {-32, -32, z};
        mesh.maxs = {32, 32, z};
        for (const auto& [x, y] : std::array<std::array<float, 2>, 4>{{{-32, -32}, {-32, 32}, {32, 32}, {32, -32}}}) {
            MeshVertex vertex;
            vertex.position = {x, y, z};
            mesh.vertices.push_back(vertex);
        }
        MeshMaterial material;
        material.flags = flags;
        mesh.materials.push_back(material);
        MeshTriangle triangle;
        triangle.surface = surface;
        triangle.vertices = {0, 1, 2};
        mesh.triangles.push_back(triangle);
        triangle.vertices = {0, 2, 3};
        mesh.triangles.push_back(triangle);
        Geometry().meshes.push_back(mesh);
    }

    // Which of the two ways across the square is blocked: only one is, as rays are stopped by one side.
    static bool BlockedUp() { return IsShadowed({1, 2, 0}, {1, 2, 100}); }
    static bool BlockedDown() { return IsShadowed({1, 2, 100}, {1, 2, 0}); }
};

TEST_F(MeshRays, ATriangleStopsRaysFromOneSideOnly) {
    TestLevel level;
    AddSquare(50, 7);
    const RayStructures rays;
    EXPECT_NE(BlockedUp(), BlockedDown());
    EXPECT_FALSE(IsShadowed({40, 0, 0}, {40, 0, 100}));
    EXPECT_FALSE(IsShadowed({40, 0, 100}, {40, 0, 0}));
}

TEST_F(MeshRays, TheHitAndTheLengthAreTold) {
    TestLevel level;
    AddSquare(50, 7);
    const RayStructures rays;
    const bool up = BlockedUp();
    const Vec3 low{1, 2, 0}, high{1, 2, 100};
    Vec3 hit;
    EXPECT_EQ(TraceShadow(up ? low : high, up ? high : low, hit, -1), RayBlocked);
    EXPECT_EQ(hit, (Vec3{1, 2, 50}));
    EXPECT_EQ(TraceShadow(up ? high : low, up ? low : high, hit, -1), 100);
}

TEST_F(MeshRays, ARayThatEndsOnATriangleIsClearWhenItsDistanceRoundsToTheLength) {
    // The triangle is 71.7286524 away, the ray 71.7286530 long: in 32 bits, as hits are stored, that is the same.
    TestLevel level;
    AddSquare(50, 7);
    const RayStructures rays;
    const Vec3 end{-12, 3, 50};
    EXPECT_FALSE(IsShadowed({-5, 17, 120}, end));
    EXPECT_FALSE(IsShadowed({-5, 17, -20}, end));
    EXPECT_NE(IsShadowed({-5, 17, 120}, {-12, 3, 49.99F}), IsShadowed({-5, 17, -20}, {-12, 3, 50.01F}));
}

TEST_F(MeshRays, TheExcludedSurfaceDoesNotBlock) {
    TestLevel level;
    AddSquare(50, 7);
    const RayStructures rays;
    const bool up = BlockedUp();
    const Vec3 low{1, 2, 0}, high{1, 2, 100};
    EXPECT_FALSE(IsShadowed(up ? low : high, up ? high : low, 7));
    EXPECT_TRUE(IsShadowed(up ? low : high, up ? high : low, 8));
}

TEST_F(MeshRays, WithoutTrianglesEverythingIsClear) {
    TestLevel level;
    AddSquare(50, 7, TextureSky);
    const RayStructures rays;
    Vec3 hit;
    EXPECT_EQ(TraceShadow({0, 0, 0}, {0, 0, 100}, hit, -1), 100);
    EXPECT_EQ(TraceShadow({0, 0, 100}, {0, 0, 0}, hit, -1), 100);
}

TEST_F(MeshRays, ARayWithoutLengthIsClear) {
    TestLevel level;
    AddSquare(50, 7);
    const RayStructures rays;
    Vec3 hit;
    EXPECT_EQ(TraceShadow({0, 0, 50}, {0, 0, 50}, hit, -1), 0);
}

TEST_F(MeshRays, ALevelWithoutNodesIsLit) {
    TestLevel level;
    const uint32_t floor = level.Quad(2, 0, true, {-64, -64, 0}, {64, 64, 0});
    AddSquare(50, 7);
    level.Light({0, 0, 100}, 400, {50, 50, 50});
    level.Light({0, 0, 20}, 400, {0, 20, 0});
    const RayStructures rays;
    GenerateLightmaps();
    EXPECT_EQ(Textures().pages.size(), 2U);
    const SurfaceRecord& surface = Geometry().surfaces[floor];
    EXPECT_EQ(surface.lightX, 255);
    EXPECT_EQ(surface.meshX(), 1);
    EXPECT_EQ(surface.lightShift, 4);
}

TEST_F(MeshRays, AmbientDoesNotMarkAFaceBeforeItsResolutionIsKnown) {
    // On a mesh level the coarse store step is left out; the result is the same block.
    TestLevel level;
    const uint32_t floor = level.Quad(2, 0, true, {-64, -64, 0}, {64, 64, 0});
    Options().ambrgb = {10, 10, 10};
    const RayStructures rays;
    GenerateLightmaps();
    EXPECT_EQ(Geometry().surfaces[floor].lightShift, 4);
}

}  // namespace
}  // namespace k2k::test
