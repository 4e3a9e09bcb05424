// Small text helpers: numbers, binary numerals, file name extensions, case.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace k2k {

// atof and atoi semantics: text that is no number gives 0.
float ToFloat(std::string_view token);
int32_t ToInt(std::string_view token);

// "0" and "1" from the right end of text, the last character being bit 0; stops at the first other character.
uint32_t ParseBinary(std::string_view text);
// The reverse, in 8, 16 or 32 digits.
std::string ToBinary(uint32_t value);

// Appends extension (with its dot) when path has none. Only "/" stops the search, so a dot in a directory name that is
// set apart by "\\" hides a missing extension; and the first character is not looked at.
void AddExtension(std::string& path, std::string_view extension);
// Cuts path at its last "."; a "/" in the way leaves it.
void StripExtension(std::string& path);

// Equality without regard to ASCII case.
bool EqualNoCase(std::string_view a, std::string_view b);
// ASCII upper case, byte by byte.
std::string ToUpper(std::string_view text);

}  // namespace k2k
