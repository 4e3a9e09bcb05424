// Blocks, faces and surfaces made by hand, for tests of trees and portals.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "bsp/test_level.h"
#include "levelfile/texture_data.h"
#include "solid/block.h"
#include "solid/tree.h"
#include "solid/vectors.h"

namespace k2k::test {

// A texinfo with these flags; its number.
inline int32_t AddTexture(uint32_t flags) {
    Texinfo record;
    record.vecS = {1, 0, 0};
    record.vecT = {0, 1, 0};
    record.flags = flags;
    return Textures().AddTexinfo(record);
}

// A square with its middle at a point, looking along a unit normal; clockwise seen from its front.
inline std::unique_ptr<CBlockFace> Square(const Vec3& normal, const Vec3& middle, float half, int32_t texinfo = 0) {
    CPlane plane{normal, static_cast<float>(Dot(normal, middle))};
    auto face = std::make_unique<CBlockFace>();
    face->planenum = FindPlane(plane, face->planeside);
    face->contents = {ContentsEmpty, ContentsSolid};
    face->texinfo = texinfo;
    face->sourceBlock = 1;
    Vec3 up = std::abs(normal[2]) > 0.9F ? Vec3{1, 0, 0} : Vec3{0, 0, 1};
    up = Add(up, Scale(normal, static_cast<float>(-Dot(up, normal))));
    Normalize(up);
    const Vec3 right = Cross(up, normal);
    for (const auto& [r, u] : {std::pair{-half, half}, {half, half}, {half, -half}, {-half, -half}}) {
        face->points.push_back(Add(middle, Add(Scale(right, r), Scale(up, u))));
    }
    return face;
}

// A surface of these faces, in their order.
template <typename... Faces>
std::unique_ptr<CSplitSurface> SurfaceOf(Faces... faces) {
    auto surface = std::make_unique<CSplitSurface>();
    (surface->faces.push_front(std::move(faces)), ...);
    surface->faces.reverse();
    const CBlockFace& first = *surface->faces.front();
    surface->planenum = first.planenum;
    surface->sourceBlock = first.sourceBlock;
    surface->contents = first.contents;
    CalcSurfaceInfo(*surface);
    return surface;
}

// The surfaces, in their order.
template <typename... Surfaces>
SurfaceList ListOf(Surfaces... surfaces) {
    SurfaceList list;
    (list.push_front(std::move(surfaces)), ...);
    list.reverse();
    return list;
}

struct Box {
    Vec3 mins, maxs;
    int32_t contents = ContentsSolid;
    int32_t texinfo = 0;
};

// Sides in the order -x, -y, -z, +x, +y, +z.
inline std::unique_ptr<CBlockFace> BoxFace(const Box& box, size_t side) {
    const size_t axis = side % 3;
    Vec3 normal{};
    normal[axis] = side < 3 ? -1.0F : 1.0F;
    auto face = Square(normal, side < 3 ? box.mins : box.maxs, 1.0F, box.texinfo);
    const Vec3 middle = side < 3 ? box.mins : box.maxs;
    for (Vec3& point : face->points) {
        for (size_t i = 0; i < 3; ++i) {
            if (i != axis) point[i] = point[i] > middle[i] ? box.maxs[i] : box.mins[i];
        }
    }
    face->contents = {ContentsEmpty, box.contents};
    return face;
}

// Blocks numbered from 1 in the order given, which is the set's order too.
inline CBlockSet BoxSet(const std::vector<Box>& boxes) {
    CBlockSet set;
    for (const Box& box : boxes) {
        auto block = std::make_unique<CBlock>();
        block->mins = box.mins;
        block->maxs = box.maxs;
        block->contents = box.contents;
        block->blockNumber = ++set.count;
        for (size_t side = 0; side < 6; ++side) {
            block->faces.push_front(BoxFace(box, side));
            block->faces.front()->sourceBlock = block->blockNumber;
        }
        for (size_t i = 0; i < 3; ++i) {
            set.mins[i] = std::min(set.mins[i], box.mins[i]);
            set.maxs[i] = std::max(set.maxs[i], box.maxs[i]);
        }
        set.blocks.push_front(std::move(block));
    }
    set.blocks.reverse();
    return set;
}

// The six walls of a sealed room.
inline std::vector<Box> RoomWalls(const Vec3& mins, const Vec3& maxs, float thickness, int32_t texinfo = 0) {
    Vec3 low = mins;
    Vec3 high = maxs;
    for (size_t i = 0; i < 3; ++i) {
        low[i] -= thickness;
        high[i] += thickness;
    }
    std::vector<Box> walls;
    for (size_t axis = 0; axis < 3; ++axis) {
        Box below{low, high, ContentsSolid, texinfo};
        Box above = below;
        below.maxs[axis] = mins[axis];
        above.mins[axis] = maxs[axis];
        walls.push_back(below);
        walls.push_back(above);
    }
    return walls;
}

// All leaves of a tree, front children first.
inline std::vector<CBspNode*> LeavesOf(CBspNode& root) {
    std::vector<CBspNode*> leaves;
    std::vector<CBspNode*> stack{&root};
    while (!stack.empty()) {
        CBspNode* node = stack.back();
        stack.pop_back();
        if (node->contents < 0) {
            leaves.push_back(node);
            continue;
        }
        stack.push_back(node->children[1].get());
        stack.push_back(node->children[0].get());
    }
    return leaves;
}

}  // namespace k2k::test
