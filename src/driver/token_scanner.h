// Splits a text into tokens, for map files and the command string alike.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace k2k {

// Characters below 33 are white space; a token that begins with a double quote runs to the next one; "//" at the start
// of a token begins a comment. The scanner does not own the text. A token that touches the text's last byte is lost,
// so a caller that must not lose one passes a terminating zero byte as part of the text.
class TokenScanner {
  public:
    void Start(const char* text, size_t size);

    // Reads the next token into token(). With crossLines the token may lie on a later line, and the end of the text
    // gives false; without it both are fatal. With wholeLine blanks belong to the token.
    bool NextToken(bool crossLines, bool wholeLine = false);

    // The next NextToken returns the current token again.
    void Unread() { unread_ = true; }

    const char* token() const { return token_.data(); }
    std::string_view view() const { return token_.data(); }
    int32_t line() const { return line_; }

    // count numbers from the current line, narrowed to 32 bits. Running out is fatal.
    void ReadFloats(float* out, int count);
    // The same for integers, appended to a list.
    void ReadInts(std::vector<int32_t>& list, int count);
    // count tokens joined with single blanks; the first may be on a later line, the others must be on its line.
    std::string ReadJoined(int count);

  private:
    bool SkipToToken(bool crossLines);
    bool ReadQuoted(bool crossLines);
    bool ReadPlain(bool crossLines, bool wholeLine);

    std::array<char, 128> token_{};
    bool unread_ = false;
    const char* cursor_ = nullptr;
    int32_t line_ = 1;
    const char* end_ = nullptr;
};

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
