#include "light/lighting_stage.h"
#include "light/lighting_step.h"
#include "light/radiosity_lighting.h"

namespace k2k {

int RunRadiosityStage() {
    return RunLightingRoad({nullptr, GenerateRadiosityLightmaps});
}

}  // namespace k2k
