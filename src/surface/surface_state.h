// What this folder keeps from call to call while the surfaces of a level are made: the one place for it.
#pragma once

#include <map>
#include <memory>
#include <set>
#include <vector>

#include "solid/block_face.h"
#include "surface/edge_table.h"
#include "surface/final_planes.h"
#include "surface/surface_tables.h"

namespace k2k {

// What a mesh takes from its block.
struct MeshBlock {
    Vec3 mins{}, maxs{};
    int32_t contents = 0;
};

struct SurfaceState {
    // Of the model in work
    PlaneMap planeMap;
    int32_t nodeCount = 0;  // nodes and leaves of the tree whose planes were mapped last
    EdgeTable edgeTable;
    int32_t firstModelSurface = 0;
    std::vector<std::unique_ptr<CBlockFace>> MergedFaces;  // faces that merges across leaves left in force

    // Of the whole stage
    FinalPlaneIndex finalPlaneIndex;
    std::map<int32_t, MeshBlock> MeshBlockTable;            // by block number
    std::map<int32_t, std::set<int32_t>> MeshSurfaceTable;  // surface numbers by block number
};

SurfaceState& State();

}  // namespace k2k
