// The fields of an entity pair, one after the other, from the scanner into the entity's key list.
#pragma once

#include <string>
#include <string_view>

#include "driver/token_scanner.h"
#include "levelfile/entity_keys.h"

namespace k2k {

// Keys are appended in the order of the calls. The text ending inside a pair is fatal.
class PairFields {
  public:
    // Makes the key "type".
    PairFields(TokenScanner& scanner, KeyList& keys, EntityType type);

    // A group of tokens that begins on this or a later line and stays on that line, joined with single blanks.
    void Joined(std::string_view name, int count);
    // One token, perhaps on a later line.
    const std::string& Token(std::string_view name);
    // The rest of this line, or a later line as a whole, with its blanks.
    const std::string& Line(std::string_view name);
    // One token, perhaps on a later line, that makes a key unless it equals `without`. Whether it made one.
    bool TokenUnless(std::string_view without, std::string_view name);

    // Fields that the entity's closing brace may replace: the brace is left for the next read, and no key is made. The
    // brace is known by its first character.
    void OptionalToken(std::string_view name);
    void OptionalLine(std::string_view name);
    // The same, where only a brace that stands alone counts.
    void OptionalTokenStrict(std::string_view name);

    // count tokens that are not kept: the first may be on a later line, the others are on its line.
    void Drop(int count);

    int32_t line() const { return scanner_.line(); }

  private:
    void Next(bool wholeLine);
    const std::string& Add(std::string_view name, std::string_view value);

    TokenScanner& scanner_;
    KeyList& keys_;
};

}  // namespace k2k
