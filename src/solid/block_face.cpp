// Sides, splitting and cleaning of the working face.
#include "solid/block_face.h"

#include "driver/build_log.h"
#include "driver/build_options.h"
#include "solid/vectors.h"

namespace k2k {

namespace {

constexpr double ShortEdge = 0.01;  // vertices that do not differ by more on any axis are one

enum class VertexSide : uint8_t { Front, Back, On };

// Distances of a face's vertices to a plane, in 32 bits, and what they mean at the -eps tolerance. The first vertex is
// repeated at the end.
struct VertexSides {
    std::array<float, MaxFaceVertices + 1> distance;
    std::array<VertexSide, MaxFaceVertices + 1> side;
    int front = 0, back = 0;

    VertexSides(const CBlockFace& face, const CPlane& plane) {
        const size_t count = face.points.size();
        const float eps = Options().eps;
        for (size_t i = 0; i < count; ++i) {
            const auto d = static_cast<float>(Dot(plane.normal, face.points[i]) - plane.dist);
            distance[i] = d;
            side[i] = d > eps ? VertexSide::Front : d < -eps ? VertexSide::Back : VertexSide::On;
            front += side[i] == VertexSide::Front;
            back += side[i] == VertexSide::Back;
        }
        distance[count] = count == 0 ? 0 : distance[0];
        side[count] = count == 0 ? VertexSide::On : side[0];
    }

    bool IsCutAfter(size_t vertex) const {
        return side[vertex] != VertexSide::On && side[vertex + 1] != VertexSide::On && side[vertex] != side[vertex + 1];
    }
};

// Where the edge from p1 to p2 meets the plane; t is the fraction of the way. Axial planes are met exactly. Narrowed
// once, at the end: pieces of neighbouring faces that are cut from different lengths of one edge meet closely that way.
Vec3 CutEdge(const Vec3& p1, const Vec3& p2, double t, const CPlane& plane) {
    Vec3 cut;
    for (size_t axis = 0; axis < 3; ++axis) {
        if (plane.normal[axis] == 1.0F) {
            cut[axis] = plane.dist;
        } else if (plane.normal[axis] == -1.0F) {
            cut[axis] = -plane.dist;
        } else {
            cut[axis] = static_cast<float>(p1[axis] + t * (static_cast<double>(p2[axis]) - p1[axis]));
        }
    }
    return cut;
}

void FailTooManyEdges(const CBlockFace& face) {
    FatalError("\nE09F - Block %i has too many edges", face.sourceBlock - 1);
}

FacePieces CutInTwo(const CBlockFace& face, const CPlane& plane, const VertexSides& sides) {
    FacePieces pieces{face.CopyHeader(), face.CopyHeader()};
    std::vector<Vec3>& front = pieces.front->points;
    std::vector<Vec3>& back = pieces.back->points;
    const size_t count = face.points.size();
    front.reserve(count + 1);
    back.reserve(count + 1);
    for (size_t i = 0; i < count; ++i) {
        const Vec3& point = face.points[i];
        if (sides.side[i] != VertexSide::Back) front.push_back(point);
        if (sides.side[i] != VertexSide::Front) back.push_back(point);
        if (!sides.IsCutAfter(i)) continue;
        const double d1 = sides.distance[i];
        const double d2 = sides.distance[i + 1];
        const Vec3 cut = CutEdge(point, face.points[(i + 1) % count], d1 / (d1 - d2), plane);
        front.push_back(cut);
        back.push_back(cut);
    }
    if (front.size() > MaxFaceVertices || back.size() > MaxFaceVertices) FailTooManyEdges(face);
    return pieces;
}

std::unique_ptr<CBlockFace> Cleaned(std::unique_ptr<CBlockFace> face) {
    if (!RemoveShortEdges(*face)) face.reset();
    return face;
}

// What a distance says about a face's side.
struct SidesSeen {
    bool front = false, back = false;
    bool Straddles() const { return front && back; }
};

SidesSeen SeeAxial(const CBlockFace& face, const CPlane& plane, double eps) {
    SidesSeen seen;
    const double upper = plane.dist + eps;
    const double lower = plane.dist - eps;
    for (const Vec3& point : face.points) {
        const double at = point[static_cast<size_t>(plane.type)];
        if (at > upper) seen.front = true;
        if (at < lower) seen.back = true;
        if (seen.Straddles()) break;
    }
    return seen;
}

SidesSeen SeeOblique(const CBlockFace& face, const CPlane& plane, double eps) {
    SidesSeen seen;
    for (const Vec3& point : face.points) {
        const double d = Dot(plane.normal, point) - plane.dist;
        if (d > eps) seen.front = true;
        if (d < -eps) seen.back = true;
        if (seen.Straddles()) break;
    }
    return seen;
}

}  // namespace

std::unique_ptr<CBlockFace> CBlockFace::CopyHeader() const {
    auto copy = std::make_unique<CBlockFace>();
    copy->planenum = planenum;
    copy->planeside = planeside;
    copy->texinfo = texinfo;
    copy->contents = contents;
    copy->sourceBlock = sourceBlock;
    copy->surfaceOut = surfaceOut;
    copy->leafCopy = leafCopy;
    copy->outputIndex = outputIndex;
    return copy;
}

std::unique_ptr<CBlockFace> CBlockFace::Clone() const {
    std::unique_ptr<CBlockFace> copy = CopyHeader();
    copy->mergedAway = mergedAway;
    copy->points = points;
    copy->edges = edges;
    return copy;
}

Vec3 FaceNormal(const CBlockFace& face) {
    const Vec3& normal = TablePlane(face.planenum).normal;
    return face.planeside != 0 ? Negate(normal) : normal;
}

PolygonRef PolygonOfFace(const CBlockFace& face) {
    std::vector<Vec3d> points;
    points.reserve(face.points.size());
    for (const Vec3& point : face.points) points.push_back(Widen(point));
    return MakePolygon(std::move(points));
}

FacePieces SplitFace(std::unique_ptr<CBlockFace> face, const CPlane& plane) {
    if (face->numpoints() < 0) FatalError(" \nE703");
    if (face->numpoints() > MaxFaceVertices) FailTooManyEdges(*face);
    const VertexSides sides(*face, plane);
    if (sides.back == 0) return {Cleaned(std::move(face)), nullptr};
    if (sides.front == 0) return {nullptr, Cleaned(std::move(face))};
    FacePieces pieces = CutInTwo(*face, plane, sides);
    return {Cleaned(std::move(pieces.front)), Cleaned(std::move(pieces.back))};
}

int FaceSide(const CBlockFace& face, const CPlane& plane) {
    const double eps = Options().eps;
    const bool isAxial = plane.type >= 0 && plane.type < 3;
    const SidesSeen seen = isAxial ? SeeAxial(face, plane, eps) : SeeOblique(face, plane, eps);
    if (seen.Straddles()) return 2;
    return seen.front ? 0 : 1;
}

bool RemoveShortEdges(CBlockFace& face) {
    std::vector<Vec3>& points = face.points;
    for (size_t i = 0; i < points.size() && points.size() >= 3;) {
        const Vec3& successor = points[(i + 1) % points.size()];
        if (VectorEqual(points[i], successor, ShortEdge)) {
            points.erase(points.begin() + static_cast<std::ptrdiff_t>(i));
        } else {
            ++i;
        }
    }
    return points.size() >= 3;
}

}  // namespace k2k
