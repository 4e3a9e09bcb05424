#include "bsp/compile_map.h"

#include <string>
#include <vector>

#include "bsp/build_files.h"
#include "bsp/clip_hull.h"
#include "bsp/detail_loop.h"
#include "bsp/pipeline.h"
#include "bsp/tree_build.h"
#include "bsp/zoom_loop.h"
#include "driver/build_log.h"
#include "driver/build_options.h"
#include "driver/run_stats.h"
#include "levelfile/entity_data.h"
#include "levelfile/file_klv.h"
#include "levelfile/geometry_data.h"
#include "levelfile/texture_data.h"
#include "mapread/entity.h"
#include "mapread/read_map.h"
#include "surface/surface_tables.h"
#include "texture/texture_store.h"

namespace k2k {
namespace {

// The images of all textures, from the file that the level entity names.
void LoadLevelTextures() {
    const int32_t world = FindEntityOfType(EntityType::Level);
    std::string wad;
    if (world >= 0) wad = GetKey(Entities()[static_cast<size_t>(world)].keys, "wad");
    LoadTextures(wad, Paths().MapPath);
}

// Reads the texture tables anew from the map, into a level that stays as it is otherwise.
void UpdateTextures() {
    CFileKLV level(Paths().LevelPath);
    if (!level.Open(false) || !level.Load()) return;
    CTextureData& textures = Textures();
    const size_t texinfoCount = textures.texinfos.size();
    const size_t aliasCount = textures.aliases.size();
    textures.ClearTexinfos();
    ReadMap(false);
    if (textures.texinfos.size() != texinfoCount || textures.aliases.size() != aliasCount) {
        BuildLog(" \nWARNING W022: Map must be rebuilt!\n");
    }
    LoadLevelTextures();
    if (!textures.blob.empty()) BuildLog(" \n%i textures", static_cast<int>(textures.BlobTextureCount()));
    level.Save();
    level.Close();
}

void CountMap() {
    AddStat("entities", static_cast<int64_t>(Entities().size()));
    for (const CEntity& entity : Entities()) AddStat("blocks", static_cast<int64_t>(entity.blocks.size()));
}

// The trees and tables of the level, from a last read of the map in which the listed blocks are no detail.
void BuildLevel(const std::vector<int32_t>& plainBlocks) {
    Geometry().DetailReject = plainBlocks;
    StartOver();
    ReadMap(false);
    CountMap();
    ResetTreeTables();
    ResetMeshTables();
    Geometry().DetailReject.clear();
    BuildHulls();
}

void WriteLevel() {
    CFileKLV level(Paths().LevelPath);
    if (!level.Create()) return;
    JoinHull(NarrowHull);
    if (!Options().nh) JoinHull(FatHull);
    BuildEntityChunk(EntityKeyLists());
    LoadLevelTextures();
    level.Save();
    level.Close();
}

void FullBuild() {
    ClearDataSets();
    RemoveBuildFiles();
    ReadMapAtBestZoom();
    BuildLevel(SettleDetailBlocks());
    WriteLevel();
}

}  // namespace

void CompileMap() {
    Geometry().DetailReject.clear();
    ResetHullCaptures();
    FormInterimPaths();
    KeepMapFromBuildFiles();
    ClearEntities();
    const BuildOptions& options = Options();
    if (options.entsonly) {
        ReadMap(true);
        UpdateObjects();
    } else if (options.lightsonly) {
        return;  // all of it is the lighting stage's work
    } else if (options.texsonly) {
        UpdateTextures();
    } else {
        FullBuild();
    }
}

}  // namespace k2k
