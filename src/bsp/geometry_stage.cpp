#include "bsp/geometry_stage.h"

#include "bsp/compile_map.h"
#include "mapread/entity.h"
#include "solid/block.h"

namespace k2k {

int RunGeometryStage() {
    ComputeHullBoxes();
    CompileMap();
    ClearEntities();
    return 0;
}

}  // namespace k2k
