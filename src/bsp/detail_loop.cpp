#include "bsp/detail_loop.h"

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

std::vector<int32_t> SettleDetailBlocks() {
    std::vector<int32_t> rejectAll;
    if (Options().forcedetail || DetailCount == 0) return rejectAll;
    std::vector<int32_t>& reject = Geometry().DetailReject;
    while (true) {
        reject.clear();
        ResetTreeTables();
        if (CheckDetailIntersections()) break;
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
