#include "driver/settings.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <optional>
#include <vector>

#include "driver/text.h"

namespace k2k {

const std::string_view DefaultSettings = "-solidsky -litmapsonly -mergeacross -mesh -hiprec -quiet";

namespace {

namespace fs = std::filesystem;

constexpr const char* FileName = "K2K.ini";
constexpr std::string_view Section = "Map Compiler";
constexpr std::string_view Key = "Commandline";
constexpr size_t MaxSettings = 511;

using Lines = std::vector<std::string>;

// The lines of the file, of which there are none without a file; nothing for a file that cannot be read.
std::optional<Lines> ReadLines() {
    Lines lines;
    std::error_code error;
    if (!fs::exists(FileName, error)) return lines;
    std::ifstream file(FileName, std::ios::binary);
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    if (!file.eof()) return std::nullopt;
    return lines;
}

bool IsReadOnly() {
    std::error_code error;
    return fs::exists(FileName, error) && !std::fstream(FileName, std::ios::binary | std::ios::in | std::ios::out);
}

// Puts a new file in the old one's place in one step, so that a full disk loses nothing.
void WriteLines(const Lines& lines) {
    std::error_code error;
    const fs::path path = fs::weakly_canonical(FileName, error);
    const fs::path fresh = path.string() + ".new";
    std::ofstream file(fresh, std::ios::binary | std::ios::trunc);
    for (const std::string& each : lines) file << each << '\n';
    file.close();
    if (!file) {
        fs::remove(fresh, error);
        return;
    }
    if (fs::exists(path, error)) fs::permissions(fresh, fs::status(path, error).permissions(), error);
    fs::rename(fresh, path, error);
}

std::string_view Trim(std::string_view text) {
    const auto blank = [](char c) { return static_cast<unsigned char>(c) <= ' '; };
    while (!text.empty() && blank(text.front())) text.remove_prefix(1);
    while (!text.empty() && blank(text.back())) text.remove_suffix(1);
    return text;
}

// A value may stand in one pair of double quotes; quotes inside mean that the outer ones belong to the value's own
// words.
std::string_view Unquoted(std::string_view value) {
    if (value.size() < 2 || value.front() != '"' || value.find('"', 1) != value.size() - 1) return value;
    return value.substr(1, value.size() - 2);
}

// The name between the brackets of a section's first line.
std::optional<std::string_view> SectionName(std::string_view line) {
    line = Trim(line);
    if (line.size() < 2 || line.front() != '[' || line.back() != ']') return std::nullopt;
    return Trim(line.substr(1, line.size() - 2));
}

bool IsOurSection(const std::string& line) {
    const auto name = SectionName(line);
    return name.has_value() && EqualNoCase(*name, Section);
}

bool IsOurKey(std::string_view line) {
    const size_t equals = line.find('=');
    return equals != std::string_view::npos && EqualNoCase(Trim(line.substr(0, equals)), Key);
}

// The lines of our section, without its first one; both at the end when there is no such section.
struct SectionLines {
    Lines::iterator begin, end;
};

SectionLines FindSection(Lines& lines) {
    const auto header = std::find_if(lines.begin(), lines.end(), IsOurSection);
    if (header == lines.end()) return {lines.end(), lines.end()};
    const auto end =
        std::find_if(header + 1, lines.end(), [](const auto& line) { return SectionName(line).has_value(); });
    return {header + 1, end};
}

// A profile's value is one line.
std::string AsValue(std::string_view text) {
    std::string value(text);
    std::replace_if(
        value.begin(), value.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
    return value;
}

}  // namespace

std::string LoadSettings() {
    Lines lines = ReadLines().value_or(Lines{});
    const SectionLines section = FindSection(lines);
    const auto line = std::find_if(section.begin, section.end, IsOurKey);
    std::string_view value;
    if (line != section.end) value = Unquoted(Trim(std::string_view(*line).substr(line->find('=') + 1)));
    return std::string(value.empty() ? DefaultSettings : value.substr(0, MaxSettings));
}

void SaveSettings(std::string_view text) {
    auto read = ReadLines();
    if (!read || IsReadOnly()) return;
    Lines& lines = *read;
    const std::string lineEnd = !lines.empty() && lines.front().ends_with('\r') ? "\r" : "";
    const std::string entry = std::string(Key) + '=' + AsValue(text) + lineEnd;

    if (std::none_of(lines.begin(), lines.end(), IsOurSection))
        lines.push_back('[' + std::string(Section) + ']' + lineEnd);
    const SectionLines section = FindSection(lines);
    const auto line = std::find_if(section.begin, section.end, IsOurKey);
    if (line != section.end)
        *line = entry;
    else
        lines.insert(section.begin, entry);

    WriteLines(lines);
}

}  // namespace k2k
