#include "map_text.h"
#include "mapread/entity.h"

namespace k2k::test {

namespace {

class EntityTable : public MapTest {};

TEST_F(EntityTable, FindsTheFirstEntityOfAType) {
    Read("{\n5 0 45\n}\n{\n0 a\nb\n}\n{\n0 c\nd\n}\n");
    EXPECT_EQ(FindEntityOfType(EntityType::Level), 1);
    EXPECT_EQ(FindEntityOfType(EntityType::Sun), 0);
    EXPECT_EQ(FindEntityOfType(EntityType::Path), -1);
}

TEST_F(EntityTable, FreshRowIsEmpty) {
    Read(Level(Box50(0, 64)));
    ClearEntities();
    const CEntity& entity = NewEntity();
    EXPECT_TRUE(entity.blocks.empty());
    EXPECT_TRUE(entity.keys.empty());
    EXPECT_EQ(entity.lightRange, 0);
    EXPECT_EQ(entity.typeName[0], '\0');
}

TEST_F(EntityTable, HandsOutItsKeyListsInOrder) {
    Read("{\n5 0 45\n}\n{\n0 a\nb\n}\n");
    const std::vector<KeyList*> lists = EntityKeyLists();
    ASSERT_EQ(lists.size(), 2U);
    EXPECT_EQ(lists[0], &Entities()[0].keys);
    EXPECT_EQ(lists[1], &Entities()[1].keys);
}

}  // namespace

}  // namespace k2k::test
