// Texture names, texinfos, the image blob, the palette lump and the lightmap pages of the level in work.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "levelfile/level_records.h"
#include "levelfile/storable.h"

namespace k2k {

constexpr int32_t MaxTextureNames = 4096;
constexpr int32_t MaxTexinfos = 32767;
constexpr uint32_t SmallestPageBytes = 0x30000;  // a page of 256 x 256 texels of 3 bytes

using TextureName = std::array<char, 16>;  // zero-filled, terminated unless it fills the field

// Of names and records whose bytes are equal when they are.
struct BytesHash {
    template <size_t N>
    size_t operator()(const std::array<char, N>& bytes) const {
        return std::hash<std::string_view>{}({bytes.data(), N});
    }
};

struct TexinfoAlias {
    uint32_t key = 0;  // with bit 0 the two floats take part in equality
    float first = 0, second = 0;
    uint32_t texinfo = 0;
};
static_assert(sizeof(TexinfoAlias) == 16);

class CTextureData : public CStorable {
  public:
    void Read(CFileKLV& file) override;
    void Write(CFileKLV& file) override;
    void PrintStats() override;
    // Resets names, blob and pages; the texinfo and alias tables and the palette lump stay, so that a second read of
    // the map finds its texinfos again.
    void Clear() override;

    void FreeLightmapPages();

    // Finds or adds a name (cut to 16 bytes); returns its number.
    int32_t FindTextureName(std::string_view name);
    // Finds or adds a texinfo; returns its id. With an alias the id is negative.
    int32_t AddTexinfo(const Texinfo& record, TexinfoAlias* alias = nullptr);
    // The record of an id: 0 or more is a row, -1 is row 0, below that an alias leads to the row. An id that leads
    // nowhere is fatal. Safe to call from several threads while nobody changes the tables.
    const Texinfo& GetTexinfo(int32_t id) const;

    // Empties texinfos and aliases (for a rebuild of the texture tables).
    void ClearTexinfos();

    // Whether a save puts the lightmap pages into the file. A single page (the blank one) only goes there with
    // -litmapsonly.
    bool WritesLightmapPages() const;

    // Only appended to while searches go on: whoever replaces rows calls ClearTexinfos first.
    std::vector<Texinfo> texinfos;
    std::vector<TexinfoAlias> aliases;
    std::vector<TextureName> names;
    std::vector<uint8_t> blob;
    std::vector<uint8_t> paletteLump;
    std::vector<std::vector<uint8_t>> pages;  // each 0x30000 << (2 * lightmapSizeCode) bytes
    int32_t lightmapSizeCode = 0;

    // Number of textures in the blob; 0 where it is too short for them.
    uint32_t BlobTextureCount() const;
    // Width and height of a texture's image; a texture without an image, or with an empty one, counts as 1 x 1.
    std::array<uint32_t, 2> ImageSize(uint32_t texture) const;

  private:
    // A record's fields in a form whose bytes are equal when the records are: -0 as 0, nothing behind the material's
    // end.
    using TexinfoKey = std::array<char, sizeof(Texinfo)>;
    static TexinfoKey KeyOf(const Texinfo& record);

    int32_t FindTexinfo(const Texinfo& record);
    int32_t FindAlias(const Texinfo& record, const TexinfoAlias& alias) const;
    void IndexNewTexinfos();
    void IndexNewNames();
    void ReadLightmapPages(CFileKLV& file);
    void WriteLightmapPages(CFileKLV& file);

    // The first row of each key, row 0 aside. Both indexes follow their tables when a search begins.
    std::unordered_map<TexinfoKey, int32_t, BytesHash> texinfoIndex_;
    size_t indexedTexinfos_ = 0;
    std::unordered_map<TextureName, int32_t, BytesHash> nameIndex_;
    size_t indexedNames_ = 0;
};

CTextureData& Textures();

}  // namespace k2k
