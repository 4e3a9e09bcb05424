#include "solid/expand_block.h"

#include "driver/build_log.h"
#include "driver/build_options.h"
#include "levelfile/texture_data.h"
#include "solid/block_state.h"
#include "solid/texture_axes.h"
#include "solid/vectors.h"

namespace k2k {

namespace {

constexpr double SamePoint = 0.01;         // per axis, for points and for normals
constexpr double LengthTolerance = 0.001;  // of the normals of bevels
constexpr double PerpendicularTolerance = 1e-5;

// The texinfo of a bevel when the visual hull is not hull 0: row 0 projected onto the plane.
int32_t ProjectedTexinfo(const Vec3& normal) {
    Texinfo texinfo = Textures().GetTexinfo(0);
    MakePlaneTextureAxes(normal, {texinfo.shiftS, texinfo.shiftT}, {1.0F, 1.0F}, 0.0F, texinfo);
    return Textures().AddTexinfo(texinfo);
}

bool HasPlane(const CPlane& plane, const std::vector<BlockSide>& sides) {
    const double eps = Options().eps;
    const Vec3 negated = Negate(plane.normal);
    for (const BlockSide& side : sides) {
        const CPlane& known = side.plane;
        if (VectorEqual(known.normal, plane.normal, SamePoint) && AbsDifference(known.dist, plane.dist) <= eps)
            return true;
        if (VectorEqual(known.normal, negated, SamePoint) && AbsDifference(known.dist, -plane.dist) <= eps) return true;
    }
    return false;
}

class HullExpander {
  public:
    HullExpander(int32_t hull, std::vector<BlockSide>& sides) : box_(HullBoxOf(hull)), sides_(sides) {}

    void AddPoints(const FaceList& faces);
    void MoveSides();
    bool AddAxialPlanes(const BlockBounds& bounds);
    bool AddEdges(const FaceList& faces);

  private:
    size_t AddHullPoint(const Vec3& point);
    bool AddHullEdge(const Vec3& p1, const Vec3& p2);
    bool AddEdgePlanes(const Vec3& p1, const Vec3& edge, size_t axis);
    bool TestAddPlane(CPlane plane);
    float BoxBound(size_t which, size_t axis) const { return which == 0 ? box_.mins[axis] : box_.maxs[axis]; }

    HullBox box_;
    std::vector<BlockSide>& sides_;
    std::vector<Vec3> points_;
    std::vector<Vec3> corners_;  // 8 a point: the box set on it
    std::vector<std::array<size_t, 2>> edges_;
};

void HullExpander::AddPoints(const FaceList& faces) {
    for (const CBlockFace& face : faces) {
        for (const Vec3& point : face.points) AddHullPoint(point);
    }
}

void HullExpander::MoveSides() {
    for (BlockSide& side : sides_) {
        CPlane& plane = side.plane;
        Vec3 corner{};
        for (size_t axis = 0; axis < 3; ++axis) {
            if (plane.normal[axis] > 0) corner[axis] = box_.maxs[axis];
            if (plane.normal[axis] < 0) corner[axis] = box_.mins[axis];
        }
        plane.dist = static_cast<float>(plane.dist + Dot(corner, plane.normal));
    }
}

bool HullExpander::AddAxialPlanes(const BlockBounds& bounds) {
    bool isAdded = false;
    for (size_t axis = 0; axis < 3; ++axis) {
        CPlane lower;
        lower.normal[axis] = -1;
        lower.dist = -bounds.mins[axis] - box_.mins[axis];
        lower.type = static_cast<int32_t>(axis) - 3;
        isAdded |= AddPlane(lower, sides_);
        CPlane upper;
        upper.normal[axis] = 1;
        upper.dist = bounds.maxs[axis] + box_.maxs[axis];
        upper.type = static_cast<int32_t>(axis);
        isAdded |= AddPlane(upper, sides_);
    }
    return isAdded;
}

bool HullExpander::AddEdges(const FaceList& faces) {
    bool isAdded = false;
    for (const CBlockFace& face : faces) {
        for (size_t i = 0; i < face.points.size(); ++i) {
            isAdded |= AddHullEdge(face.points[i], face.points[(i + 1) % face.points.size()]);
        }
    }
    return isAdded;
}

size_t HullExpander::AddHullPoint(const Vec3& point) {
    for (size_t i = 0; i < points_.size(); ++i) {
        if (VectorEqual(points_[i], point, SamePoint)) return i;
    }
    if (points_.size() == MaxHullPoints) FatalError(" \nBlock with too many vertices");
    points_.push_back(point);
    for (size_t corner = 0; corner < 8; ++corner) {
        const Vec3 offset{BoxBound(corner >> 2U & 1U, 0), BoxBound(corner >> 1U & 1U, 1), BoxBound(corner & 1U, 2)};
        corners_.push_back(Add(point, offset));
    }
    return points_.size() - 1;
}

bool HullExpander::AddHullEdge(const Vec3& p1, const Vec3& p2) {
    const size_t first = AddHullPoint(p1);
    const size_t second = AddHullPoint(p2);
    for (const std::array<size_t, 2>& edge : edges_) {
        if (edge == std::array{first, second} || edge == std::array{second, first}) return false;
    }
    if (edges_.size() == MaxHullEdges) FatalError("E012a: Map size - too many edges");
    edges_.push_back({first, second});

    Vec3 edge = Sub(p1, p2);
    Normalize(edge);
    bool isAdded = false;
    for (size_t axis = 0; axis < 3; ++axis) isAdded |= AddEdgePlanes(p1, edge, axis);
    return isAdded;
}

// The four planes through the edge, moved to the box's edges along an axis that the edge is perpendicular to.
bool HullExpander::AddEdgePlanes(const Vec3& p1, const Vec3& edge, size_t axis) {
    Vec3 along{};
    along[axis] = 1;
    CPlane plane;
    plane.normal = Cross(along, edge);
    // Not normalised: an edge that is not perpendicular to the axis gives a shorter vector and no plane.
    const double length = std::sqrt(LengthSquared(plane.normal));
    const bool isUnit = length >= 1 - PerpendicularTolerance && length <= 1 + PerpendicularTolerance;
    if (!isUnit) return false;

    const size_t b = (axis + 1) % 3;
    const size_t c = (axis + 2) % 3;
    bool isAdded = false;
    for (size_t d = 0; d < 2; ++d) {
        for (size_t e = 0; e < 2; ++e) {
            Vec3 origin = p1;
            origin[b] += BoxBound(d, b);
            origin[c] += BoxBound(e, c);
            plane.dist = static_cast<float>(Dot(origin, plane.normal));
            SetPlaneType(plane);
            isAdded |= TestAddPlane(plane);
        }
    }
    return isAdded;
}

// Adds the plane, facing outwards, unless it would cut the expanded block.
bool HullExpander::TestAddPlane(CPlane plane) {
    if (HasPlane(plane, sides_)) return false;
    const double eps = Options().eps;
    bool isBelow = false;
    bool isAbove = false;
    for (const Vec3& corner : corners_) {
        const double d = Dot(corner, plane.normal) - plane.dist;
        isBelow |= d < -eps;
        isAbove |= d > eps;
        if (isBelow && isAbove) return false;
    }
    return AddPlane(isAbove ? FlippedPlane(plane) : plane, sides_);
}

}  // namespace

bool AddPlane(const CPlane& plane, std::vector<BlockSide>& sides) {
    const double length = std::sqrt(LengthSquared(plane.normal));
    const bool isUnit = length >= 1 - LengthTolerance && length <= 1 + LengthTolerance;
    if (!isUnit) FatalError(" \nE702");
    if (HasPlane(plane, sides)) return false;
    BlockSide side{plane, sides.empty() ? 0 : sides.front().texinfo};
    if (Options().sethulls[0] != 0) side.texinfo = ProjectedTexinfo(plane.normal);
    sides.push_back(side);
    return true;
}

bool ExpandBlock(int32_t hull, std::vector<BlockSide>& sides, const BlockFaces& built) {
    HullExpander expander(hull, sides);
    expander.AddPoints(built.faces);
    expander.MoveSides();
    const bool hasAxial = expander.AddAxialPlanes(built.bounds);
    const bool hasBevels = expander.AddEdges(built.faces);
    return hasAxial || hasBevels;
}

}  // namespace k2k
