#include "solid/block_warnings.h"

#include "driver/build_log.h"
#include "driver/build_options.h"
#include "solid/block_state.h"

namespace k2k {

bool WarnsInHull(BlockWarning kind, int32_t hull) {
    const auto number = static_cast<int32_t>(kind);
    if (hull >= 0 && hull < 3) {
        return WarnOnce(static_cast<WarnFamily>(static_cast<int32_t>(WarnFamily::W010Hull0) + 3 * number + hull));
    }
    const bool isFirst = Blocks().warnedInOtherHulls.insert({number, hull}).second;
    return !Options().quiet && (isFirst || Options().verbose);
}

}  // namespace k2k
