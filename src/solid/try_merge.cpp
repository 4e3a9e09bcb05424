// Joining two coplanar faces along a shared edge.
#include <optional>

#include "solid/csg.h"
#include "solid/merge_list.h"
#include "solid/vectors.h"

namespace k2k {

namespace {

constexpr double SamePoint = 0.001;  // per axis
constexpr double StraightDot = 0.001;

struct SharedEdge {
    size_t first, second;  // the edges begin at these points of the first and of the second face
};

// Points by number, counted round the face.
const Vec3& PointAt(const CBlockFace& face, size_t point) {
    return face.points[point % face.points.size()];
}
const Vec3& PointBefore(const CBlockFace& face, size_t point) {
    return PointAt(face, point + face.points.size() - 1);
}

std::optional<SharedEdge> FindSharedEdge(const CBlockFace& f1, const CBlockFace& f2) {
    for (size_t i = 0; i < f1.points.size(); ++i) {
        for (size_t j = 0; j < f2.points.size(); ++j) {
            if (IsOppositeEdge(f1, i, f2, j)) return SharedEdge{i, j};
        }
    }
    return std::nullopt;
}

// How the outlines of both faces meet at a corner.
enum class Corner { Convex, Straight, Concave };

// The corner at point, between an edge of one face and the next point of the other.
Corner CornerAt(const Vec3& point, const Vec3& edge, const Vec3& next, const Vec3& planeNormal) {
    Vec3 normal = Cross(planeNormal, edge);
    Normalize(normal);
    const auto dot = static_cast<float>(Dot(Sub(next, point), normal));
    if (dot > StraightDot) return Corner::Concave;
    return dot < -StraightDot ? Corner::Convex : Corner::Straight;
}

// Appends the points from the one after `edge` round to the one before it.
void AppendOutline(const CBlockFace& face, size_t edge, bool keepFirst, std::vector<Vec3>& points) {
    const size_t count = face.points.size();
    for (size_t step = keepFirst ? 1 : 2; step < count; ++step) points.push_back(face.points[(edge + step) % count]);
}

}  // namespace

bool IsOppositeEdge(const CBlockFace& f1, size_t i, const CBlockFace& f2, size_t j) {
    return VectorEqual(PointAt(f1, i), PointAt(f2, j + 1), SamePoint) &&
           VectorEqual(PointAt(f1, i + 1), PointAt(f2, j), SamePoint);
}

bool MayMerge(const CBlockFace& f1, const CBlockFace& f2) {
    return f1.numpoints() + f2.numpoints() <= MaxFaceVertices && !f1.mergedAway && !f2.mergedAway &&
           f1.planeside == f2.planeside && f1.texinfo == f2.texinfo && f1.contents == f2.contents;
}

std::unique_ptr<CBlockFace> TryMerge(const CBlockFace& f1, const CBlockFace& f2) {
    if (!MayMerge(f1, f2)) return nullptr;
    const std::optional<SharedEdge> edge = FindSharedEdge(f1, f2);
    if (!edge) return nullptr;
    const auto [i, j] = *edge;
    const Vec3 planeNormal = FaceNormal(f1);
    const Vec3& p1 = PointAt(f1, i);
    const Vec3& p2 = PointAt(f1, i + 1);

    const Corner first = CornerAt(p1, Sub(p1, PointBefore(f1, i)), PointAt(f2, j + 2), planeNormal);
    if (first == Corner::Concave) return nullptr;
    const Corner second = CornerAt(p2, Sub(PointAt(f1, i + 2), p2), PointBefore(f2, j), planeNormal);
    if (second == Corner::Concave) return nullptr;

    std::unique_ptr<CBlockFace> merged = f1.CopyHeader();
    merged->points.reserve(f1.points.size() + f2.points.size());
    AppendOutline(f1, i, second == Corner::Convex, merged->points);
    AppendOutline(f2, j, first == Corner::Convex, merged->points);
    return merged;
}

}  // namespace k2k
