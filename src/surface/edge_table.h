// Edges of one model: each is shared by at most two surfaces, which walk it in opposite directions.
#pragma once

#include <cstdint>
#include <vector>

#include "levelfile/geometry_data.h"
#include "solid/block_face.h"
#include "surface/weld_table.h"

namespace k2k {

class EdgeTable {
  public:
    // A new model starts: nothing of the one before is shared. Vertices and edges are appended to the level's tables.
    void Begin(float bound, const CGeometryData& level);

    // Signed edge numbers for all sides of the face. Fatal above MaxFaceVertices points.
    void BuildSurfaceEdges(CBlockFace& face, CGeometryData& level);

    // The edge from p1 to p2: the negated number of an edge that another face made in the opposite direction and nobody
    // shares yet, or else a new edge. Fatal for a face without contents in front.
    int32_t EdgeNumber(const Vec3& p1, const Vec3& p2, const CBlockFace& face, CGeometryData& level);

    const WeldTable& weld() const { return weld_; }

  private:
    // What is known of the faces on an edge; one record an edge of the model.
    struct EdgeFaces {
        int32_t next;      // the edge that left the same vertex before
        uint32_t chain;    // hash of the points as they were given: both directions of an edge meet in one chain
        int32_t contents;  // in front of the face that made the edge
        bool shared;
    };

    int32_t FindUnshared(uint32_t from, uint32_t to, uint32_t chain, int32_t contents,
                         const CGeometryData& level) const;
    int32_t AddEdge(uint32_t from, uint32_t to, uint32_t chain, int32_t contents, CGeometryData& level);

    WeldTable weld_;
    uint32_t firstVertex_ = 0;
    size_t firstEdge_ = 0;
    std::vector<EdgeFaces> edgeFaces_;
    std::vector<int32_t> latestFrom_;  // latest edge that leaves each vertex of the model, -1 for none
};

}  // namespace k2k
