// The commands of klvtool, and what they have in common.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "levelcheck/level_view.h"

namespace klvtool {

// Ends the program with status 2 and this text.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

using Arguments = std::span<const std::string>;

struct Command {
    const char* name;
    const char* usage;    // behind the program's and the command's name
    const char* summary;  // one sentence
    int (*run)(Arguments arguments);
};
std::span<const Command> Commands();

// Runs the command that the first argument names; the program's exit status. Never throws.
int RunTool(Arguments arguments);

// What stands behind a command's name.
struct ParsedArguments {
    std::vector<std::string> names;              // in order
    std::map<std::string, std::string> options;  // without the dashes; a switch has an empty value

    bool Has(const std::string& option) const { return options.count(option) != 0; }
};
// Takes `--word` for each of `switches` and `--word VALUE` for each of `valued`. Anything else that begins with a dash,
// and any other number of names than `wanted`, is a usage error; so every command says which names it wants.
ParsedArguments ParseArguments(Arguments arguments, size_t wanted, const char* wantedWords,
                               std::span<const std::string_view> switches = {},
                               std::span<const std::string_view> valued = {});

// Numbers given by a user; a usage error tells the option when the text is something else.
double ParseNumber(const std::string& option, const std::string& text);
std::array<double, 3> ParsePoint(const std::string& option, const std::string& text);  // X,Y,Z

// Reads a level file; one that cannot be read, or is no level at all, ends the program with a message.
levelcheck::LevelView LoadLevel(const std::string& path);

// Writes a whole file, or ends the program with a message.
void SaveFile(const std::string& path, std::span<const uint8_t> bytes);
void SaveFile(const std::string& path, std::string_view text);

int RunCheck(Arguments arguments);
int RunDiff(Arguments arguments);
int RunExport(Arguments arguments);
int RunInfo(Arguments arguments);
int RunLeak(Arguments arguments);
int RunPages(Arguments arguments);
int RunPlan(Arguments arguments);
int RunView(Arguments arguments);

}  // namespace klvtool
