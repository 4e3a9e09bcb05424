#include "levelfile/entity_keys.h"

#include <algorithm>
#include <cstdlib>

namespace k2k {

namespace {

auto FindKey(const KeyList& keys, std::string_view name) {
    return std::find_if(keys.begin(), keys.end(), [&](const EntityKey& key) { return key.name == name; });
}

EntityKey CutKey(std::string_view name, std::string_view value) {
    return {std::string(name.substr(0, MaxKeyName)), std::string(value.substr(0, MaxKeyValue))};
}

}  // namespace

EntityKey& AddKey(KeyList& keys, std::string_view name, std::string_view value) {
    return keys.emplace_back(CutKey(name, value));
}

void SetKey(KeyList& keys, std::string_view name, std::string_view value) {
    const auto found = std::find_if(keys.begin(), keys.end(), [&](const EntityKey& key) { return key.name == name; });
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
    const char* cursor = GetKey(keys, name).c_str();
    for (float& component : vector) {
        char* end = nullptr;
        const double value = std::strtod(cursor, &end);
        if (end == cursor) break;
        component = static_cast<float>(value);
        cursor = end;
    }
    return vector;
}

size_t ParseFloats(const std::string& text, std::span<float> out) {
    const char* cursor = text.c_str();
    for (float& number : out) {
        char* end = nullptr;
        const float value = std::strtof(cursor, &end);
        if (end == cursor) break;
        number = value;
        cursor = end;
    }
    return static_cast<size_t>(cursor - text.c_str());
}

int32_t TypeNumber(std::string_view word) {
    const auto found = std::find(TypeWords.begin(), TypeWords.end(), word);
    return found == TypeWords.end() ? -1 : static_cast<int32_t>(found - TypeWords.begin());
}

}  // namespace k2k
