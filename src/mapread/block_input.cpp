// Steps on the road of a block that all dialects share.
#include <algorithm>

#include "driver/build_log.h"
#include "driver/build_options.h"
#include "mapread/face_plane.h"
#include "mapread/file_map.h"

namespace k2k {

bool CFileMap::HasPrecisePlanes(int32_t blockNumber) {
    return Options().hiprec || IsMarkedForRereading(blockNumber);
}

void CFileMap::RequirePlane(const MapFace& face) const {
    if (!HasFinitePlane(face)) FatalError("Invalid plane, block %d line %d\n", face.block - 1, line());
}

std::unique_ptr<MapBlock> CFileMap::NewBlock(bool fromVertices) const {
    auto block = std::make_unique<MapBlock>();
    block->number = static_cast<int32_t>(blocks_.size()) + 1;
    block->fromVertices = fromVertices;
    return block;
}

void CFileMap::AcceptBlock(std::unique_ptr<MapBlock> block) {
    duplicates_.Add(*block);
    blocks_.push_back(block.get());
    currentEntity_->blocks.push_front(std::move(block));
}

void CFileMap::TurnRound(MapBlock& block, std::vector<Texinfo>& texinfos) {
    std::reverse(block.faces.begin(), block.faces.end());
    std::reverse(texinfos.begin(), texinfos.end());
    block.faces.shrink_to_fit();
}

}  // namespace k2k
