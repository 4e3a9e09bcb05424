#include "light/lighting_step.h"

#include <cstdio>
#include <filesystem>
#include <string>

#include "driver/build_log.h"
#include "driver/build_options.h"
#include "driver/text.h"
#include "levelfile/entity_data.h"
#include "levelfile/file_klv.h"
#include "levelfile/portal_data.h"
#include "light/lighting_state.h"
#include "light/rays.h"
#include "light/surface_geometry.h"
#include "mapread/entity.h"
#include "mapread/read_map.h"

namespace k2k {
namespace {

std::string EntPathOf(std::string levelPath) {
    StripExtension(levelPath);
    return levelPath + ".$$e";
}

bool IsThere(const std::string& path) {
    std::error_code ignored;
    return std::filesystem::exists(path, ignored);
}

void LightLevel(const LightingRoad& road) {
    CheckSurfaceTables();
    if (road.prepareTextures != nullptr) road.prepareTextures();
    const RayStructures rays;
    road.lightLevel();
}

// The objects of the map in place of the level's own. Without a level there is nothing to light.
void RenewObjects() {
    RequireLevel(Paths().LevelPath);
    ReadMap(true);
    UpdateObjects();
}

// The level on disk, relit.
void UpdateLevel(const LightingRoad& road) {
    CFileKLV file(Paths().LevelPath);
    if (!file.Open(false) || !file.Load()) return;
    PlaceObjects();
    if (!Portals().nodes.empty() || Options().mesh) LightLevel(road);
    BuildEntityChunk(EntityKeyLists());
    file.PrintStats();
    file.Save();
    file.Close();
}

void RemoveInterimFiles() {
    if (!Options().keepportal) std::remove(Paths().PortalPath.c_str());
    std::remove(Paths().VisPath.c_str());
}

}  // namespace

int RunLightingRoad(const LightingRoad& road) {
    const BuildOptions& options = Options();
    if ((options.entsonly || options.texsonly) && !options.lightsonly) return 0;
    if (Paths().LevelPath.empty()) return -1;
    ClearDataSets();
    Paths().EntPath = EntPathOf(Paths().LevelPath);
    if (options.lightsonly) RenewObjects();
    ClearEntities();
    if (IsThere(Paths().LevelPath)) UpdateLevel(road);
    ClearEntities();
    RemoveInterimFiles();
    return 0;
}

}  // namespace k2k
