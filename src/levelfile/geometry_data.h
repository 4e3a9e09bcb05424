// Vertices, edges, planes, surfaces and meshes of the level in work.
#pragma once

#include <cstdint>
#include <vector>

#include "levelfile/level_records.h"
#include "levelfile/mesh.h"
#include "levelfile/storable.h"

namespace k2k {

class CGeometryData : public CStorable {
  public:
    void Read(CFileKLV& file) override;
    void Write(CFileKLV& file) override;
    void PrintStats() override;
    // Empties the tables; of the info block only headNodes, visRegions, firstSurface and surfaceCount are reset.
    void Clear() override;

    LevelInfo info;
    std::vector<Vec3> vertices;
    std::vector<CEdge> edges;           // row 0 is a dummy, so that every edge can be negated
    std::vector<int32_t> surfaceEdges;  // a negative entry walks the edge from second to first
    std::vector<FinalPlaneRecord> planes;
    std::vector<SurfaceRecord> surfaces;
    std::vector<CMesh> meshes;

    // Not stored in the file:
    std::vector<int32_t> DetailReject;  // numbers of detail blocks that are to be read as plain ones
    int32_t SurfaceFaceCount = 0;       // surfaces whose texinfo was cleared by a merge
    float levelExtent = 0;              // largest size of the world along an axis; 0 when not known
};

// The data set of the level in work. A stage that wants a clean start calls Clear on it.
CGeometryData& Geometry();

}  // namespace k2k
