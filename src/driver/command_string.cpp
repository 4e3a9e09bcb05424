#include "driver/command_string.h"

#include <algorithm>
#include <string_view>

namespace k2k {

namespace {

bool IsBlank(char c) {
    return static_cast<unsigned char>(c) < 33;
}

// An argument with double quotes of its own goes as it is: a quoted token has no escape character.
bool NeedsQuotes(std::string_view argument) {
    if (argument.find('"') != std::string_view::npos) return false;
    return argument.empty() || std::any_of(argument.begin(), argument.end(), IsBlank);
}

}  // namespace

std::string CommandString(std::span<const char* const> arguments) {
    std::string command;
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::string_view argument = arguments[i];
        if (i != 0) command += ' ';
        const std::string_view quote = NeedsQuotes(argument) ? "\"" : "";
        command.append(quote).append(argument).append(quote);
    }
    return command;
}

}  // namespace k2k
