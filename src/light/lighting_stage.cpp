#include "light/lighting_stage.h"

#include "light/direct_lighting.h"
#include "light/lighting_step.h"

namespace k2k {

int RunLightingStage() {
    return RunLightingRoad({nullptr, GenerateLightmaps});
}

}  // namespace k2k
