#include <cstdio>
#include <cstring>

#include "klvtool/command.h"

namespace klvtool {
namespace {

constexpr Command AllCommands[] = {
    {"info", "LEVEL [--json]", "What is in a level: tables, textures, entities, lightmaps, visibility.", RunInfo},
    {"check", "LEVEL [--litres R]", "Whether a level is sound: one line a fault; status 1 if there is any.", RunCheck},
};

void PrintUsage(std::FILE* out) {
    std::fputs("klvtool: look into a compiled level\n\n", out);
    for (const Command& command : AllCommands) {
        std::fprintf(out, "  klvtool %s %s\n      %s\n", command.name, command.usage, command.summary);
    }
}

int Run(std::span<const std::string> arguments) {
    if (arguments.empty() || arguments[0] == "--help" || arguments[0] == "-h") {
        PrintUsage(arguments.empty() ? stderr : stdout);
        return arguments.empty() ? 2 : 0;
    }
    for (const Command& command : AllCommands) {
        if (arguments[0] == command.name) return command.run(arguments.subspan(1));
    }
    throw UsageError("no command \"" + arguments[0] + "\"; klvtool --help lists them");
}

}  // namespace

std::span<const Command> Commands() {
    return AllCommands;
}

}  // namespace klvtool

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    try {
        return klvtool::Run(arguments);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "klvtool: %s\n", error.what());
        return 2;
    }
}
