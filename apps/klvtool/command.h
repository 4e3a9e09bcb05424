// The commands of klvtool.
#pragma once

#include <span>
#include <stdexcept>
#include <string>
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

// Reads a level file; one that cannot be read, or is no level at all, ends the program with a message.
levelcheck::LevelView LoadLevel(const std::string& path);

int RunCheck(Arguments arguments);
int RunInfo(Arguments arguments);

}  // namespace klvtool
