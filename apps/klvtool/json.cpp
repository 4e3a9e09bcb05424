#include "klvtool/json.h"

#include <array>
#include <charconv>
#include <cmath>

namespace klvtool {
namespace {

void AppendQuoted(std::string& out, std::string_view text) {
    constexpr std::string_view Digits = "0123456789abcdef";
    out += '"';
    for (const char c : text) {
        const auto byte = static_cast<uint8_t>(c);
        if (c == '"' || c == '\\') {
            out += '\\';
            out += c;
        } else if (byte < 0x20 || byte == 0x7F) {
            out += "\\u00";
            out += Digits[byte >> 4];
            out += Digits[byte & 15];
        } else {
            out += c;
        }
    }
    out += '"';
}

template <typename T>
void AppendNumber(std::string& out, T value) {
    std::array<char, 64> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
    out.append(text.data(), end);
}

}  // namespace

void Json::Separate() {
    if (!first_) out_ += ',';
    first_ = false;
}

Json& Json::Open(char bracket) {
    Separate();
    out_ += bracket;
    first_ = true;
    return *this;
}

Json& Json::Close(char bracket) {
    out_ += bracket;
    first_ = false;
    return *this;
}

Json& Json::Key(std::string_view name) {
    Separate();
    AppendQuoted(out_, name);
    out_ += ':';
    first_ = true;
    return *this;
}

Json& Json::Text(std::string_view text) {
    Separate();
    AppendQuoted(out_, text);
    return *this;
}

Json& Json::Int(int64_t value) {
    Separate();
    AppendNumber(out_, value);
    return *this;
}

Json& Json::Number(double value) {
    Separate();
    AppendNumber(out_, std::isfinite(value) ? value : 0.0);
    return *this;
}

Json& Json::Number(float value) {
    Separate();
    AppendNumber(out_, std::isfinite(value) ? value : 0.0F);
    return *this;
}

Json& Json::Bool(bool value) {
    Separate();
    out_ += value ? "true" : "false";
    return *this;
}

}  // namespace klvtool
