// From texture names and flags to texinfo records.
#include <algorithm>

#include "driver/build_log.h"
#include "driver/build_options.h"
#include "levelfile/geometry_data.h"
#include "levelfile/texture_data.h"
#include "mapread/file_map.h"
#include "mapread/read_map.h"
#include "solid/texture_axes.h"

namespace k2k {

namespace {

constexpr uint32_t TurbulentFlags = TextureNoLightmap | TextureTurbulent | TexturePassable;
constexpr uint32_t SkyFlags = TextureNoLightmap | TextureSky;
constexpr uint32_t FlatFlags = TextureNoLightmap | TextureFlat;
constexpr uint32_t NoneFlags = TextureNoLightmap | TextureFlat | TextureTurbulent;

uint32_t FlagsOfName(std::string_view name) {
    if (name.starts_with('*')) return TurbulentFlags;
    if (name.find("SKY") != std::string_view::npos) return SkyFlags;
    if (name.find("_OUT") != std::string_view::npos) return FlatFlags;
    return 0;
}

bool IsUndefined(const std::array<char, 20>& material) {
    return EqualNoCase(material.data(), NotDefined);
}

// Takes bit 4 from a block that is to count as a plain one; whether it is a detail block.
bool SettleDetail(MapBlock& block) {
    const std::vector<int32_t>& rejected = Geometry().DetailReject;
    const bool refused =
        Options().nodetail || std::find(rejected.begin(), rejected.end(), block.number) != rejected.end();
    if (refused) block.flags &= ~BlockDetail;
    return (block.flags & BlockDetail) != 0;
}

void SettleFlags(const MapBlock& block, bool isDetail, Texinfo& texinfo) {
    if (isDetail) {
        texinfo.flags |= TextureDetail;
        return;
    }
    if ((block.flags & BlockPassable) != 0) texinfo.flags |= TexturePassable;
    if (Options().invisibletonone && (block.flags & BlockInvisible) != 0) texinfo.flags = NoneFlags;
}

void SettleMaterial(const MapBlock& block, Texinfo& texinfo) {
    if (!IsUndefined(texinfo.material)) return;
    texinfo.material = block.material;
    if (IsUndefined(texinfo.material)) texinfo.material = {};
}

}  // namespace

void CFileMap::ReadTextureName(Texinfo& texinfo) {
    if (!scanner_.NextToken(false)) FatalError("\nTexture name missing in %s, line %d", name().c_str(), line());
    const std::string upper = ToUpper(token());
    texinfo.texture = static_cast<uint32_t>(Textures().FindTextureName(upper));
    texinfo.flags = FlagsOfName(upper);
}

void CFileMap::MakeTextureAxes(Texinfo& texinfo, const MapFace& face, const std::array<int32_t, 2>& shift,
                               const std::array<float, 2>& scale, int32_t rotation) {
    const std::array<float, 2> floatShift{static_cast<float>(shift[0]), static_cast<float>(shift[1])};
    MakePlaneTextureAxes(face.normal, floatShift, scale, static_cast<float>(rotation), texinfo);
}

void CFileMap::ReadPlainMapping(Texinfo& texinfo, const MapFace& face) {
    std::array<int32_t, 2> shift{};
    std::array<float, 2> scale{};
    for (int32_t& value : shift) value = ToInt(NextOnLine());
    const int32_t rotation = ToInt(NextOnLine());
    for (float& value : scale) value = ToFloat(NextOnLine());
    MakeTextureAxes(texinfo, face, shift, scale, rotation);
}

bool CFileMap::ReadTailMark(Texinfo& texinfo) {
    texinfo.ambient = 0;
    texinfo.albedo = 50;
    if (!scanner_.NextToken(true)) return false;
    if (token() == ":") return true;
    scanner_.Unread();
    return false;
}

void CFileMap::ReadAmbientAndAlbedo(Texinfo& texinfo) {
    texinfo.ambient = static_cast<uint8_t>(ToInt(NextOnLine()));
    texinfo.albedo = static_cast<uint8_t>(ToInt(NextOnLine()));
}

void CFileMap::RegisterBlockTextures(MapBlock& block, std::span<Texinfo> texinfos) {
    const bool isDetail = SettleDetail(block);
    if (isDetail) ++DetailCount;
    for (size_t i = 0; i < block.faces.size(); ++i) {
        SettleFlags(block, isDetail, texinfos[i]);
        SettleMaterial(block, texinfos[i]);
        block.faces[i].texinfo = Textures().AddTexinfo(texinfos[i]);
    }
    if (Options().invisibletonone) block.flags &= ~BlockInvisible;
}

}  // namespace k2k
