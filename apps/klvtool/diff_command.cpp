#include <cstdio>

#include "klvtool/command.h"
#include "klvtool/level_diff.h"

namespace klvtool {

int RunDiff(Arguments arguments) {
    const ParsedArguments parsed = ParseArguments(arguments, 2, "diff LEVEL LEVEL");
    const auto lines = CompareLevels(LoadLevel(parsed.names[0]), LoadLevel(parsed.names[1]));
    for (const std::string& line : lines) std::puts(line.c_str());
    return lines.empty() ? 0 : 1;
}

}  // namespace klvtool
