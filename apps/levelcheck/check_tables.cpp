// Chunk table, index ranges, entities and textures.
#include <cstring>

#include "levelcheck/fault_list.h"

namespace levelcheck {
namespace {

constexpr std::array<int, 18> FileOrder{14, 3, 12, 13, 1, 7, 17, 6, 8, 2, 0, 16, 10, 5, 9, 11, 4, 15};

std::string Row(const char* table, size_t index) {
    return std::string(table) + " " + std::to_string(index);
}

uint32_t U32(std::span<const uint8_t> data, size_t at) {
    uint32_t value = 0;
    std::memcpy(&value, data.data() + at, 4);
    return value;
}

// Record sizes by entity type; a path's grows with its points.
constexpr std::array<size_t, 9> RecordSizes{0, 56, 36, 136, 72, 60, 44, 372, 52};

}  // namespace

void CheckChunks(const LevelView& level, FaultList& faults) {
    faults.Require(level.version >= '5' && level.version <= '7', "version is none of 5, 6 and 7",
                   std::string(1, level.version));
    size_t expected = HeaderSize;
    for (const int number : FileOrder) {
        const ChunkPlace place = level.chunks[number];
        const std::string name = "chunk " + std::to_string(number);
        if (place.size == 0) {
            faults.Require(place.offset == 0, "empty chunk with an offset", name);
            continue;
        }
        faults.Require(place.offset % 4 == 0, "chunk not on a multiple of 4", name);
        faults.Require(place.offset == expected, "chunk out of order, overlapping or behind a gap", name);
        expected = (size_t{place.offset} + place.size + 3) / 4 * 4;
    }
    faults.Require(expected <= level.bytes.size(), "file shorter than its chunks and their padding",
                   std::to_string(level.bytes.size()));
    faults.Require(level.chunks[18].size == 0, "chunk 18 in use", "chunk 18");
    faults.Require(level.chunks[ChunkInfo].size == 160, "level info not of 160 bytes", "chunk 14");
}

void CheckIndices(const LevelView& level, FaultList& faults) {
    for (size_t i = 0; i < level.edges.size(); i++) {
        const Edge edge = level.edges[i];
        const bool inRange = edge.first < level.vertices.size() && edge.second < level.vertices.size();
        faults.Require(inRange, "edge names no vertex", Row("edge", i));
    }
    for (size_t i = 0; i < level.surfaceEdges.size(); i++) {
        const int64_t number = level.surfaceEdges[i];
        const auto row = static_cast<uint64_t>(number < 0 ? -number : number);
        faults.Require(row != 0 && row < level.edges.size(), "surface edge names no edge", Row("entry", i));
    }
    for (size_t i = 0; i < level.surfaces.size(); i++) {
        const Surface& surface = level.surfaces[i];
        const uint64_t end = uint64_t{surface.firstEdge} + static_cast<uint64_t>(std::max<int>(surface.edgeCount, 0));
        faults.Require(surface.edgeCount >= 3 && end <= level.surfaceEdges.size(), "surface edge range",
                       Row("surface", i));
        faults.Require(surface.plane < level.planes.size(), "surface names no plane", Row("surface", i));
        faults.Require(surface.side <= 1, "surface side not 0 or 1", Row("surface", i));
        faults.Require(surface.texinfo >= -1 && surface.texinfo < static_cast<int>(level.texinfos.size()),
                       "surface names no texinfo", Row("surface", i));
    }
    const size_t listed = level.meshLevel ? level.meshes.size() : level.surfaces.size();
    for (size_t i = 0; i < level.regionSurfaces.size(); i++) {
        const int32_t number = level.regionSurfaces[i];
        const bool none = level.meshLevel && number == -1;  // a surface that belongs to no mesh
        faults.Require(none || (number >= 0 && static_cast<size_t>(number) < listed), "region list entry",
                       Row("entry", i));
    }
    for (size_t i = 0; i < level.regions.size(); i++) {
        const uint64_t end = uint64_t{level.regions[i].firstSurface} + level.regions[i].surfaceCount;
        faults.Require(end <= level.regionSurfaces.size(), "region surface range", Row("region", i));
    }
    for (size_t i = 0; i < level.nodes.size(); i++) {
        const uint64_t end = uint64_t{level.nodes[i].firstSurface} + level.nodes[i].surfaceCount;
        faults.Require(level.nodes[i].plane < level.planes.size(), "node names no plane", Row("node", i));
        faults.Require(end <= level.surfaces.size(), "node surface range", Row("node", i));
    }
    for (size_t i = 0; i < level.hullNodes.size(); i++) {
        faults.Require(level.hullNodes[i].plane < level.planes.size(), "hull node names no plane", Row("hull node", i));
    }
}

void CheckEntities(const LevelView& level, FaultList& faults) {
    const auto data = level.Chunk(ChunkEntities);
    if (data.size() < 8) return faults.Add("entity chunk shorter than its smallest table", std::to_string(data.size()));
    const uint64_t count = U32(data, 0);
    if (4 + 4 * count > data.size()) return faults.Add("entity table runs past the chunk", std::to_string(count));
    uint64_t expected = 0;
    for (uint64_t i = 0; i < count; i++) {
        const uint64_t offset = U32(data, 4 + 4 * i);
        const std::string name = Row("entity record", i);
        if (offset + 4 > data.size() || offset < 4 + 4 * count) {
            faults.Add("entity record outside the chunk", name);
            continue;
        }
        if (expected != 0) faults.Require(offset == expected, "entity records not back to back", name);
        const uint32_t type = U32(data, offset);
        if (type == 0 || type >= RecordSizes.size()) {
            faults.Add("entity record of an unknown type", name);
            continue;
        }
        uint64_t size = RecordSizes[type];
        if (type == 5 && level.version == '5') size = 56;
        if (type == 6 && offset + 44 <= data.size()) size += uint64_t{12} * U32(data, offset + 40);
        faults.Require(offset + size <= data.size(), "entity record runs past the chunk", name);
        expected = offset + size;
    }
    if (expected != 0)
        faults.Require(expected == data.size(), "bytes behind the last entity record", std::to_string(expected));
}

void CheckTextures(const LevelView& level, FaultList& faults) {
    const auto blob = level.Chunk(ChunkTextures);
    uint64_t count = 0;
    if (blob.size() >= 4) {
        count = U32(blob, 0);
        if (4 + 4 * count > blob.size()) return faults.Add("texture table runs past the blob", std::to_string(count));
        for (uint64_t i = 0; i < count; i++) {
            const uint64_t offset = U32(blob, 4 + 4 * i);
            if (offset == 0xFFFFFFFFU) continue;
            const bool head = offset >= 4 + 4 * count && offset + 24 <= blob.size();
            faults.Require(head, "texture image outside the blob", Row("texture", i));
        }
    }
    for (size_t i = 0; i < level.texinfos.size(); i++) {
        const TextureMapping& info = level.texinfos[i];
        faults.Require(info.texture < count || count == 0, "texinfo names no texture", Row("texinfo", i));
        faults.Require(info.reserved == 0 && info.material[19] == 0, "texinfo's fixed bytes", Row("texinfo", i));
    }
    const auto palette = level.Chunk(ChunkPalette);
    if (palette.empty()) return;
    faults.Require(palette.size() == 784, "palette lump not of 784 bytes", std::to_string(palette.size()));
    for (size_t i = 0; i < 16 && i < palette.size(); i++) {
        faults.Require(palette[i] == 0, "palette lump's head not zero", std::to_string(i));
    }
}

}  // namespace levelcheck
