#include <algorithm>
#include <array>
#include <optional>
#include <tuple>

#include "raytree/last_blocker.h"
#include "raytree/ray_tree.h"
#include "raytree/segment_test.h"
#include "raytree/wide_walk.h"
#include "solid/vectors.h"

namespace k2k::Opcode {
namespace {

// u, v and the distance of a hit, in the determinant's scale until it is known that there is one.
struct TriangleHit {
    double u = 0, v = 0, distance = 0;
};

// u, v and u + v include their ends; the distance is 0 or more.
bool MeetsFront(const Vec3& direction, const Vec3& e1, const Vec3& e2, const Vec3& t, TriangleHit& hit) {
    const Vec3 p = Cross(direction, e2);
    const double determinant = Dot(e1, p);
    if (!(determinant >= DeterminantEpsilon)) return false;
    hit.u = Dot(t, p);
    if (!(hit.u >= 0.0 && hit.u <= determinant)) return false;
    const Vec3 q = Cross(t, e1);
    hit.v = Dot(direction, q);
    if (!(hit.v >= 0.0 && hit.u + hit.v <= determinant)) return false;
    hit.distance = Dot(e2, q);
    if (!(hit.distance >= 0.0)) return false;
    const double inverse = 1.0 / determinant;
    hit = {hit.u * inverse, hit.v * inverse, hit.distance * inverse};
    return true;
}

bool MeetsEitherSide(const Vec3& direction, const Vec3& e1, const Vec3& e2, const Vec3& t, TriangleHit& hit) {
    const Vec3 p = Cross(direction, e2);
    const double determinant = Dot(e1, p);
    if (!(determinant <= -DeterminantEpsilon || determinant >= DeterminantEpsilon)) return false;
    const double inverse = 1.0 / determinant;
    hit.u = Dot(t, p) * inverse;
    if (!(hit.u >= 0.0 && hit.u <= 1.0)) return false;
    const Vec3 q = Cross(t, e1);
    hit.v = Dot(direction, q) * inverse;
    if (!(hit.v >= 0.0 && hit.u + hit.v <= 1.0)) return false;
    hit.distance = Dot(e2, q) * inverse;
    return hit.distance >= 0.0;
}

// One query's walk. Nodes still to visit lie on a stack that the tree's depth bounds.
class Walk {
  public:
    Walk(const RayCollider& collider, const Ray& ray, const Model& model, std::vector<CollisionFace>& faces)
        : collider_(collider), ray_(ray), model_(model), segment_(ray, collider.maxDistance), faces_(faces) {}

    // The triangle ends the walk.
    bool TestTriangle(uint32_t number) {
        CollisionFace face;
        if (!MeetsTriangle(number, face)) return false;
        if (collider_.closestHit && !faces_.empty()) {
            if (face.distance < faces_[0].distance) faces_[0] = face;
            return false;
        }
        faces_.push_back(face);
        return collider_.firstContact;
    }

    void Run(uint32_t* stack) {
        const AABBNoLeafNode* nodes = model_.tree().nodes.data();
        uint32_t* top = stack;
        *top++ = 0;
        while (top != stack) {
            const uint32_t word = *--top;
            if (IsTriangle(word)) {
                if (TestTriangle(ChildIndex(word))) return;
                continue;
            }
            const AABBNoLeafNode& node = nodes[ChildIndex(word)];
            if (!MeetsBox(segment_, node)) continue;
            *top++ = node.neg;
            *top++ = node.pos;
        }
    }

    // The same, from what the wide tree proposes.
    void RunWide(float margin, uint32_t* stack) {
        WideWalk walk(*model_.wide(), ray_, collider_.maxDistance, margin, collider_.culling, stack);
        WideWalk::Proposal proposal;
        CollisionFace face;
        while (walk.Next(proposal)) {
            if (MeetsAllBoxes(proposal.parent, margin) && MeetsTriangle(proposal.triangle, face))
                faces_.push_back(face);
        }
        PutInOrder();
    }

    // Whether there is anything to collect, in any order.
    bool MeetsAny(float margin, uint32_t* stack, LastBlocker& last) const {
        CollisionFace face;
        if (last.model == model_.serial() && MeetsTriangle(last.triangle, face) && MeetsAllBoxes(last.parent, margin))
            return true;
        WideWalk walk(*model_.wide(), ray_, collider_.maxDistance, margin, collider_.culling, stack);
        WideWalk::Proposal proposal;
        while (walk.Next(proposal)) {
            if (!MeetsAllBoxes(proposal.parent, margin)) continue;
            last = {model_.serial(), proposal.triangle, proposal.parent};
            return true;
        }
        return false;
    }

    bool MeetsTriangle(uint32_t number, CollisionFace& face) const {
        const auto& [a, b, c] = model_.mesh().triangles[number];
        const auto& vertices = model_.mesh().vertices;
        const Vec3 e1 = Sub(vertices[b], vertices[a]), e2 = Sub(vertices[c], vertices[a]);
        const Vec3 t = Sub(ray_.origin, vertices[a]);
        TriangleHit hit;
        const bool meets = collider_.culling ? MeetsFront(ray_.direction, e1, e2, t, hit)
                                             : MeetsEitherSide(ray_.direction, e1, e2, t, hit);
        face = {number, static_cast<float>(hit.distance), static_cast<float>(hit.u), static_cast<float>(hit.v)};
        return meets && face.distance < collider_.maxDistance;
    }

  private:
    // Of the node and of all above it. Rounding cannot make the ray miss those around a box that is met inside of the
    // margin.
    bool MeetsAllBoxes(uint32_t node, float margin) const {
        const AABBNoLeafTree& tree = model_.tree();
        AABBNoLeafNode inner = tree.nodes[node];
        for (float& extent : inner.extents) extent -= margin;
        if (MeetsBox(segment_, inner)) return true;
        for (; node != 0; node = tree.parents[node]) {
            if (!MeetsBox(segment_, tree.nodes[node])) return false;
        }
        return MeetsBox(segment_, tree.nodes[0]);
    }

    // From the faces met in any order to those that the settings ask for, in the order of the binary tree.
    void PutInOrder() {
        const auto place = [&](const CollisionFace& face) { return model_.tree().places[face.faceId]; };
        const auto isEarlier = [&](const CollisionFace& a, const CollisionFace& b) { return place(a) < place(b); };
        const auto isNearer = [&](const CollisionFace& a, const CollisionFace& b) {
            return std::tuple(a.distance, place(a)) < std::tuple(b.distance, place(b));
        };
        if (faces_.size() < 2) return;
        if (collider_.firstContact) {
            faces_ = {*std::min_element(faces_.begin(), faces_.end(), isEarlier)};
        } else if (collider_.closestHit) {
            faces_ = {*std::min_element(faces_.begin(), faces_.end(), isNearer)};
        } else {
            std::sort(faces_.begin(), faces_.end(), isEarlier);
        }
    }

    const RayCollider& collider_;
    const Ray& ray_;
    const Model& model_;
    const Segment segment_;
    std::vector<CollisionFace>& faces_;
};

// Calls run with a stack of at least `size` words; trees of the usual depth need no allocation.
template <typename F>
void WithStack(size_t size, F&& run) {
    constexpr size_t UsualSize = 256;
    if (size <= UsualSize) {
        std::array<uint32_t, UsualSize> stack;
        run(stack.data());
    } else {
        std::vector<uint32_t> stack(size);
        run(stack.data());
    }
}

// What WideTree::Margin gives; nothing where the ray has to walk the binary tree.
std::optional<float> WideMargin(const Ray& ray, const Model& model, float length) {
    if (model.wide() == nullptr) return std::nullopt;
    return model.wide()->Margin(ray, length);
}

}  // namespace

const char* RayCollider::ValidateSettings() const {
    if (!(maxDistance > 0.0F)) return "Higher distance bound must be positive!";
    if (temporalCoherence && !firstContact) return "Temporal coherence only works with First contact mode!";
    if (closestHit && firstContact) return "Closest hit doesn't work with First contact mode!";
    if (skipPrimitiveTests) return "SkipPrimitiveTests not possible for RayCollider ! (not implemented)";
    if (temporalCoherence && closestHit) return "Temporal coherence can't guarantee to report closest hit!";
    return nullptr;
}

void RayCollider::Collide(const Ray& ray, const Model& model, std::vector<CollisionFace>& faces) const {
    faces.clear();
    if (model.empty()) return;
    Walk walk(*this, ray, model, faces);
    if (model.HasSingleNode()) {
        walk.TestTriangle(0);
    } else if (const auto margin = WideMargin(ray, model, maxDistance)) {
        WithStack(model.wide()->stackSize(), [&](uint32_t* stack) { walk.RunWide(*margin, stack); });
    } else {
        WithStack(model.tree().depth + 2, [&](uint32_t* stack) { walk.Run(stack); });
    }
}

bool RayCollider::MeetsAny(const Ray& ray, const Model& model, LastBlocker& last) const {
    std::vector<CollisionFace> faces;
    const std::optional<float> margin = WideMargin(ray, model, maxDistance);
    if (!margin) {
        RayCollider first = *this;
        first.firstContact = true;
        first.Collide(ray, model, faces);
        return !faces.empty();
    }
    const Walk walk(*this, ray, model, faces);
    bool meets = false;
    WithStack(model.wide()->stackSize(), [&](uint32_t* stack) { meets = walk.MeetsAny(*margin, stack, last); });
    return meets;
}

bool RayCollider::MeetsTriangle(const Ray& ray, const Model& model, uint32_t triangle) const {
    std::vector<CollisionFace> unused;
    CollisionFace face;
    return Walk(*this, ray, model, unused).MeetsTriangle(triangle, face);
}

}  // namespace k2k::Opcode
