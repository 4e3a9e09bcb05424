// From the faces of a finished tree to the flat tables of the level.
#pragma once

#include <cstdint>

#include "levelfile/level_records.h"
#include "solid/block.h"
#include "solid/tree.h"

namespace k2k {

// The level's tables at the start of a compile: the dummy edge, the shared solid region, the first surface mark. The
// working tables start over with them (as BeginSurfaceTables does), since they hold numbers of rows.
void ResetSurfaceOutput();
// Gives back all memory that this folder keeps between calls: for the end of the geometry stage, and for tests.
void ReleaseSurfaceTables();

// Gives every node its final plane number. The map of plane numbers is emptied first: planes are shared within a call.
void MapPlanes(CBspNode& root);
uint32_t FinalPlane(int32_t planenum);
// A row equal in type, distance and normal, or a new one.
uint32_t FindOrAddFinalPlane(const FinalPlaneRecord& plane);

// Resets the weld and edge tables; the model starts here.
void BeginSurfaceTables();
// Edges and surface rows of all node faces.
void MakeSurfaces(CBspNode& root);
// Edges and a row of one face that is on no node; a face of 2 points or fewer gets no row.
void EmitSingleSurface(CBlockFace& face);

// Inserts vertices where they lie on another face's edge; cuts faces that get more than 28. Nothing with -notjunc.
void RepairJunctions(CBspNode& root, const Vec3& mins, const Vec3& maxs);

// -mergeacross: joins coplanar faces of different leaves; replaced faces get surfaceOut.
void MergeAcross(CBspNode& root);
void EmitMergedFaces();

// The tree's leaves and nodes as region and node rows, and the world's part of the level info.
void WriteRegions(CBspNode& root);

// Bounds in 16 bits: beyond 29000 distances count a 1024th.
int16_t SqueezeBound(float bound);

// -mesh: which surfaces belong to which block, and the meshes made of that.
void ResetMeshTables();
void NoteMeshBlock(const CBlock& block);
void NoteMeshSurface(int32_t blockNumber, int32_t surface);  // nothing for a face that has no row (-1)
void MakeMeshes();
void RemapRegionLists();
// A mesh for each block that has surfaces, without a tree.
void MakeBlockMeshes(const CBlockSet& set);

}  // namespace k2k
