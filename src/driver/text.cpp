// Small text helpers: numbers, binary numerals, file name extensions, case.
#include "driver/text.h"

#include <algorithm>
#include <cstdlib>

namespace k2k {

namespace {

char UpperCase(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

}  // namespace

float ToFloat(std::string_view token) {
    return static_cast<float>(std::strtod(std::string(token).c_str(), nullptr));
}

int32_t ToInt(std::string_view token) {
    return static_cast<int32_t>(std::strtol(std::string(token).c_str(), nullptr, 10));
}

uint32_t ParseBinary(std::string_view text) {
    uint32_t value = 0;
    for (uint32_t bit = 1; !text.empty(); text.remove_suffix(1), bit <<= 1) {
        if (text.back() != '0' && text.back() != '1') break;
        if (text.back() == '1') value |= bit;
    }
    return value;
}

std::string ToBinary(uint32_t value) {
    const int digits = value < 0x100 ? 8 : value < 0x10000 ? 16 : 32;
    std::string text;
    for (int bit = digits - 1; bit >= 0; --bit) text += (value >> bit & 1) != 0 ? '1' : '0';
    return text;
}

void AddExtension(std::string& path, std::string_view extension) {
    for (size_t i = path.size(); i > 1 && path[i - 1] != '/'; --i)
        if (path[i - 1] == '.') return;
    path += extension;
}

void StripExtension(std::string& path) {
    const size_t stop = path.find_last_of("./");
    if (stop != std::string::npos && path[stop] == '.') path.resize(stop);
}

bool EqualNoCase(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return UpperCase(x) == UpperCase(y); });
}

std::string ToUpper(std::string_view text) {
    std::string upper(text);
    std::transform(upper.begin(), upper.end(), upper.begin(), UpperCase);
    return upper;
}

}  // namespace k2k
