// A surface's convex outline, and for smooth shading which surfaces join it along its edges.
#pragma once

#include <cstdint>
#include <vector>

#include "levelfile/level_records.h"

namespace k2k {

class CPhongTable;

constexpr int32_t NoNeighbour = -1;

struct PolygonInfo {
    std::vector<Vec3> points;         // convex outline in order
    std::vector<Vec3> vertexNormals;  // one a point, filled on first need
    // Per outline edge the surfaces that join there; the first is the one across the edge, or NoNeighbour.
    std::vector<std::vector<int32_t>> edgeNeighbours;
    uint32_t surfaceIndex = 0;
    Vec3 normal{};  // both negated for a back-side surface
    float dist = 0;
    const SurfaceRecord* surface = nullptr;
};

// The outline and plane of a surface, without neighbours.
PolygonInfo MakePolygonInfo(uint32_t surfaceIndex);
// The same with the neighbours among the smooth surfaces of the level.
PolygonInfo MakePolygonInfo(uint32_t surfaceIndex, const CPhongTable& smooth);

// Whether a point of the surface's plane lies in the surface.
bool PointInSurface(const Vec3& point, uint32_t surfaceIndex);

}  // namespace k2k
