#include <cstdio>

#include "klvtool/command.h"
#include "levelcheck/check.h"

namespace klvtool {

int RunCheck(Arguments arguments) {
    constexpr std::string_view Valued[] = {"litres"};
    const ParsedArguments parsed = ParseArguments(arguments, 1, "check LEVEL [--litres R]", {}, Valued);
    levelcheck::CheckOptions options;
    if (parsed.Has("litres")) {
        options.litres = static_cast<float>(ParseNumber("--litres", parsed.options.at("litres")));
    }
    const auto faults = levelcheck::Check(LoadLevel(parsed.names[0]), options);
    std::fputs(levelcheck::Describe(faults).c_str(), stdout);
    if (!levelcheck::IsSound(faults)) return 1;
    std::puts("sound");
    return 0;
}

}  // namespace klvtool
