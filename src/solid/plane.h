// Planes and the one shared plane table.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "levelfile/level_records.h"

namespace k2k {

struct CPlane {
    Vec3 normal{};
    float dist = 0;
    // In the table: 0, 1, 2 normal is +x, +y, +z exactly; 3, 4, 5 oblique, the dominant axis plus 3. On planes that
    // have not gone through the table: also -3, -2, -1 for a negative axis, and 3 for any oblique plane.
    int32_t type = 0;
};

// Recomputes the signed type (-3 to 3) of a plane that is not in the table.
void SetPlaneType(CPlane& plane);
// The type by exact comparison: 0 to 2, -3 to -1, or 3 to 5.
int32_t PlaneTypeFromNormal(const Vec3& normal);
// The plane seen from the other side, with its signed type.
CPlane FlippedPlane(const CPlane& plane);

// The number of the plane in the table, which is appended when no row matches; the first matching row wins. side is 1
// when the row's normal looks against the plane's. A normal of no unit length and a distance that is no number are
// fatal. Numbers stay valid for the run.
int32_t FindPlane(const CPlane& plane, int32_t& side);

// The plane table. It only grows, through all hulls and repeated reads of the map.
const std::vector<CPlane>& PlaneTable();
inline const CPlane& TablePlane(int32_t planenum) {
    return PlaneTable()[static_cast<size_t>(planenum)];
}

// For tests: an empty table.
void ResetPlaneTableForTest();

}  // namespace k2k
