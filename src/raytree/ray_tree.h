// An axis-aligned bounding-box tree over triangles, one triangle a leaf and leaves folded into their parents, and rays
// against it. After the public Opcode collision library, whose class names are kept; triangle test after Moller and
// Trumbore, "Fast, Minimum Storage Ray/Triangle Intersection" (1997).
#pragma once

#include <array>
#include <cfloat>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "levelfile/level_records.h"
#include "raytree/ray_scene.h"

namespace k2k::Opcode {

// The triangles of a model, owned by the caller for as long as the model is used. All indices lie in `vertices`.
struct MeshInterface {
    std::span<const Vec3> vertices;
    std::span<const std::array<uint32_t, 3>> triangles;

    // Triangles with two equal indices; they stay in the set.
    uint32_t CountDegenerate() const;
};

constexpr uint32_t SplitBestAxis = 4;  // try the axis of the longest extent, then the second, then the last

struct BuildSettings {
    uint32_t limit = 1;  // triangles a leaf; nothing else is accepted
    uint32_t rules = SplitBestAxis;
};

struct CreateRecord {
    const MeshInterface* mesh = nullptr;
    BuildSettings settings;
    bool widen = true;  // add the wide form of the tree, where the machine can walk it
};

// A child word with bit 0 set holds a triangle in the bits above, otherwise the number of a node.
struct AABBNoLeafNode {
    Vec3 center{};
    uint32_t pos = 0;  // the child above the splitting value
    Vec3 extents{};
    uint32_t neg = 0;
};
static_assert(sizeof(AABBNoLeafNode) == 32);

constexpr bool IsTriangle(uint32_t word) {
    return (word & 1U) != 0;
}
constexpr uint32_t ChildIndex(uint32_t word) {
    return word >> 1U;
}

struct AABBNoLeafTree {
    std::vector<AABBNoLeafNode> nodes;  // node 0 is the root; children stand behind their parents
    std::vector<uint32_t> parents;      // of each node; the root is its own
    std::vector<uint32_t> places;       // of each triangle in the order of the walk
    uint32_t depth = 0;                 // nodes on the longest way down
};

// Splits triangles by the rules of BuildSettings.
class AABBTreeOfTrianglesBuilder {
  public:
    explicit AABBTreeOfTrianglesBuilder(const MeshInterface& mesh);
    AABBNoLeafTree Build();

  private:
    struct Range {
        uint32_t first, count;
    };
    struct Task {
        Range range;
        uint32_t parent;
        bool above;
        uint32_t depth;
    };
    void AddNode(AABBNoLeafTree& tree, const Task& task, std::vector<Task>& tasks);
    uint32_t Split(Range range, int axis, float value);
    uint32_t SplitBest(Range range, const Vec3& center, const Vec3& extents);

    std::vector<uint32_t> order_;             // triangles, permuted by the splits
    std::vector<std::array<Vec3, 2>> boxes_;  // minimum and maximum of each triangle
    std::vector<Vec3> centers_;               // mean of each triangle's vertices
};

class WideTree;

class Model {
  public:
    Model();
    ~Model();
    Model(Model&&) noexcept;
    Model& operator=(Model&&) noexcept;

    // False for a record without a usable mesh, or with a limit other than 1.
    bool Build(const CreateRecord& create);

    // With exactly one triangle there is no tree.
    bool HasSingleNode() const { return single_; }
    const MeshInterface& mesh() const { return mesh_; }
    const AABBNoLeafTree& tree() const { return tree_; }
    const WideTree* wide() const { return wide_.get(); }  // null when there is none
    bool empty() const { return mesh_.triangles.empty(); }
    uint64_t serial() const { return serial_; }  // of its own for each model that was built, above 0

  private:
    uint64_t serial_ = 0;
    MeshInterface mesh_;
    AABBNoLeafTree tree_;
    std::unique_ptr<const WideTree> wide_;
    bool single_ = false;
};

struct Ray {
    Vec3 origin{};
    Vec3 direction{};  // of unit length
};

class Collider {
  public:
    bool firstContact = false;
    bool temporalCoherence = false;
    bool skipPrimitiveTests = false;
};

struct LastBlocker;

class RayCollider : public Collider {
  public:
    float maxDistance = FLT_MAX;
    bool closestHit = false;
    bool culling = true;  // a triangle is only hit from the side where dot(e1, dir x e2) is positive

    // What is wrong with the settings, or null.
    const char* ValidateSettings() const;

    // Collects the triangles that the segment of maxDistance from the ray's origin meets. With firstContact the first
    // one in tree order ends the walk; with closestHit only the nearest is kept. Settings must be valid.
    void Collide(const Ray& ray, const Model& model, std::vector<CollisionFace>& faces) const;

    // Whether Collide finds any triangle, without saying which. The last one that did is tried first.
    bool MeetsAny(const Ray& ray, const Model& model, LastBlocker& last) const;

    // Whether the segment meets this triangle, boxes aside. Collide finds no others.
    bool MeetsTriangle(const Ray& ray, const Model& model, uint32_t triangle) const;
};

}  // namespace k2k::Opcode
