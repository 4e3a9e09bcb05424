#include "bsp/geometry_stage.h"

#include "bsp/compile_map.h"
#include "mapread/entity.h"
#include "solid/block.h"
#include "surface/surface_tables.h"

namespace k2k {

int RunGeometryStage() {
    ComputeHullBoxes();
    CompileMap();
    ClearEntities();
    ReleaseSurfaceTables();
    return 0;
}

}  // namespace k2k
