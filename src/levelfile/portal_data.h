// Regions, nodes, hulls and visibility of the level in work: its spatial structure as the engine walks it.
#pragma once

#include <cstdint>
#include <vector>

#include "levelfile/level_records.h"
#include "levelfile/storable.h"

namespace k2k {

constexpr int32_t MaxVisibilitySize = 8388608;  // bytes

class CPortalData : public CStorable {
  public:
    void Read(CFileKLV& file) override;
    void Write(CFileKLV& file) override;
    void PrintStats() override;
    void Clear() override;

    std::vector<CRegion> regions;  // row 0 is the one shared solid region
    std::vector<CRegionNode> nodes;
    std::vector<CHullNode> hullNodes;
    std::vector<uint32_t> regionSurfaces;
    std::vector<uint8_t> visibility;  // packed rows, at most MaxVisibilitySize bytes
};

CPortalData& Portals();

}  // namespace k2k
