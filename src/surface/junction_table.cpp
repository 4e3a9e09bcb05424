#include "surface/junction_table.h"

#include <algorithm>
#include <cmath>

#include "solid/vectors.h"
#include "surface/table_limits.h"

namespace k2k {

namespace {

constexpr double DirectionEpsilon = 0.001;  // components this small count as zero
constexpr double LineEpsilon = 0.001;       // equal lines: per component of origin and direction
constexpr double SearchMargin = 0.002;
constexpr double PointEpsilon = 0.01;  // along the line

// The area of the hash is centred on the world's origin.
Vec3 HashReach(const Vec3& mins, const Vec3& maxs) {
    Vec3 reach{};
    for (size_t axis = 0; axis < 3; ++axis) reach[axis] = std::max(std::fabs(mins[axis]), std::fabs(maxs[axis]));
    return reach;
}

// The point at distance t along a direction, narrowed once.
Vec3 PointAlong(const Vec3& from, const Vec3& dir, double t) {
    return Narrow({from[0] + t * dir[0], from[1] + t * dir[1], from[2] + t * dir[2]});
}

// A unit vector that is the same for both directions of a line. False: no length, and the unit z vector.
bool MakeCanonical(Vec3& dir) {
    Normalize(dir);
    for (float& component : dir) {
        if (component > DirectionEpsilon) return true;
        if (component < -DirectionEpsilon) {
            dir = Negate(dir);
            return true;
        }
        component = 0;
    }
    dir = {0, 0, 1};
    return false;
}

void WarnOfNullEdge(int32_t sourceBlock) {
    if (!WarnOnce(WarnFamily::W201)) return;
    if (sourceBlock != 0) {
        BuildLog(" \nWARNING W201: block %d - null length edge!", sourceBlock - 1);
    } else {
        BuildLog(" \nWARNING W202: null length edge!");
    }
}

}  // namespace

JunctionTable::JunctionTable(const Vec3& mins, const Vec3& maxs) {
    const Vec3 reach = HashReach(mins, maxs);
    hash_ = GridHash(Negate(reach), reach, JunctionHashCells);
}

int32_t JunctionTable::FindLatest(const Vec3& dir, const Vec3& origin, uint32_t chain) const {
    int32_t latest = -1;
    index_.ForEachNear(chain, Widen(origin), SearchMargin, [&](int32_t number) {
        const JunctionEdge& edge = edges_[static_cast<size_t>(number)];
        const bool matches = edge.chain == chain && VectorEqual(edge.origin, origin, LineEpsilon) &&
                             VectorEqual(edge.dir, dir, LineEpsilon);
        if (matches) latest = std::max(latest, number);
    });
    return latest;
}

int32_t JunctionTable::Enter(const Vec3& dir, const Vec3& origin, uint32_t chain) {
    RequireRoom(edges_.size(), JunctionEdgeLimit);
    const auto number = static_cast<int32_t>(edges_.size());
    index_.Add(chain, Widen(origin), number);
    edges_.push_back({dir, origin, chain, {}});
    return number;
}

JunctionSide JunctionTable::FindJunctionEdge(const Vec3& p1, const Vec3& p2, int32_t sourceBlock) {
    JunctionSide side;
    Vec3 dir = Sub(p2, p1);
    side.isNull = !MakeCanonical(dir);
    if (side.isNull) WarnOfNullEdge(sourceBlock);

    side.t1 = static_cast<float>(Dot(p1, dir));
    side.t2 = static_cast<float>(Dot(p2, dir));
    const Vec3 origin = PointAlong(p1, dir, -side.t1);
    if (side.t2 < side.t1) std::swap(side.t1, side.t2);

    const uint32_t chain = std::min(hash_(origin), JunctionHashCells - 1);
    side.edge = FindLatest(dir, origin, chain);
    if (side.edge < 0) side.edge = Enter(dir, origin, chain);
    return side;
}

// The points are at least the epsilon apart, so only the two around the new one can be too near.
void JunctionTable::AddJunctionPoint(int32_t edge, float t) {
    std::vector<float>& points = edges_[static_cast<size_t>(edge)].points;
    const auto above = std::upper_bound(points.begin(), points.end(), t);
    const auto isThere = [t = double{t}](double point) { return std::fabs(t - point) < PointEpsilon; };
    if (above != points.end() && isThere(*above)) return;
    if (above != points.begin() && isThere(*(above - 1))) return;
    RequireRoom(pointCount_, JunctionPointLimit);
    ++pointCount_;
    points.insert(above, t);
}

std::optional<Vec3> JunctionTable::MissingPoint(const JunctionSide& side) const {
    const JunctionEdge& edge = edges_[static_cast<size_t>(side.edge)];
    const double start = side.t1 + PointEpsilon;
    const auto point =
        std::lower_bound(edge.points.begin(), edge.points.end(), start, [](float t, double from) { return t < from; });
    if (point == edge.points.end() || !(*point < side.t2 - PointEpsilon)) return std::nullopt;
    return PointAlong(edge.origin, edge.dir, *point);
}

}  // namespace k2k
