// Faces, trees and empty tables for the tests of the surfaces.
#pragma once

#include <memory>
#include <random>
#include <vector>

#include "levelfile/geometry_data.h"
#include "levelfile/portal_data.h"
#include "levelfile/texture_data.h"
#include "solid/csg.h"
#include "solid/tree.h"
#include "solid/vectors.h"
#include "support/build_state.h"
#include "surface/surface_state.h"
#include "surface/surface_tables.h"

namespace k2k::test {

using Points = std::vector<Vec3>;

class SurfaceTest : public BuildState {
  protected:
    SurfaceTest() {
        ClearTables();
        ResetSurfaceOutput();
        AddTexture();
    }
    ~SurfaceTest() override { ClearTables(); }

    static void ClearTables() {
        ResetPlaneTableForTest();
        Geometry() = CGeometryData();
        Portals() = CPortalData();
        Textures() = CTextureData();
        ReleaseSurfaceTables();
    }

    // A texture of one texel a unit along x and y; returns its texinfo.
    static int32_t AddTexture(uint32_t flags = 0, const Vec3& vecS = {1, 0, 0}, const Vec3& vecT = {0, 1, 0}) {
        Texinfo texinfo;
        texinfo.vecS = vecS;
        texinfo.vecT = vecT;
        texinfo.flags = flags;
        Textures().texinfos.push_back(texinfo);
        return static_cast<int32_t>(Textures().texinfos.size() - 1);
    }

    static int32_t AddPlane(const Vec3& normal, float dist) {
        CPlane plane{normal, dist, 0};
        SetPlaneType(plane);
        int32_t side = 0;
        return FindPlane(plane, side);
    }
    static int32_t Floor(float height = 0) { return AddPlane({0, 0, 1}, height); }
};

inline std::unique_ptr<CBlockFace> MakeFace(int32_t planenum, Points points, int32_t sourceBlock = 1) {
    auto face = std::make_unique<CBlockFace>();
    face->planenum = planenum;
    face->sourceBlock = sourceBlock;
    face->contents = {ContentsEmpty, ContentsSolid};
    face->points = std::move(points);
    return face;
}

// Clockwise from above, as faces of a floor are.
inline Points Rectangle(float x0, float y0, float x1, float y1, float z = 0) {
    return {{x0, y0, z}, {x0, y1, z}, {x1, y1, z}, {x1, y0, z}};
}

inline std::unique_ptr<CBspNode> MakeLeaf(int32_t contents, std::vector<CBlockFace*> marked = {}) {
    auto leaf = std::make_unique<CBspNode>();
    leaf->planenum = LeafPlane;
    leaf->contents = contents;
    leaf->markFaces = std::move(marked);
    return leaf;
}

inline std::unique_ptr<CBspNode> MakeNode(int32_t planenum, std::unique_ptr<CBspNode> front = MakeLeaf(ContentsEmpty),
                                          std::unique_ptr<CBspNode> back = MakeLeaf(ContentsSolid)) {
    auto node = std::make_unique<CBspNode>();
    node->planenum = planenum;
    node->children = {std::move(front), std::move(back)};
    return node;
}

// Puts the face behind those that are on the node already.
inline CBlockFace& AddFace(CBspNode& node, std::unique_ptr<CBlockFace> face) {
    CBlockFace& added = *face;
    node.faces.reverse();
    node.faces.push_front(std::move(face));
    node.faces.reverse();
    return added;
}

inline double Area(const Points& points) {
    double area = 0;
    for (size_t i = 2; i < points.size(); ++i) {
        const Vec3d a = Widen(points[i - 1]);
        const Vec3d b = Widen(points[i]);
        const Vec3d o = Widen(points[0]);
        const Vec3d normal = Cross(Sub(a, o), Sub(b, o));
        area += 0.5 * std::sqrt(Dot(normal, normal));
    }
    return area;
}

// The vertices of a surface row, in the order of its edges.
inline Points PointsOfSurface(const SurfaceRecord& row) {
    Points points;
    for (int i = 0; i < row.edgeCount; ++i) {
        const int32_t entry = Geometry().surfaceEdges[row.firstEdge + static_cast<uint32_t>(i)];
        const CEdge& edge = Geometry().edges[static_cast<size_t>(std::abs(entry))];
        points.push_back(Geometry().vertices[entry > 0 ? edge.first : edge.second]);
    }
    return points;
}

// The same numbers on every platform.
class Dice {
  public:
    explicit Dice(uint32_t seed) : engine_(seed) {}
    int Roll(int low, int high) { return low + static_cast<int>(engine_() % static_cast<uint32_t>(high - low + 1)); }
    float Between(float low, float high) {
        return low + (high - low) * static_cast<float>(engine_() & 0xFFFFU) / 65536.0F;
    }

  private:
    std::mt19937 engine_;
};

}  // namespace k2k::test
