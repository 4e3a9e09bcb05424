#include <cstdio>

#include "klvtool/command.h"
#include "klvtool/summary.h"

namespace klvtool {

int RunInfo(Arguments arguments) {
    constexpr std::string_view Switches[] = {"json"};
    const ParsedArguments parsed = ParseArguments(arguments, 1, "info LEVEL [--json]", Switches);
    const levelcheck::LevelView level = LoadLevel(parsed.names[0]);
    const Summary summary(level);
    const std::string text = parsed.Has("json") ? SummaryJson(summary) : SummaryText(summary);
    std::fwrite(text.data(), 1, text.size(), stdout);
    return 0;
}

}  // namespace klvtool
