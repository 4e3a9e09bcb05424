// The stages of a build, put together from their libraries.
#pragma once

#include "driver/run_program.h"

namespace k2k {

extern const StageEntries AllStages;

}  // namespace k2k
