// Planes and acceptance of blocks with vertex lists.
#include <algorithm>

#include "driver/build_log.h"
#include "driver/build_options.h"
#include "levelfile/texture_data.h"
#include "mapread/face_plane.h"
#include "mapread/file_map51.h"
#include "mapread/syntax.h"

namespace k2k {

namespace {

// What must be left of a block's faces.
constexpr size_t MinMeshFaces = 1;
constexpr size_t MinConvexFaces = 4;

bool HasNormal(const MapFace& face) {
    return face.normal != Vec3{};
}

}  // namespace

void CFileMap51::ReadBlock() {
    std::unique_ptr<MapBlock> block = NewBlock(true);
    std::vector<Texinfo> texinfos;
    int32_t faceCount = 0;
    const bool promisesFaces = ReadBlockHeader(*block, faceCount);
    if (!ReadFaces(*block, faceCount, texinfos) || !promisesFaces) return;

    const bool isMesh = (block->flags & BlockMesh) != 0;
    SetPlanes(*block, isMesh);
    TurnRound(*block, texinfos);
    if (!CullFaces(*block, texinfos, isMesh)) return;
    if (!isMesh && IsNotVolume(*block)) return;
    if (IsDuplicateBlock(*block)) return;
    RegisterBlockTextures(*block, texinfos);
    if (NeedsPolygons(*block)) {
        if (isMesh) {
            meshFound_ = true;
        } else {
            ClipPolygons(*block);
        }
    }
    AcceptBlock(std::move(block));
}

void CFileMap51::SetPlanes(MapBlock& block, bool isMesh) {
    const bool precise = isMesh || HasPrecisePlanes(block.number);
    for (MapFace& face : block.faces) {
        if (!precise) RoundPoints(face);
        face.bad = !SetFacePlane(face, precise);
        RequirePlane(face);
    }
    // Each face is held against those that come before it in list order, which are the later ones here.
    const std::span<const MapFace> faces = block.faces;
    for (size_t i = block.faces.size(); i-- > 0;) {
        MapFace& face = block.faces[i];
        if (IsDuplicatePlane(faces.subspan(i + 1), face, face.planeNumber)) face.bad = true;
    }
}

bool CFileMap51::CullFaces(MapBlock& block, std::vector<Texinfo>& texinfos, bool isMesh) {
    const WarnFamily family = GetVersion() == 51 ? WarnFamily::W072For51 : WarnFamily::W072For71;
    size_t kept = 0;
    for (size_t i = 0; i < block.faces.size(); ++i) {
        MapFace& face = block.faces[i];
        if (!isMesh && face.bad && !HasNormal(face) && BlockWarning(family)) {
            BuildLog(" \nWARNING W072: block %d - plane %d too narrow!\n", block.number - 1, face.planeNumber);
        }
        if (face.bad && !(isMesh && HasNormal(face))) continue;
        if (kept != i) {
            block.faces[kept] = std::move(face);
            texinfos[kept] = texinfos[i];
        }
        ++kept;
    }
    block.faces.resize(kept);
    texinfos.resize(kept);
    return kept >= (isMesh ? MinMeshFaces : MinConvexFaces);
}

bool CFileMap51::NeedsPolygons(const MapBlock& block) {
    const CTextureData& textures = Textures();
    for (const MapFace& face : block.faces) {
        const uint32_t flags = textures.GetTexinfo(face.texinfo).flags;
        if (flags != 0) return (flags & TextureFlat) != 0 && Options().sizeflat != 0;
    }
    return true;
}

}  // namespace k2k
