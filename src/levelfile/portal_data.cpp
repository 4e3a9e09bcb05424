#include "levelfile/portal_data.h"

#include "driver/build_log.h"
#include "levelfile/file_klv.h"

namespace k2k {

CPortalData& Portals() {
    static CPortalData portals;
    return portals;
}

void CPortalData::Read(CFileKLV& file) {
    file.ReadRecords(Chunk::Regions, regions);
    file.ReadRecords(Chunk::Nodes, nodes);
    file.ReadRecords(Chunk::HullNodes, hullNodes);
    file.ReadRecords(Chunk::RegionSurfaces, regionSurfaces);
    visibility.clear();
    if (file.GetChunkSize(Chunk::Visibility) > MaxVisibilitySize) InvalidLevelFile();
    file.ReadRecords(Chunk::Visibility, visibility);
}

void CPortalData::Write(CFileKLV& file) {
    file.WriteRecords(Chunk::Regions, regions);
    file.WriteRecords(Chunk::Nodes, nodes);
    file.WriteRecords(Chunk::HullNodes, hullNodes);
    file.WriteRecords(Chunk::RegionSurfaces, regionSurfaces);
    file.WriteChunk(Chunk::Visibility, visibility.data(), visibility.size());
}

void CPortalData::PrintStats() {
    BuildLog(" \n%d regions", static_cast<int>(regions.size()));
}

void CPortalData::Clear() {
    regions.clear();
    nodes.clear();
    hullNodes.clear();
    regionSurfaces.clear();
    visibility.clear();
}

}  // namespace k2k
