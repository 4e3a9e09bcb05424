// The wide tree against the binary one, where rounding could part them.
#include "raytree/wide_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

#include "raytree/last_blocker.h"
#include "raytree/ray_tree.h"
#include "raytree/wide_walk.h"
#include "solid/vectors.h"

namespace k2k {
namespace {

// Blocks of a level, on whole numbers and often on common planes, some of them thin; every fifth leans.
struct BlockScene {
    std::vector<Vec3> vertices;
    std::vector<std::array<uint32_t, 3>> triangles;
    Opcode::MeshInterface mesh;
    Opcode::Model wide, binary;

    BlockScene(std::mt19937& random, uint32_t blocks, float scale) {
        for (uint32_t i = 0; i < blocks; i++) AddBlock(random, i % 5 == 4, scale);
        mesh = {vertices, triangles};
        EXPECT_TRUE(wide.Build({&mesh, {}}));
        EXPECT_TRUE(binary.Build({&mesh, {}, false}));
    }

    void AddBlock(std::mt19937& random, bool leans, float scale) {
        const auto whole = [&](int step, int count) {
            return static_cast<float>(step * static_cast<int>(1 + random() % static_cast<unsigned>(count)));
        };
        const Vec3 lo{whole(16, 30), whole(16, 30), whole(16, 30)};
        const Vec3 size{whole(8, 8), random() % 4 == 0 ? whole(1, 4) : whole(8, 8), whole(8, 20)};
        const float lean = leans ? whole(3, 9) : 0;
        const auto base = static_cast<uint32_t>(vertices.size());
        for (uint32_t corner = 0; corner < 8; corner++) {
            Vec3 p = lo;
            for (size_t k = 0; k < 3; k++) p[k] += (corner >> k & 1U) != 0 ? size[k] : 0;
            if ((corner & 4U) != 0) p = Add(p, {lean, 0.37F * lean, 0});
            vertices.push_back(Scale(p, scale));
        }
        for (const auto& [a, b, c, d] : {std::array<uint32_t, 4>{0, 1, 3, 2},
                                         {4, 6, 7, 5},
                                         {0, 4, 5, 1},
                                         {2, 3, 7, 6},
                                         {0, 2, 6, 4},
                                         {1, 5, 7, 3}}) {
            triangles.push_back({base + a, base + b, base + c});
            triangles.push_back({base + a, base + c, base + d});
        }
    }
};

// Turns a vertex and a side of a triangle into a ray that the triangle test and the boxes are close to parting over.
class RayMaker {
  public:
    RayMaker(std::mt19937& random, const BlockScene& scene) : random_(random), scene_(scene) {}

    Opcode::Ray Make(float& length) {
        const auto& [a, b, c] = scene_.triangles[random_() % scene_.triangles.size()];
        const Vec3 &v0 = scene_.vertices[a], &v1 = scene_.vertices[b], &v2 = scene_.vertices[c];
        const Vec3 e1 = Sub(v1, v0), e2 = Sub(v2, v0);
        const float size = static_cast<float>(std::sqrt(LengthSquared(e1)));
        const Vec3 other = scene_.vertices[random_() % scene_.vertices.size()];
        Vec3 start{}, end{};
        switch (random_() % 6) {
            case 0:  // through a corner, from anywhere
                start = Add(other, Random(size));
                end = Add(v0, Scale(Sub(v0, start), 0.5F));
                break;
            case 1:  // through a side
                start = Add(other, Random(size));
                end = Add(v0, Scale(e1, Part()));
                end = Add(end, Scale(Sub(end, start), Part()));
                break;
            case 2:  // in the plane, from far outside
            case 3:  // and nearly so
                start = Add(Add(v0, Scale(e1, 12 * Part() - 6)), Scale(e2, 12 * Part() - 6));
                end = Add(Add(v0, Scale(e1, 12 * Part() - 6)), Scale(e2, 12 * Part() - 6));
                if (random_() % 2 == 0) end = Add(end, Random(size * 1e-3F));
                break;
            case 4:  // along a side or a face of boxes, slightly tilted or not at all
                start = v0;
                end = v0;
                start[random_() % 3] += size * (4 * Part() - 2);
                end[random_() % 3] += size * (4 * Part() - 2);
                if (random_() % 2 == 0) end = Add(end, Random(size * 1e-3F));
                break;
            default:  // between any two corners
                start = v0;
                end = other;
        }
        Opcode::Ray ray{start, Sub(end, start)};
        length = Normalize(ray.direction);
        return ray;
    }

  private:
    float Part() { return std::uniform_real_distribution<float>(0, 1)(random_); }
    Vec3 Random(float size) { return {size * (Part() - 0.5F), size * (Part() - 0.5F), size * (Part() - 0.5F)}; }

    std::mt19937& random_;
    const BlockScene& scene_;
};

bool SameFaces(const std::vector<CollisionFace>& a, const std::vector<CollisionFace>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const CollisionFace& x, const CollisionFace& y) {
        return x.faceId == y.faceId && x.distance == y.distance && x.u == y.u && x.v == y.v;
    });
}

// All kinds of queries, over rays that graze what they meet. Returns how many met something.
size_t CompareOnGrazingRays(const BlockScene& scene, std::mt19937& random, int count) {
    RayMaker maker(random, scene);
    Opcode::LastBlocker last;
    std::vector<CollisionFace> expected, found;
    size_t met = 0;
    for (int i = 0; i < count; i++) {
        Opcode::RayCollider collider;
        const Opcode::Ray ray = maker.Make(collider.maxDistance);
        if (collider.ValidateSettings() != nullptr) continue;
        collider.culling = i % 2 == 0;
        collider.firstContact = i % 8 < 2;
        collider.closestHit = i % 8 == 2 || i % 8 == 3;
        collider.Collide(ray, scene.binary, expected);
        collider.Collide(ray, scene.wide, found);
        EXPECT_TRUE(SameFaces(found, expected)) << "ray " << i;
        EXPECT_EQ(collider.MeetsAny(ray, scene.wide, last), !expected.empty()) << "ray " << i;
        if (testing::Test::HasFailure()) return met;
        met += expected.empty() ? 0 : 1;
    }
    return met;
}

TEST(WideTreeTest, GrazingRaysMeetTheFacesOfTheBinaryTree) {
    std::mt19937 random(2024);
    for (const uint32_t blocks : {1U, 3U, 40U, 400U}) {
        const BlockScene scene(random, blocks, 1);
        EXPECT_GT(CompareOnGrazingRays(scene, random, 40000), 10000U) << blocks << " blocks";
    }
}

// A triangle far from a heap of others, so that the node that holds it is much larger.
struct LonelyTriangle {
    std::vector<Vec3> vertices;
    std::vector<std::array<uint32_t, 3>> triangles{{0, 1, 2}};
    Opcode::MeshInterface mesh;
    Opcode::Model wide, binary;

    explicit LonelyTriangle(const std::array<Vec3, 3>& corners) : vertices(corners.begin(), corners.end()) {
        for (uint32_t i = 0; i < 8; i++) {
            const float x = 3000 + static_cast<float>(i);
            vertices.insert(vertices.end(), {{x, 2999, 3002}, {x, 2998, 3003}, {x + 1, 3000, 3001}});
            triangles.push_back({3 * i + 3, 3 * i + 4, 3 * i + 5});
        }
        mesh = {vertices, triangles};
        EXPECT_TRUE(wide.Build({&mesh, {}}));
        EXPECT_TRUE(binary.Build({&mesh, {}, false}));
    }

    // Whether the ray meets it by the binary tree. The wide one must agree.
    bool IsMet(const Vec3& start, const Vec3& end) const {
        Opcode::Ray ray{start, Sub(end, start)};
        Opcode::RayCollider collider;
        collider.culling = false;
        collider.maxDistance = Normalize(ray.direction);
        if (collider.ValidateSettings() != nullptr) return false;
        std::vector<CollisionFace> expected, found;
        collider.Collide(ray, binary, expected);
        collider.Collide(ray, wide, found);
        EXPECT_TRUE(SameFaces(found, expected));
        return !expected.empty();
    }
};

// The triangle test says of some of them that they meet the triangle, which is nowhere near.
TEST(WideTreeTest, RaysAlongAPlaneMeetItsTriangleWhereRoundingSaysSo) {
    std::mt19937 random(31);
    std::uniform_real_distribution<float> part(-4, 4);
    const std::array<Vec3, 3> corners{{{400.3F, 411.7F, 390.1F}, {718.1F, 465.9F, 500.7F}, {526.3F, 745.2F, 713.9F}}};
    const LonelyTriangle scene(corners);
    const Vec3 e1 = Sub(corners[1], corners[0]), e2 = Sub(corners[2], corners[0]);
    const auto inPlane = [&](float a, float b) { return Add(corners[0], Add(Scale(e1, a), Scale(e2, b))); };
    size_t metAside = 0;
    for (int i = 0; i < 100000; i++) {
        // Both ends lie beyond the second edge.
        const Vec3 start = inPlane(part(random), 1.2F + std::fabs(part(random)));
        metAside += scene.IsMet(start, inPlane(part(random), 1.2F + std::fabs(part(random)))) ? 1 : 0;
        if (HasFailure()) return;
    }
    EXPECT_GT(metAside, 20U);
}

TEST(WideTreeTest, ThinTrianglesAreMetBeyondTheirTipsWhereRoundingSaysSo) {
    std::mt19937 random(32);
    std::uniform_real_distribution<float> beyond(0.5F, 40), across(-0.002F, 0.002F), away(-3000, 3000);
    const LonelyTriangle scene({{{1000, 500, 640}, {2500, 500.001F, 640}, {2500, 499.999F, 640}}});
    size_t metBeyond = 0;
    for (int i = 0; i < 100000; i++) {
        const Vec3 start{away(random), away(random), 2640};
        const Vec3 target{1000 - beyond(random), 500 + across(random), 640};
        metBeyond += scene.IsMet(start, Add(target, Scale(Sub(target, start), 0.4F))) ? 1 : 0;
        if (HasFailure()) return;
    }
    EXPECT_GT(metBeyond, 20U);
}

TEST(WideTreeTest, ScenesOfAnySizeGiveTheFacesOfTheBinaryTree) {
    std::mt19937 random(77);
    for (const float scale : {1e-6F, 1e-3F, 0.013F, 77.7F, 1e6F, 1e9F, 1e12F, 1e16F}) {
        const BlockScene scene(random, 60, scale);
        CompareOnGrazingRays(scene, random, 10000);
    }
}

TEST(WideTreeTest, FarOriginsGiveTheFacesOfTheBinaryTree) {
    std::mt19937 random(5);
    const BlockScene scene(random, 60, 1);
    Opcode::LastBlocker last;
    size_t met = 0;
    for (int i = 0; i < 20000; i++) {
        const Vec3 start{-6000, static_cast<float>(random() % 9000), 7000};
        const Vec3& end = scene.vertices[random() % scene.vertices.size()];
        Opcode::Ray ray{start, Sub(end, start)};
        Opcode::RayCollider collider;
        collider.maxDistance = Normalize(ray.direction);
        std::vector<CollisionFace> expected;
        collider.Collide(ray, scene.binary, expected);
        ASSERT_EQ(collider.MeetsAny(ray, scene.wide, last), !expected.empty());
        met += expected.empty() ? 0 : 1;
    }
    EXPECT_GT(met, 5000U);
}

TEST(WideTreeTest, NumbersThatLoseBitsAreLeftToTheBinaryTree) {
    if (!Opcode::CanWalkWideTrees()) GTEST_SKIP() << "no wide trees on this machine";
    std::mt19937 random(8);
    const BlockScene scene(random, 5, 1);
    const Opcode::WideTree& tree = *scene.wide.wide();
    constexpr float NoNumber = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(tree.Margin({{1, 2, 3}, {0, 0, 1}}, 100));
    EXPECT_FALSE(tree.Margin({{1, 2, 3}, {0, 1e-20F, 1}}, 100));
    EXPECT_FALSE(tree.Margin({{1, 2, 3}, {0, NoNumber, 1}}, 100));
    EXPECT_FALSE(tree.Margin({{1, NoNumber, 3}, {0, 0, 1}}, 100));
    EXPECT_FALSE(tree.Margin({{1, 2, 3e12F}, {0, 0, 1}}, 100));
    EXPECT_FALSE(tree.Margin({{1, 2, 3}, {0, 0, 1}}, 1e-20F));
    EXPECT_FALSE(tree.Margin({{1, 2, 3}, {0, 0, 1}}, std::numeric_limits<float>::max()));
    const BlockScene huge(random, 5, 1e12F);
    EXPECT_FALSE(huge.wide.wide()->Margin({{1, 2, 3}, {0, 0, 1}}, 100));
}

TEST(WideTreeTest, AVertexThatIsNoNumberLeavesTheOthersToBeMet) {
    std::mt19937 random(9);
    BlockScene scene(random, 20, 1);
    scene.vertices[4][1] = std::numeric_limits<float>::quiet_NaN();
    scene.vertices[20][2] = std::numeric_limits<float>::infinity();
    ASSERT_TRUE(scene.wide.Build({&scene.mesh, {}}));
    ASSERT_TRUE(scene.binary.Build({&scene.mesh, {}, false}));
    EXPECT_GT(CompareOnGrazingRays(scene, random, 5000), 100U);
}

}  // namespace
}  // namespace k2k
