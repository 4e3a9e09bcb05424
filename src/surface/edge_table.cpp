#include "surface/edge_table.h"

#include "surface/table_limits.h"

namespace k2k {

void EdgeTable::Begin(float bound, const CGeometryData& level) {
    weld_.InitWeldHash(bound);
    firstVertex_ = static_cast<uint32_t>(level.vertices.size());
    firstEdge_ = level.edges.size();
    edgeFaces_.clear();
    latestFrom_.clear();
}

// The latest edge of the chain that fits. Edges are kept by the vertex that they leave: only those can fit, and few
// leave one vertex.
int32_t EdgeTable::FindUnshared(uint32_t from, uint32_t to, uint32_t chain, int32_t contents,
                                const CGeometryData& level) const {
    if (from - firstVertex_ >= latestFrom_.size()) return -1;
    int32_t position = latestFrom_[from - firstVertex_];
    while (position >= 0) {
        const EdgeFaces& faces = edgeFaces_[static_cast<size_t>(position)];
        const CEdge& edge = level.edges[firstEdge_ + static_cast<size_t>(position)];
        if (edge.second == to && faces.chain == chain && !faces.shared && faces.contents == contents) break;
        position = faces.next;
    }
    return position;
}

int32_t EdgeTable::AddEdge(uint32_t from, uint32_t to, uint32_t chain, int32_t contents, CGeometryData& level) {
    RequireRoom(level.edges.size(), EdgeLimit);
    RequireRoom(level.edges.size(), EdgeFaceLimit);
    if (latestFrom_.size() < weld_.entries().size()) latestFrom_.resize(weld_.entries().size(), -1);
    int32_t& latest = latestFrom_[from - firstVertex_];
    const auto number = static_cast<int32_t>(level.edges.size());
    level.edges.push_back({from, to});
    edgeFaces_.push_back({latest, chain, contents, false});
    latest = static_cast<int32_t>(edgeFaces_.size() - 1);
    return number;
}

int32_t EdgeTable::EdgeNumber(const Vec3& p1, const Vec3& p2, const CBlockFace& face, CGeometryData& level) {
    const int32_t contents = face.contents[0];
    if (contents == 0) FatalError("E09A");
    const auto a = static_cast<uint32_t>(weld_.WeldVertex(p1, face.planenum, level.vertices));
    const auto b = static_cast<uint32_t>(weld_.WeldVertex(p2, face.planenum, level.vertices));
    const uint32_t chain = (weld_.HashOf(p1) + weld_.HashOf(p2)) % WeldHashCells;

    if (const int32_t found = FindUnshared(b, a, chain, contents, level); found >= 0) {
        edgeFaces_[static_cast<size_t>(found)].shared = true;
        return -static_cast<int32_t>(firstEdge_ + static_cast<size_t>(found));
    }
    return AddEdge(a, b, chain, contents, level);
}

void EdgeTable::BuildSurfaceEdges(CBlockFace& face, CGeometryData& level) {
    face.outputIndex = -1;
    if (face.numpoints() > MaxFaceVertices) {
        FatalError("E09C - Block %i has too many edges", face.sourceBlock - 1);
    }
    const size_t count = face.points.size();
    face.edges.resize(count);
    for (size_t i = 0; i < count; ++i) {
        face.edges[i] = EdgeNumber(face.points[i], face.points[(i + 1) % count], face, level);
    }
}

}  // namespace k2k
