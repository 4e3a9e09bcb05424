// The bounce loop: light goes from patch to patch along the transfers.
#pragma once

#include <cstdint>

#include "radiosity/light_patch.h"
#include "radiosity/transfers.h"

namespace k2k {

// Sends the patches' direct light through all iterations that -radbounce asks for, on the worker pool, and reports
// each.
void BounceLight(LightPatches& patches, const CTransfers& transfers);

// A work item of one iteration: what all patches shoot at this one. Every sum has the order of the senders.
void ShootLight(LightPatches& patches, const CTransfers& transfers, int32_t patchIndex);

// Ends an iteration: what was received is kept, and its reflected part is shot next. Returns the sum of that.
float CollectLight(LightPatches& patches);

// Negative light is fatal.
void CheckPatches(const LightPatches& patches);

}  // namespace k2k
