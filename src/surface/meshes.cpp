// Which surfaces belong to the mesh of which block.
#include <algorithm>

#include "levelfile/geometry_data.h"
#include "levelfile/portal_data.h"
#include "surface/mesh_lookup.h"
#include "surface/progress_step.h"
#include "surface/surface_state.h"
#include "surface/texel_size.h"

namespace k2k {

namespace {

constexpr int32_t PiecesPerMark = 60;

CMesh& AppendMesh(const MeshBlock& block) {
    CMesh& mesh = Geometry().meshes.emplace_back();
    mesh.mins = block.mins;
    mesh.maxs = block.maxs;
    mesh.contents = block.contents;
    return mesh;
}

MeshBlock MeshBlockOf(const CBlock& block) {
    return {block.mins, block.maxs, block.contents};
}

// The numbers of the meshes that the region's surfaces belong to, rising and each once.
std::vector<int32_t> MeshesOfRegion(const CRegion& region, const std::vector<uint32_t>& surfaces,
                                    const MeshLookup& lookup) {
    std::vector<int32_t> meshes;
    for (uint32_t i = 0; i < region.surfaceCount; ++i) {
        meshes.push_back(lookup.MeshOfSurface(static_cast<int32_t>(surfaces[region.firstSurface + i])));
    }
    std::sort(meshes.begin(), meshes.end());
    meshes.erase(std::unique(meshes.begin(), meshes.end()), meshes.end());
    return meshes;
}

void EmitPiece(CBlockFace& piece, int32_t blockContents, CMesh& mesh) {
    piece.contents = {ContentsEmpty, blockContents};
    EmitSingleSurface(piece);
    if (piece.outputIndex >= 0) AddMeshSurface(mesh, piece.outputIndex);
    StepProgress(PiecesPerMark);
}

}  // namespace

MeshLookup::MeshLookup(const std::vector<CMesh>& meshes) {
    for (size_t number = 0; number < meshes.size(); ++number) {
        for (const int32_t surface : meshes[number].surfaces) Enter(surface, static_cast<int32_t>(number));
    }
}

void MeshLookup::Enter(int32_t surface, int32_t mesh) {
    if (surface < 0) return;
    const auto row = static_cast<size_t>(surface);
    if (row >= meshOf_.size()) meshOf_.resize(row + 1, NoMesh);
    if (meshOf_[row] == NoMesh) meshOf_[row] = mesh;
}

int32_t MeshLookup::MeshOfSurface(int32_t surface) const {
    if (surface < 0 || static_cast<size_t>(surface) >= meshOf_.size()) return NoMesh;
    return meshOf_[static_cast<size_t>(surface)];
}

void NoteMeshBlock(const CBlock& block) {
    State().MeshBlockTable[block.blockNumber] = MeshBlockOf(block);
}

void NoteMeshSurface(int32_t blockNumber, int32_t surface) {
    if (surface >= 0) State().MeshSurfaceTable[blockNumber].insert(surface);
}

void MakeMeshes() {
    const SurfaceState& state = State();
    for (const auto& [blockNumber, surfaces] : state.MeshSurfaceTable) {
        const auto block = state.MeshBlockTable.find(blockNumber);
        if (surfaces.empty() || block == state.MeshBlockTable.end()) continue;
        CMesh& mesh = AppendMesh(block->second);
        for (const int32_t surface : surfaces) AddMeshSurface(mesh, surface);
    }
}

void RemapRegionLists() {
    CPortalData& portals = Portals();
    const MeshLookup lookup(Geometry().meshes);
    std::vector<uint32_t> remapped;
    for (CRegion& region : portals.regions) {
        const std::vector<int32_t> meshes = MeshesOfRegion(region, portals.regionSurfaces, lookup);
        region.firstSurface = static_cast<uint32_t>(remapped.size());
        region.surfaceCount = static_cast<uint32_t>(meshes.size());
        remapped.insert(remapped.end(), meshes.begin(), meshes.end());
    }
    portals.regionSurfaces = std::move(remapped);
}

void MakeBlockMeshes(const CBlockSet& set) {
    for (const CBlock& block : set.blocks) {
        CMesh& mesh = AppendMesh(MeshBlockOf(block));
        const FaceList pieces = SubdivideCopy(block.faces);
        for (CBlockFace& piece : pieces) EmitPiece(piece, block.contents, mesh);
        // A mesh has at least one row in each of its tables.
        if (mesh.surfaces.empty()) Geometry().meshes.pop_back();
    }
}

}  // namespace k2k
