// The third stage: lightmaps, on the direct or on the radiosity road.
#pragma once

namespace k2k {

// Both return 0, or -1 without a level path.
int RunLightingStage();
int RunRadiosityStage();

}  // namespace k2k
