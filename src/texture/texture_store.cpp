#include "texture/texture_store.h"

#include <cstring>
#include <limits>
#include <new>

#include "driver/build_log.h"
#include "driver/text.h"
#include "texture/find_file.h"
#include "texture/wad.h"

namespace k2k {

namespace {

constexpr int32_t NoImage = -1;

// Upper case in the ANSI code page: ASCII letters, and the umlauts a, o and u.
char UpperCaseLetter(char letter) {
    const auto code = static_cast<uint8_t>(letter);
    if (code >= 'a' && code <= 'z') return static_cast<char>(code - 'a' + 'A');
    if (code == 0xE4 || code == 0xF6 || code == 0xFC) return static_cast<char>(code - 0x20);
    return letter;
}

std::string_view NameText(const TextureName& name) {
    const std::string_view field(name.data(), name.size());
    return field.substr(0, field.find('\0'));
}

// Room for the count, the offsets and all images. Image offsets are signed 32-bit numbers, which bounds the size.
size_t BlobSize(const CTextureData& textures, const CWadFile& wad) {
    uint64_t size = sizeof(uint32_t) * (textures.names.size() + 1);
    for (const TextureName& name : textures.names) size += static_cast<uint64_t>(wad.FindLumpSize(NameText(name)));
    if (size > std::numeric_limits<int32_t>::max()) FatalError("Insufficient\tmemory space for textures!");
    return static_cast<size_t>(size);
}

void AllocateBlob(std::vector<uint8_t>& blob, size_t size) {
    blob = {};
    try {
        blob.resize(size);
    } catch (const std::bad_alloc&) {
        FatalError("Insufficient\tmemory space for textures!");
    }
}

void PutI32(std::vector<uint8_t>& blob, size_t row, int32_t value) {
    std::memcpy(blob.data() + row * sizeof(value), &value, sizeof(value));
}

void ReadImages(CTextureData& textures, CWadFile& wad) {
    std::vector<uint8_t>& blob = textures.blob;
    const size_t count = textures.names.size();
    size_t position = sizeof(int32_t) * (count + 1);
    PutI32(blob, 0, static_cast<int32_t>(count));
    for (size_t i = 0; i < count; ++i) {
        const int32_t size = wad.ReadLump(NameText(textures.names[i]), blob.data() + position);
        PutI32(blob, i + 1, size == 0 ? NoImage : static_cast<int32_t>(position));
        position += static_cast<size_t>(size);
    }
    if (position != blob.size()) FatalError("E017");
}

}  // namespace

TextureName NormaliseLumpName(std::string_view source) {
    TextureName name{};
    for (size_t i = 0; i < name.size() && i < source.size() && source[i] != '\0'; ++i) {
        name[i] = UpperCaseLetter(source[i]);
    }
    return name;
}

void LoadTextures(const std::string& wadKey, const std::string& mapPath) {
    if (wadKey.empty()) FatalError("Texture file\tmissing!");
    std::string path = wadKey;
    StripExtension(path);
    path += ".$$w";
    const std::string found = FindMapFile(path, mapPath);
    CWadFile wad;
    wad.OpenWad(found.empty() ? path : found, path);
    CTextureData& textures = Textures();
    wad.AddAllLumpNames(textures);
    AllocateBlob(textures.blob, BlobSize(textures, wad));
    ReadImages(textures, wad);
}

}  // namespace k2k
