#include <array>
#include <cmath>

#include "raytree/ray_tree.h"
#include "solid/vectors.h"

namespace k2k::Opcode {
namespace {

constexpr double DeterminantEpsilon = 1e-06;

// The segment as the box test wants it, from the library's arithmetic in 32 bits.
struct Segment {
    Vec3 half{};  // half of the way along each axis
    Vec3 center{};
    Vec3 absHalf{};  // magnitudes of half

    Segment(const Ray& ray, float length) {
        for (size_t k = 0; k < 3; k++) {
            half[k] = ray.direction[k] * 0.5F * length;
            center[k] = ray.origin[k] + half[k];
            absHalf[k] = std::fabs(half[k]);
        }
    }
};

// Separating axes: the box's three, then the three crosses of the segment with them.
bool MeetsBox(const Segment& s, const AABBNoLeafNode& box) {
    const float dx = s.center[0] - box.center[0];
    if (std::fabs(dx) > box.extents[0] + s.absHalf[0]) return false;
    const float dy = s.center[1] - box.center[1];
    if (std::fabs(dy) > box.extents[1] + s.absHalf[1]) return false;
    const float dz = s.center[2] - box.center[2];
    if (std::fabs(dz) > box.extents[2] + s.absHalf[2]) return false;
    if (std::fabs(s.half[1] * dz - s.half[2] * dy) > box.extents[1] * s.absHalf[2] + box.extents[2] * s.absHalf[1])
        return false;
    if (std::fabs(s.half[2] * dx - s.half[0] * dz) > box.extents[0] * s.absHalf[2] + box.extents[2] * s.absHalf[0])
        return false;
    return !(std::fabs(s.half[0] * dy - s.half[1] * dx) >
             box.extents[0] * s.absHalf[1] + box.extents[1] * s.absHalf[0]);
}

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
        const auto& [a, b, c] = model_.mesh().triangles[number];
        const auto& vertices = model_.mesh().vertices;
        const Vec3 e1 = Sub(vertices[b], vertices[a]), e2 = Sub(vertices[c], vertices[a]);
        const Vec3 t = Sub(ray_.origin, vertices[a]);
        TriangleHit hit;
        const bool meets = collider_.culling ? MeetsFront(ray_.direction, e1, e2, t, hit)
                                             : MeetsEitherSide(ray_.direction, e1, e2, t, hit);
        const CollisionFace face{number, static_cast<float>(hit.distance), static_cast<float>(hit.u),
                                 static_cast<float>(hit.v)};
        if (!meets || !(face.distance < collider_.maxDistance)) return false;
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

  private:
    const RayCollider& collider_;
    const Ray& ray_;
    const Model& model_;
    const Segment segment_;
    std::vector<CollisionFace>& faces_;
};

constexpr uint32_t UsualDepth = 126;

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
    } else if (model.tree().depth <= UsualDepth) {
        std::array<uint32_t, UsualDepth + 2> stack;
        walk.Run(stack.data());
    } else {
        std::vector<uint32_t> stack(model.tree().depth + 2);
        walk.Run(stack.data());
    }
}

}  // namespace k2k::Opcode
