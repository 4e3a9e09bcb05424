// The mesh of each surface.
#pragma once

#include <cstdint>
#include <vector>

#include "levelfile/mesh.h"

namespace k2k {

class MeshLookup {
  public:
    static constexpr int32_t NoMesh = -1;

    explicit MeshLookup(const std::vector<CMesh>& meshes);
    // The number of the first mesh that has the surface, or NoMesh.
    int32_t MeshOfSurface(int32_t surface) const;

  private:
    void Enter(int32_t surface, int32_t mesh);

    std::vector<int32_t> meshOf_;  // by surface number
};

}  // namespace k2k
