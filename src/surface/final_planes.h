// The plane table of the level: which of its rows stand for planes of the map.
#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "levelfile/geometry_data.h"
#include "solid/plane.h"

namespace k2k {

// The plane map: final numbers by map plane number. Emptied for each model and hull, so rows are shared within one
// only.
class PlaneMap {
  public:
    void Clear(size_t expectedPlanes);
    uint32_t FinalPlane(int32_t planenum, std::vector<FinalPlaneRecord>& planes);

  private:
    std::vector<uint32_t> finalNumbers_;
};

// Finds rows of the final plane table by value.
class FinalPlaneIndex {
  public:
    void Clear();
    // The first row equal in type, distance and normal, or a new one.
    uint32_t FindOrAdd(const FinalPlaneRecord& plane, std::vector<FinalPlaneRecord>& planes);

  private:
    struct ValueHash {
        size_t operator()(const FinalPlaneRecord& plane) const;
    };
    struct ValueEqual {
        bool operator()(const FinalPlaneRecord& a, const FinalPlaneRecord& b) const;
    };
    void CatchUp(const std::vector<FinalPlaneRecord>& planes);

    std::unordered_map<FinalPlaneRecord, uint32_t, ValueHash, ValueEqual> firstRows_;
    size_t rowsSeen_ = 0;
};

}  // namespace k2k
