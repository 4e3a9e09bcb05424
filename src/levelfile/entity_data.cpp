#include "levelfile/entity_data.h"

#include <cstring>

#include "levelfile/file_klv.h"

namespace k2k {

namespace {

uint32_t U32At(std::span<const uint8_t> chunk, size_t offset) {
    if (offset > chunk.size() || chunk.size() - offset < sizeof(uint32_t)) InvalidLevelFile();
    uint32_t value;
    std::memcpy(&value, chunk.data() + offset, sizeof(value));
    return value;
}

}  // namespace

uint8_t FirstGammaValue = 0;

CEntityData& EntityRecords() {
    static CEntityData entities;
    return entities;
}

void CEntityData::Read(CFileKLV& file) {
    block.clear();
    if (file.GetChunkSize(Chunk::Entities) > MaxEntityChunk) InvalidLevelFile();
    file.ReadRecords(Chunk::Entities, block);
}

void CEntityData::Write(CFileKLV& file) {
    file.WriteChunk(Chunk::Entities, block.data(), block.size());
}

std::vector<EntityRecordView> EntityRecordViews(std::span<const uint8_t> chunk) {
    std::vector<EntityRecordView> views;
    if (chunk.empty()) return views;
    const uint32_t count = U32At(chunk, 0);
    for (uint32_t i = 0; i < count; ++i) {
        const uint32_t offset = U32At(chunk, sizeof(uint32_t) * (size_t{i} + 1));
        EntityRecordView& view = views.emplace_back();
        if (offset == 0) continue;
        view.type = static_cast<int32_t>(U32At(chunk, offset));
        view.bytes = chunk.subspan(offset);
    }
    return views;
}

}  // namespace k2k
