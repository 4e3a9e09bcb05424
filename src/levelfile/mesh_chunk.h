// The bytes of the mesh chunk.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "levelfile/mesh.h"

namespace k2k {

// The meshes of a chunk, not prepared, so that the next save takes new lightmap coordinates. Numbers that lead outside
// the chunk, the mesh's own tables or the level's surfaces are fatal.
std::vector<CMesh> ReadMeshes(std::span<const uint8_t> chunk, size_t surfaceCount);

// Prepares all meshes and gives the chunk that holds them.
std::vector<uint8_t> WriteMeshes(std::vector<CMesh>& meshes);

}  // namespace k2k
