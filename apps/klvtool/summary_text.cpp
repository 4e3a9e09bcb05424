#include <array>
#include <cstdarg>
#include <cstdio>

#include "klvtool/summary.h"

namespace klvtool {
namespace {

#define KLVTOOL_PRINTF __attribute__((format(printf, 2, 3)))

// Appends formatted text of any length.
void Print(std::string& out, const char* format, ...) KLVTOOL_PRINTF;
void Print(std::string& out, const char* format, ...) {
    va_list arguments, again;
    va_start(arguments, format);
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
    if (length > 0) {
        const size_t start = out.size();
        out.resize(start + static_cast<size_t>(length) + 1);
        std::vsnprintf(out.data() + start, static_cast<size_t>(length) + 1, format, again);
        out.pop_back();
    }
    va_end(again);
}

void PrintChunks(const levelcheck::LevelView& level, std::string& out) {
    out += "\nchunk                      offset       size\n";
    for (int i = 0; i < levelcheck::ChunkCount; i++) {
        const levelcheck::ChunkPlace& place = level.chunks[static_cast<size_t>(i)];
        if (place.size != 0) Print(out, "  %2d %-16s %10u %10u\n", i, ChunkName(i), place.offset, place.size);
    }
}

void PrintInfo(const levelcheck::Info& info, std::string& out) {
    Print(out, "\nbounds  %g %g %g to %g %g %g\n", info.mins[0], info.mins[1], info.mins[2], info.maxs[0], info.maxs[1],
          info.maxs[2]);
    for (size_t hull = 0; hull < 3; hull++) {
        const auto &low = info.hullMins[hull], &high = info.hullMaxs[hull];
        Print(out, "hull %zu  root %d, box %d %d %d to %d %d %d\n", hull, info.headNodes[hull], low[0], low[1], low[2],
              high[0], high[1], high[2]);
    }
}

void PrintTextures(const Summary& summary, std::string& out) {
    size_t used = 0;
    for (const size_t faces : summary.textureUses) used += faces != 0 ? 1 : 0;
    Print(out, "\ntextures: %zu, %zu of them used\n", summary.textures.size(), used);
    for (size_t i = 0; i < summary.textures.size(); i++) {
        const Texture& texture = summary.textures[i];
        if (summary.textureUses[i] == 0) continue;
        Print(out, "  %4zu %-16s %5u x %-5u %6zu faces%s\n", i, texture.name.c_str(), texture.width, texture.height,
              summary.textureUses[i], texture.name.empty() ? ", no image" : "");
    }
}

void PrintPages(const Summary& summary, std::string& out) {
    Print(out, "\nlightmap pages: %zu of %u x %u texels\n", summary.pages.size(), summary.level.pageSize,
          summary.level.pageSize);
    for (size_t i = 1; i < summary.pages.size(); i++) {
        Print(out, "  %4zu %6zu surfaces %5.1f%% full\n", i, summary.pages[i].surfaces, 100 * summary.pages[i].fill);
    }
}

void PrintVisibility(const Summary& summary, std::string& out) {
    const size_t regions = summary.level.regions.empty() ? 0 : summary.level.regions.size() - 1;
    Print(out, "\nregions: %zu", regions);
    if (summary.visibility.rows == 0) {
        out += ", no visibility data\n";
    } else {
        Print(out, ", mean visible %.1f\n", summary.MeanVisible());
    }
}

void PrintEntity(const Entity& entity, std::string& out) {
    Print(out, "  %s\n", entity.TypeName());
    for (const Field& field : entity.fields) {
        const std::string value = ValueText(field.value);
        if (!value.empty()) Print(out, "      %-18s %s\n", field.name, value.c_str());
    }
    for (const Vec3& point : entity.points) {
        Print(out, "      %-18s %s\n", "point", ValueText(std::vector<float>(point.begin(), point.end())).c_str());
    }
}

}  // namespace

std::string ValueText(const FieldValue& value) {
    std::string out;
    if (const auto* text = std::get_if<std::string>(&value)) {
        out = *text;
    } else if (const auto* whole = std::get_if<int32_t>(&value)) {
        Print(out, "%d", *whole);
    } else if (const auto* flags = std::get_if<Flags>(&value)) {
        Print(out, "0x%X", flags->bits);
    } else {
        for (const float number : std::get<std::vector<float>>(value)) Print(out, out.empty() ? "%g" : " %g", number);
    }
    return out;
}

std::string SummaryText(const Summary& summary) {
    const levelcheck::LevelView& level = summary.level;
    std::string out;
    Print(out, "version %c, %zu bytes, %s\n", level.version, level.bytes.size(),
          level.meshLevel ? "a mesh level" : "a level of surfaces");
    for (const std::string& broken : level.broken) Print(out, "damaged: %s\n", broken.c_str());
    PrintChunks(level, out);
    out += '\n';
    for (const TableCount& table : summary.tables) Print(out, "%-16s %8zu\n", table.name, table.count);
    PrintInfo(level.info, out);
    PrintVisibility(summary, out);
    PrintPages(summary, out);
    PrintTextures(summary, out);
    if (summary.Sun() == nullptr) out += "\nno sun: the settings of the level come from another record\n";
    Print(out, "\nentities: %zu\n", summary.entities.size());
    for (const Entity& entity : summary.entities) PrintEntity(entity, out);
    return out;
}

}  // namespace klvtool
