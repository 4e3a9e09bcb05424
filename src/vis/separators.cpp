// Planes that separate two polygons, each through an edge of the one and a point of the other.
//
// Most pairs of an edge and a point give no separator: the other points of pass lie on both sides of their plane, or on
// the side of source. The quick test finds nearly all of these without a square root or a division, four at once.
#include "vis/separators.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>

#include "solid/vectors.h"
#include "vis/float4.h"

namespace k2k {
namespace {

double AbsSum(const Vec3d& v) {
    return std::abs(v[0]) + std::abs(v[1]) + std::abs(v[2]);
}
float AbsSum(const Vec3& v) {
    return std::abs(v[0]) + std::abs(v[1]) + std::abs(v[2]);
}

// The ways from one corner of source to the points of pass, narrowed. The last stands in front of the first as well,
// and the first behind the last, so that the neighbours of four points can be loaded as the points are.
class Ways {
  public:
    // Returns the largest sum of components.
    float Set(FlowPoints pass, const Vec3d& corner) {
        const size_t count = pass.size();
        float longest = 0;
        for (size_t j = 0; j < count; ++j) {
            const Vec3 way = Narrow(Sub(pass[j], corner));
            longest = std::max(longest, AbsSum(way));
            Put(j + 1, way);
        }
        Put(0, {x_[count], y_[count], z_[count]});
        Put(count + 1, {x_[1], y_[1], z_[1]});
        for (size_t pad = count + 2; pad < count + 1 + Lanes; ++pad) Put(pad, {});
        return longest;
    }
    Vec3x4 Before(size_t j) const { return Load(j); }
    Vec3x4 At(size_t j) const { return Load(j + 1); }
    Vec3x4 Behind(size_t j) const { return Load(j + 2); }

  private:
    void Put(size_t at, const Vec3& way) {
        x_[at] = way[0];
        y_[at] = way[1];
        z_[at] = way[2];
    }
    Vec3x4 Load(size_t at) const { return {Load4(&x_[at]), Load4(&y_[at]), Load4(&z_[at])}; }

    std::array<float, MaxPolygonPoints + 1 + Lanes> x_, y_, z_;
};

// How far from a plane a point must be for the quick test, so that no rounding can make the real test say otherwise.
// The real distance comes from the normal of length 1. Against it the limit allows for
//   - components below 0.0001 that Normalize sets to zero and the rounding of the others, along the way to the point,
//   - the narrowing of the plane's distance, by the size of pass's coordinates,
//   - the rounding of the quick test's own way and height, by the length of the ways.
// Distances are compared times the length of the cross product; the sum of its components is at least that.
class QuickLimit {
  public:
    QuickLimit() = default;
    QuickLimit(double eps, double passSize, float longestWay)
        : base_(static_cast<float>(eps * (1 + 1e-5) + 1e-5 + 1.2e-7 * passSize + 1.2e-6 * longestWay)),
          isUsable_(eps >= 0 && longestWay < 1e9F) {}

    // Ways longer than that might overflow, and a negative tolerance has a logic of its own.
    bool isUsable() const { return isUsable_; }
    Float4 For(const Vec3x4& way, Float4 length) const { return length * (base_ + 1.1e-4F * AbsSum(way)); }

  private:
    float base_ = 0;
    bool isUsable_ = false;
};

float NarrowDistance(const FlowPlane& plane, const Vec3d& point) {
    return static_cast<float>(Distance(plane, point));
}

// By -1 the plane looks the other way; a product instead of a branch that nobody can foretell.
void Turn(FlowPlane& plane, double sign) {
    for (double& component : plane.normal) component *= sign;
    plane.dist *= sign;
}

// The pairs of one edge of source with the points of pass.
class EdgePairs {
  public:
    EdgePairs(FlowPoints source, FlowPoints pass, const SeparatorRules& rules)
        : source_(source), pass_(pass), eps_(rules.eps), skipRepeats_(rules.skipRepeats) {
        for (const Vec3d& point : pass) passSize_ = std::max(passSize_, AbsSum(point));
    }

    // Takes the edge from point i to the next one.
    void SetEdge(size_t i) {
        i_ = i;
        l_ = i + 1 == source_.size() ? 0 : i + 1;
        edge_ = Narrow(Sub(source_[l_], source_[i_]));
        off_ = 0;
        while (off_ == i_ || off_ == l_) ++off_;
        wayOff_ = Narrow(Sub(source_[off_], source_[i_]));
        const float longest = std::max({ways_.Set(pass_, source_[i_]), AbsSum(edge_), AbsSum(wayOff_)});
        limit_ = QuickLimit(eps_, passSize_, longest);
        last_.isKnown = false;
    }

    // What the quick test says of four neighbouring points.
    struct Four {
        Vec3x4 cross;   // of the edge and the way to the point: the normal before it is brought to length 1
        Mask4 isNone;   // certainly no separator
        Mask4 inFront;  // source certainly lies in front of the plane
        Mask4 behind;   // source certainly lies behind the plane

        // One bit for each of the first count points that needs the real test.
        uint32_t Open(size_t count) const {
            const Mask4 bits = ~isNone & Mask4{1, 2, 4, 8};
            const auto open = static_cast<uint32_t>(bits[0] | bits[1] | bits[2] | bits[3]);
            return count < Lanes ? open & ((1U << count) - 1) : open;
        }
    };
    Four Examine(size_t j) const {
        const Vec3x4 way = ways_.At(j);
        Four four{Cross(edge_, way), {}, {}, {}};
        if (!limit_.isUsable()) return four;
        const Float4 length = AbsSum(four.cross);
        const auto place = [&](const Vec3x4& to, Mask4& front, Mask4& back) {
            const Float4 height = Dot(four.cross, to);
            const Float4 clear = limit_.For(to, length);
            front = height > clear;
            back = height < -clear;
        };
        Mask4 beforeFront, beforeBack, behindFront, behindBack;
        place(ways_.Before(j) - way, beforeFront, beforeBack);
        place(ways_.Behind(j) - way, behindFront, behindBack);
        place(wayOff_ - way, four.inFront, four.behind);
        const Mask4 anyFront = beforeFront | behindFront;
        const Mask4 anyBack = beforeBack | behindBack;
        four.isNone = (anyFront & (anyBack | four.inFront)) | (anyBack & four.behind);
        return four;
    }

    // The separator of the edge and point j, when there is one: the real test.
    bool Separates(const Four& four, size_t lane, size_t j, FlowPlane& plane) {
        const Vec3 cross{four.cross.x[lane], four.cross.y[lane], four.cross.z[lane]};
        if (RepeatsLast(cross, j)) return false;
        Vec3 normal = cross;
        if (Normalize(normal) <= eps_) return false;
        plane.normal = Widen(normal);
        plane.dist = static_cast<float>(k2k::Dot(normal, pass_[j]));
        last_ = {cross, plane, skipRepeats_ && !IsNearlyAxial(normal)};
        if ((four.inFront[lane] | four.behind[lane]) == 0) return PutBehind(plane) && IsInFront(plane, j);
        Turn(plane, four.inFront[lane] != 0 ? -1.0 : 1.0);
        return IsInFront(plane, j);
    }

  private:
    // The plane of the last pair that came to the real test, before it was turned.
    struct LastPlane {
        Vec3 cross{};
        FlowPlane plane;
        bool isKnown = false;
    };

    // Whether point j gives the same plane again, and so the same outcome.
    bool RepeatsLast(const Vec3& cross, size_t j) const {
        return last_.isKnown && cross == last_.cross &&
               static_cast<float>(k2k::Dot(last_.plane.normal, pass_[j])) == last_.plane.dist;
    }

    // A component of exactly 1 beside others: a clip sets that coordinate of a cut to the plane's distance, which need
    // not lie on the plane then.
    static bool IsNearlyAxial(const Vec3& normal) {
        const bool hasOne = std::abs(normal[0]) == 1 || std::abs(normal[1]) == 1 || std::abs(normal[2]) == 1;
        return hasOne && AbsSum(normal) != 1;
    }

    // Turns the plane so that source lies behind it. False when all of source lies on it.
    bool PutBehind(FlowPlane& plane) const {
        for (size_t k = 0; k < source_.size(); ++k) {
            if (k == i_ || k == l_) continue;
            const float dist = NarrowDistance(plane, source_[k]);
            if (dist < -eps_) return true;
            if (dist > eps_) {
                Turn(plane, -1);
                return true;
            }
        }
        return false;
    }

    // Whether pass lies in front, its point j aside, with at least one point off the plane.
    bool IsInFront(const FlowPlane& plane, size_t j) const {
        bool anyFront = false;
        for (size_t k = 0; k < pass_.size(); ++k) {
            if (k == j) continue;
            const float dist = NarrowDistance(plane, pass_[k]);
            if (dist < -eps_) return false;
            anyFront |= dist > eps_;
        }
        return anyFront;
    }

    const FlowPoints source_, pass_;
    const float eps_;
    const bool skipRepeats_;
    double passSize_ = 0;  // the largest sum of coordinates
    size_t i_ = 0, l_ = 0;
    size_t off_ = 0;  // the first point of source that is not on the edge
    Vec3 edge_{}, wayOff_{};
    Ways ways_;
    QuickLimit limit_;
    LastPlane last_;
};

}  // namespace

// A cut point is on its plane but for the rounding of a few 64-bit products; a plane's own distance is off by half a
// unit of its last 32-bit digit.
bool MaySkipRepeats(double size, float eps) {
    return eps >= 1e-3F && size * 1.2e-7 < eps;
}

void AddSeparators(FlowPoints source, FlowPoints pass, bool flip, const SeparatorRules& rules,
                   std::vector<FlowPlane>& planes) {
    if (source.size() < 3 || pass.size() < 2) return;  // no point off the plane
    EdgePairs pairs(source, pass, rules);
    for (size_t i = 0; i < source.size(); ++i) {
        pairs.SetEdge(i);
        for (size_t j = 0; j < pass.size(); j += Lanes) {
            const EdgePairs::Four four = pairs.Examine(j);
            for (uint32_t open = four.Open(pass.size() - j); open != 0; open &= open - 1) {
                const auto lane = static_cast<size_t>(std::countr_zero(open));
                FlowPlane plane;
                if (!pairs.Separates(four, lane, j + lane, plane)) continue;
                if (flip) Turn(plane, -1);
                planes.push_back(plane);
            }
        }
    }
}

}  // namespace k2k
