#include <array>
#include <bit>
#include <cstdio>

#include "klvtool/command.h"

namespace klvtool {
namespace {

using levelcheck::LevelView;

double MeanVisible(const LevelView& level) {
    size_t rows = 0, seen = 0;
    for (size_t i = 1; i < level.regions.size(); i++) {
        const auto row = levelcheck::VisRow(level, i);
        if (!row) continue;
        rows++;
        for (const uint8_t byte : *row) seen += static_cast<size_t>(std::popcount(byte));
    }
    return rows == 0 ? 0 : static_cast<double>(seen) / static_cast<double>(rows);
}

struct CountRow {
    const char* name;
    size_t count;
};

std::vector<CountRow> Counts(const LevelView& level) {
    return {{"planes", level.planes.size()},        {"vertices", level.vertices.size()},
            {"edges", level.edges.size()},          {"surfaces", level.surfaces.size()},
            {"regions", level.regions.size()},      {"nodes", level.nodes.size()},
            {"hull_nodes", level.hullNodes.size()}, {"texinfos", level.texinfos.size()},
            {"meshes", level.meshes.size()},        {"lightmap_pages", level.pageCount}};
}

void PrintText(const LevelView& level) {
    std::printf("version %c, %zu bytes\n", level.version, level.bytes.size());
    for (const auto& [name, count] : Counts(level)) std::printf("%-16s %zu\n", name, count);
    std::printf("%-16s %.1f\n", "mean visible", MeanVisible(level));
}

void PrintJson(const LevelView& level) {
    std::printf("{\"version\": \"%c\", \"bytes\": %zu", level.version, level.bytes.size());
    for (const auto& [name, count] : Counts(level)) std::printf(", \"%s\": %zu", name, count);
    std::printf(", \"mean_visible\": %.3f}\n", MeanVisible(level));
}

}  // namespace

int RunInfo(Arguments arguments) {
    bool json = false;
    std::string path;
    for (const std::string& argument : arguments) {
        if (argument == "--json")
            json = true;
        else
            path = argument;
    }
    if (path.empty()) throw UsageError("info wants a level");
    const LevelView level = LoadLevel(path);
    (json ? PrintJson : PrintText)(level);
    return 0;
}

}  // namespace klvtool
