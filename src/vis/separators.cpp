// Planes that separate two polygons, each through an edge of the one and a point of the other.
#include "vis/separators.h"

#include <algorithm>
#include <cmath>

#include "solid/vectors.h"

namespace k2k {
namespace {

double AbsSum(const Vec3d& v) {
    return std::abs(v[0]) + std::abs(v[1]) + std::abs(v[2]);
}

// One edge of source, from point i to point l, with one point j of pass.
struct Candidate {
    FlowPoints source, pass;
    size_t i, l, j;
    Vec3 cross;  // of the edge and the way from its start to the point: the normal before it is brought to length 1
};

// What the quick test says of a point's place to the plane of a candidate.
enum class Place { Behind, Unclear, InFront };

// Places points without a square root or a division: distances are compared times the length of the cross product. Only
// a place that no rounding of the real test can change is called clear. Against the real distance, which comes from the
// normal of length 1, the limit allows for
//   - components below 0.0001 that Normalize sets to zero, and the rounding of the others (of the way from the point
//   j),
//   - the rounding of the plane's distance to 32 bits (of the point j).
class QuickTest {
  public:
    QuickTest(const Candidate& at, double eps)
        : cross_(Widen(at.cross)),
          origin_(at.pass[at.j]),
          lengthBound_(AbsSum(cross_)),
          limit_(eps * (1 + 1e-6) + 1e-6 + 1.2e-7 * AbsSum(origin_)) {}

    Place PlaceOf(const Vec3d& point) const {
        const Vec3d way = Sub(point, origin_);
        const double height = Dot(cross_, way);
        const double clear = lengthBound_ * (limit_ + 1.1e-4 * AbsSum(way));
        return height > clear ? Place::InFront : height < -clear ? Place::Behind : Place::Unclear;
    }

  private:
    Vec3d cross_, origin_;
    double lengthBound_, limit_;
};

// Whether the candidate certainly is no separator: pass on both sides, or on the side of source.
bool IsClearlyNone(const Candidate& at, double eps) {
    const size_t passCount = at.pass.size();
    const QuickTest test(at, eps);
    const Place next = test.PlaceOf(at.pass[at.j + 1 == passCount ? 0 : at.j + 1]);
    if (next == Place::Unclear) return false;
    const Place before = test.PlaceOf(at.pass[at.j == 0 ? passCount - 1 : at.j - 1]);
    if (before != Place::Unclear && before != next) return true;
    // The first point off the edge decides where source lies.
    size_t k = 0;
    while (k == at.i || k == at.l) ++k;
    return k < at.source.size() && test.PlaceOf(at.source[k]) == next;
}

float NarrowDistance(const FlowPlane& plane, const Vec3d& point) {
    return static_cast<float>(Distance(plane, point));
}

void Reverse(FlowPlane& plane) {
    for (double& component : plane.normal) component = -component;
    plane.dist = -plane.dist;
}

// Turns the plane so that source lies behind it. False when all of source lies on it.
bool PutBehind(const Candidate& at, float eps, FlowPlane& plane) {
    for (size_t k = 0; k < at.source.size(); ++k) {
        if (k == at.i || k == at.l) continue;
        const float dist = NarrowDistance(plane, at.source[k]);
        if (dist < -eps) return true;
        if (dist > eps) {
            Reverse(plane);
            return true;
        }
    }
    return false;
}

// Whether pass lies in front, with at least one point off the plane.
bool HasInFront(const Candidate& at, float eps, const FlowPlane& plane) {
    bool anyFront = false;
    for (size_t k = 0; k < at.pass.size(); ++k) {
        if (k == at.j) continue;
        const float dist = NarrowDistance(plane, at.pass[k]);
        if (dist < -eps) return false;
        anyFront |= dist > eps;
    }
    return anyFront;
}

// The separator of the candidate, when it is one.
bool IsSeparator(const Candidate& at, float eps, FlowPlane& plane) {
    Vec3 normal = at.cross;
    if (Normalize(normal) <= eps) return false;
    plane.normal = Widen(normal);
    plane.dist = static_cast<float>(Dot(normal, at.pass[at.j]));
    return PutBehind(at, eps, plane) && HasInFront(at, eps, plane);
}

}  // namespace

void AddSeparators(FlowPoints source, FlowPoints pass, bool flip, float eps, std::vector<FlowPlane>& planes) {
    const bool quick = eps >= 0;
    for (size_t i = 0; i < source.size(); ++i) {
        const size_t l = i + 1 == source.size() ? 0 : i + 1;
        const Vec3 edge = Narrow(Sub(source[l], source[i]));
        for (size_t j = 0; j < pass.size(); ++j) {
            const Candidate at{source, pass, i, l, j, Cross(edge, Narrow(Sub(pass[j], source[i])))};
            if (quick && IsClearlyNone(at, eps)) continue;
            FlowPlane plane;
            if (!IsSeparator(at, eps, plane)) continue;
            if (flip) Reverse(plane);
            planes.push_back(plane);
        }
    }
}

}  // namespace k2k
