// Edges and surface rows for the faces of a finished tree, and for faces on their own.
#include "levelfile/geometry_data.h"
#include "surface/progress_step.h"
#include "surface/surface_state.h"
#include "surface/table_limits.h"
#include "surface/tree_walk.h"

namespace k2k {

namespace {

constexpr int32_t NodesPerMark = 300;
constexpr uint32_t NoLightOffset = 0xFFFFFFFFU;
constexpr int16_t MergedAwayTexinfo = -1;

// Appends a row for the face, with no edges yet; returns its number.
int32_t AppendSurface(const CBlockFace& face, uint32_t planeNumber, CGeometryData& level) {
    RequireRoom(level.surfaces.size(), SurfaceLimit);
    SurfaceRecord row;
    row.blockId = static_cast<uint16_t>(face.sourceBlock);
    row.side = static_cast<uint16_t>(face.planeside);
    row.firstEdge = static_cast<uint32_t>(level.surfaceEdges.size());
    row.texInfoId = static_cast<int16_t>(face.texinfo);
    row.lightOffset = NoLightOffset;
    row.planeNumber = planeNumber;
    level.surfaces.push_back(row);
    return static_cast<int32_t>(level.surfaces.size() - 1);
}

void AppendSurfaceEdges(const CBlockFace& face, CGeometryData& level) {
    for (const int32_t edge : face.edges) {
        RequireRoom(level.surfaceEdges.size(), SurfaceEdgeLimit);
        level.surfaceEdges.push_back(edge);
    }
}

int32_t EmitSurfaceOfNode(const CBlockFace& face, uint32_t planeNumber, CGeometryData& level) {
    const int32_t number = AppendSurface(face, planeNumber, level);
    SurfaceRecord& row = level.surfaces.back();
    if (face.surfaceOut != nullptr) {
        row.texInfoId = MergedAwayTexinfo;
        ++level.SurfaceFaceCount;
    }
    row.edgeCount = static_cast<int16_t>(face.numpoints());
    AppendSurfaceEdges(face, level);
    return number;
}

void BuildNodeEdges(CBspNode& node) {
    StepProgress(NodesPerMark);
    for (CBlockFace& face : node.faces) State().edgeTable.BuildSurfaceEdges(face, Geometry());
}

void EmitNodeSurfaces(CBspNode& node) {
    CGeometryData& level = Geometry();
    node.firstFace = static_cast<int32_t>(level.surfaces.size());
    node.numFaces = 0;
    for (CBlockFace& face : node.faces) {
        face.outputIndex = EmitSurfaceOfNode(face, static_cast<uint32_t>(node.outputPlane), level);
        ++node.numFaces;
    }
}

}  // namespace

void MakeSurfaces(CBspNode& root) {
    StartProgress(State().nodeCount);
    BeginSurfaceTables();
    ForEachInnerNode(root, BuildNodeEdges);
    Geometry().SurfaceFaceCount = 0;
    ForEachInnerNode(root, EmitNodeSurfaces);
}

void EmitSingleSurface(CBlockFace& face) {
    CGeometryData& level = Geometry();
    State().edgeTable.BuildSurfaceEdges(face, level);
    if (face.numpoints() <= 2) return;
    // From here on the face names its plane as the level does.
    face.planenum = static_cast<int32_t>(FinalPlane(face.planenum));
    face.outputIndex = AppendSurface(face, static_cast<uint32_t>(face.planenum), level);
    level.surfaces.back().edgeCount = static_cast<int16_t>(face.edges.size());
    AppendSurfaceEdges(face, level);
}

}  // namespace k2k
