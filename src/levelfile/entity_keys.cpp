#include "levelfile/entity_keys.h"

#include <algorithm>
#include <cstdlib>

namespace k2k {

namespace {

// The first key of that name; takes a list of either constness.
auto FindKey(auto& keys, std::string_view name) {
    return std::find_if(keys.begin(), keys.end(), [&](const EntityKey& key) { return key.name == name; });
}

EntityKey CutKey(std::string_view name, std::string_view value) {
    return {std::string(name.substr(0, MaxKeyName)), std::string(value.substr(0, MaxKeyValue))};
}

// Fills out with numbers up to the first thing that parse (std::strtof or std::strtod) takes for none.
size_t ParseNumbers(const std::string& text, std::span<float> out, auto parse) {
    const char* cursor = text.c_str();
    for (float& number : out) {
        char* end = nullptr;
        const auto value = static_cast<float>(parse(cursor, &end));
        if (end == cursor) break;
        number = value;
        cursor = end;
    }
    return static_cast<size_t>(cursor - text.c_str());
}

}  // namespace

EntityKey& AddKey(KeyList& keys, std::string_view name, std::string_view value) {
    return keys.emplace_back(CutKey(name, value));
}

void SetKey(KeyList& keys, std::string_view name, std::string_view value) {
    const auto found = FindKey(keys, name);
    if (found == keys.end()) {
        keys.push_front(CutKey(name, value));
    } else {
        found->value = value.substr(0, MaxKeyValue);
    }
}

const std::string& GetKey(const KeyList& keys, std::string_view name) {
    static const std::string missing;
    const auto found = FindKey(keys, name);
    return found == keys.end() ? missing : found->value;
}

Vec3 GetKeyVector(const KeyList& keys, std::string_view name) {
    Vec3 vector{};
    ParseNumbers(GetKey(keys, name), vector, std::strtod);
    return vector;
}

size_t ParseFloats(const std::string& text, std::span<float> out) {
    return ParseNumbers(text, out, std::strtof);
}

int32_t TypeNumber(std::string_view word) {
    const auto found = std::find(TypeWords.begin(), TypeWords.end(), word);
    return found == TypeWords.end() ? -1 : static_cast<int32_t>(found - TypeWords.begin());
}

}  // namespace k2k
