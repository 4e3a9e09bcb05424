// The level file: a fixed table of numbered chunks and the chunks behind it.
#pragma once

#include <array>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "levelfile/storable.h"

namespace k2k {

// Root of the file classes: owns the file's name.
class CFileBase {
  public:
    explicit CFileBase(std::string path = {}) : name_(std::move(path)) {}
    virtual ~CFileBase() = default;
    CFileBase(const CFileBase&) = delete;
    CFileBase& operator=(const CFileBase&) = delete;
    virtual void SetName(const std::string& path) { name_ = path; }
    virtual bool Open(bool flag) = 0;
    virtual bool Close() = 0;
    const std::string& name() const { return name_; }

  private:
    std::string name_;
};

enum class Chunk : int {
    Palette = 0,
    Planes = 1,
    TextureBlob = 2,
    Vertices = 3,
    Visibility = 4,
    Nodes = 5,
    Texinfos = 6,
    Surfaces = 7,
    Unused8 = 8,
    HullNodes = 9,
    Regions = 10,
    RegionSurfaces = 11,
    Edges = 12,
    SurfaceEdges = 13,
    Info = 14,
    Entities = 15,
    LightmapPages = 16,
    Meshes = 17,
    Unused18 = 18
};
constexpr int ChunkCount = 19;
constexpr uint32_t ChunkAlignment = 4;  // every chunk begins on a multiple of it

struct ChunkEntry {
    uint32_t offset = 0, size = 0;
};

struct LevelHeader {
    std::array<char, 4> magic{};  // "KLV" and the version digit
    std::array<ChunkEntry, ChunkCount> chunks{};
};
static_assert(sizeof(LevelHeader) == 156);

// Ends the build: the file's offsets, sizes or numbers cannot be those of a level.
[[noreturn]] void InvalidLevelFile();

class CFileKLV : public CFileBase {
  public:
    explicit CFileKLV(std::string path);
    ~CFileKLV() override;

    // Opens for reading and writing; a file that is missing is created unless readOnly. Fatal when that fails.
    bool Open(bool readOnly) override;
    // Opens a new level for writing; one that stands there, since it could not be removed, leaves nothing behind. False
    // without a name. Fatal when the file cannot be opened.
    bool Create();
    bool Close() override;
    // Reads all data sets. False without a stream; a broken file is fatal. A level with meshes turns on -mesh.
    virtual bool Load();
    // Writes all data sets. False on a read-only file. A level that cannot be written is fatal: when there is no room
    // for it, or a limit is passed, the file is left as it was.
    virtual bool Save();
    virtual void PrintStats();

    virtual bool HasLightmaps() const { return hasLightmaps_; }
    virtual bool HasMeshes() const { return hasMeshes_; }
    virtual uint32_t GetChunkSize(Chunk number) const;
    virtual uint32_t GetChunkOffset(Chunk number) const;
    virtual bool ReadAt(uint32_t offset, uint32_t size, void* buffer);
    virtual bool WriteAt(uint32_t offset, uint32_t size, const void* buffer);
    virtual int64_t Tell();
    virtual void SetChunkOffset(Chunk number, int64_t offset);
    virtual void SetChunkSize(Chunk number, int64_t size);
    virtual void WriteHeader();
    virtual bool ReadHeader();
    virtual int32_t GetVersion() const { return version_; }

    // The common write step: table entry, bytes, padding to a multiple of 4.
    void WriteChunk(Chunk number, const void* data, size_t size);
    // The same for a chunk whose bytes lie in several places, one behind the other in the file.
    void WriteChunk(Chunk number, std::span<const std::span<const uint8_t>> parts);
    // A table of records; an empty one is skipped, which leaves the chunk's old entry alone.
    template <typename T>
    void WriteRecords(Chunk number, const std::vector<T>& records) {
        if (!records.empty()) WriteChunk(number, records.data(), records.size() * sizeof(T));
    }
    // Replaces the records by the chunk's; a size that is no multiple of the record's is fatal. Size 0: nothing.
    template <typename T>
    void ReadRecords(Chunk number, std::vector<T>& records) {
        const uint32_t size = CheckedChunkSize(number, sizeof(T));
        if (size == 0) return;
        records.resize(size / sizeof(T));
        ReadAt(GetChunkOffset(number), size, records.data());
    }

    // The chunk's size after the tests on the record size and on the file's length: what it promises is there.
    uint32_t CheckedChunkSize(Chunk number, size_t recordSize);

  private:
    void OpenStream(const char* mode);
    [[noreturn]] void CannotOpen() const;
    int64_t FileLength();
    bool SeekTo(uint32_t offset);
    void ReadSunSettings();
    int64_t MeasureLevel();
    void ReserveRoom(int64_t length);
    void WriteUnfinishedHeader();
    void Flush();
    [[noreturn]] void CannotWrite() const;

    int32_t version_ = -1;
    bool hasLightmaps_ = false;
    bool hasMeshes_ = false;
    bool readOnly_ = false;
    std::unique_ptr<char[]> ioBuffer_;  // outlives the stream that it buffers
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> stream_{nullptr, &std::fclose};
    LevelHeader header_;
    std::optional<int64_t> measured_;       // set while writes are counted only: where the last one ended
    std::array<CStorable*, 4> dataSets_{};  // geometry, texture, portal, entity
};

// Calls Clear on the four data sets, in the order geometry, texture, entity, portal.
void ClearDataSets();

// For tests: everything of the four data sets as at program start, also what Clear leaves alone.
void ResetDataSetsForTest();

// Ends the build when no file stands at the path: for stages that a level must have been left to, as Open creates one.
void RequireLevel(const std::string& path);

}  // namespace k2k
