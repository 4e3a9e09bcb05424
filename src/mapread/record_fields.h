// Fields of a packed entity record, as text for keys and as numbers.
#pragma once

#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <vector>

#include "levelfile/file_klv.h"
#include "levelfile/level_records.h"

namespace k2k {

// The bytes from a record's start to the end of the chunk that holds it. A field outside them is fatal.
class RecordFields {
  public:
    explicit RecordFields(std::span<const uint8_t> bytes) : bytes_(bytes) {}

    template <typename T>
    T At(size_t offset) const {
        T value;
        std::memcpy(&value, Bytes(offset, sizeof(T)), sizeof(T));
        return value;
    }

    std::vector<float> Floats(size_t offset, size_t count) const;
    // A string of at most size characters, up to its zero if it has one.
    std::string Text(size_t offset, size_t size) const;
    bool IsTerminated(size_t offset, size_t size) const { return Text(offset, size).size() < size; }

    // Numbers in the form of keys: "%f" with single blanks between, "%d", binary digits.
    std::string FloatsText(size_t offset, size_t count) const;
    std::string IntText(size_t offset) const;
    std::string FlagsText(size_t offset) const;

  private:
    const uint8_t* Bytes(size_t offset, size_t size) const {
        if (offset > bytes_.size() || size > bytes_.size() - offset) InvalidLevelFile();
        return bytes_.data() + offset;
    }

    std::span<const uint8_t> bytes_;
};

}  // namespace k2k
