#include "levelfile/file_klv.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <limits>
#include <utility>

#include "driver/build_log.h"
#include "driver/build_options.h"
#include "levelfile/entity_data.h"
#include "levelfile/geometry_data.h"
#include "levelfile/portal_data.h"
#include "levelfile/texture_data.h"

namespace k2k {

namespace {

constexpr size_t StreamBufferSize = 32766;
constexpr int32_t FirstVersionWithLightmaps = 6;
constexpr float FirstCompilerWithMeshes = 7.0F;

size_t Index(Chunk number) {
    return static_cast<size_t>(number);
}

// Where the long sun record, first in the entity chunk, holds what a reader must know before it reads the rest.
namespace sun {
constexpr size_t Flags = 24, CompilerVersion = 28, LightmapSizeCode = 33, BytesNeeded = 34;
}

template <typename T>
T ValueAt(std::span<const uint8_t> bytes, size_t offset) {
    T value;
    std::memcpy(&value, bytes.data() + offset, sizeof(T));
    return value;
}

}  // namespace

void InvalidLevelFile() {
    FatalError(" \nInvalid KLV file format");
}

CFileKLV::CFileKLV(std::string path)
    : CFileBase(std::move(path)), dataSets_{&Geometry(), &Textures(), &Portals(), &EntityRecords()} {}

CFileKLV::~CFileKLV() {
    CFileKLV::Close();
}

bool CFileKLV::Open(bool readOnly) {
    Close();
    readOnly_ = readOnly;
    if (name().empty()) return false;
    OpenStream(readOnly ? "rb" : "r+b");
    if (stream_) return ReadHeader();
    if (errno != ENOENT || readOnly) CannotOpen();
    return Create();
}

bool CFileKLV::Create() {
    Close();
    readOnly_ = false;
    if (name().empty()) return false;
    OpenStream("w+b");
    if (!stream_) CannotOpen();
    return true;
}

// Leaves errno as the system set it when there is no stream.
void CFileKLV::OpenStream(const char* mode) {
    ioBuffer_ = std::make_unique<char[]>(StreamBufferSize);
    stream_.reset(std::fopen(name().c_str(), mode));
    if (stream_) std::setvbuf(stream_.get(), ioBuffer_.get(), _IOFBF, StreamBufferSize);
}

void CFileKLV::CannotOpen() const {
    FatalError("Can't open %s - %s", name().c_str(), std::strerror(errno));
}

bool CFileKLV::Close() {
    const bool closed = !stream_ || std::fclose(stream_.release()) == 0;
    ioBuffer_.reset();
    header_ = {};
    measured_.reset();
    return closed;
}

bool CFileKLV::Load() {
    if (!stream_) return false;
    EntityRecords().Read(*this);
    version_ = header_.magic[3] - '0';
    hasLightmaps_ = hasMeshes_ = false;
    if (version_ < FirstVersionWithLightmaps) {
        Textures().lightmapSizeCode = 0;
    } else {
        ReadSunSettings();
    }
    for (CStorable* dataSet : dataSets_) dataSet->Read(*this);
    // Other chunks move at the next save, so the meshes have to be written again.
    if (hasMeshes_ && GetChunkSize(Chunk::Meshes) > 0) EnableMesh();
    return true;
}

// Whatever type the first record has, it is read as a sun: compilers put the sun there when the level has one.
void CFileKLV::ReadSunSettings() {
    const std::vector<EntityRecordView> records = EntityRecordViews(EntityRecords().block);
    if (records.empty() || records.front().bytes.empty()) return;
    const std::span<const uint8_t> record = records.front().bytes;
    if (record.size() < sun::BytesNeeded) InvalidLevelFile();
    hasLightmaps_ = (ValueAt<uint32_t>(record, sun::Flags) & 1U) != 0;
    hasMeshes_ = ValueAt<float>(record, sun::CompilerVersion) >= FirstCompilerWithMeshes;
    Textures().lightmapSizeCode = record[sun::LightmapSizeCode];
}

// What can fail does so before the file is touched, so that a level that stands there outlives it. From then on the
// file counts as no level until the last header is in.
bool CFileKLV::Save() {
    if (readOnly_ || !stream_) return false;
    const int64_t length = MeasureLevel();
    // Fresh room is all zeros, which would read as a level without content.
    if (FileLength() == 0) WriteUnfinishedHeader();
    ReserveRoom(length);
    WriteUnfinishedHeader();
    for (CStorable* dataSet : dataSets_) dataSet->Write(*this);
    WriteHeader();
    Flush();
    return true;
}

// The length of the level in work as a file.
int64_t CFileKLV::MeasureLevel() {
    measured_ = sizeof(LevelHeader);
    for (CStorable* dataSet : dataSets_) dataSet->Write(*this);
    return std::exchange(measured_, std::nullopt).value();
}

void CFileKLV::ReserveRoom(int64_t length) {
    const int64_t before = FileLength();
    const int error = posix_fallocate(fileno(stream_.get()), 0, length);
    if (error != ENOSPC && error != EDQUOT && error != EFBIG) return;
    // What was had of the room goes back; should that fail, the level is whole all the same.
    std::error_code ignored;
    if (FileLength() > before) std::filesystem::resize_file(name(), static_cast<uintmax_t>(before), ignored);
    CannotWrite();
}

// Every chunk lies outside of any file, so no reader takes what stands here for a level.
void CFileKLV::WriteUnfinishedHeader() {
    constexpr uint32_t outside = std::numeric_limits<uint32_t>::max();
    LevelHeader unfinished;
    unfinished.chunks.fill({outside, outside});
    WriteAt(0, sizeof(unfinished), &unfinished);
    Flush();
}

void CFileKLV::Flush() {
    if (std::fflush(stream_.get()) != 0) CannotWrite();
}

void CFileKLV::CannotWrite() const {
    FatalError("E005 - can't write file %s", name().c_str());
}

void CFileKLV::PrintStats() {
    if (Options().quiet) return;
    float extent = Geometry().levelExtent;
    if (extent != 0) {
        const float zoom = Options().zoomlevel;
        if (zoom != 0 && zoom != 1) extent /= zoom;
        BuildLog(" \nLevel size %i units", static_cast<int>(extent / 10) * 10);
    }
    for (CStorable* dataSet : dataSets_) dataSet->PrintStats();
}

uint32_t CFileKLV::GetChunkSize(Chunk number) const {
    return header_.chunks[Index(number)].size;
}

uint32_t CFileKLV::GetChunkOffset(Chunk number) const {
    return header_.chunks[Index(number)].offset;
}

// Also turns the stream round between writing and reading, which a stream opened for both asks for.
bool CFileKLV::SeekTo(uint32_t offset) {
    return std::fseek(stream_.get(), static_cast<long>(offset), SEEK_SET) == 0;
}

bool CFileKLV::ReadAt(uint32_t offset, uint32_t size, void* buffer) {
    if (!stream_ || !SeekTo(offset)) return false;
    if (std::fread(buffer, 1, size, stream_.get()) != size) FatalError("E004 - can't read file");
    return true;
}

bool CFileKLV::WriteAt(uint32_t offset, uint32_t size, const void* buffer) {
    if (readOnly_ || !stream_) return false;
    if (measured_) {
        measured_ = int64_t{offset} + size;
        return true;
    }
    if (!SeekTo(offset)) return false;
    if (std::fwrite(buffer, 1, size, stream_.get()) != size) CannotWrite();
    return true;
}

int64_t CFileKLV::Tell() {
    if (measured_) return *measured_;
    return stream_ ? std::ftell(stream_.get()) : -1;
}

int64_t CFileKLV::FileLength() {
    if (!stream_ || std::fseek(stream_.get(), 0, SEEK_END) != 0) return 0;
    return Tell();
}

void CFileKLV::SetChunkOffset(Chunk number, int64_t offset) {
    if (readOnly_ || !stream_ || offset < 0) return;
    header_.chunks[Index(number)].offset = static_cast<uint32_t>(offset);
}

void CFileKLV::SetChunkSize(Chunk number, int64_t size) {
    if (readOnly_ || !stream_ || size < 0) return;
    header_.chunks[Index(number)].size = static_cast<uint32_t>(size);
}

void CFileKLV::WriteHeader() {
    if (readOnly_) return;
    std::memcpy(header_.magic.data(), Options().nod3dlmaps ? "KLV5" : "KLV7", header_.magic.size());
    WriteAt(0, sizeof(header_), &header_);
}

bool CFileKLV::ReadHeader() {
    if (FileLength() < static_cast<int64_t>(sizeof(header_))) return false;
    return ReadAt(0, sizeof(header_), &header_);
}

void CFileKLV::WriteChunk(Chunk number, const void* data, size_t size) {
    const std::span<const uint8_t> part(static_cast<const uint8_t*>(data), size);
    WriteChunk(number, std::span(&part, 1));
}

void CFileKLV::WriteChunk(Chunk number, std::span<const std::span<const uint8_t>> parts) {
    if (readOnly_ || !stream_) return;
    uint64_t size = 0;
    for (const auto& part : parts) size += part.size();
    const int64_t offset = size == 0 ? 0 : Tell();
    // Offsets and sizes have 32 bits in the file.
    if (static_cast<uint64_t>(offset) + size + ChunkAlignment > std::numeric_limits<uint32_t>::max()) CannotWrite();
    SetChunkSize(number, static_cast<int64_t>(size));
    SetChunkOffset(number, offset);
    if (size == 0) return;
    auto cursor = static_cast<uint32_t>(offset);
    for (const auto& part : parts) {
        WriteAt(cursor, static_cast<uint32_t>(part.size()), part.data());
        cursor += static_cast<uint32_t>(part.size());
    }
    constexpr std::array<uint8_t, ChunkAlignment> zeros{};
    const auto padding = static_cast<uint32_t>((ChunkAlignment - size % ChunkAlignment) % ChunkAlignment);
    WriteAt(cursor, padding, zeros.data());
}

uint32_t CFileKLV::CheckedChunkSize(Chunk number, size_t recordSize) {
    const ChunkEntry entry = header_.chunks[Index(number)];
    if (entry.size == 0) return 0;
    const uint64_t end = static_cast<uint64_t>(entry.offset) + entry.size;
    if (entry.size % recordSize != 0 || end > static_cast<uint64_t>(FileLength())) InvalidLevelFile();
    return entry.size;
}

void ClearDataSets() {
    Geometry().Clear();
    Textures().Clear();
    EntityRecords().Clear();
    Portals().Clear();
}

void ResetDataSetsForTest() {
    Geometry() = {};
    Textures() = {};
    EntityRecords() = {};
    Portals() = {};
    FirstGammaValue = 0;
}

void RequireLevel(const std::string& path) {
    std::error_code ignored;
    if (!std::filesystem::exists(path, ignored)) FatalError("Can't open %s - %s", path.c_str(), std::strerror(ENOENT));
}

}  // namespace k2k
