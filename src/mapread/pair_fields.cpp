// Reading the fields of an entity pair.
#include "mapread/pair_fields.h"

#include "mapread/syntax.h"

namespace k2k {

PairFields::PairFields(TokenScanner& scanner, KeyList& keys, EntityType type) : scanner_(scanner), keys_(keys) {
    Add("type", TypeWords[static_cast<size_t>(type)]);
}

void PairFields::Joined(std::string_view name, int count) {
    Add(name, scanner_.ReadJoined(count));
}

const std::string& PairFields::Token(std::string_view name) {
    Next(false);
    return Add(name, scanner_.view());
}

const std::string& PairFields::Line(std::string_view name) {
    Next(true);
    return Add(name, scanner_.view());
}

bool PairFields::TokenUnless(std::string_view without, std::string_view name) {
    Next(false);
    if (scanner_.view() == without) return false;
    Add(name, scanner_.view());
    return true;
}

void PairFields::OptionalToken(std::string_view name) {
    Next(false);
    if (scanner_.view().starts_with('}')) return scanner_.Unread();
    Add(name, scanner_.view());
}

void PairFields::OptionalLine(std::string_view name) {
    Next(true);
    if (scanner_.view().starts_with('}')) return scanner_.Unread();
    Add(name, scanner_.view());
}

void PairFields::OptionalTokenStrict(std::string_view name) {
    Next(false);
    if (scanner_.view() == "}") return scanner_.Unread();
    Add(name, scanner_.view());
}

void PairFields::Drop(int count) {
    Next(false);
    for (int i = 1; i < count; ++i) scanner_.NextToken(false);
}

void PairFields::Next(bool wholeLine) {
    RequireToken(scanner_, wholeLine);
}

const std::string& PairFields::Add(std::string_view name, std::string_view value) {
    return AddKey(keys_, name, value).value;
}

}  // namespace k2k
