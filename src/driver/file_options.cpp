// Options whose values are checked while they are parsed: file names and colour ranges.
#include "driver/file_options.h"

#include <cstdlib>
#include <string>
#include <utility>

#include "driver/build_log.h"
#include "driver/build_options.h"
#include "driver/text.h"

namespace k2k {

namespace {

constexpr size_t MaxFileName = 260;
constexpr int MaxRangeStart = 255;
constexpr int PaletteSize = 256;

[[noreturn]] void EndProgram() {
    throw ProgramExit(-1);
}

void CheckLength(std::string_view name) {
    if (name.size() <= MaxFileName) return;
    BuildLog("Too long name :  %s\n", std::string(name).c_str());
    EndProgram();
}

// Where the name's extension begins; npos when it has none. The first character is not looked at, and "\\" ends the
// search while "/" does not.
size_t FindExtension(std::string_view name) {
    for (size_t i = name.size(); i > 1; --i) {
        if (name[i - 1] == '\\') break;
        if (name[i - 1] == '.') return i - 1;
    }
    return std::string_view::npos;
}

void StoreName(std::string& path, std::string_view text) {
    if (!path.empty()) {
        BuildLog("Name redefinition :  %s\n", std::string(text).c_str());
        EndProgram();
    }
    CheckLength(text);
    path = text;
    if (FindExtension(path) == std::string::npos) path += ".lmp";
}

PaletteKind KindOfExtension(std::string_view extension) {
    if (EqualNoCase(extension, ".pcx")) return PaletteKind::Pcx;
    if (EqualNoCase(extension, ".bmp")) return PaletteKind::Bmp;
    if (EqualNoCase(extension, ".lbm")) return PaletteKind::Lbm;
    return PaletteKind::Raw;
}

// Moves text behind a decimal number, which is kept in its low 16 bits; false where none stands.
bool ReadShort(const char*& text, uint16_t& value) {
    char* end = nullptr;
    value = static_cast<uint16_t>(std::strtol(text, &end, 10));
    return std::exchange(text, end) != end;
}

bool ReadRange(const char* text, ColourRange& range) {
    if (!ReadShort(text, range.start) || *text++ != ',' || !ReadShort(text, range.length)) return false;
    return range.start <= MaxRangeStart && range.length <= PaletteSize && range.start + range.length <= PaletteSize;
}

}  // namespace

void SetPalettePath(std::string_view text) {
    std::string& path = Options().palpath;
    StoreName(path, text);
    const size_t extension = FindExtension(path);
    if (extension == std::string::npos) {
        BuildLog("Invalid palette file extention !\n");
        EndProgram();
    }
    Options().palkind = KindOfExtension(std::string_view(path).substr(extension));
}

void SetColormapPath(std::string_view text) {
    StoreName(Options().colormappath, text);
}

void SetMixtabPath(std::string_view text) {
    StoreName(Options().mixtabpath, text);
}

void SetPaletteOutput(std::string_view text) {
    if (!Options().outpal.empty()) return;
    CheckLength(text);
    Options().outpal = text;
}

void AddRange(std::string_view text) {
    BuildOptions& o = Options();
    if (o.rangecount == MaxColourRanges) {
        BuildLog("\tToo many ranges. Maximum is 24\n");
        EndProgram();
    }
    ColourRange& range = o.ranges[o.rangecount];
    const std::string terminated(text);
    if (!ReadRange(terminated.c_str(), range)) {
        BuildLog("Invalid option :  %s %s\n", "-r", terminated.c_str());
        EndProgram();
    }
    ++o.rangecount;
}

}  // namespace k2k
