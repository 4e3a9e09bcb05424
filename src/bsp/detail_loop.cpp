#include "bsp/detail_loop.h"

#include <algorithm>

#include "bsp/build_files.h"
#include "bsp/pipeline.h"
#include "bsp/tree_build.h"
#include "driver/build_log.h"
#include "driver/build_options.h"
#include "levelfile/file_klv.h"
#include "levelfile/geometry_data.h"
#include "mapread/entity.h"
#include "mapread/read_map.h"

namespace k2k {
namespace {

// Whether some block of the list has not been listed before.
bool ListsNewBlock(const std::vector<int32_t>& list, const std::vector<int32_t>& before) {
    return std::any_of(list.begin(), list.end(),
                       [&](int32_t block) { return std::find(before.begin(), before.end(), block) == before.end(); });
}

}  // namespace

std::vector<int32_t> SettleDetailBlocks() {
    std::vector<int32_t> rejectAll;
    if (Options().forcedetail || DetailCount == 0) return rejectAll;
    std::vector<int32_t>& reject = Geometry().DetailReject;
    while (true) {
        reject.clear();
        ResetTreeTables();
        if (CheckDetailIntersections()) break;
        if (!ListsNewBlock(reject, rejectAll)) {
            // Concave blocks and blocks of detail textures are detail without the flag that a list takes from them: one
            // more read would give the same blocks again.
            if (!Options().quiet) {
                BuildLog(" \nWARNING: %i intersecting detail blocks stay detail\n", static_cast<int>(reject.size()));
            }
            break;
        }
        BuildLog("\nIntersecting detail blocks (%i/%i)- recompiling...", static_cast<int>(reject.size()), DetailCount);
        rejectAll.insert(rejectAll.end(), reject.begin(), reject.end());
        reject = rejectAll;
        StartOver();
        ReadMap(false);
    }
    BuildLog(" ok");
    return rejectAll;
}

}  // namespace k2k
