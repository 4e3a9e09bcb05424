#include <cstdio>
#include <cstdlib>

#include "klvtool/command.h"
#include "levelcheck/check.h"

namespace klvtool {

int RunCheck(Arguments arguments) {
    levelcheck::CheckOptions options;
    std::string path;
    for (size_t i = 0; i < arguments.size(); i++) {
        if (arguments[i] == "--litres" && i + 1 < arguments.size()) {
            options.litres = std::strtof(arguments[++i].c_str(), nullptr);
        } else {
            path = arguments[i];
        }
    }
    if (path.empty()) throw UsageError("check wants a level");
    const auto faults = levelcheck::Check(LoadLevel(path), options);
    std::fputs(levelcheck::Describe(faults).c_str(), stdout);
    if (!levelcheck::IsSound(faults)) return 1;
    std::puts("sound");
    return 0;
}

}  // namespace klvtool
