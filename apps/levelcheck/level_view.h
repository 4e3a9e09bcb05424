// A level file as typed tables, read without the compiler's code.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace levelcheck {

struct Point {
    float x, y, z;
};
struct Edge {
    uint32_t first, second;
};
struct Plane {
    float nx, ny, nz, dist;
    int32_t type;
};
struct Surface {
    uint16_t block, side;
    uint32_t firstEdge;
    int16_t edgeCount, texinfo;
    uint8_t lightShift, lightPage, lightX, lightY;
    uint32_t lightOffset, plane;
};
struct TextureMapping {
    std::array<float, 4> s, t;
    uint32_t texture, flags;
    uint16_t reserved;
    uint8_t ambient, albedo;
    std::array<char, 20> material;
};
struct Region {
    int32_t contents, visOffset;
    std::array<int16_t, 3> mins, maxs;
    std::array<uint8_t, 8> reserved;
    uint32_t firstSurface, surfaceCount;
};
struct Node {
    uint32_t plane, reserved0;
    std::array<int16_t, 3> mins, maxs;
    uint32_t reserved1;
    std::array<int32_t, 2> children;
    uint32_t firstSurface, surfaceCount;
};
struct HullNode {
    uint32_t plane, reserved;
    std::array<int32_t, 2> children;
};
struct Info {
    std::array<float, 3> mins, maxs, origin;
    std::array<int32_t, 4> headNodes;
    std::array<std::array<int32_t, 3>, 4> hullMins, hullMaxs;
    int32_t visRegions, firstSurface, surfaceCount;
};
struct MeshVertexRow {
    std::array<float, 3> position;
    float u, v, s, t;
};
struct MeshTriangleRow {
    std::array<int16_t, 3> vertices;
    int16_t material;
    int32_t surface;
};
struct MeshMaterialRow {
    uint16_t texture, lightPage;
    int32_t texinfo;
    float ambient, albedo;
    uint32_t flags;
};
struct Mesh {
    std::array<float, 3> mins, maxs;
    int32_t contents;
    std::vector<MeshVertexRow> vertices;
    std::vector<MeshTriangleRow> triangles;
    std::vector<MeshMaterialRow> materials;
};
struct ChunkPlace {
    uint32_t offset, size;
};

constexpr int ChunkCount = 19;
enum ChunkNumber : int {
    ChunkPalette = 0,
    ChunkPlanes = 1,
    ChunkTextures = 2,
    ChunkVertices = 3,
    ChunkVis = 4,
    ChunkNodes = 5,
    ChunkTexinfos = 6,
    ChunkSurfaces = 7,
    ChunkHulls = 9,
    ChunkRegions = 10,
    ChunkRegionSurfaces = 11,
    ChunkEdges = 12,
    ChunkSurfaceEdges = 13,
    ChunkInfo = 14,
    ChunkEntities = 15,
    ChunkPages = 16,
    ChunkMeshes = 17
};
constexpr size_t HeaderSize = 156;

// Tables hold what could be read; everything that could not is named in `broken` (one line each, with its chunk).
struct LevelView {
    std::vector<uint8_t> bytes;
    char version = 0;
    std::array<ChunkPlace, ChunkCount> chunks{};
    Info info{};
    std::vector<Point> vertices;
    std::vector<Edge> edges;
    std::vector<int32_t> surfaceEdges;
    std::vector<Plane> planes;
    std::vector<Surface> surfaces;
    std::vector<TextureMapping> texinfos;
    std::vector<Region> regions;
    std::vector<Node> nodes;
    std::vector<HullNode> hullNodes;
    std::vector<int32_t> regionSurfaces;
    std::vector<Mesh> meshes;
    bool meshLevel = false;   // region lists name meshes
    uint32_t pageSize = 256;  // texels along a side of a lightmap page
    uint32_t pageCount = 0;
    std::vector<std::string> broken;

    std::span<const uint8_t> Chunk(int number) const;
};

LevelView ReadLevel(std::vector<uint8_t> bytes);

// The ring of vertex numbers of a surface: where each of its edges starts. Empty when an index is out of range.
std::vector<uint32_t> RingOf(const LevelView& level, const Surface& surface);

// A region's visibility row, unpacked to one bit a region; nothing when it has none or it is damaged.
std::optional<std::vector<uint8_t>> VisRow(const LevelView& level, size_t region);

}  // namespace levelcheck
