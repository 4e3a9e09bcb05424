#include "stages.h"

#include "bsp/geometry_stage.h"
#include "colour/colour_stage.h"
#include "light/lighting_stage.h"
#include "mapread/entity.h"
#include "vis/visibility_stage.h"

namespace k2k {

namespace {

// The entity table belongs to a library that visibility knows nothing of.
int RunVisibilityStage() {
    const int result = VisibilityStage();
    ClearEntities();
    return result;
}

}  // namespace

const StageEntries AllStages{.geometry = RunGeometryStage,
                             .visibility = RunVisibilityStage,
                             .lighting = RunLightingStage,
                             .radiosity = RunRadiosityStage,
                             .colours = RunColourStage};

}  // namespace k2k
