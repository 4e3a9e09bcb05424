// Closes the cracks between faces: where a face has a vertex on another face's side, that side gets the vertex too.
#include "driver/build_options.h"
#include "surface/junction_table.h"
#include "surface/split_long_face.h"
#include "surface/surface_tables.h"
#include "surface/tree_walk.h"

namespace k2k {

namespace {

void EnterSides(const CBlockFace& face, JunctionTable& junctions) {
    const size_t count = face.points.size();
    for (size_t i = 0; i < count; ++i) {
        const JunctionSide side =
            junctions.FindJunctionEdge(face.points[i], face.points[(i + 1) % count], face.sourceBlock);
        junctions.AddJunctionPoint(side.edge, side.t1);
        junctions.AddJunctionPoint(side.edge, side.t2);
    }
}

// Inserts all missing vertices. After each one the look-up starts again at side 0; sides that were found complete stay
// so, since no points are entered any more, and are passed over. Sides without length are looked up each time, because
// each look-up can warn.
void InsertMissingPoints(CBlockFace& face, JunctionTable& junctions) {
    std::vector<Vec3>& ring = face.points;
    std::vector<bool> isComplete(ring.size(), false);
    size_t i = 0;
    while (i < ring.size()) {
        if (isComplete[i]) {
            ++i;
            continue;
        }
        const size_t j = (i + 1) % ring.size();
        const JunctionSide side = junctions.FindJunctionEdge(ring[i], ring[j], face.sourceBlock);
        const std::optional<Vec3> missing = junctions.MissingPoint(side);
        if (!missing) {
            isComplete[i] = !side.isNull;
            ++i;
            continue;
        }
        const auto place = static_cast<std::ptrdiff_t>(j);
        ring.insert(ring.begin() + place, *missing);
        isComplete.insert(isComplete.begin() + place, false);
        i = 0;
    }
}

// The faces come out in reverse order.
FaceList FixFaces(FaceList faces, JunctionTable& junctions) {
    FaceList fixed;
    while (!faces.empty()) {
        std::unique_ptr<CBlockFace> face = faces.pop_front();
        InsertMissingPoints(*face, junctions);
        SplitLongFace(std::move(face), fixed);
    }
    return fixed;
}

}  // namespace

void RepairJunctions(CBspNode& root, const Vec3& mins, const Vec3& maxs) {
    if (Options().notjunc) return;
    JunctionTable junctions(mins, maxs);
    ForEachInnerNode(root, [&](CBspNode& node) {
        for (const CBlockFace& face : node.faces) EnterSides(face, junctions);
    });
    ForEachInnerNode(root, [&](CBspNode& node) { node.faces = FixFaces(std::move(node.faces), junctions); });
}

}  // namespace k2k
