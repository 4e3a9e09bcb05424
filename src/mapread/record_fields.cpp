// Entity record fields as text.
#include "mapread/record_fields.h"

#include <cstdio>

#include "driver/text.h"

namespace k2k {

namespace {

std::string FloatText(float value) {
    char text[64];  // the largest float has 39 digits before the point, and "%f" puts 6 behind it
    std::snprintf(text, sizeof text, "%f", static_cast<double>(value));
    return text;
}

}  // namespace

std::vector<float> RecordFields::Floats(size_t offset, size_t count) const {
    std::vector<float> values(count);
    std::memcpy(values.data(), Bytes(offset, count * sizeof(float)), count * sizeof(float));
    return values;
}

std::string RecordFields::Text(size_t offset, size_t size) const {
    const auto* text = reinterpret_cast<const char*>(Bytes(offset, size));
    return {text, strnlen(text, size)};
}

std::string RecordFields::FloatsText(size_t offset, size_t count) const {
    std::string text;
    for (const float value : Floats(offset, count)) {
        if (!text.empty()) text += ' ';
        text += FloatText(value);
    }
    return text;
}

std::string RecordFields::IntText(size_t offset) const {
    return std::to_string(At<int32_t>(offset));
}

std::string RecordFields::FlagsText(size_t offset) const {
    return ToBinary(At<uint32_t>(offset));
}

}  // namespace k2k
