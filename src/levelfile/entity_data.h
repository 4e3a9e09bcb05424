// The placed objects of the level in work, as packed binary records.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "levelfile/entity_keys.h"
#include "levelfile/storable.h"

namespace k2k {

constexpr int32_t MaxEntities = 8192;
constexpr int32_t MaxEntityChunk = 1048576;  // bytes

class CEntityData : public CStorable {
  public:
    void Read(CFileKLV& file) override;
    void Write(CFileKLV& file) override;
    void PrintStats() override {}
    void Clear() override { block.clear(); }

    std::vector<uint8_t> block;  // chunk 15
};

CEntityData& EntityRecords();

// Makes the entity chunk from the key lists of all entities, in table order. Unless -nod3dlmaps is on the sun comes
// first: the key lists of the first sun and of entity 0 are swapped for good.
void BuildEntityChunk(std::span<KeyList* const> entities);

// One record of the chunk, bounds-checked: its type number and its bytes up to the chunk's end. Entries with an offset
// of 0 give type -1.
struct EntityRecordView {
    int32_t type = -1;
    std::span<const uint8_t> bytes;
};
// All entries of the chunk's offset table, in order. A table or record outside the chunk is fatal.
std::vector<EntityRecordView> EntityRecordViews(std::span<const uint8_t> chunk);

// The first value of the gamma table once one was made, 0 before; part of the sun record.
extern uint8_t FirstGammaValue;

}  // namespace k2k
