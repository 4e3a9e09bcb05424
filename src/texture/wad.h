// Texture files in the WAD format: a header, lumps, and a directory of named lumps.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "levelfile/texture_data.h"

namespace k2k {

// A directory entry as it stands in the file.
struct WadLump {
    int32_t filePosition = 0;
    int32_t size = 0;
    int32_t reserved = 0;
    int8_t type = 0;
    std::array<uint8_t, 3> padding{};
    TextureName name{};
};
static_assert(sizeof(WadLump) == 32);

// An open WAD: the stream and the directory, no lumps.
class CWadFile {
  public:
    // Reads the directory and normalises its names. shownPath is the name for messages. A file that cannot be opened,
    // that is no WAD, or whose directory or textures lie outside the file is fatal.
    void OpenWad(const std::string& path, const std::string& shownPath);

    // The size of the first texture lump of that name, 0 when there is none. Silent.
    int32_t FindLumpSize(std::string_view name) const;
    // Copies the same lump to destination, which has room for it, and returns its size; warns and returns 0 when there
    // is none.
    int32_t ReadLump(std::string_view name, uint8_t* destination);
    // Puts every directory entry's name, texture or not, into the level's name table, in directory order.
    void AddAllLumpNames(CTextureData& textures) const;

  private:
    bool ReadAt(int64_t offset, size_t size, void* buffer);
    void ReadDirectory(int32_t directoryOffset, int32_t lumpCount);
    void IndexTextures();
    bool IsTexture(const WadLump& lump) const;
    bool LiesInFile(int64_t offset, int64_t size) const;
    const WadLump* FindTexture(std::string_view name) const;
    [[noreturn]] void Invalid() const;

    std::string path_;
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> stream_{nullptr, &std::fclose};
    int64_t length_ = 0;
    int32_t wadVersion_ = 0;
    std::vector<WadLump> directory_;
    std::unordered_map<TextureName, size_t, BytesHash> textures_;  // name to the first texture lump of that name
};

}  // namespace k2k
