#include "levelfile/texture_data.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <optional>

#include "driver/build_log.h"
#include "driver/build_options.h"
#include "levelfile/file_klv.h"

namespace k2k {

namespace {

constexpr uint8_t DefaultAlbedo = 50;
constexpr size_t ImageWidthOffset = 16, ImageHeightOffset = 20, ImageHeaderSize = 24;
constexpr int32_t MaxPageSizeCode = 7;  // larger codes give pages that no 32-bit chunk size is a multiple of

std::optional<uint32_t> PageBytes(int32_t sizeCode) {
    if (sizeCode < 0 || sizeCode > MaxPageSizeCode) return std::nullopt;
    return SmallestPageBytes << (2 * sizeCode);
}

uint32_t U32At(const std::vector<uint8_t>& bytes, size_t offset) {
    uint32_t value;
    std::memcpy(&value, bytes.data() + offset, sizeof(value));
    return value;
}

std::string_view TerminatedText(const std::array<char, 20>& field) {
    return {field.data(), static_cast<size_t>(std::find(field.begin(), field.end(), '\0') - field.begin())};
}

bool SameTexinfo(const Texinfo& a, const Texinfo& b) {
    return a.texture == b.texture && a.flags == b.flags && a.ambient == b.ambient && a.albedo == b.albedo &&
           TerminatedText(a.material) == TerminatedText(b.material) && a.vecS == b.vecS && a.shiftS == b.shiftS &&
           a.vecT == b.vecT && a.shiftT == b.shiftT;
}

// The neutral record at row 0, which no search finds.
Texinfo DefaultTexinfo(const Texinfo& first) {
    Texinfo record = first;
    record.flags = 0;
    record.reserved = {};
    record.ambient = 0;
    record.albedo = DefaultAlbedo;
    return record;
}

TextureName ToTextureName(std::string_view text) {
    TextureName name{};
    text = text.substr(0, std::min(text.find('\0'), name.size()));
    std::copy(text.begin(), text.end(), name.begin());
    return name;
}

}  // namespace

CTextureData& Textures() {
    static CTextureData textures;
    return textures;
}

void CTextureData::Read(CFileKLV& file) {
    blob.clear();
    texinfoIndex_.clear();
    indexedTexinfos_ = 0;
    file.ReadRecords(Chunk::Texinfos, texinfos);
    file.ReadRecords(Chunk::TextureBlob, blob);
    file.ReadRecords(Chunk::Palette, paletteLump);
    if (file.HasLightmaps()) ReadLightmapPages(file);
}

void CTextureData::ReadLightmapPages(CFileKLV& file) {
    const uint32_t size = file.CheckedChunkSize(Chunk::LightmapPages, 1);
    const std::optional<uint32_t> pageBytes = PageBytes(lightmapSizeCode);
    if (size == 0 || !pageBytes || size % *pageBytes != 0) return;
    FreeLightmapPages();
    const uint32_t offset = file.GetChunkOffset(Chunk::LightmapPages);
    for (uint32_t done = 0; done < size; done += *pageBytes) {
        file.ReadAt(offset + done, *pageBytes, pages.emplace_back(*pageBytes).data());
    }
}

void CTextureData::Write(CFileKLV& file) {
    file.WriteRecords(Chunk::Texinfos, texinfos);
    file.WriteChunk(Chunk::Unused8, nullptr, 0);
    file.WriteChunk(Chunk::TextureBlob, blob.data(), blob.size());
    file.WriteRecords(Chunk::Palette, paletteLump);
    WriteLightmapPages(file);
}

bool CTextureData::WritesLightmapPages() const {
    if (Options().nod3dlmaps || pages.empty()) return false;
    return pages.size() > 1 || Options().litmapsonly;
}

void CTextureData::WriteLightmapPages(CFileKLV& file) {
    std::vector<std::span<const uint8_t>> parts;
    if (WritesLightmapPages()) parts.assign(pages.begin(), pages.end());
    file.WriteChunk(Chunk::LightmapPages, parts);
}

void CTextureData::PrintStats() {
    constexpr size_t kib = 1024;
    if (!blob.empty()) {
        BuildLog(" \n%d textures", static_cast<int>(BlobTextureCount()));
        BuildLog(" \nTexture\tspace %i Kb", static_cast<int>((blob.size() + kib - 1) / kib));
    }
    if (WritesLightmapPages()) {
        BuildLog(" \nLightmap space %i Kb", static_cast<int>(pages.size() * SmallestPageBytes / kib));
    }
}

void CTextureData::Clear() {
    names.clear();
    nameIndex_.clear();
    indexedNames_ = 0;
    blob = {};
    FreeLightmapPages();
}

void CTextureData::FreeLightmapPages() {
    pages.clear();
}

void CTextureData::ClearTexinfos() {
    texinfos.clear();
    aliases.clear();
    texinfoIndex_.clear();
    indexedTexinfos_ = 0;
}

int32_t CTextureData::FindTextureName(std::string_view name) {
    const TextureName wanted = ToTextureName(name);
    IndexNewNames();
    const auto found = nameIndex_.find(wanted);
    if (found != nameIndex_.end()) return found->second;
    if (names.size() >= MaxTextureNames) FatalError("E019: Texture size overrun");
    names.push_back(wanted);
    return static_cast<int32_t>(names.size()) - 1;
}

void CTextureData::IndexNewNames() {
    if (indexedNames_ > names.size()) {
        nameIndex_.clear();
        indexedNames_ = 0;
    }
    for (; indexedNames_ < names.size(); ++indexedNames_) {
        nameIndex_.try_emplace(names[indexedNames_], static_cast<int32_t>(indexedNames_));
    }
}

int32_t CTextureData::AddTexinfo(const Texinfo& record, TexinfoAlias* alias) {
    if (alias != nullptr) {
        const int32_t id = FindAlias(record, *alias);
        if (id < 0) return id;
    }
    if (texinfos.empty()) {
        texinfos.push_back(DefaultTexinfo(record));
    } else {
        const int32_t row = FindTexinfo(record);
        if (row > 0) return row;
    }
    if (texinfos.size() >= MaxTexinfos) FatalError("E020: Texture size overrun");
    const auto row = static_cast<int32_t>(texinfos.size());
    texinfos.push_back(record);
    if (alias == nullptr) return row;
    alias->texinfo = static_cast<uint32_t>(row);
    aliases.push_back(*alias);
    return -1 - static_cast<int32_t>(aliases.size());
}

// The negative id of an alias that leads to an equal record, or 0. Entry n, counted from 1, has the id -1 - n.
int32_t CTextureData::FindAlias(const Texinfo& record, const TexinfoAlias& alias) const {
    const auto matches = [&](const TexinfoAlias& entry) {
        if (entry.key != alias.key) return false;
        if ((entry.key & 1U) != 0 && (entry.first != alias.first || entry.second != alias.second)) return false;
        return entry.texinfo < texinfos.size() && SameTexinfo(texinfos[entry.texinfo], record);
    };
    const auto found = std::find_if(aliases.begin(), aliases.end(), matches);
    return found == aliases.end() ? 0 : -2 - static_cast<int32_t>(found - aliases.begin());
}

// The first row from 1 on that equals the record, or 0. A record with a NaN equals none, not even itself.
int32_t CTextureData::FindTexinfo(const Texinfo& record) {
    IndexNewTexinfos();
    if (!SameTexinfo(record, record)) return 0;
    const auto found = texinfoIndex_.find(KeyOf(record));
    return found == texinfoIndex_.end() ? 0 : found->second;
}

void CTextureData::IndexNewTexinfos() {
    if (indexedTexinfos_ > texinfos.size()) {
        texinfoIndex_.clear();
        indexedTexinfos_ = 0;
    }
    for (size_t row = std::max<size_t>(indexedTexinfos_, 1); row < texinfos.size(); ++row) {
        texinfoIndex_.try_emplace(KeyOf(texinfos[row]), static_cast<int32_t>(row));
    }
    indexedTexinfos_ = texinfos.size();
}

CTextureData::TexinfoKey CTextureData::KeyOf(const Texinfo& record) {
    Texinfo plain = record;
    const auto withoutSign = [](float& number) {
        if (number == 0) number = 0;
    };
    std::for_each(plain.vecS.begin(), plain.vecS.end(), withoutSign);
    std::for_each(plain.vecT.begin(), plain.vecT.end(), withoutSign);
    withoutSign(plain.shiftS);
    withoutSign(plain.shiftT);
    plain.reserved = {};
    const auto length = static_cast<std::ptrdiff_t>(TerminatedText(plain.material).size());
    std::fill(plain.material.begin() + length, plain.material.end(), '\0');
    return std::bit_cast<TexinfoKey>(plain);
}

const Texinfo& CTextureData::GetTexinfo(int32_t id) const {
    auto row = static_cast<size_t>(id);
    if (id == -1) {
        row = 0;
    } else if (id < 0) {
        const auto alias = static_cast<size_t>(-(static_cast<int64_t>(id) + 2));
        if (alias >= aliases.size()) InvalidLevelFile();
        row = aliases[alias].texinfo;
    }
    if (row >= texinfos.size()) InvalidLevelFile();
    return texinfos[row];
}

uint32_t CTextureData::BlobTextureCount() const {
    if (blob.size() < sizeof(uint32_t)) return 0;
    const uint32_t count = U32At(blob, 0);
    return count <= blob.size() / sizeof(uint32_t) - 1 ? count : 0;
}

std::array<uint32_t, 2> CTextureData::ImageSize(uint32_t texture) const {
    constexpr std::array<uint32_t, 2> noImage{1, 1};
    if (texture >= BlobTextureCount()) return noImage;
    const size_t offset = U32At(blob, sizeof(uint32_t) * (size_t{texture} + 1));
    if (offset > blob.size() || blob.size() - offset < ImageHeaderSize) return noImage;
    const uint32_t width = U32At(blob, offset + ImageWidthOffset);
    const uint32_t height = U32At(blob, offset + ImageHeightOffset);
    if (width == 0 || height == 0) return noImage;
    return {width, height};
}

}  // namespace k2k
