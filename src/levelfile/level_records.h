// The rows of a level file's tables, laid out in memory as they stand in the file (little endian).
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <type_traits>

namespace k2k {

static_assert(std::endian::native == std::endian::little, "level rows are copied as they are");

using Vec3 = std::array<float, 3>;
using Vec3d = std::array<double, 3>;

// Texture flags, at Texinfo::flags.
constexpr uint32_t TextureNoLightmap = 0x01;  // not an ordinary shaded surface; set with any of the next three
constexpr uint32_t TextureFlat = 0x02;
constexpr uint32_t TextureSky = 0x04;
constexpr uint32_t TextureTurbulent = 0x08;
constexpr uint32_t TextureDetail = 0x10;
constexpr uint32_t TexturePassable = 0x40;
constexpr uint32_t TextureClipOnly = 0x80;
constexpr uint32_t TexturePhong = 0x4000;

struct LevelInfo {
    Vec3 mins{}, maxs{};  // world bounds
    Vec3 origin{};        // never set
    std::array<int32_t, 4> headNodes{};
    std::array<std::array<int32_t, 3>, 4> hullMins{}, hullMaxs{};
    int32_t visRegions = 0;
    int32_t firstSurface = 0;
    int32_t surfaceCount = 0;
};
static_assert(sizeof(LevelInfo) == 160);

struct CEdge {
    uint32_t first = 0, second = 0;  // vertex numbers
};
static_assert(sizeof(CEdge) == 8);

struct FinalPlaneRecord {
    Vec3 normal{};
    float dist = 0;
    int32_t type = 0;
};
static_assert(sizeof(FinalPlaneRecord) == 20);

constexpr uint8_t NoLightmapShift = 255;
constexpr uint8_t MeshPagePosition = 255;  // lightX and lightY of mesh levels, whose pages are too large for them

struct SurfaceRecord {
    uint16_t blockId = 0;
    uint16_t side = 0;
    uint32_t firstEdge = 0;
    int16_t edgeCount = 0;
    int16_t texInfoId = 0;  // -1 for a surface that was merged away
    uint8_t lightShift = 0, lightPage = 0, lightX = 0, lightY = 0;
    uint32_t lightOffset = 0;  // on mesh levels two u16, meshX and meshY
    uint32_t planeNumber = 0;

    uint16_t meshX() const { return static_cast<uint16_t>(lightOffset & 0xFFFFU); }
    uint16_t meshY() const { return static_cast<uint16_t>(lightOffset >> 16U); }
    void SetMeshPosition(uint16_t x, uint16_t y) {
        lightOffset = static_cast<uint32_t>(x) | static_cast<uint32_t>(y) << 16U;
    }
};
static_assert(sizeof(SurfaceRecord) == 24);

struct Texinfo {
    Vec3 vecS{};
    float shiftS = 0;
    Vec3 vecT{};
    float shiftT = 0;
    uint32_t texture = 0;  // index into the texture names and the blob
    uint32_t flags = 0;
    std::array<uint8_t, 2> reserved{};
    uint8_t ambient = 0;
    uint8_t albedo = 50;
    std::array<char, 20> material{};  // upper case, at most 19 characters
};
static_assert(sizeof(Texinfo) == 64);

struct CRegion {
    int32_t contents = 0;
    int32_t visOffset = 0;
    std::array<int16_t, 3> mins{}, maxs{};
    std::array<uint8_t, 8> reserved{};
    uint32_t firstSurface = 0;
    uint32_t surfaceCount = 0;
};
static_assert(sizeof(CRegion) == 36);

struct CRegionNode {
    uint32_t plane = 0;
    std::array<uint8_t, 4> reserved0{};
    std::array<int16_t, 3> mins{}, maxs{};
    std::array<uint8_t, 4> reserved1{};
    std::array<int32_t, 2> children{};  // a node number, or -(region row + 1)
    uint32_t firstSurface = 0;
    uint32_t surfaceCount = 0;
};
static_assert(sizeof(CRegionNode) == 40);

struct CHullNode {
    uint32_t plane = 0;
    std::array<uint8_t, 4> reserved{};
    std::array<int32_t, 2> children{};  // a hull node number, or the contents word of a leaf
};
static_assert(sizeof(CHullNode) == 16);

struct MeshVertex {
    Vec3 position{};
    float u = 0, v = 0;  // texture, 1.0 is one image width or height
    float s = 0, t = 0;  // lightmap page
};
static_assert(sizeof(MeshVertex) == 28);

struct MeshTriangle {
    std::array<int16_t, 3> vertices{};
    int16_t material = 0;
    int32_t surface = 0;
};
static_assert(sizeof(MeshTriangle) == 12);

struct MeshMaterial {
    uint16_t texture = 0;
    uint16_t lightPage = 0;
    int32_t texinfo = 0;
    float ambient = 0;
    float albedo = 0;
    uint32_t flags = 0;
    bool operator==(const MeshMaterial&) const = default;
};
static_assert(sizeof(MeshMaterial) == 20);

// Contents words of regions, leaves and hulls.
constexpr int32_t ContentsEmpty = -256;
constexpr int32_t ContentsSolid = -128;
constexpr int32_t ContentsMarked = 1;
constexpr int32_t ContentsOpen = 2;
constexpr int32_t ContentsClipOnly = 4;
constexpr int32_t ContentsDetail = 16;

// Solid, whatever bits 1 and 4 say.
constexpr bool IsSolid(int32_t contents) {
    return (contents & ~(ContentsMarked | ContentsClipOnly)) == ContentsSolid;
}
// Solid or detail: bits 1 and 16 masked off.
constexpr bool IsSolidOrDetail(int32_t contents) {
    return (contents & ~(ContentsMarked | ContentsDetail)) == ContentsSolid;
}

}  // namespace k2k
