// One step of announced work, with the mark that long steps print.
#pragma once

#include "driver/build_log.h"

namespace k2k {

// Counts one unit; prints "." each time the count is a multiple of marksEvery.
inline void StepProgress(int32_t marksEvery) {
    if (++ProgressDone % marksEvery == 0) BuildLog(".");
}

}  // namespace k2k
