// An entity as a list of text keys: the form between a map file and the binary records of a level.
#pragma once

#include <array>
#include <cstdint>
#include <list>
#include <span>
#include <string>
#include <string_view>

#include "levelfile/level_records.h"

namespace k2k {

constexpr size_t MaxKeyName = 31;     // characters kept
constexpr size_t MaxKeyValue = 1023;  // characters kept

struct EntityKey {
    std::string name;
    std::string value;
};

// Keys in list order. Several keys may have one name; look-ups find the first.
using KeyList = std::list<EntityKey>;

// The position of a type word is the type number of binary records.
constexpr std::array<std::string_view, 9> TypeWords{"level", "start", "light",    "model",    "sound",
                                                    "sun",   "path",  "extended", "spotlight"};
enum class EntityType : int32_t { Level, Start, Light, Model, Sound, Sun, Path, Extended, Spotlight };

// The value of a field that is not defined.
constexpr std::string_view NotDefined = "ndef";

// A key with cut name and value, at the end of the list.
EntityKey& AddKey(KeyList& keys, std::string_view name, std::string_view value);
// Replaces the value of the first key of that name; otherwise adds a key at the head.
void SetKey(KeyList& keys, std::string_view name, std::string_view value);
// The value of the first key of that name, or the empty string.
const std::string& GetKey(const KeyList& keys, std::string_view name);
// Three numbers of a key's value; what is missing stays 0.
Vec3 GetKeyVector(const KeyList& keys, std::string_view name);
// Reads numbers from text into out, up to the first thing that is no number; the rest of out keeps its values. Returns
// where reading stopped.
size_t ParseFloats(const std::string& text, std::span<float> out);
// The position in the type word table, or -1.
int32_t TypeNumber(std::string_view word);

}  // namespace k2k
