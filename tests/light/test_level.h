// Small levels made by hand: the tables of a box-shaped room, with obstacles, lights and smooth strips.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <vector>

#include "driver/build_options.h"
#include "levelfile/entity_data.h"
#include "levelfile/file_klv.h"
#include "levelfile/geometry_data.h"
#include "levelfile/portal_data.h"
#include "levelfile/texture_data.h"
#include "light/light_block.h"
#include "light/lighting_state.h"
#include "mapread/entity.h"
#include "solid/plane.h"
#include "solid/vectors.h"
#include "support/build_state.h"

namespace k2k::test {

struct Box {
    Vec3 mins, maxs;
};

// The tables of the level in work, from nothing. Texture axes are those of the dominant axis, one unit a unit.
class TestLevel {
  public:
    TestLevel() {
        ClearDataSets();
        Textures().ClearTexinfos();
        Textures().names.clear();
        ClearEntities();
        Textures().texinfos.emplace_back();  // row 0 is nobody's
        Geometry().edges.emplace_back();
        CRegion solid;
        solid.contents = ContentsSolid;
        Portals().regions.push_back(solid);
    }

    int16_t Texture(uint32_t flags, const Vec3& s, const Vec3& t, float shiftS = 0, float shiftT = 0) {
        Texinfo texinfo;
        texinfo.vecS = s;
        texinfo.vecT = t;
        texinfo.shiftS = shiftS;
        texinfo.shiftT = shiftT;
        texinfo.flags = flags;
        Textures().texinfos.push_back(texinfo);
        return static_cast<int16_t>(Textures().texinfos.size() - 1);
    }

    // A texture for surfaces that face along an axis.
    int16_t TextureFor(const Vec3& normal, uint32_t flags = 0) {
        if (std::fabs(normal[0]) > 0.7F) return Texture(flags, {0, 1, 0}, {0, 0, -1});
        if (std::fabs(normal[1]) > 0.7F) return Texture(flags, {1, 0, 0}, {0, 0, -1});
        return Texture(flags, {1, 0, 0}, {0, -1, 0});
    }

    uint32_t Plane(const Vec3& normal, float dist) {
        const FinalPlaneRecord plane{normal, dist, PlaneTypeFromNormal(normal)};
        Geometry().planes.push_back(plane);
        return static_cast<uint32_t>(Geometry().planes.size() - 1);
    }

    // A surface with its ring of corners and its own edges; returns its number.
    uint32_t Surface(const std::vector<Vec3>& ring, uint32_t plane, uint16_t side, int16_t texinfo) {
        CGeometryData& g = Geometry();
        SurfaceRecord surface;
        surface.blockId = static_cast<uint16_t>(g.surfaces.size() + 1);
        surface.side = side;
        surface.planeNumber = plane;
        surface.texInfoId = texinfo;
        surface.lightOffset = 0xFFFFFFFF;
        surface.firstEdge = static_cast<uint32_t>(g.surfaceEdges.size());
        surface.edgeCount = static_cast<int16_t>(ring.size());
        const auto first = static_cast<uint32_t>(g.vertices.size());
        g.vertices.insert(g.vertices.end(), ring.begin(), ring.end());
        for (uint32_t i = 0; i < ring.size(); i++) {
            g.edges.push_back({first + i, first + (i + 1) % static_cast<uint32_t>(ring.size())});
            g.surfaceEdges.push_back(static_cast<int32_t>(g.edges.size() - 1));
        }
        g.surfaces.push_back(surface);
        return static_cast<uint32_t>(g.surfaces.size() - 1);
    }

    // A quad that faces along an axis. The table plane has the positive normal, as in a real level.
    uint32_t Quad(size_t axis, float at, bool facesUp, const Vec3& mins, const Vec3& maxs, uint32_t flags = 0) {
        Vec3 normal{};
        normal[axis] = 1;
        const size_t b = (axis + 1) % 3, c = (axis + 2) % 3;
        std::vector<Vec3> ring;
        for (const auto& [useB, useC] : std::array<std::array<int, 2>, 4>{{{0, 0}, {0, 1}, {1, 1}, {1, 0}}}) {
            Vec3 corner;
            corner[axis] = at;
            corner[b] = useB != 0 ? maxs[b] : mins[b];
            corner[c] = useC != 0 ? maxs[c] : mins[c];
            ring.push_back(corner);
        }
        if (!facesUp) std::swap(ring[1], ring[3]);
        return Surface(ring, Plane(normal, at), facesUp ? 0 : 1, TextureFor(normal, flags));
    }

    // The six inner faces of a room: x-, x+, y-, y+, z-, z+.
    void RoomFaces(const Box& room, uint32_t flags = 0) {
        for (size_t axis = 0; axis < 3; axis++) {
            Quad(axis, room.mins[axis], true, room.mins, room.maxs, flags);
            Quad(axis, room.maxs[axis], false, room.mins, room.maxs, flags);
        }
    }

    // The six outer faces of an obstacle.
    void BoxFaces(const Box& box, uint32_t flags = 0) {
        for (size_t axis = 0; axis < 3; axis++) {
            Quad(axis, box.mins[axis], false, box.mins, box.maxs, flags);
            Quad(axis, box.maxs[axis], true, box.mins, box.maxs, flags);
        }
    }

    int32_t Region(int32_t contents) {
        CRegion region;
        region.contents = contents;
        Portals().regions.push_back(region);
        return -static_cast<int32_t>(Portals().regions.size());  // as a child word
    }

    // Nodes of a room that is open but for its obstacles. Returns the child word of the open region.
    int32_t RoomTree(const Box& room, const std::vector<Box>& obstacles = {}) {
        const int32_t open = Region(ContentsEmpty);
        BoxNodes(
            room, [&] { return ObstacleNodes(obstacles, 0, open); }, [] { return -1; });
        // Rays start at node 0: the root was made last, so the rows are turned round.
        auto& nodes = Portals().nodes;
        const auto last = static_cast<int32_t>(nodes.size()) - 1;
        std::reverse(nodes.begin(), nodes.end());
        for (CRegionNode& node : nodes) {
            for (int32_t& child : node.children) {
                if (child >= 0) child = last - child;
            }
        }
        return open;
    }

    // Solid in the boxes from `next` on, open elsewhere. Every part has nodes of its own: the table is a tree.
    int32_t ObstacleNodes(const std::vector<Box>& boxes, size_t next, int32_t open) {
        if (next == boxes.size()) return open;
        return BoxNodes(
            boxes[next], [] { return -1; }, [&] { return ObstacleNodes(boxes, next + 1, open); });
    }

    // Nodes that tell the inside of a box from its outside; returns the number of the last, which is their top.
    template <typename Inside, typename Outside>
    int32_t BoxNodes(const Box& box, Inside inside, Outside outside) {
        int32_t child = inside();
        for (size_t axis = 0; axis < 3; axis++) {
            Vec3 normal{};
            normal[axis] = 1;
            child = Node(Plane(normal, box.mins[axis]), child, outside());
            child = Node(Plane(normal, box.maxs[axis]), outside(), child);
        }
        return child;
    }

    int32_t Node(uint32_t plane, int32_t front, int32_t back) {
        CRegionNode node;
        node.plane = plane;
        node.children = {front, back};
        Portals().nodes.push_back(node);
        return static_cast<int32_t>(Portals().nodes.size() - 1);
    }

    // A light as PlaceObjects leaves it: colour is value * 3 / range.
    CEntity& Light(const Vec3& origin, float range, const Vec3& value, uint32_t flags = 0) {
        CEntity& entity = NewEntity();
        entity.origin = origin;
        entity.lightRange = range;
        entity.rawRange = range;
        for (size_t c = 0; c < 3; c++) entity.lightColor[c] = value[c] * 3 / range;
        entity.flags = flags;
        return entity;
    }
};

inline const ResetBeforeTests resetLightingState([] {
    ResetLighting();
    ClearDataSets();
    Textures().ClearTexinfos();
    Textures().paletteLump.clear();
    Textures().lightmapSizeCode = 0;
    ClearEntities();
    FirstGammaValue = 0;
    LightBlocks().clear();
});

class LightTest : public BuildState {};

constexpr Box SmallRoom{{-128, -128, 0}, {128, 128, 128}};

}  // namespace k2k::test
