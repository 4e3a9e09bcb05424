// Triangulation of concave faces by the tessellator of the GLU library.
#include <GL/glu.h>

#include <cstdint>
#include <forward_list>

#include "driver/build_log.h"
#include "solid/block_face.h"
#include "solid/vectors.h"

namespace k2k {

namespace {

using TessCallback = void (*)();

// Handed to GLU and back to each callback.
struct TessellationJob {
    const CBlockFace* source;
    FaceList triangles;
};

// The tessellator does not say where a triangle begins: vertices are counted through all polygons of the run.
uint32_t TessVertexCounter = 0;

// Vertices that GLU had to add where edges cross. A list, as the tessellator keeps pointers to them until its polygon
// is finished.
std::forward_list<Vec3d> TessExtraVertices;

void OnEdgeFlag(GLboolean /*flag*/) {}

void OnBegin(GLenum /*type*/, void* /*job*/) {}

void OnVertex(void* vertex, void* polygonData) {
    auto& triangles = static_cast<TessellationJob*>(polygonData)->triangles;
    const uint32_t corner = TessVertexCounter % 3;
    if (corner == 0 || triangles.empty()) {
        std::unique_ptr<CBlockFace> triangle = static_cast<TessellationJob*>(polygonData)->source->CopyHeader();
        triangle->points.resize(3);
        triangles.push_front(std::move(triangle));
    }
    triangles.front()->points[corner] = Narrow(*static_cast<const Vec3d*>(vertex));
    ++TessVertexCounter;
}

void OnEnd(void* /*job*/) {}

void OnCombine(GLdouble position[3], void** /*neighbours*/, GLfloat* /*weights*/, void** outData, void* /*job*/) {
    TessExtraVertices.push_front({position[0], position[1], position[2]});
    *outData = &TessExtraVertices.front();
}

void OnError(GLenum code, void* /*job*/) {
    BuildLog("Tessellation Error: %s\n", reinterpret_cast<const char*>(gluErrorString(code)));
}

void SetCallbacks(GLUtesselator* tessellator) {
    // Presence alone makes GLU deliver single triangles rather than fans and strips.
    gluTessCallback(tessellator, GLU_TESS_EDGE_FLAG, reinterpret_cast<TessCallback>(OnEdgeFlag));
    gluTessCallback(tessellator, GLU_TESS_BEGIN_DATA, reinterpret_cast<TessCallback>(OnBegin));
    gluTessCallback(tessellator, GLU_TESS_VERTEX_DATA, reinterpret_cast<TessCallback>(OnVertex));
    gluTessCallback(tessellator, GLU_TESS_END_DATA, reinterpret_cast<TessCallback>(OnEnd));
    gluTessCallback(tessellator, GLU_TESS_COMBINE_DATA, reinterpret_cast<TessCallback>(OnCombine));
    gluTessCallback(tessellator, GLU_TESS_ERROR_DATA, reinterpret_cast<TessCallback>(OnError));
}

}  // namespace

FaceList TessellateFace(const CBlockFace& face) {
    std::vector<Vec3d> points;
    points.reserve(face.points.size());
    for (const Vec3& point : face.points) points.push_back(Widen(point));

    TessellationJob job{&face, {}};
    GLUtesselator* tessellator = gluNewTess();
    SetCallbacks(tessellator);
    gluTessBeginPolygon(tessellator, &job);
    gluTessBeginContour(tessellator);
    for (Vec3d& point : points) gluTessVertex(tessellator, point.data(), &point);
    gluTessEndContour(tessellator);
    gluTessEndPolygon(tessellator);
    gluDeleteTess(tessellator);
    // Not before: the crossings are found ahead of the first triangle, and their vertices are read with the last.
    TessExtraVertices.clear();
    return std::move(job.triangles);
}

}  // namespace k2k
