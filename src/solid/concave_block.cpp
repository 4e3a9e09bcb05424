#include "solid/concave_block.h"

#include "driver/build_log.h"
#include "solid/vectors.h"

namespace k2k {

namespace {

constexpr double LeastSquaredLength = 0.1;  // shorter differences give no direction
constexpr double ParallelDot = 0.99;
constexpr double FlatDistance = 0.2;  // points of a flat face are this near to its plane
constexpr float NoPlaneDist = -2212.0F;

// The first difference of two points, in pair order, that is long enough and passes the test; normalised.
template <typename Accept>
std::optional<Vec3> FirstDirection(const std::vector<Vec3>& points, const Accept& accept) {
    for (size_t i = 0; i < points.size(); ++i) {
        for (size_t j = i + 1; j < points.size(); ++j) {
            Vec3 direction = Sub(points[i], points[j]);
            if (!(LengthSquared(direction) >= LeastSquaredLength)) continue;
            Normalize(direction);
            if (accept(direction)) return direction;
        }
    }
    return std::nullopt;
}

std::optional<Vec3> NormalOfPoints(const std::vector<Vec3>& points) {
    const auto first = FirstDirection(points, [](const Vec3&) { return true; });
    if (!first) return std::nullopt;
    const auto second = FirstDirection(points, [&](const Vec3& v) { return std::fabs(Dot(*first, v)) <= ParallelDot; });
    if (!second) return std::nullopt;
    return Cross(*first, *second);
}

size_t LargestComponent(const Vec3& v) {
    size_t axis = 0;
    if (std::fabs(v[1]) > std::fabs(v[axis])) axis = 1;
    if (std::fabs(v[2]) > std::fabs(v[axis])) axis = 2;
    return axis;
}

void AddTriangles(const CBlockFace& face, FaceList& faces) {
    FaceList triangles = TessellateFace(face);
    for (CBlockFace& triangle : triangles) {
        triangle.planenum = FindPlane(BestFitPlane(triangle), triangle.planeside);
    }
    faces.splice_front(std::move(triangles));
}

std::unique_ptr<CBlockFace> FaceAsGiven(const MapBlock& block, const BlockSide& side, BlockBounds& bounds) {
    auto face = std::make_unique<CBlockFace>();
    face->sourceBlock = block.number;
    face->texinfo = side.texinfo;
    if (side.mapFace != nullptr) face->points = side.mapFace->polygon;
    if (face->points.size() > MaxFaceVertices) FatalError("E09E - block %i has too many edges", block.number - 1);
    for (const Vec3& point : face->points) bounds.Extend(point);
    return face;
}

BlockBounds BoundsOfVertices(const std::vector<BlockSide>& sides) {
    BlockBounds bounds;
    for (const BlockSide& side : sides) {
        if (side.mapFace == nullptr) continue;
        for (const Vec3& point : side.mapFace->polygon) bounds.Extend(point);
    }
    return bounds;
}

struct BoxFace {
    size_t axis;
    float direction;  // of the normal
    bool isAtMaxs;
};

// The walls face into the box, floor and ceiling out of it. Hulls of concave blocks are made so.
constexpr std::array<BoxFace, 6> BoxFaces{{
    {1, -1, true},
    {1, 1, false},
    {2, -1, false},
    {2, 1, true},
    {0, -1, true},
    {0, 1, false},
}};

// The corners clockwise as the normal's tip sees them, from upper left on.
std::vector<Vec3> BoxCorners(const BlockBounds& box, const BoxFace& side, const Vec3& normal) {
    const Vec3 up = side.axis == 2 ? Vec3{1, 0, 0} : Vec3{0, 0, 1};
    const Vec3 right = Cross(up, normal);
    constexpr std::array<std::array<float, 2>, 4> Turns{{{-1, 1}, {1, 1}, {1, -1}, {-1, -1}}};
    std::vector<Vec3> corners;
    for (const auto& [rightward, upward] : Turns) {
        Vec3 corner;
        for (size_t axis = 0; axis < 3; ++axis) {
            const bool isMaxs = axis == side.axis ? side.isAtMaxs : right[axis] * rightward + up[axis] * upward > 0;
            corner[axis] = isMaxs ? box.maxs[axis] : box.mins[axis];
        }
        corners.push_back(corner);
    }
    return corners;
}

std::unique_ptr<CBlockFace> MakeBoxFace(const BlockBounds& box, const BoxFace& side, int32_t blockNumber) {
    CPlane plane;
    plane.normal[side.axis] = side.direction;
    plane.dist = side.direction * (side.isAtMaxs ? box.maxs : box.mins)[side.axis];
    SetPlaneType(plane);
    auto face = std::make_unique<CBlockFace>();
    face->sourceBlock = blockNumber;
    face->planenum = FindPlane(plane, face->planeside);
    face->points = BoxCorners(box, side, plane.normal);
    return face;
}

}  // namespace

std::optional<std::vector<Point2D>> ProjectTo2D(const std::vector<Vec3>& points) {
    const std::optional<Vec3> normal = NormalOfPoints(points);
    if (!normal) return std::nullopt;
    const double d = Dot(points[0], *normal);
    const size_t dropped = LargestComponent(*normal);
    const size_t u = dropped == 0 ? 1 : 0;
    const size_t v = dropped == 2 ? 1 : 2;
    std::vector<Point2D> projected;
    projected.reserve(points.size());
    for (const Vec3& point : points) {
        if (std::fabs(Dot(*normal, point) - d) > FlatDistance) return std::nullopt;
        projected.push_back({point[u], point[v], static_cast<int32_t>(projected.size())});
    }
    return projected;
}

bool IsConvexFace(const CBlockFace& face) {
    const std::optional<std::vector<Point2D>> points = ProjectTo2D(face.points);
    return points && NearHull2D(*points, static_cast<int32_t>(points->size())).size() >= points->size();
}

CPlane BestFitPlane(const CBlockFace& face) {
    const std::vector<Vec3>& p = face.points;
    CPlane plane;
    plane.dist = NoPlaneDist;
    if (p.size() < 3) return plane;
    Vec3d best{};
    double bestLength = -1;
    for (size_t i0 = 0; i0 < p.size(); ++i0) {
        for (size_t i1 = i0 + 1; i1 < p.size(); ++i1) {
            for (size_t i2 = i1 + 1; i2 < p.size(); ++i2) {
                const Vec3d middle = Widen(p[i1]);
                const Vec3d normal = Cross(Sub(Widen(p[i2]), middle), Sub(Widen(p[i0]), middle));
                const double length = std::sqrt(Dot(normal, normal));
                if (length <= bestLength) continue;
                best = normal;
                bestLength = length;
            }
        }
    }
    NormalizeD(best);
    plane.normal = Narrow(best);
    plane.dist = static_cast<float>(Dot(best, p[0]));
    return plane;
}

BlockFaces BuildConcaveFaces(const MapBlock& block, const std::vector<BlockSide>& sides) {
    BlockFaces built;
    for (const BlockSide& side : sides) {
        std::unique_ptr<CBlockFace> face = FaceAsGiven(block, side, built.bounds);
        if (!IsConvexFace(*face)) {
            AddTriangles(*face, built.faces);
            continue;
        }
        face->planenum = FindPlane(side.plane, face->planeside);
        built.faces.push_front(std::move(face));
        CheckFace(*built.faces.front(), 0);
    }
    return built;
}

BlockFaces BuildConcaveBox(const MapBlock& block, const std::vector<BlockSide>& sides, int32_t hull) {
    BlockFaces built{{}, BoundsOfVertices(sides)};
    if (built.bounds.mins[0] > built.bounds.maxs[0]) return built;
    const HullBox box = HullBoxOf(hull);
    built.bounds.mins = Add(built.bounds.mins, box.mins);
    built.bounds.maxs = Add(built.bounds.maxs, box.maxs);
    for (const BoxFace& side : BoxFaces) {
        built.faces.push_front(MakeBoxFace(built.bounds, side, block.number));
        CheckFace(*built.faces.front(), 0);
    }
    return built;
}

}  // namespace k2k
