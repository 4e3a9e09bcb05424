// Progress of long steps.
#pragma once

#include "driver/build_log.h"

namespace k2k {

// Counts one unit as done; every so many units a mark is printed.
inline void CountProgress(int32_t markEvery) {
    if (++ProgressDone % markEvery == 0) BuildLog(".");
}

}  // namespace k2k
