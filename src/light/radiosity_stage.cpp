// The entry of the radiosity road. Until that road exists, asking for it ends the build instead of lighting in another
// way than was asked for.
#include "driver/build_log.h"
#include "light/lighting_stage.h"

namespace k2k {

int RunRadiosityStage() {
    FatalError("The radiosity road (-litv2) is not part of this build");
}

}  // namespace k2k
