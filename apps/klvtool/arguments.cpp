#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "klvtool/command.h"

namespace klvtool {
namespace {

bool IsOneOf(std::span<const std::string_view> words, std::string_view word) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

// A finite number that the whole text stands for.
std::optional<double> NumberIn(std::string_view text) {
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value)) return std::nullopt;
    return value;
}

}  // namespace

ParsedArguments ParseArguments(Arguments arguments, size_t wanted, const char* wantedWords,
                               std::span<const std::string_view> switches, std::span<const std::string_view> valued) {
    ParsedArguments parsed;
    for (size_t i = 0; i < arguments.size(); i++) {
        const std::string& argument = arguments[i];
        if (argument.size() < 2 || argument[0] != '-') {
            parsed.names.push_back(argument);
            continue;
        }
        const std::string word = argument.substr(argument.starts_with("--") ? 2 : 1);
        if (IsOneOf(switches, word)) {
            parsed.options[word] = "";
        } else if (!IsOneOf(valued, word)) {
            throw UsageError("unknown option " + argument);
        } else if (i + 1 == arguments.size()) {
            throw UsageError(argument + " wants a value");
        } else {
            parsed.options[word] = arguments[++i];
        }
    }
    if (parsed.names.size() != wanted) throw UsageError(std::string("wanted: ") + wantedWords);
    return parsed;
}

double ParseNumber(const std::string& option, const std::string& text) {
    if (const auto value = NumberIn(text)) return *value;
    throw UsageError(option + " wants a number, not \"" + text + "\"");
}

std::array<double, 3> ParsePoint(const std::string& option, const std::string& text) {
    std::array<double, 3> point{};
    std::string_view rest = text;
    for (size_t i = 0; i < 3; i++) {
        const size_t end = i < 2 ? rest.find(',') : rest.size();
        const auto value = end == std::string_view::npos ? std::nullopt : NumberIn(rest.substr(0, end));
        if (!value) throw UsageError(option + " wants X,Y,Z, not \"" + text + "\"");
        point[i] = *value;
        rest.remove_prefix(std::min(rest.size(), end + 1));
    }
    return point;
}

}  // namespace klvtool
