#include "bsp/pipeline.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "bsp/clip_hull.h"
#include "bsp/detail.h"
#include "bsp/portal_file.h"
#include "bsp/portals.h"
#include "bsp/tree_build.h"
#include "driver/build_log.h"
#include "driver/build_options.h"
#include "levelfile/geometry_data.h"
#include "levelfile/portal_data.h"
#include "mapread/entity.h"
#include "solid/csg.h"
#include "surface/surface_tables.h"

namespace k2k {
namespace {

constexpr size_t LeakEntities = 3;  // a level of fewer entities may well hold none in an open leaf

bool HasBlocks(const CEntity& entity) {
    return !entity.blocks.empty();
}

CEntity& EntityAt(int32_t entity) {
    return Entities()[static_cast<size_t>(entity)];
}

// Only the world may own blocks.
void RequireWorld(int32_t entity) {
    if (entity < 0 || entity != FindEntityOfType(EntityType::Level)) {
        FatalError("\nProcessEntity: Unexpected map entity.\n");
    }
}

// The box kind that stands for a hull number.
int32_t BoxOfHull(int32_t hull) {
    return Options().sethulls[static_cast<size_t>(hull)];
}

[[noreturn]] void StopWithoutBlocks() {
    FatalError("E003 - no visible blocks in map");
}

// The level's size only grows, over all hulls.
void RecordExtent(const CBlockSet& set) {
    float& extent = Geometry().levelExtent;
    for (size_t axis = 0; axis < 3; ++axis) extent = std::max(extent, set.maxs[axis] - set.mins[axis]);
}

// Whether portals are made at all: the flood is for the level itself.
bool MakesPortals(int32_t entity) {
    return entity == 0 && !Options().nofill;
}

void BuildClipHull(const CBlockSet& set, int32_t entity, int32_t hull) {
    const int32_t box = BoxOfHull(hull);
    auto root = SolidBsp(CSGFaces(set, false), true, box, set);
    if (root->IsLeaf()) BuildLog(" \nWARNING W051: Node could not be created. Misplaced\n detail brushes ?\n");
    if (MakesPortals(entity)) {
        TreePortals portals;
        MakeTreePortals(portals, *root, set, hull);
        if (FillOutside(portals, *root)) root = SolidBsp(GatherTreeSurfaces(std::move(root)), false, box, set);
        BuildLog(" ok");
        FreeTreePortals(portals, *root);
    }
    MapPlanes(*root);
    RecordHull(hull, WriteClipNodes(*root));
}

// The first tree only finds what lies outside; the second is built from the faces that stayed.
std::unique_ptr<CBspNode> RebuildInside(std::unique_ptr<CBspNode> root, const CBlockSet& set) {
    TreePortals portals;
    MakeTreePortals(portals, *root, set, VisibleHull);
    if (!Options().nobsp && !FillOutside(portals, *root) && Entities().size() >= LeakEntities) {
        BuildLog(" \nWARNING W092: Level leaking!\n");
    }
    FreeTreePortals(portals, *root);
    SurfaceList surfaces = GatherTreeSurfaces(std::move(root));
    MergeSurfaces(surfaces);
    root = SolidBsp(std::move(surfaces), false, BoxOfHull(VisibleHull), set);
    MakeTreePortals(portals, *root, set, VisibleHull);
    WritePortalFile(*root);
    RepairJunctions(*root, set.mins, set.maxs);
    FreeTreePortals(portals, *root);
    return root;
}

// Writes the detail faces as surfaces and enters them at the tree's leaves, which point to them until the regions are
// written.
FaceList PlaceDetailFaces(FaceList faces, CBspNode& root) {
    faces = SubdivideDetailFaces(std::move(faces), BoxOfHull(VisibleHull));
    EmitDetailFaces(faces);
    FilterDetailFaces(faces, root);
    return faces;
}

// The tree and its surfaces into the level's tables.
void WriteVisibleTree(std::unique_ptr<CBspNode> root, FaceList detailFaces) {
    if (Options().mergeacross) MergeAcross(*root);
    MapPlanes(*root);
    MakeSurfaces(*root);
    if (Options().mergeacross) EmitMergedFaces();
    detailFaces = PlaceDetailFaces(std::move(detailFaces), *root);
    WriteRegions(*root);
    if (Options().mesh) {
        MakeMeshes();
        RemapRegionLists();
    }
}

void BuildVisibleTree(CBlockSet set, int32_t entity) {
    for (const CBlock& block : set.blocks) NoteMeshBlock(block);
    const CBlockSet detailSet = Options().nobsp ? TakeAllBlocks(set) : SplitDetailBlocks(set);
    FaceList detailFaces = TakeDetailFaces(CopyBlockFaces(detailSet, false));
    SurfaceList surfaces = CSGFaces(set, true);
    if (!Options().nobsp) BuildLog(" \nTesselating surfaces ...");
    auto root = SolidBsp(std::move(surfaces), true, BoxOfHull(VisibleHull), set);
    if (MakesPortals(entity)) root = RebuildInside(std::move(root), set);
    WriteVisibleTree(std::move(root), std::move(detailFaces));
    BuildLog(" ok\n");
    BuildLog("Checking midpoints ...");
    CheckDetailMidpoints(detailSet, Geometry().DetailReject);
    BuildLog(" ok");
}

// Without portals, flood and second tree: the midpoint check needs the surfaces alone.
void BuildForDetailCheck(const CBlockSet& set, FaceList detailFaces) {
    auto root = SolidBsp(CSGFaces(set, false), true, BoxOfHull(VisibleHull), set);
    MapPlanes(*root);
    MakeSurfaces(*root);
    detailFaces = PlaceDetailFaces(std::move(detailFaces), *root);
    WriteRegions(*root);
}

template <typename Process>
void ForEntitiesWithBlocks(Process process) {
    const auto count = static_cast<int32_t>(Entities().size());
    for (int32_t i = 0; i < count; ++i) {
        if (HasBlocks(EntityAt(i))) process(i);
    }
}

void BuildCollisionHulls() {
    if (Options().nh) {
        BuildLog(" \nBuilding collision hull ...");
    } else {
        BuildLog(" \nBuilding fat hull ...");
        RunHull(FatHull);
        BuildLog(" \nBuilding narrow hull ...");
    }
    RunHull(NarrowHull);
}

}  // namespace

bool ProcessEntity(int32_t entity, int32_t hull) {
    RequireWorld(entity);
    CBlockSet set = BuildBlockSet(EntityAt(entity).blocks, BoxOfHull(hull));
    if (set.blocks.empty()) {
        if (hull == VisibleHull) StopWithoutBlocks();
        return true;
    }
    RecordExtent(set);
    if (hull == VisibleHull) {
        BuildVisibleTree(std::move(set), entity);
    } else {
        BuildClipHull(set, entity, hull);
    }
    return Geometry().DetailReject.empty();
}

bool ProcessEntityNoBsp(int32_t entity) {
    RequireWorld(entity);
    const CBlockSet set = BuildBlockSet(EntityAt(entity).blocks, BoxOfHull(VisibleHull));
    if (set.blocks.empty()) StopWithoutBlocks();
    ResetSurfaceOutput();
    MakeBlockMeshes(set);
    BuildLog(" ok");
    return true;
}

bool CheckDetailIntersections() {
    const int32_t world = FindEntityOfType(EntityType::Level);
    BuildLog(" \nChecking detail intersections ...");
    RequireWorld(world);
    CBlockSet set = BuildBlockSet(EntityAt(world).blocks, BoxOfHull(VisibleHull));
    if (set.blocks.empty()) StopWithoutBlocks();
    RecordExtent(set);
    const CBlockSet detailSet = SplitDetailBlocks(set);
    if (detailSet.blocks.empty()) return true;
    FaceList detailFaces = TakeDetailFaces(CopyBlockFaces(detailSet, false));
    if (detailFaces.empty()) return true;
    BuildForDetailCheck(set, std::move(detailFaces));
    CheckDetailMidpoints(detailSet, Geometry().DetailReject);
    BuildLog(" ok");
    return Geometry().DetailReject.empty();
}

void RunHull(int32_t hull) {
    ForEntitiesWithBlocks([hull](int32_t entity) { ProcessEntity(entity, hull); });
    if (hull != VisibleHull) CaptureHull(hull);
}

void BuildHulls() {
    Portals().hullNodes.clear();
    const auto& entities = Entities();
    if (std::none_of(entities.begin(), entities.end(), HasBlocks)) {
        Options().preview = Options().noportals = true;
        return;
    }
    if (Options().nobsp) {
        BuildLog(" \nBuilding geometry ...");
        ForEntitiesWithBlocks(ProcessEntityNoBsp);
    } else {
        BuildCollisionHulls();
        BuildLog(" \nBuilding BSP tree ...");
        RunHull(VisibleHull);
    }
    Portals().hullNodes.clear();
}

}  // namespace k2k
