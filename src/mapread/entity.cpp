// The entity table.
#include "mapread/entity.h"

namespace k2k {

std::vector<CEntity>& Entities() {
    static std::vector<CEntity> entities;
    return entities;
}

CEntity& NewEntity() {
    return Entities().emplace_back();
}

int32_t FindEntityOfType(EntityType type) {
    const std::vector<CEntity>& entities = Entities();
    for (size_t i = 0; i < entities.size(); ++i) {
        if (TypeNumber(GetKey(entities[i].keys, "type")) == static_cast<int32_t>(type)) return static_cast<int32_t>(i);
    }
    return -1;
}

void ClearEntities() {
    Entities().clear();
}

std::vector<KeyList*> EntityKeyLists() {
    std::vector<KeyList*> lists;
    lists.reserve(Entities().size());
    for (CEntity& entity : Entities()) lists.push_back(&entity.keys);
    return lists;
}

}  // namespace k2k
