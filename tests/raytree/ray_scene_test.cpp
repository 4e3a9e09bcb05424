#include "raytree/ray_scene.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <set>

#include "driver/build_log.h"
#include "levelfile/geometry_data.h"
#include "raytree/last_blocker.h"
#include "raytree/ray_tree.h"
#include "solid/vectors.h"
#include "support/build_state.h"

namespace k2k {
namespace {

class RaySceneTest : public test::BuildState {
  protected:
    void SetUp() override {
        Geometry().Clear();
        ReleaseRayScene();
    }
    void TearDown() override {
        ReleaseRayScene();
        Geometry().Clear();
    }

    // A mesh of triangles given as nine numbers each, all of one material and surface `firstSurface` + i.
    CMesh& AddMesh(const std::vector<std::array<float, 9>>& triangles, uint32_t flags = 0, int32_t firstSurface = 0) {
        CMesh& mesh = Geometry().meshes.emplace_back();
        mesh.materials.push_back({.flags = flags});
        mesh.mins = {1e9F, 1e9F, 1e9F};
        mesh.maxs = {-1e9F, -1e9F, -1e9F};
        for (size_t i = 0; i < triangles.size(); i++) {
            MeshTriangle triangle;
            for (size_t c = 0; c < 3; c++) {
                MeshVertex vertex;
                vertex.position = {triangles[i][3 * c], triangles[i][3 * c + 1], triangles[i][3 * c + 2]};
                for (size_t k = 0; k < 3; k++) {
                    mesh.mins[k] = std::min(mesh.mins[k], vertex.position[k]);
                    mesh.maxs[k] = std::max(mesh.maxs[k], vertex.position[k]);
                }
                triangle.vertices[c] = static_cast<int16_t>(mesh.vertices.size());
                mesh.vertices.push_back(vertex);
            }
            triangle.surface = firstSurface + static_cast<int32_t>(i);
            mesh.triangles.push_back(triangle);
        }
        return mesh;
    }

    // A closed box of twelve triangles.
    CMesh& AddBox(const Vec3& lo, const Vec3& hi) {
        std::vector<std::array<float, 9>> triangles;
        for (size_t axis = 0; axis < 3; axis++) {
            const size_t u = (axis + 1) % 3, v = (axis + 2) % 3;
            for (const float at : {lo[axis], hi[axis]}) {
                const auto corner = [&](bool pu, bool pv) {
                    Vec3 p{};
                    p[axis] = at;
                    p[u] = pu ? hi[u] : lo[u];
                    p[v] = pv ? hi[v] : lo[v];
                    return p;
                };
                const Vec3 a = corner(false, false), b = corner(true, false), c = corner(true, true),
                           d = corner(false, true);
                triangles.push_back({a[0], a[1], a[2], b[0], b[1], b[2], c[0], c[1], c[2]});
                triangles.push_back({a[0], a[1], a[2], c[0], c[1], c[2], d[0], d[1], d[2]});
            }
        }
        return AddMesh(triangles);
    }

    bool ShadowRayHits(const Vec3& start, const Vec3& end) {
        QueryRay(start, end, true, false, true, faces_);
        return !faces_.empty();
    }

    std::vector<CollisionFace> faces_;
};

// In the plane z = 0. A ray down from above meets dot(e1, dir x e2) = -(e1 x e2).dir, so counter-clockwise seen from
// above counts as the side that is hit from above.
constexpr std::array<float, 9> HitFromAbove{0, 0, 0, 10, 0, 0, 0, 10, 0};
constexpr std::array<float, 9> HitFromBelow{0, 0, 0, 0, 10, 0, 10, 0, 0};

TEST_F(RaySceneTest, NoMeshesMeanNothingToCollideWith) {
    BuildRayScene();
    EXPECT_TRUE(RaySceneEmpty());
}

TEST_F(RaySceneTest, TrianglesOfSkyAloneMakeNoTree) {
    AddMesh({HitFromAbove}, TextureSky);
    BuildRayScene();
    EXPECT_TRUE(RaySceneEmpty());
}

TEST_F(RaySceneTest, ASingleTriangleIsHitWithoutATree) {
    AddMesh({HitFromAbove}, 0, 7);
    BuildRayScene();
    ASSERT_TRUE(ShadowRayHits({2, 2, 5}, {2, 2, -5}));
    EXPECT_EQ(TriangleSurface(faces_[0].faceId), 7U);
    EXPECT_FLOAT_EQ(faces_[0].distance, 5);
    EXPECT_FLOAT_EQ(faces_[0].u, 0.2F);
    EXPECT_FLOAT_EQ(faces_[0].v, 0.2F);
}

TEST_F(RaySceneTest, ARayWithoutLengthIsRefused) {
    AddMesh({HitFromAbove, HitFromBelow});
    BuildRayScene();
    EXPECT_FALSE(QueryRay({2, 2, 0}, {2, 2, 0}, false, false, false, faces_));
    EXPECT_TRUE(faces_.empty());
    EXPECT_FALSE(IsRayBlocked({2, 2, 0}, {2, 2, 0}, -1));
}

TEST_F(RaySceneTest, CullingPassesATriangleFromItsOtherSide) {
    AddMesh({HitFromBelow, {0, 0, -50, 1, 0, -50, 0, 1, -50}});
    BuildRayScene();
    EXPECT_FALSE(ShadowRayHits({2, 2, 5}, {2, 2, -5}));
    QueryRay({2, 2, 5}, {2, 2, -5}, false, false, false, faces_);
    EXPECT_EQ(faces_.size(), 1U);
}

TEST_F(RaySceneTest, AHitAtTheRaysEndDoesNotCount) {
    AddMesh({HitFromAbove, {0, 0, -50, 1, 0, -50, 0, 1, -50}});
    BuildRayScene();
    EXPECT_FALSE(ShadowRayHits({2, 2, 5}, {2, 2, 0}));
    EXPECT_TRUE(ShadowRayHits({2, 2, 5}, {2, 2, -0.01F}));
    EXPECT_TRUE(ShadowRayHits({2, 2, 0}, {2, 2, -5})) << "a distance of 0 counts";
}

TEST_F(RaySceneTest, EdgesAndCornersBelongToTheTriangle) {
    AddMesh({HitFromAbove, {0, 0, -50, 1, 0, -50, 0, 1, -50}});
    BuildRayScene();
    EXPECT_TRUE(ShadowRayHits({0, 0, 5}, {0, 0, -5}));
    EXPECT_TRUE(ShadowRayHits({5, 5, 5}, {5, 5, -5}));
    EXPECT_TRUE(ShadowRayHits({5, 0, 5}, {5, 0, -5}));
    EXPECT_FALSE(ShadowRayHits({5.01F, 5.01F, 5}, {5.01F, 5.01F, -5}));
}

TEST_F(RaySceneTest, ADegenerateTriangleIsNeverHit) {
    AddMesh({{0, 0, 0, 5, 5, 0, 10, 10, 0}, {1, 1, 0, 1, 1, 0, 1, 1, 0}, {0, 0, -50, 1, 0, -50, 0, 1, -50}});
    BuildRayScene();
    EXPECT_FALSE(ShadowRayHits({5, 5, 5}, {5, 5, -5}));
    EXPECT_FALSE(ShadowRayHits({1, 1, 5}, {1, 1, -5}));
}

TEST_F(RaySceneTest, APointIsInsideAMeshByTheCrossingsOnItsWayOut) {
    AddBox({0, 0, 0}, {10, 10, 10});
    AddBox({20, 0, 0}, {30, 10, 10});
    BuildRayScene();
    EXPECT_TRUE(PointInMeshes({5, 6, 7}));
    EXPECT_TRUE(PointInMeshes({25, 6, 7}));
    EXPECT_FALSE(PointInMeshes({15, 6, 7}));
    EXPECT_FALSE(PointInMeshes({5, 6, 11}));
}

TEST_F(RaySceneTest, APointInTheBoxBehindAllTrianglesIsOutside) {
    AddMesh({{0, 0, 0, 10, 0, 0, 0, 0, 10}, {0, 9, 9, 10, 10, 10, 0, 10, 10}});
    BuildRayScene();
    EXPECT_FALSE(PointInMeshes({9, 0.5F, 9.5F}));
}

TEST_F(RaySceneTest, AMeshOfWaterHasNoInside) {
    AddBox({0, 0, 0}, {10, 10, 10}).contents = ContentsSolid + ContentsOpen;
    BuildRayScene();
    EXPECT_FALSE(PointInMeshes({5, 6, 7}));
}

TEST_F(RaySceneTest, AMaterialThatIsNotThereIsABrokenFile) {
    AddMesh({HitFromAbove}).triangles[0].material = 3;
    test::ExpectFatal([] { BuildRayScene(); }, " \nInvalid KLV file format");
}

TEST(RayColliderTest, RefusesSettingsThatContradict) {
    Opcode::RayCollider collider;
    EXPECT_EQ(collider.ValidateSettings(), nullptr);
    collider.maxDistance = 0;
    EXPECT_STREQ(collider.ValidateSettings(), "Higher distance bound must be positive!");
    collider.maxDistance = 1;
    collider.temporalCoherence = true;
    EXPECT_STREQ(collider.ValidateSettings(), "Temporal coherence only works with First contact mode!");
    collider.firstContact = true;
    EXPECT_EQ(collider.ValidateSettings(), nullptr);
    collider.closestHit = true;
    EXPECT_STREQ(collider.ValidateSettings(), "Closest hit doesn't work with First contact mode!");
    collider = {};
    collider.skipPrimitiveTests = true;
    EXPECT_STREQ(collider.ValidateSettings(), "SkipPrimitiveTests not possible for RayCollider ! (not implemented)");
}

TEST(RayTreeTest, AcceptsOneTriangleALeafOnly) {
    const std::vector<Vec3> vertices{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    const std::vector<std::array<uint32_t, 3>> triangles{{0, 1, 2}};
    const Opcode::MeshInterface mesh{vertices, triangles};
    Opcode::Model model;
    EXPECT_FALSE(model.Build({nullptr, {}}));
    EXPECT_FALSE(model.Build({&mesh, {.limit = 2}}));
    EXPECT_TRUE(model.Build({&mesh, {}}));
    EXPECT_TRUE(model.HasSingleNode());
}

TEST(RayTreeTest, CountsTrianglesWithEqualCorners) {
    const std::vector<Vec3> vertices{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    const std::vector<std::array<uint32_t, 3>> triangles{{0, 1, 2}, {0, 0, 1}, {2, 1, 2}};
    EXPECT_EQ((Opcode::MeshInterface{vertices, triangles}).CountDegenerate(), 2U);
}

TEST(RayTreeTest, ManyEqualTrianglesAreCutInTheMiddle) {
    const std::vector<Vec3> vertices{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    const std::vector<std::array<uint32_t, 3>> triangles(1000, {0, 1, 2});
    const Opcode::MeshInterface mesh{vertices, triangles};
    Opcode::Model model;
    ASSERT_TRUE(model.Build({&mesh, {}}));
    EXPECT_EQ(model.tree().nodes.size(), 999U);
    EXPECT_EQ(model.tree().depth, 10U);
}

// The triangles of a tree over small ones around these points, in the order of the walk.
std::vector<uint32_t> WalkOver(const std::vector<Vec3>& middles) {
    std::vector<Vec3> vertices;
    std::vector<std::array<uint32_t, 3>> triangles;
    for (const Vec3& m : middles) {
        const auto first = static_cast<uint32_t>(vertices.size());
        vertices.insert(vertices.end(), {{m[0] - 1, m[1] + 1, m[2]}, {m[0], m[1], m[2]}, {m[0] + 1, m[1] - 1, m[2]}});
        triangles.push_back({first, first + 1, first + 2});
    }
    const Opcode::MeshInterface mesh{vertices, triangles};
    const Opcode::AABBNoLeafTree tree = Opcode::AABBTreeOfTrianglesBuilder(mesh).Build();
    std::vector<uint32_t> walk(middles.size());
    for (uint32_t i = 0; i < walk.size(); i++) walk[tree.places[i]] = i;
    return walk;
}

TEST(RayTreeTest, TheSideAboveComesFirst) {
    EXPECT_EQ(WalkOver({{-20, 0, 0}, {0, 0, 0}, {20, 0, 0}}), (std::vector<uint32_t>{2, 1, 0}));
}

TEST(RayTreeTest, ATriangleOnTheSplittingValueIsNotAbove) {
    // Above with the second one, the third would come before it, as the two would be split along y.
    EXPECT_EQ(WalkOver({{-100, 75, 0}, {100, 0, 0}, {0, 150, 0}}), (std::vector<uint32_t>{1, 2, 0}));
}

TEST(RayTreeTest, OfEqualExtentsTheFirstAxisIsSplit) {
    EXPECT_EQ(WalkOver({{-8, -8, 0}, {8, -8, 0}, {-8, 8, 0}, {8, 8, 0}}), (std::vector<uint32_t>{3, 1, 2, 0}));
}

// Random triangles of all sizes, some of them axial (rays run along their box faces), and a scene's tree over them.
struct RandomScene {
    std::vector<Vec3> vertices;
    std::vector<std::array<uint32_t, 3>> triangles;
    Opcode::MeshInterface mesh;
    Opcode::Model model;

    RandomScene(std::mt19937& random, uint32_t count) {
        std::uniform_real_distribution<float> place(-100, 100), size(-20, 20);
        for (uint32_t i = 0; i < count; i++) {
            const Vec3 base{place(random), place(random), place(random)};
            for (int c = 0; c < 3; c++) {
                Vec3 p{base[0] + size(random), base[1] + size(random), base[2] + size(random)};
                if (i % 3 == 0) p[i % 9 / 3] = std::round(base[i % 9 / 3]);
                if (i % 17 == 0) p = base;
                vertices.push_back(p);
            }
            triangles.push_back({3 * i, 3 * i + 1, 3 * i + 2});
        }
        mesh = {vertices, triangles};
        EXPECT_TRUE(model.Build({&mesh, {}}));
    }

    // Every triangle on its own, without the tree.
    std::set<uint32_t> BruteForce(const Opcode::RayCollider& collider, const Opcode::Ray& ray) const {
        std::set<uint32_t> hits;
        std::vector<CollisionFace> faces;
        for (uint32_t i = 0; i < triangles.size(); i++) {
            const std::vector<std::array<uint32_t, 3>> one{triangles[i]};
            const Opcode::MeshInterface single{vertices, one};
            Opcode::Model alone;
            alone.Build({&single, {}});
            Opcode::RayCollider all = collider;
            all.firstContact = all.closestHit = false;
            all.Collide(ray, alone, faces);
            if (!faces.empty()) hits.insert(i);
        }
        return hits;
    }
};

Opcode::Ray RandomRay(std::mt19937& random, float& length) {
    std::uniform_real_distribution<float> place(-120, 120);
    Opcode::Ray ray{{place(random), place(random), place(random)}, {}};
    Vec3 end{place(random), place(random), place(random)};
    if (random() % 4 == 0) end = {ray.origin[0], ray.origin[1], end[2]};  // along an axis
    ray.direction = Sub(end, ray.origin);
    length = Normalize(ray.direction);
    return ray;
}

TEST(RayTreeTest, FindsWhatEveryTriangleOnItsOwnGives) {
    std::mt19937 random(4711);
    for (const uint32_t count : {1U, 2U, 3U, 50U, 300U}) {
        const RandomScene scene(random, count);
        for (int i = 0; i < 300; i++) {
            Opcode::RayCollider collider;
            const Opcode::Ray ray = RandomRay(random, collider.maxDistance);
            if (collider.ValidateSettings() != nullptr) continue;
            collider.culling = i % 2 == 0;
            const std::set<uint32_t> expected = scene.BruteForce(collider, ray);
            std::vector<CollisionFace> faces;
            collider.Collide(ray, scene.model, faces);
            std::set<uint32_t> found;
            for (const CollisionFace& face : faces) found.insert(face.faceId);
            EXPECT_EQ(found, expected);
            EXPECT_EQ(found.size(), faces.size());

            collider.firstContact = true;
            std::vector<CollisionFace> first;
            collider.Collide(ray, scene.model, first);
            ASSERT_EQ(first.size(), expected.empty() ? 0U : 1U);
            if (expected.empty()) continue;
            EXPECT_EQ(first[0].faceId, faces[0].faceId) << "the first in the order of the tree";

            collider.firstContact = false;
            collider.closestHit = true;
            std::vector<CollisionFace> nearest;
            collider.Collide(ray, scene.model, nearest);
            ASSERT_EQ(nearest.size(), first.size());
            for (const CollisionFace& face : faces) EXPECT_LE(nearest[0].distance, face.distance);
        }
    }
}

// Rays that graze what random ones never do: along edges of triangles, along faces of their boxes, through corners.
Opcode::Ray GrazingRay(std::mt19937& random, const RandomScene& scene, float& length) {
    const auto& corners = scene.triangles[random() % scene.triangles.size()];
    const Vec3 &a = scene.vertices[corners[0]], &b = scene.vertices[corners[1]];
    Vec3 start = a, end = b;
    if (random() % 2 == 0) {
        const size_t axis = random() % 3;
        end = a;
        start[axis] -= 30;
        end[axis] += 30;
    } else {
        start = Sub(a, Sub(b, a));
    }
    Opcode::Ray ray{start, Sub(end, start)};
    length = Normalize(ray.direction);
    return ray;
}

bool SameFaces(const std::vector<CollisionFace>& a, const std::vector<CollisionFace>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const CollisionFace& x, const CollisionFace& y) {
        return x.faceId == y.faceId && x.distance == y.distance && x.u == y.u && x.v == y.v;
    });
}

TEST(RayTreeTest, TheWideFormGivesTheFacesOfTheBinaryTreeInItsOrder) {
    std::mt19937 random(815);
    size_t hits = 0;
    for (const uint32_t count : {2U, 3U, 4U, 5U, 9U, 100U, 3000U}) {
        const RandomScene scene(random, count);
        Opcode::Model plain;
        ASSERT_TRUE(plain.Build({&scene.mesh, {}, false}));
        Opcode::LastBlocker last;
        for (int i = 0; i < 15000; i++) {
            Opcode::RayCollider collider;
            const Opcode::Ray ray =
                i % 3 == 0 ? GrazingRay(random, scene, collider.maxDistance) : RandomRay(random, collider.maxDistance);
            if (collider.ValidateSettings() != nullptr) continue;
            collider.culling = i % 2 == 0;
            collider.firstContact = i % 4 < 2;
            collider.closestHit = i % 8 == 5 && !collider.firstContact;
            std::vector<CollisionFace> expected, found;
            collider.Collide(ray, plain, expected);
            collider.Collide(ray, scene.model, found);
            ASSERT_TRUE(SameFaces(found, expected)) << "ray " << i << " of " << count;
            ASSERT_EQ(collider.MeetsAny(ray, scene.model, last), !expected.empty());
            ASSERT_EQ(collider.MeetsAny(ray, plain, last), !expected.empty());
            hits += expected.size();
        }
    }
    EXPECT_GT(hits, 10000U);
}

// Every triangle of the scene by the definition of the test, without any tree or box.
std::set<uint32_t> PlainHits(const RandomScene& scene, const Opcode::Ray& ray, float length, bool culling) {
    std::set<uint32_t> hits;
    for (uint32_t i = 0; i < scene.triangles.size(); i++) {
        const auto& [a, b, c] = scene.triangles[i];
        const Vec3 &v0 = scene.vertices[a], e1 = Sub(scene.vertices[b], v0), e2 = Sub(scene.vertices[c], v0);
        const Vec3 p = Cross(ray.direction, e2), t = Sub(ray.origin, v0), q = Cross(t, e1);
        const double determinant = Dot(e1, p);
        if (culling ? !(determinant >= 1e-06) : std::fabs(determinant) < 1e-06) continue;
        const double u = Dot(t, p) / determinant, v = Dot(ray.direction, q) / determinant;
        const double distance = Dot(e2, q) / determinant;
        if (u >= 0 && u <= 1 && v >= 0 && u + v <= 1 && distance >= 0 && distance < static_cast<double>(length))
            hits.insert(i);
    }
    return hits;
}

TEST(RayTreeTest, AgreesWithEveryTriangleOn100000RandomRays) {
    std::mt19937 random(99);
    const RandomScene scene(random, 200);
    for (int i = 0; i < 100000; i++) {
        Opcode::RayCollider collider;
        const Opcode::Ray ray = RandomRay(random, collider.maxDistance);
        if (collider.ValidateSettings() != nullptr) continue;
        collider.culling = i % 2 == 0;
        const std::set<uint32_t> expected = PlainHits(scene, ray, collider.maxDistance, collider.culling);
        std::vector<CollisionFace> faces;
        collider.Collide(ray, scene.model, faces);
        std::set<uint32_t> found;
        for (const CollisionFace& face : faces) found.insert(face.faceId);
        ASSERT_EQ(found, expected) << "ray " << i;
        collider.firstContact = true;
        collider.Collide(ray, scene.model, faces);
        ASSERT_EQ(faces.size(), expected.empty() ? 0U : 1U);
    }
}

TEST_F(RaySceneTest, ABlockedRayIsOneWhoseFirstFaceIsNotTheExcludedSurfaces) {
    AddBox({0, 0, 0}, {10, 10, 10});
    AddBox({20, 0, 0}, {30, 10, 10});
    AddBox({40, 0, 0}, {50, 10, 10});
    BuildRayScene();
    std::mt19937 random(3);
    std::uniform_real_distribution<float> place(-5, 55), across(-2, 12);
    for (int i = 0; i < 20000; i++) {
        const Vec3 start{place(random), across(random), across(random)};
        const Vec3 end{place(random), across(random), across(random)};
        const int32_t excluded = static_cast<int32_t>(random() % 14) - 1;
        QueryRay(start, end, true, false, true, faces_);
        const bool blocked = !faces_.empty() && TriangleSurface(faces_[0].faceId) != static_cast<uint32_t>(excluded);
        ASSERT_EQ(IsRayBlocked(start, end, excluded), blocked) << "ray " << i;
    }
}

TEST_F(RaySceneTest, TheLastBlockerOfAnotherSceneIsForgotten) {
    AddMesh({HitFromAbove, {0, 0, -50, 1, 0, -50, 0, 1, -50}});
    BuildRayScene();
    ASSERT_TRUE(IsRayBlocked({2, 2, 5}, {2, 2, -5}, -1));
    Geometry().Clear();
    AddMesh({HitFromBelow, {0, 0, -50, 1, 0, -50, 0, 1, -50}});
    BuildRayScene();
    EXPECT_FALSE(IsRayBlocked({2, 2, 5}, {2, 2, -5}, -1));
}

TEST_F(RaySceneTest, WithoutATreeNoRayIsBlocked) {
    AddMesh({HitFromAbove}, TextureSky);
    BuildRayScene();
    EXPECT_FALSE(IsRayBlocked({2, 2, 5}, {2, 2, -5}, -1));
    EXPECT_FALSE(PointInMeshes({2, 2, 0}));
}

// Boxes that overlap, so that points lie in none, one or several.
TEST_F(RaySceneTest, PointsInsideAreThoseWithOddCrossingsOfEveryTriangle) {
    std::mt19937 random(12);
    std::uniform_real_distribution<float> place(-50, 50), size(5, 40);
    for (int i = 0; i < 12; i++) {
        const Vec3 lo{place(random), place(random), place(random)};
        AddBox(lo, {lo[0] + size(random), lo[1] + size(random), lo[2] + size(random)});
    }
    BuildRayScene();
    const auto& meshes = Geometry().meshes;
    size_t insideCount = 0;
    for (int i = 0; i < 100000; i++) {
        const Vec3 point{place(random), place(random), place(random)};
        bool inside = false;
        for (size_t m = 0; m < meshes.size() && !inside; m++) {
            bool inBox = true;
            for (size_t k = 0; k < 3; k++)
                inBox = inBox && point[k] >= meshes[m].mins[k] && point[k] <= meshes[m].maxs[k];
            if (!inBox) continue;
            // The triangles of meshes 0 to m; a box is crossed once by a ray that starts inside and ends outside.
            Vec3 end = meshes[m].mins;
            for (float& coordinate : end) coordinate -= 2;
            QueryRay(point, end, false, false, false, faces_);
            size_t crossings = 0;
            for (const CollisionFace& face : faces_) crossings += face.faceId < 12 * (m + 1) ? 1 : 0;
            inside = crossings % 2 == 1;
        }
        ASSERT_EQ(PointInMeshes(point), inside);
        insideCount += inside ? 1 : 0;
    }
    EXPECT_GT(insideCount, 1000U);
}

}  // namespace
}  // namespace k2k
