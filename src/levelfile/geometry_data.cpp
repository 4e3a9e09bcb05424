#include "levelfile/geometry_data.h"

#include "driver/build_log.h"
#include "driver/build_options.h"
#include "levelfile/file_klv.h"
#include "levelfile/mesh_chunk.h"

namespace k2k {

CGeometryData& Geometry() {
    static CGeometryData geometry;
    return geometry;
}

void CGeometryData::Read(CFileKLV& file) {
    const uint32_t infoSize = file.CheckedChunkSize(Chunk::Info, 1);
    if (infoSize > sizeof(info)) InvalidLevelFile();
    if (infoSize > 0) file.ReadAt(file.GetChunkOffset(Chunk::Info), infoSize, &info);
    file.ReadRecords(Chunk::Vertices, vertices);
    file.ReadRecords(Chunk::Edges, edges);
    file.ReadRecords(Chunk::SurfaceEdges, surfaceEdges);
    file.ReadRecords(Chunk::Planes, planes);
    file.ReadRecords(Chunk::Surfaces, surfaces);
    if (!file.HasMeshes()) return;
    std::vector<uint8_t> chunk;
    file.ReadRecords(Chunk::Meshes, chunk);
    if (!chunk.empty()) meshes = ReadMeshes(chunk, surfaces.size());
}

void CGeometryData::Write(CFileKLV& file) {
    file.WriteChunk(Chunk::Info, &info, sizeof(info));
    file.WriteRecords(Chunk::Vertices, vertices);
    if (edges.size() == 1) {
        // The dummy edge alone is the table of a level without surfaces.
        file.WriteChunk(Chunk::Edges, nullptr, 0);
    } else {
        file.WriteRecords(Chunk::Edges, edges);
    }
    file.WriteRecords(Chunk::SurfaceEdges, surfaceEdges);
    file.WriteRecords(Chunk::Planes, planes);
    file.WriteRecords(Chunk::Surfaces, surfaces);
    std::vector<uint8_t> chunk;
    if (Options().mesh) chunk = WriteMeshes(meshes);
    file.WriteChunk(Chunk::Meshes, chunk.data(), chunk.size());
}

void CGeometryData::PrintStats() {
    BuildLog(" \n%d vertices", static_cast<int>(vertices.size()));
    BuildLog(" \n%d visible surfaces", static_cast<int>(surfaces.size()) - SurfaceFaceCount);
}

void CGeometryData::Clear() {
    info.headNodes = {};
    info.visRegions = -1;
    info.firstSurface = -1;
    info.surfaceCount = 0;
    vertices.clear();
    edges.clear();
    surfaceEdges.clear();
    planes.clear();
    surfaces.clear();
    meshes.clear();
}

}  // namespace k2k
