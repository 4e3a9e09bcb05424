// The one table of command-line options: the parser walks it, and the reference pages are made from it.
#pragma once

#include <cstdint>
#include <limits>
#include <span>
#include <string_view>
#include <variant>

#include "driver/build_options.h"

namespace k2k {

// What an option's arguments are, and where they go. One type for each kind of argument list.
struct IgnoredFlag {};
struct Flag {
    bool BuildOptions::*member;
};
struct SpaceFlag {
    ColourSpace BuildOptions::*member;
    ColourSpace value;
};
struct IntValue {
    int32_t BuildOptions::*member;
    int32_t least = std::numeric_limits<int32_t>::min();
    int32_t most = std::numeric_limits<int32_t>::max();
};
// A surface size; too small a value leaves the member as it is.
struct SizeValue {
    int32_t BuildOptions::*member;
};
struct ShortValue {
    uint16_t BuildOptions::*member;
};
struct FloatValue {
    float BuildOptions::*member;
    float least = -std::numeric_limits<float>::infinity();
    float most = std::numeric_limits<float>::infinity();
};
struct FloatTriple {
    std::array<float, 3> BuildOptions::*member;
};
struct IntTriple {
    std::array<int32_t, 3> BuildOptions::*member;
};
// One of the fog colours.
struct FogColour {
    size_t index;
};
// All tokens up to the next option, joined without separator.
struct JoinedText {
    void (*store)(std::string_view text);
};

using OptionTarget = std::variant<IgnoredFlag, Flag, SpaceFlag, IntValue, SizeValue, ShortValue, FloatValue,
                                  FloatTriple, IntTriple, FogColour, JoinedText>;

constexpr int32_t MinSurfaceSize = 16;
constexpr int32_t MaxSurfaceSize = 996;

// Headings of the reference, in their order there.
enum class OptionTopic { Report, Modes, Map, Hulls, Surfaces, Visibility, Lighting, Colours, NoEffect, Count };

struct OptionRow {
    std::string_view word;
    OptionTarget target;
    OptionTopic topic;
    std::string_view arguments;  // names for the reference, empty for flags
    std::string_view help;
    std::string_view defaultText = "";  // where the member's initial value is not the default
};

// In the order in which the parser tries them; of rows with the same word only the first is ever reached.
std::span<const OptionRow> OptionTable();

}  // namespace k2k
