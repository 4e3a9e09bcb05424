#include "levelcheck/level_view.h"

#include <algorithm>
#include <cstring>

namespace levelcheck {
namespace {

template <typename T>
void ReadTable(LevelView& level, int number, std::vector<T>& out) {
    const auto data = level.Chunk(number);
    if (data.size() % sizeof(T) != 0) {
        level.broken.push_back("chunk " + std::to_string(number) + ": size " + std::to_string(data.size()) +
                               " is no multiple of " + std::to_string(sizeof(T)));
        return;
    }
    out.resize(data.size() / sizeof(T));
    if (!data.empty()) std::memcpy(out.data(), data.data(), data.size());
}

class Cursor {
  public:
    explicit Cursor(std::span<const uint8_t> data) : data_(data) {}
    template <typename T>
    bool Take(T& out) {
        if (data_.size() < sizeof(T)) return false;
        std::memcpy(&out, data_.data(), sizeof(T));
        data_ = data_.subspan(sizeof(T));
        return true;
    }
    template <typename T>
    bool TakeRows(std::vector<T>& rows, uint64_t count) {
        if (data_.size() / sizeof(T) < count) return false;
        rows.resize(count);
        if (count != 0) std::memcpy(rows.data(), data_.data(), count * sizeof(T));
        data_ = data_.subspan(count * sizeof(T));
        return true;
    }
    bool AtEnd() const { return data_.empty(); }

  private:
    std::span<const uint8_t> data_;
};

bool ReadMesh(Cursor& in, Mesh& mesh) {
    std::array<uint32_t, 3> counts{};
    return in.Take(mesh.mins) && in.Take(mesh.maxs) && in.Take(mesh.contents) && in.Take(counts) &&
           in.TakeRows(mesh.vertices, counts[0]) && in.TakeRows(mesh.triangles, counts[1]) &&
           in.TakeRows(mesh.materials, counts[2]);
}

void ReadMeshes(LevelView& level) {
    const auto data = level.Chunk(ChunkMeshes);
    if (data.empty()) return;
    level.meshLevel = true;
    Cursor in(data);
    uint32_t count = 0;
    if (!in.Take(count)) return level.broken.push_back("chunk 17: no count");
    while (!in.AtEnd()) {
        Mesh mesh{};
        if (!ReadMesh(in, mesh)) return level.broken.push_back("chunk 17: a mesh runs past the chunk's end");
        level.meshes.push_back(std::move(mesh));
    }
    if (level.meshes.size() != count) level.broken.push_back("chunk 17: the count is not that of the meshes");
}

// The sun's record, when it stands first, carries the size code of the lightmap pages.
void ReadPageSize(LevelView& level) {
    const auto entities = level.Chunk(ChunkEntities);
    uint32_t count = 0, first = 0;
    if (level.version != '5' && entities.size() >= 8) {
        std::memcpy(&count, entities.data(), 4);
        std::memcpy(&first, entities.data() + 4, 4);
        if (count > 0 && first < entities.size() && entities.size() - first > 33) {
            const uint8_t code = entities[first + 33];
            if (code <= 2) level.pageSize = 256U << code;
        }
    }
    const size_t pageBytes = size_t{3} * level.pageSize * level.pageSize;
    level.pageCount = static_cast<uint32_t>(level.Chunk(ChunkPages).size() / pageBytes);
}

uint64_t RingSize(const LevelView& level, const Surface& surface) {
    const auto count = static_cast<uint64_t>(std::max<int>(surface.edgeCount, 0));
    return surface.firstEdge + count <= level.surfaceEdges.size() ? count : 0;
}

// Each entry of the edge list belongs to one surface. Where many surfaces name long pieces of it, or many triangles
// such a surface, a small file would take hours to walk.
void RefuseEndlessRings(LevelView& level) {
    constexpr uint64_t MostShared = 1 << 20, MostOfTriangles = 1 << 28;
    uint64_t ofSurfaces = 0, ofTriangles = 0;
    for (const Surface& surface : level.surfaces) ofSurfaces += RingSize(level, surface);
    for (const Mesh& mesh : level.meshes) {
        for (const MeshTriangleRow& triangle : mesh.triangles) {
            const auto surface = static_cast<uint32_t>(triangle.surface);
            if (surface < level.surfaces.size()) ofTriangles += RingSize(level, level.surfaces[surface]);
        }
    }
    if (ofSurfaces > MostShared + level.surfaceEdges.size()) {
        level.broken.emplace_back("chunk 7: the surfaces share their edges");
        level.surfaces.clear();
    } else if (ofTriangles > MostOfTriangles) {
        level.broken.emplace_back("chunk 17: triangles beyond measure of surfaces of many edges");
        level.meshes.clear();
    }
}

bool ReadHeader(LevelView& level) {
    if (level.bytes.size() < HeaderSize || std::memcmp(level.bytes.data(), "KLV", 3) != 0 || level.bytes[3] == 0) {
        level.broken.push_back("header: no level file");
        return false;
    }
    level.version = static_cast<char>(level.bytes[3]);
    std::memcpy(level.chunks.data(), level.bytes.data() + 4, sizeof(level.chunks));
    for (int i = 0; i < ChunkCount; i++) {
        ChunkPlace& place = level.chunks[i];
        if (place.offset <= level.bytes.size() && place.size <= level.bytes.size() - place.offset) continue;
        level.broken.push_back("chunk " + std::to_string(i) + ": runs past the file's end");
        place = {0, 0};
    }
    return true;
}

}  // namespace

std::span<const uint8_t> LevelView::Chunk(int number) const {
    const ChunkPlace place = chunks[number];
    return std::span(bytes).subspan(place.offset, place.size);
}

LevelView ReadLevel(std::vector<uint8_t> bytes) {
    LevelView level;
    level.bytes = std::move(bytes);
    if (!ReadHeader(level)) return level;
    const auto info = level.Chunk(ChunkInfo);
    if (info.size() == sizeof(Info)) {
        std::memcpy(&level.info, info.data(), sizeof(Info));
    } else {
        level.broken.push_back("chunk 14: its size is not 160");
    }
    ReadTable(level, ChunkVertices, level.vertices);
    ReadTable(level, ChunkEdges, level.edges);
    ReadTable(level, ChunkSurfaceEdges, level.surfaceEdges);
    ReadTable(level, ChunkPlanes, level.planes);
    ReadTable(level, ChunkSurfaces, level.surfaces);
    ReadTable(level, ChunkTexinfos, level.texinfos);
    ReadTable(level, ChunkRegions, level.regions);
    ReadTable(level, ChunkNodes, level.nodes);
    ReadTable(level, ChunkHulls, level.hullNodes);
    ReadTable(level, ChunkRegionSurfaces, level.regionSurfaces);
    ReadMeshes(level);
    RefuseEndlessRings(level);
    ReadPageSize(level);
    return level;
}

std::vector<uint32_t> RingOf(const LevelView& level, const Surface& surface) {
    std::vector<uint32_t> ring;
    const uint64_t end =
        uint64_t{surface.firstEdge} + static_cast<uint64_t>(surface.edgeCount < 0 ? 0 : surface.edgeCount);
    if (end > level.surfaceEdges.size()) return ring;
    for (uint64_t i = surface.firstEdge; i < end; i++) {
        const int64_t number = level.surfaceEdges[i];
        const auto row = static_cast<uint64_t>(number < 0 ? -number : number);
        if (row >= level.edges.size()) return {};
        const uint32_t vertex = number < 0 ? level.edges[row].second : level.edges[row].first;
        if (vertex >= level.vertices.size()) return {};
        ring.push_back(vertex);
    }
    return ring;
}

std::optional<std::vector<uint8_t>> VisRow(const LevelView& level, size_t region) {
    const int32_t offset = level.regions[region].visOffset;
    const auto data = level.Chunk(ChunkVis);
    if (offset < 0 || level.info.visRegions < 0) return std::nullopt;
    const size_t length = (static_cast<size_t>(level.info.visRegions) + 7) / 8;
    std::vector<uint8_t> row;
    for (size_t at = static_cast<size_t>(offset); row.size() < length; at++) {
        if (at >= data.size()) return std::nullopt;
        if (data[at] != 0) {
            row.push_back(data[at]);
            continue;
        }
        if (++at >= data.size() || data[at] == 0 || row.size() + data[at] > length) return std::nullopt;
        row.insert(row.end(), data[at], 0);
    }
    return row;
}

}  // namespace levelcheck
