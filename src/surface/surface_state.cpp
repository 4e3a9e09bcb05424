#include "surface/surface_state.h"

#include "driver/build_options.h"
#include "levelfile/portal_data.h"

namespace k2k {

SurfaceState& State() {
    static SurfaceState state;
    return state;
}

void ReleaseSurfaceTables() {
    State() = SurfaceState();
}

void ResetSurfaceOutput() {
    SurfaceState& state = State();
    Geometry().edges.assign(1, CEdge{});
    CRegion solid;
    solid.contents = ContentsSolid;
    Portals().regions.assign(1, solid);

    state.firstModelSurface = 0;
    state.planeMap.Clear(0);
    state.finalPlaneIndex.Clear();
    state.MergedFaces.clear();
    BeginSurfaceTables();
}

void BeginSurfaceTables() {
    State().edgeTable.Begin(Options().bound, Geometry());
}

void ResetMeshTables() {
    State().MeshBlockTable.clear();
    State().MeshSurfaceTable.clear();
}

}  // namespace k2k
