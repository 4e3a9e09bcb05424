#include "texture/wad.h"

#include <array>
#include <cerrno>
#include <cstring>

#include "driver/build_log.h"
#include "texture/texture_store.h"

namespace k2k {

namespace {

struct WadHeader {
    std::array<char, 4> magic{};  // "WAD" and the version digit
    int32_t lumpCount = 0;
    int32_t directoryOffset = 0;
};
static_assert(sizeof(WadHeader) == 12);

// From this version on the lump types of textures are small numbers; before it they are three of the letters.
constexpr int32_t FirstVersionOfNumberedTypes = 7;
constexpr int8_t LastNumberedType = 13;

}  // namespace

void CWadFile::OpenWad(const std::string& path, const std::string& shownPath) {
    path_ = shownPath;
    stream_.reset(std::fopen(path.c_str(), "rb"));
    if (!stream_) FatalError("Can't open %s - %s", path_.c_str(), std::strerror(errno));
    if (std::fseek(stream_.get(), 0, SEEK_END) == 0) length_ = std::ftell(stream_.get());
    WadHeader header;
    if (!ReadAt(0, sizeof(header), &header) || std::memcmp(header.magic.data(), "WAD", 3) != 0) Invalid();
    wadVersion_ = header.magic[3] - '0';
    ReadDirectory(header.directoryOffset, header.lumpCount);
    IndexTextures();
}

void CWadFile::Invalid() const {
    FatalError("Invalid\tor missing texture file\t%s", path_.c_str());
}

bool CWadFile::LiesInFile(int64_t offset, int64_t size) const {
    return offset >= 0 && size >= 0 && offset + size <= length_;
}

bool CWadFile::ReadAt(int64_t offset, size_t size, void* buffer) {
    return LiesInFile(offset, static_cast<int64_t>(size)) &&
           std::fseek(stream_.get(), static_cast<long>(offset), SEEK_SET) == 0 &&
           std::fread(buffer, 1, size, stream_.get()) == size;
}

void CWadFile::ReadDirectory(int32_t directoryOffset, int32_t lumpCount) {
    const int64_t size = static_cast<int64_t>(lumpCount) * static_cast<int64_t>(sizeof(WadLump));
    if (!LiesInFile(directoryOffset, size)) Invalid();
    directory_.resize(static_cast<size_t>(lumpCount));
    if (!ReadAt(directoryOffset, static_cast<size_t>(size), directory_.data())) Invalid();
    for (WadLump& lump : directory_) lump.name = NormaliseLumpName({lump.name.data(), lump.name.size()});
}

bool CWadFile::IsTexture(const WadLump& lump) const {
    if (wadVersion_ >= FirstVersionOfNumberedTypes) return lump.type >= 0 && lump.type <= LastNumberedType;
    return lump.type == 'D' || lump.type == 'T' || lump.type == '\\';
}

void CWadFile::IndexTextures() {
    textures_.clear();
    for (size_t i = 0; i < directory_.size(); ++i) {
        const WadLump& lump = directory_[i];
        if (!IsTexture(lump) || !textures_.try_emplace(lump.name, i).second) continue;
        if (!LiesInFile(lump.filePosition, lump.size)) Invalid();
    }
}

const WadLump* CWadFile::FindTexture(std::string_view name) const {
    const auto found = textures_.find(NormaliseLumpName(name));
    return found == textures_.end() ? nullptr : &directory_[found->second];
}

int32_t CWadFile::FindLumpSize(std::string_view name) const {
    const WadLump* lump = FindTexture(name);
    return lump == nullptr ? 0 : lump->size;
}

int32_t CWadFile::ReadLump(std::string_view name, uint8_t* destination) {
    const WadLump* lump = FindTexture(name);
    if (lump == nullptr) {
        BuildLog(" \nWARNING\tW050: texture %s not found\n", std::string(name).c_str());
        return 0;
    }
    if (!ReadAt(lump->filePosition, static_cast<size_t>(lump->size), destination)) Invalid();
    return lump->size;
}

void CWadFile::AddAllLumpNames(CTextureData& textures) const {
    for (const WadLump& lump : directory_) textures.FindTextureName({lump.name.data(), lump.name.size()});
}

}  // namespace k2k
