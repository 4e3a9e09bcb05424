#include "klvtool/leak_map.h"

#include <array>

#include "bsp/detail.h"
#include "bsp/pipeline.h"
#include "bsp/tree_build.h"
#include "driver/build_log.h"
#include "driver/build_options.h"
#include "driver/command_string.h"
#include "klvtool/command.h"
#include "levelfile/file_klv.h"
#include "levelfile/geometry_data.h"
#include "mapread/entity.h"
#include "mapread/read_map.h"
#include "solid/csg.h"

namespace klvtool {
namespace {

// The palette is not read here, but the compiler wants one named.
void ParseBuildOptions(const std::string& mapPath, const std::string& options) {
    const std::array<const char*, 3> words{mapPath.c_str(), "-pal", "none"};
    if (!k2k::ParseOptions(k2k::CommandString(words) + " " + options)) {
        throw UsageError("--options: \"" + options + "\" are no options of the compiler");
    }
}

// Detail blocks that would have to cut a surface are plain ones in a build, so they are here.
void SettleDetail() {
    std::vector<int32_t> plain;
    std::vector<int32_t>& reject = k2k::Geometry().DetailReject;
    while (!k2k::Options().forcedetail && k2k::DetailCount != 0) {
        reject.clear();
        k2k::ResetTreeTables();
        if (k2k::CheckDetailIntersections()) break;
        plain.insert(plain.end(), reject.begin(), reject.end());
        reject = plain;
        k2k::ClearEntities();
        k2k::ClearDataSets();
        k2k::ReadMap(false);
    }
    reject.clear();
}

std::unique_ptr<LeakMap> BuildTree() {
    const int32_t world = k2k::FindEntityOfType(k2k::EntityType::Level);
    if (world < 0) throw std::runtime_error("the map has no level entity");
    auto map = std::make_unique<LeakMap>();
    const int32_t hull = k2k::Options().sethulls[k2k::VisibleHull];
    map->blocks = k2k::BuildBlockSet(k2k::Entities()[static_cast<size_t>(world)].blocks, hull);
    k2k::SplitDetailBlocks(map->blocks);
    if (map->blocks.blocks.empty()) throw std::runtime_error("the map has no block that could close it");
    map->root = k2k::SolidBsp(k2k::CSGFaces(map->blocks, false), true, hull, map->blocks);
    k2k::MakeTreePortals(map->portals, *map->root, map->blocks, k2k::VisibleHull);
    return map;
}

}  // namespace

std::unique_ptr<LeakMap> LoadLeakMap(const std::string& mapPath, const std::string& options) {
    try {
        ParseBuildOptions(mapPath, options);
        k2k::ComputeHullBoxes();
        k2k::ReadMap(false);
        SettleDetail();
        return BuildTree();
    } catch (const k2k::FatalStop& stop) {
        std::string text = stop.what();
        text.erase(0, text.find_first_not_of(" \n"));
        text.erase(text.find_last_not_of(" \n") + 1);
        throw std::runtime_error(text);
    } catch (const k2k::ProgramExit&) {
        throw UsageError("--options: a value is of no use");
    }
}

}  // namespace klvtool
