#include <cstdio>
#include <new>

#include "klvtool/command.h"

namespace klvtool {
namespace {

constexpr int UsageStatus = 2;

constexpr Command AllCommands[] = {
    {"info", "LEVEL [--json]", "What is in a level: tables, textures, entities, lightmaps, visibility.", RunInfo},
    {"check", "LEVEL [--litres R]", "Whether a level is sound: one line a fault; status 1 if there is any.", RunCheck},
    {"diff", "LEVEL LEVEL", "What differs, chunk by chunk and record by record; status 1 if anything does.", RunDiff},
    {"export", "LEVEL OUT.glb", "Writes the level, its textures, lightmaps, lights and objects as glTF 2.0.",
     RunExport},
    {"leak", "MAP [--options \"OPTIONS\"] [--png OUT.png] [--html OUT.html]",
     "Where a map is open to the outside: the shortest way there from an object; status 1 if there is one.", RunLeak},
    {"pages", "LEVEL DIR", "Writes lightmap pages, palette and textures as PNG images.", RunPages},
    {"plan", "LEVEL OUT.png [--from X,Y,Z] [--cut Z] [--size PIXELS]",
     "Draws a level from above, with its entities; --from shows what is visible there, --cut leaves out all above Z.",
     RunPlan},
    {"view", "LEVEL OUT.html", "Writes one page for a browser that shows the level lit, to walk through.", RunView},
};

void PrintUsage(std::FILE* out) {
    std::fputs("klvtool: look into a compiled level\n\n", out);
    for (const Command& command : AllCommands) {
        std::fprintf(out, "  klvtool %s %s\n      %s\n", command.name, command.usage, command.summary);
    }
}

int Run(Arguments arguments) {
    if (arguments.empty() || arguments[0] == "--help" || arguments[0] == "-h") {
        PrintUsage(arguments.empty() ? stderr : stdout);
        return arguments.empty() ? UsageStatus : 0;
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

int RunTool(Arguments arguments) {
    try {
        const int status = Run(arguments);
        if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) throw std::runtime_error("can't write the output");
        return status;
    } catch (const std::bad_alloc&) {
        std::fputs("klvtool: out of memory\n", stderr);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "klvtool: %s\n", error.what());
    }
    return UsageStatus;
}

}  // namespace klvtool
