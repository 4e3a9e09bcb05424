// Blocks of dialect 5.0.
#include "mapread/file_map50.h"

#include "driver/build_log.h"
#include "mapread/face_plane.h"
#include "mapread/syntax.h"

namespace k2k {

std::unique_ptr<CEntityPair> CFileMap50::NewEntityPair(int32_t type) {
    if (type == static_cast<int32_t>(EntityType::Extended)) return std::make_unique<CEPairModel>();
    return MakeEntityPair(type);
}

void CFileMap50::ReadBlock() {
    std::unique_ptr<MapBlock> block = NewBlock(false);
    std::vector<Texinfo> texinfos;
    ReadFaces50(*block, texinfos);
    if (IsNotVolume(*block) || IsDuplicateBlock(*block) || !CheckTextureAxes(*block, texinfos)) return;
    RegisterBlockTextures(*block, texinfos);
    ClipPolygons(*block);
    AcceptBlock(std::move(block));
}

bool CFileMap50::ReadFaces50(MapBlock& block, std::vector<Texinfo>& texinfos) {
    int32_t groups = 0, planes = 0;
    for (RequireToken(); token() != "}"; RequireToken()) {
        if (token() == "{") {
            ReadFlagGroup(block, ++groups);
        } else {
            ReadFace(block, texinfos, ++planes);
        }
    }
    TurnRound(block, texinfos);
    return !block.faces.empty();
}

// Only the first token of the first group counts.
void CFileMap50::ReadFlagGroup(MapBlock& block, int32_t groupNumber) {
    bool done = groupNumber > 1;
    ReadGroup([&](std::string_view text) {
        if (!done) block.flags = ParseBinary(text);
        done = true;
    });
}

void CFileMap50::ReadFace(MapBlock& block, std::vector<Texinfo>& texinfos, int32_t planeNumber) {
    MapFace face;
    face.block = block.number;
    ReadPoints(face);
    const bool isGood = CheckPlane(block, face, planeNumber);
    Texinfo texinfo;
    ReadTextureName(texinfo);
    ReadTextureMapping(texinfo, &face, static_cast<int32_t>(face.points.size()));
    ReadTail(texinfo);
    if (!isGood) return;
    block.faces.push_back(std::move(face));
    texinfos.push_back(texinfo);
}

// The current token is the first "(".
void CFileMap50::ReadPoints(MapFace& face) {
    const auto require = [&](const char* brace, bool found) {
        if (!found || token() != brace) FatalError("Block %d invalid syntax\n", face.block - 1);
    };
    bool found = true;
    for (Vec3& point : face.points) {
        require("(", found);
        scanner_.ReadFloats(point.data(), 3);
        require(")", scanner_.NextToken(false));
        if (&point != &face.points.back()) found = scanner_.NextToken(true);
    }
}

bool CFileMap50::CheckPlane(const MapBlock& block, MapFace& face, int32_t planeNumber) {
    const bool precise = HasPrecisePlanes(block.number);
    if (!precise) RoundPoints(face);
    const bool isDuplicate = IsDuplicatePlane(block.faces, face, planeNumber);
    const bool spansArea = SetFacePlane(face, precise);
    RequirePlane(face);
    if (!spansArea && BlockWarning(WarnFamily::W072For50)) {
        BuildLog(" \nWARNING W072: block %d - plane %d too narrow!\n", block.number - 1, planeNumber);
    }
    return spansArea && !isDuplicate;
}

const MapFace& CFileMap50::RequireFace(const MapFace* face) const {
    if (face == nullptr) FatalError("Null pointer in line %d\n", line());
    return *face;
}

void CFileMap50::ReadTextureMapping(Texinfo& texinfo, const MapFace* face, int32_t /*vertexCount*/) {
    const MapFace& mapped = RequireFace(face);
    if (extended_) FatalError("\nInvalid syntax in %s, line %d", name().c_str(), line());
    ReadPlainMapping(texinfo, mapped);
}

void CFileMap50::ReadTail(Texinfo& texinfo) {
    if (!ReadTailMark(texinfo)) return;
    const uint32_t flags = ParseBinary(NextOnLine());
    if (flags != 0) texinfo.flags = flags | TextureNoLightmap;
    ReadAmbientAndAlbedo(texinfo);
    NextOnLine();  // no longer used
    ReadSecondFlags(texinfo);
}

// More on the same line: two values that are no longer used, and flags for the high half.
void CFileMap50::ReadSecondFlags(Texinfo& texinfo) {
    const int lineOfFace = line();
    if (!scanner_.NextToken(true)) return;
    if (line() != lineOfFace) {
        scanner_.Unread();
        return;
    }
    NextOnLine();
    texinfo.flags |= ParseBinary(NextOnLine()) << 16U;
}

}  // namespace k2k
