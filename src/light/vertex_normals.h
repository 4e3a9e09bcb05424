// Normals of the radiosity road: surfaces that meet at a vertex in a flat angle, or that are both smooth, share a
// normal there, and between the vertices it is interpolated.
#pragma once

#include <atomic>
#include <cstdint>
#include <vector>

#include "levelfile/level_records.h"

namespace k2k {

// Whether the radiosity road makes a lightmap for the surface.
bool IsLitSurface(const SurfaceRecord& surface);

struct FaceNormals {
    std::vector<uint32_t> neighbours;  // surfaces that share a smoothed vertex, at most 64
    std::vector<Vec3> vertexNormals;   // one a vertex
    Vec3 faceNormal{};                 // of the plane as the surface sees it; zero on surfaces that are not lit
};

class CVertexNormals {
  public:
    // From the surfaces of the level in work. More than 64 neighbours of one surface are fatal.
    CVertexNormals();

    const FaceNormals& Of(uint32_t surfaceIndex) const { return faces_[surfaceIndex]; }
    // The middle of each surface; what lies between it and an edge takes the normals of that edge.
    void SetCentres(std::vector<Vec3> centres) { centres_ = std::move(centres); }
    // The surface's smoothed normal at a point of it. For any number of threads.
    Vec3 FaceNormalAt(uint32_t surfaceIndex, const Vec3& position) const;

  private:
    void SumVertexNormals(uint32_t surfaceIndex, const std::vector<std::vector<uint32_t>>& surfacesAtVertex);
    Vec3 PlaneNormalOfDegenerate(uint32_t surfaceIndex) const;

    std::vector<FaceNormals> faces_;
    std::vector<std::vector<Vec3>> vertices_;  // of each surface
    std::vector<Vec3> centres_;
    mutable std::atomic<bool> warned_ = false;  // of a degenerate surface
};

}  // namespace k2k
