// The objects of a level, decoded from their packed records.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "levelcheck/level_view.h"

namespace klvtool {

enum class EntityType : uint32_t {
    Start = 1,
    Light = 2,
    Model = 3,
    Sound = 4,
    Sun = 5,
    Path = 6,
    Extended = 7,
    Spotlight = 8
};

using Vec3 = std::array<float, 3>;

struct Flags {
    uint32_t bits = 0;
};
using FieldValue = std::variant<std::string, std::vector<float>, int32_t, Flags>;

struct Field {
    const char* name;
    FieldValue value;
};

struct Entity {
    EntityType type{};
    std::vector<Field> fields;  // in the order of the record
    std::vector<Vec3> points;   // of a path

    const char* TypeName() const;
    // Null without such a field.
    const FieldValue* Find(std::string_view name) const;
    std::string Text(std::string_view name) const;            // "" without it
    std::vector<float> Numbers(std::string_view name) const;  // empty without it
    bool HasPosition() const { return Numbers("position").size() == 3; }
    Vec3 Position() const;
};

// All records of known types that lie inside the chunk, in the order of the table. What cannot be read is left out; the
// level checker names it.
std::vector<Entity> ReadEntities(const levelcheck::LevelView& level);

// Text of the level in UTF-8: bytes above 127 are of the ANSI code page.
std::string ToUtf8(std::string_view text);

}  // namespace klvtool
