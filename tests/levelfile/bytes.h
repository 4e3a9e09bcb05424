// Files and chunks of tests, put together value by value.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>
#include <vector>

#include "levelfile/file_klv.h"

namespace k2k::test {

// Appends values in little endian order.
class Bytes {
  public:
    template <typename T>
    Bytes& Put(T value) {
        const size_t at = bytes_.size();
        bytes_.resize(at + sizeof(T));
        std::memcpy(bytes_.data() + at, &value, sizeof(T));
        return *this;
    }
    Bytes& U8(uint8_t value) { return Put(value); }
    Bytes& U16(uint16_t value) { return Put(value); }
    Bytes& I16(int16_t value) { return Put(value); }
    Bytes& U32(uint32_t value) { return Put(value); }
    Bytes& I32(int32_t value) { return Put(value); }
    Bytes& F32(float value) { return Put(value); }
    Bytes& Floats(std::initializer_list<float> values) {
        for (const float value : values) F32(value);
        return *this;
    }
    Bytes& Zeros(size_t count) {
        bytes_.resize(bytes_.size() + count);
        return *this;
    }
    // Text in a field of that size, filled with zeros.
    Bytes& Text(std::string_view text, size_t fieldSize) {
        const size_t at = bytes_.size();
        Zeros(fieldSize);
        std::memcpy(bytes_.data() + at, text.data(), text.size());
        return *this;
    }
    Bytes& Append(const std::vector<uint8_t>& other) {
        bytes_.insert(bytes_.end(), other.begin(), other.end());
        return *this;
    }
    const std::vector<uint8_t>& get() const { return bytes_; }

  private:
    std::vector<uint8_t> bytes_;
};

template <typename T>
T ValueAt(std::span<const uint8_t> bytes, size_t offset) {
    T value{};
    if (offset + sizeof(T) <= bytes.size()) std::memcpy(&value, bytes.data() + offset, sizeof(T));
    return value;
}

inline ChunkEntry EntryOf(std::span<const uint8_t> file, Chunk number) {
    return ValueAt<ChunkEntry>(file, 4 + 8 * static_cast<size_t>(number));
}

inline std::vector<uint8_t> ChunkOf(std::span<const uint8_t> file, Chunk number) {
    const ChunkEntry entry = EntryOf(file, number);
    if (entry.offset + entry.size > file.size()) return {};
    const auto chunk = file.subspan(entry.offset, entry.size);
    return {chunk.begin(), chunk.end()};
}

// A level file of these chunks, in the order given, each on a multiple of 4.
class LevelFile {
  public:
    explicit LevelFile(char version) : bytes_(156) {
        bytes_[0] = 'K', bytes_[1] = 'L', bytes_[2] = 'V';
        bytes_[3] = static_cast<uint8_t>(version);
    }
    LevelFile& Add(Chunk number, const std::vector<uint8_t>& chunk) {
        SetEntry(number, static_cast<uint32_t>(bytes_.size()), static_cast<uint32_t>(chunk.size()));
        bytes_.insert(bytes_.end(), chunk.begin(), chunk.end());
        bytes_.resize((bytes_.size() + 3) / 4 * 4);
        return *this;
    }
    LevelFile& SetEntry(Chunk number, uint32_t offset, uint32_t size) {
        const ChunkEntry entry{offset, size};
        std::memcpy(bytes_.data() + 4 + 8 * static_cast<size_t>(number), &entry, sizeof(entry));
        return *this;
    }
    const std::vector<uint8_t>& get() const { return bytes_; }

  private:
    std::vector<uint8_t> bytes_;
};

}  // namespace k2k::test
