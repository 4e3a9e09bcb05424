// What the tests of solid geometry share: clean state, small makers, random solids.
#pragma once

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "levelfile/texture_data.h"
#include "solid/block.h"
#include "solid/block_face.h"
#include "solid/map_block.h"
#include "solid/plane.h"
#include "solid/polygon.h"
#include "solid/vectors.h"
#include "support/build_state.h"

namespace k2k::test {

inline const ResetBeforeTests resetSolid([] {
    ResetPlaneTableForTest();
    ResetBlocksForTest();
    Textures().ClearTexinfos();
    Textures().Clear();
});

// Tests of solid geometry start from an empty plane table and an empty texture table.
class SolidTest : public BuildState {};

inline CPlane PlaneOf(const Vec3& normal, float dist) {
    CPlane plane{normal, dist};
    SetPlaneType(plane);
    return plane;
}

inline std::vector<Vec3d> Points(std::initializer_list<Vec3d> points) {
    return points;
}

// The square from (-size, -size) to (size, size) at a height, clockwise as seen from above.
inline PolygonRef FloorSquare(double size, double z = 0) {
    return MakePolygon({{-size, size, z}, {size, size, z}, {size, -size, z}, {-size, -size, z}});
}

// A face on the table row of the plane, with contents of a wall.
inline std::unique_ptr<CBlockFace> MakeFace(const CPlane& plane, std::vector<Vec3> points) {
    auto face = std::make_unique<CBlockFace>();
    face->planenum = FindPlane(plane, face->planeside);
    face->points = std::move(points);
    face->contents = {ContentsEmpty, ContentsSolid};
    face->sourceBlock = 1;
    return face;
}
inline std::unique_ptr<CBlockFace> MakeFloorFace(std::vector<Vec3> points) {
    return MakeFace(PlaneOf({0, 0, 1}, 0), std::move(points));
}

inline MapFace MapFaceOf(const Vec3& normal, float dist, int32_t texinfo = 0) {
    MapFace face;
    const CPlane plane = PlaneOf(normal, dist);
    face.normal = plane.normal;
    face.dist = plane.dist;
    face.planeType = plane.type;
    face.texinfo = texinfo;
    return face;
}

inline int32_t AddTextureWithFlags(uint32_t flags) {
    Texinfo texinfo;
    texinfo.flags = flags;
    return Textures().AddTexinfo(texinfo);
}

// An axial box with outward planes.
inline std::unique_ptr<MapBlock> BoxBlock(const Vec3& mins, const Vec3& maxs, int32_t number = 1, uint32_t flags = 0) {
    auto block = std::make_unique<MapBlock>();
    block->number = number;
    block->flags = flags;
    const int32_t texinfo = AddTextureWithFlags(0);
    for (size_t axis = 0; axis < 3; ++axis) {
        Vec3 normal{};
        normal[axis] = 1;
        block->faces.push_back(MapFaceOf(normal, maxs[axis], texinfo));
        normal[axis] = -1;
        block->faces.push_back(MapFaceOf(normal, -mins[axis], texinfo));
    }
    return block;
}

// The set of one hull that is made of these blocks, in list order.
inline CBlockSet SetOf(std::vector<std::unique_ptr<MapBlock>> blocks, int32_t hull = 0) {
    IntrusiveList<MapBlock> list;
    while (!blocks.empty()) {
        list.push_front(std::move(blocks.back()));
        blocks.pop_back();
    }
    return BuildBlockSet(list, hull);
}
inline CBlockSet SetOf(std::unique_ptr<MapBlock> block, int32_t hull = 0) {
    std::vector<std::unique_ptr<MapBlock>> blocks;
    blocks.push_back(std::move(block));
    return SetOf(std::move(blocks), hull);
}

class Random {
  public:
    explicit Random(uint32_t seed) : engine_(seed) {}

    int Whole(int low, int high) { return std::uniform_int_distribution<int>(low, high)(engine_); }
    double Real(double low, double high) { return std::uniform_real_distribution<double>(low, high)(engine_); }
    Vec3 UnitVector() {
        Vec3 v;
        do {
            v = Narrow({Real(-1, 1), Real(-1, 1), Real(-1, 1)});
        } while (LengthSquared(v) < 0.01);
        Normalize(v);
        Normalize(v);  // components that vanished have changed the length
        return v;
    }

  private:
    std::mt19937 engine_;
};

}  // namespace k2k::test
