// The table of everything placed in a level.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "driver/intrusive_list.h"
#include "levelfile/entity_data.h"
#include "levelfile/entity_keys.h"
#include "solid/map_block.h"

namespace k2k {

struct CEntity {
    Vec3 origin{};
    IntrusiveList<MapBlock> blocks;  // the last block read comes first
    KeyList keys;
    float angle = 0;
    // Filled by PlaceObjects, for lighting:
    float lightRange = 0;
    Vec3 lightColor{};  // colour * 3 / range
    uint32_t flags = 0;
    std::array<char, 16> typeName{};
    float lightValue = 0;
    float rawRange = 0;  // as the record gave it, 0 meaning automatic
};

// The entity table, at most MaxEntities rows. Row 0 is the first entity of the map, normally the level.
std::vector<CEntity>& Entities();

// A fresh row at the table's end. The caller tests the limit.
CEntity& NewEntity();

// The first entity whose "type" key has that type number, or -1.
int32_t FindEntityOfType(EntityType type);

// Frees all entities.
void ClearEntities();

// Rebuilds the table from the entity chunk of the level in work, with lights ready for lighting.
void PlaceObjects();

// The key lists of all entities, for BuildEntityChunk.
std::vector<KeyList*> EntityKeyLists();

}  // namespace k2k
