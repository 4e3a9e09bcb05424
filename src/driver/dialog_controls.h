// The options dialog without its window: what its controls are, how they are filled from the options, and the command
// string that a state of them stands for.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "driver/build_options.h"

namespace k2k {

inline constexpr std::string_view DialogTitle = "Map Compiler";
inline constexpr std::string_view DialogVersion = "v7.20";
inline constexpr std::string_view BuildGroupLabel = " Build / Update ";
inline constexpr std::string_view MoreLabel = ">>>";  // shows and hides the lower half, which starts hidden
inline constexpr std::string_view DefaultBuildLabel = "Default build";

// clang-format off
enum class Slider : size_t {
    Visibility, Light, Warnings, Detail, Cpus, Gamma, Zoom, Jitter, Ambient, Shaded, Flat, Turbulence, Scale, Compress,
    Limit, LightScale, Subdivision, Bounce, Count
};
enum class CheckBox : size_t {
    HighPrecision, LitMapsOnly, WriteLog, Meshes, MergeAcross, LightingV2, Close, SolidSky, InvisibleToNone, Count
};
// clang-format on
enum class BuildChoice : size_t { Bsp, Simple, Entities, Textures, Lights, Count };
// clang-format off
enum class TextField : size_t {
    Bound, FatWidth, FatHeight, FatOffset, NarrowWidth, NarrowHeight, NarrowOffset, Free, Count
};
// clang-format on

// A slider's position is a whole number from least to most.
struct SliderRow {
    std::string_view label;
    int least, most;
    std::string (*shown)(int position);
    std::string (*words)(int position);           // what it adds to the command string
    double (*fill)(const BuildOptions& options);  // its position; may lie outside of the range
    std::string_view toolTip;
};
struct CheckBoxRow {
    std::string_view label;
    std::string_view words;
    bool BuildOptions::*option;
};
struct BuildChoiceRow {
    std::string_view label;
    std::string_view words;
};
// A label with one to three fields behind it.
struct TextRow {
    std::string_view label;
    std::string_view words;
    TextField first;
    size_t count;
};

std::span<const SliderRow> SliderRows();            // by Slider
std::span<const CheckBoxRow> CheckBoxRows();        // by CheckBox
std::span<const BuildChoiceRow> BuildChoiceRows();  // by BuildChoice
std::span<const TextRow> TextRows();                // in the order of the command string

// The state of all controls.
struct DialogControls {
    std::array<int, static_cast<size_t>(Slider::Count)> sliders{};
    std::array<bool, static_cast<size_t>(CheckBox::Count)> checks{};
    BuildChoice choice = BuildChoice::Bsp;
    std::array<std::string, static_cast<size_t>(TextField::Count)> texts;

    int& operator[](Slider slider) { return sliders[static_cast<size_t>(slider)]; }
    bool& operator[](CheckBox box) { return checks[static_cast<size_t>(box)]; }
    std::string& operator[](TextField field) { return texts[static_cast<size_t>(field)]; }
};

// The controls as the options stand.
DialogControls FillControls(const BuildOptions& options);

// The command string of a state of the controls.
std::string ComposeCommand(const DialogControls& controls);

// The lightmap scale of a slider position from 0 to 50: 0.01 at its left end, 1.0 in the middle, 8.0 at its right end;
// and the nearest whole position of a scale, outside of the range for a scale outside of it.
double ScaleOfPosition(int position);
double PositionOfScale(double scale);

}  // namespace k2k
