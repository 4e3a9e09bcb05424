// Splits a text into tokens, for map files and the command string alike.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "driver/text.h"

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
    // What each of these finds: the cursor at a token's first character, or a whole token behind the cursor.
    bool SkipToToken(bool crossLines);
    bool SkipComment(bool crossLines);
    bool ReadToken(bool wholeLine);
    bool ReadQuoted();
    bool ReadPlain(int firstNonBlank);
    void Take(size_t& length);
    [[noreturn]] void FailOnLine() const;

    static constexpr size_t MaxTokenLength = 127;
    std::array<char, MaxTokenLength + 1> token_{};
    bool unread_ = false;
    const char* cursor_ = nullptr;
    int32_t line_ = 1;
    const char* end_ = nullptr;
};

}  // namespace k2k
