#include "solid/block_faces.h"

#include "driver/build_log.h"
#include "driver/build_options.h"
#include "solid/block_state.h"
#include "solid/block_warnings.h"
#include "solid/polygon_clip.h"

namespace k2k {

namespace {

constexpr double LargestCoordinate = 999999;
constexpr float OutOfPlaneDistance = 2.0F;
constexpr double NullEdgeLength = 0.01;
constexpr double WholeNumberSnap = 0.001;  // a coordinate this near to a whole number is meant to be it
constexpr int32_t CallsPerMark = 61;

void PrintProgressMark() {
    int32_t& calls = Blocks().callsSinceMark;
    if (++calls < CallsPerMark) return;
    calls = 0;
    BuildLog(".");
}

std::vector<CPlane> FlippedPlanes(const std::vector<BlockSide>& sides) {
    std::vector<CPlane> flipped;
    flipped.reserve(sides.size());
    for (const BlockSide& side : sides) flipped.push_back(FlippedPlane(side.plane));
    return flipped;
}

// Keeps what lies in front of the plane, and all of it when nothing does.
void ClipInPlace(std::vector<Vec3d>& points, const CPlane& plane, double epsilon, std::vector<Vec3d>& scratch) {
    const PointSides sides(points, plane, epsilon);
    if (sides.front == 0 || sides.back == 0) return;
    KeepFront(points, plane, sides, scratch);
    points.swap(scratch);
}

// The side's polygon, cut down by all other sides.
std::vector<Vec3d> ClippedSide(const std::vector<BlockSide>& sides, const std::vector<CPlane>& flipped, size_t side) {
    const double epsilon = Options().eps;
    std::vector<Vec3d> points = BasePolygonForPlane(sides[side].plane.normal, sides[side].plane.dist)->points;
    std::vector<Vec3d> scratch;
    for (size_t other = 0; other < sides.size(); ++other) {
        if (other != side) ClipInPlace(points, flipped[other], epsilon, scratch);
    }
    return points;
}

float Snapped(double coordinate) {
    const double whole = Nearest(coordinate);
    return static_cast<float>(std::fabs(coordinate - whole) < WholeNumberSnap ? whole : coordinate);
}

std::unique_ptr<CBlockFace> FaceOfPoints(const std::vector<Vec3d>& points, BlockBounds& bounds) {
    auto face = std::make_unique<CBlockFace>();
    face->points.reserve(points.size());
    for (const Vec3d& point : points) {
        face->points.push_back({Snapped(point[0]), Snapped(point[1]), Snapped(point[2])});
        bounds.Extend(face->points.back());
    }
    return face;
}

void CheckRange(const CBlockFace& face, const Vec3& point) {
    for (const float coordinate : point) {
        const bool isInRange = std::fabs(coordinate) <= LargestCoordinate;  // a coordinate that is no number is not
        if (!isInRange) {
            FatalError("E007: Block %d out of range", face.sourceBlock - 1);
        }
    }
}

void CheckInPlane(const CBlockFace& face, const Vec3& point, int32_t hull) {
    const CPlane& plane = TablePlane(face.planenum);
    const auto distance = static_cast<float>(Dot(plane.normal, point) - plane.dist);
    if (!(distance < -OutOfPlaneDistance || distance > OutOfPlaneDistance)) return;
    ++WarnCount;
    if (!WarnsInHull(BlockWarning::VertexOutOfPlane, hull)) return;
    // The only warning that shows the internal number.
    BuildLog(" \nWARNING W010: block %d - vertex out of plane!\n", face.sourceBlock);
}

void CheckEdgeLength(const CBlockFace& face, const Vec3& edge, int32_t hull) {
    if (std::sqrt(LengthSquared(edge)) >= NullEdgeLength) return;
    ++WarnCount;
    if (!WarnsInHull(BlockWarning::NullEdge, hull)) return;
    BuildLog(" \nWARNING W011: block %d - null length edge!\n", face.sourceBlock - 1);
}

// No vertex may lie beyond the edge that begins at this one.
void CheckConvexAt(const CBlockFace& face, size_t vertex, const Vec3& edge, int32_t hull) {
    Vec3 edgeNormal = Cross(FaceNormal(face), edge);
    Normalize(edgeNormal);
    const double limit = Dot(face.points[vertex], edgeNormal) + Options().eps;
    for (size_t other = 0; other < face.points.size(); ++other) {
        if (other == vertex || !(Dot(face.points[other], edgeNormal) > limit)) continue;
        ++WarnCount;
        if (!WarnsInHull(BlockWarning::NonConvex, hull)) continue;
        BuildLog(" \nWARNING W012: block %d non-convex!\n", face.sourceBlock - 1);
    }
}

}  // namespace

void BlockBounds::Extend(const Vec3& point) {
    for (size_t axis = 0; axis < 3; ++axis) {
        if (point[axis] < mins[axis]) mins[axis] = point[axis];
        if (point[axis] > maxs[axis]) maxs[axis] = point[axis];
    }
}

void CheckFace(const CBlockFace& face, int32_t hull) {
    const size_t count = face.points.size();
    if (count < 3) FatalError(" \nSurface: %i vertices", static_cast<int>(count));
    for (size_t i = 0; i < count; ++i) {
        const Vec3& point = face.points[i];
        const Vec3 edge = Sub(face.points[(i + 1) % count], point);
        CheckRange(face, point);
        CheckInPlane(face, point, hull);
        CheckEdgeLength(face, edge, hull);
        CheckConvexAt(face, i, edge, hull);
    }
}

BlockFaces BuildBlockFaces(const MapBlock& block, const std::vector<BlockSide>& sides, int32_t hull) {
    PrintProgressMark();
    const std::vector<CPlane> flipped = FlippedPlanes(sides);
    BlockFaces built;
    for (size_t i = 0; i < sides.size(); ++i) {
        const std::vector<Vec3d> points = ClippedSide(sides, flipped, i);
        if (points.size() > MaxFaceVertices) FatalError("E09E - block %i has too many edges", block.number - 1);
        std::unique_ptr<CBlockFace> face = FaceOfPoints(points, built.bounds);
        face->sourceBlock = block.number;
        face->texinfo = sides[i].texinfo;
        face->planenum = FindPlane(sides[i].plane, face->planeside);
        built.faces.push_front(std::move(face));
        CheckFace(*built.faces.front(), hull);
    }
    return built;
}

}  // namespace k2k
