// Reading a map into the entity table, and the entities of a map into a level.
#include "mapread/read_map.h"

#include "driver/build_log.h"
#include "driver/build_options.h"
#include "levelfile/file_klv.h"
#include "mapread/entity.h"
#include "mapread/file_map.h"

namespace k2k {

int32_t DetailCount = 0;

namespace {

// The link from an entity to its blocks in the level.
void NumberModels() {
    const int32_t level = FindEntityOfType(EntityType::Level);
    int32_t model = 0;
    for (size_t i = 0; i < Entities().size(); ++i) {
        CEntity& entity = Entities()[i];
        if (static_cast<int32_t>(i) == level || entity.blocks.empty()) continue;
        SetKey(entity.keys, "model", std::string("*").append(std::to_string(++model)));
    }
}

}  // namespace

void ReadMap(bool entitiesOnly) {
    const std::unique_ptr<CFileMap> reader = OpenMapFile(Paths().MapPath);
    reader->ReadAll(entitiesOnly);
    if (reader->meshFound()) EnableMesh();
}

void UpdateObjects() {
    NumberModels();
    BuildLog("\nUpdating %d objects...\n", static_cast<int>(Entities().size()) - 1);
    CFileKLV level(Paths().LevelPath);
    if (!level.Open(false) || !level.Load()) FatalError("\nCouldn´t read KLV file %s\n", Paths().LevelPath.c_str());
    BuildEntityChunk(EntityKeyLists());
    level.Save();
    level.Close();
}

}  // namespace k2k
