// The single-precision working face, from a block to the surface table.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "driver/intrusive_list.h"
#include "solid/plane.h"
#include "solid/polygon.h"

namespace k2k {

constexpr int MaxFaceVertices = 40;
constexpr int32_t TemporaryBlock = -2;  // sourceBlock of a temporary face of tree building

struct CBlockFace {
    CBlockFace* next = nullptr;
    int32_t planenum = -1;
    int32_t planeside = 0;  // 1: looks against the table plane
    int32_t texinfo = 0;
    std::array<int32_t, 2> contents{};  // in front of and behind the face
    int32_t sourceBlock = 0;            // map block number, 1-based; 0 for none
    CBlockFace* surfaceOut = nullptr;   // the face that replaced this one when it was merged across leaves
    CBlockFace* leafCopy =
        nullptr;                 // on its way down the tree: the node's copy; on a node's copy: the next piece of it
    int32_t outputIndex = -1;    // row in the surface table
    bool mergedAway = false;     // its points went into another face (a point count of -1)
    std::vector<Vec3> points;    // at most 40
    std::vector<int32_t> edges;  // signed edge numbers, one a point, once they are built

    int numpoints() const { return mergedAway ? -1 : static_cast<int>(points.size()); }

    // A face with the same fields (leafCopy and surfaceOut too), without points, edges and list link.
    std::unique_ptr<CBlockFace> CopyHeader() const;
    // A full copy, without the list link.
    std::unique_ptr<CBlockFace> Clone() const;
};
using FaceList = IntrusiveList<CBlockFace>;

// The face's plane as the face sees it: the table plane, turned when planeside is set.
Vec3 FaceNormal(const CBlockFace& face);

PolygonRef PolygonOfFace(const CBlockFace& face);

struct FacePieces {
    std::unique_ptr<CBlockFace> front, back;
};
// Both sides of the plane at -eps. A piece that loses too many points to RemoveShortEdges is null.
FacePieces SplitFace(std::unique_ptr<CBlockFace> face, const CPlane& plane);

// 0 in front, 1 behind or on the plane, 2 on both sides.
int FaceSide(const CBlockFace& face, const CPlane& plane);

// Removes vertices that equal their successor within 0.01; whether at least 3 remain.
bool RemoveShortEdges(CBlockFace& face);

// Triangles of a concave face by GLU's tessellator, in the order of a list built by head insertion. Uses process-wide
// counters: one call at a time.
FaceList TessellateFace(const CBlockFace& face);

}  // namespace k2k
