// The one record of all options and modes of a build. The parser writes it, every stage reads it.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace k2k {

// Colour spaces of the palette options; None means "as the colour space of the mixture table".
enum class ColourSpace : int32_t { None = 0, Rgb = 1, Hsl = 2, Hsv = 3 };

// Format of the palette file, by its extension.
enum class PaletteKind : int32_t { Raw = 0, Pcx = 1, Bmp = 2, Lbm = 3 };

struct ColourRange {
    uint16_t start = 0;
    uint16_t length = 0;
};

constexpr int MaxColourRanges = 24;
constexpr int MaxThreads = 32;

// Member names are the command-line words. The initial values are those that hold before any parse; ResetOptions() sets
// only part of them again, so the others survive a second parse (the dialog's).
struct BuildOptions {
    // Report
    bool verbose = false, quiet = false, writelog = false, close = false, dialog = false;
    // Modes
    bool entsonly = false, texsonly = false, lightsonly = false, preview = false, litmapsonly = false, notables = false,
         noportals = false, nobsp = false, mesh = false, litv2 = false;
    // Map input
    bool hiprec = true, solidsky = false, nodetail = false, forcedetail = false, invisibletonone = false,
         autozoom = false;
    float zoomlevel = 1.0F, bound = 56000.0F, eps = 0.05F;
    // Hulls: width, height, offset
    std::array<float, 3> narrow{32.0F, 32.0F, 0.0F}, fat{64.0F, 48.0F, 8.0F};
    std::array<int32_t, 3> sethulls{0, 1, 2};
    bool nh = false;
    // BSP and surfaces; sizes in texels, 0 means "auto"
    bool mergeacross = false, nofill = false, notjunc = false;
    int32_t sizeshaded = 236, sizeflat = 0, sizeturb = 0;
    // Visibility; threads is set to the processor count by the driver at start
    bool fast = false, keepportal = false;
    int32_t level = 2, threads = 1;
    // Lighting; colours in percent
    float gamma = 1.5F, lmambient = 50.0F, az = 325.0F, el = 60.0F, litres = 1.0F, litcomp = 0.5F, litscale = 0.5F;
    int32_t litmax = 196, jitter = 8, radsubdiv = 64, radbounce = 16;
    bool mono = false, nod3dlmaps = false;
    std::array<float, 3> sunrgb{}, ambrgb{};
    std::array<std::array<int32_t, 3>, 4> fog{};
    std::array<bool, 4> fogset{};
    // Colour stage
    ColourSpace colorspace = ColourSpace::Rgb, lightspace = ColourSpace::None, shadespace = ColourSpace::None;
    std::string palpath, outpal, colormappath, mixtabpath;
    PaletteKind palkind = PaletteKind::Raw;
    std::array<ColourRange, MaxColourRanges> ranges{};
    uint16_t rangecount = 0;
    bool npal = false, nmixtab = false, ncolormap = false, palgiven = false;
    // Accepted, without effect
    bool draw = false, noclip = false, ml = false;
    float dist = 1.0F, f1 = 1.0F, f2 = 1.0F, f3 = 1.0F;
    uint16_t d = 1, b = 2;
};

// The record of the running build.
BuildOptions& Options();

// Where the build's files are, as derived from the map name. Empty until a map was named.
struct BuildPaths {
    std::string MapPath;     // the source map, always with an extension
    std::string LevelPath;   // MapPath with ".klv"
    std::string PortalPath;  // LevelPath with ".$$p"; set when a stage forms it
    std::string VisPath;     // ".$$v": never written, only removed
    std::string EntPath;     // ".$$e": never written, only removed
};
BuildPaths& Paths();

// Sets the options that do not outlive a parse back to their defaults; leaves all others alone.
void ResetOptions();

// Parses a command string into Options() and Paths(). Returns whether the options are valid, and stores it in
// OptionsValid.
bool ParseOptions(std::string_view text);

// Settles options that depend on each other; returns whether a map and a palette were given.
bool ValidateOptions();

// Turns on -mesh (a map holds a mesh block) and settles the options that depend on it.
void EnableMesh();

extern bool OptionsValid;

// Number of processors of the machine, in 1 to 32: the start value of -threads.
int32_t GetWorkerCount();

// For tests: every option and path as before any parse.
void ResetAllOptionsForTest();

}  // namespace k2k
