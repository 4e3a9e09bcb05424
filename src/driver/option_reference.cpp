#include "driver/option_reference.h"

#include <array>
#include <cstdio>
#include <limits>

#include "driver/option_table.h"

namespace k2k {

namespace {

constexpr std::array<const char*, static_cast<size_t>(OptionTopic::Count)> Headings{
    "Report", "Modes", "Map", "Hulls", "Surfaces", "Visibility", "Lighting", "Colours", "Without effect"};

std::string Text(float value) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%g", value);
    return text.data();
}
std::string Text(int32_t value) {
    return std::to_string(value);
}

template <typename Triple>
std::string TextOf(const Triple& triple) {
    return Text(triple[0]) + ' ' + Text(triple[1]) + ' ' + Text(triple[2]);
}

// The value that an option has when it is not given.
struct DefaultText {
    std::string operator()(IgnoredFlag) const { return ""; }
    std::string operator()(Flag flag) const { return o.*flag.member ? "on" : "off"; }
    std::string operator()(SpaceFlag flag) const { return o.*flag.member == flag.value ? "on" : "off"; }
    std::string operator()(IntValue value) const { return Text(o.*value.member); }
    std::string operator()(SizeValue value) const { return Text(o.*value.member); }
    std::string operator()(ShortValue value) const { return Text(int32_t{o.*value.member}); }
    std::string operator()(FloatValue value) const { return Text(o.*value.member); }
    std::string operator()(FloatTriple triple) const { return TextOf(o.*triple.member); }
    std::string operator()(IntTriple triple) const { return TextOf(o.*triple.member); }
    std::string operator()(FogColour fog) const { return TextOf(o.fog[fog.index]); }
    std::string operator()(JoinedText) const { return ""; }

    BuildOptions o{};
};

// The values that an option takes; others are moved to the nearest one.
struct RangeText {
    template <typename Any>
    std::string operator()(Any) const {
        return "";
    }
    std::string operator()(SizeValue) const {
        return Text(MinSurfaceSize) + " to " + Text(MaxSurfaceSize) + "; smaller values are ignored";
    }
    std::string operator()(IntValue value) const { return Between(value); }
    std::string operator()(FloatValue value) const { return Between(value); }

    template <typename Value>
    static std::string Between(Value value) {
        const Value open{value.member};
        if (value.most == open.most) return "";
        if (value.least == open.least) return "at most " + Text(value.most);
        return Text(value.least) + " to " + Text(value.most);
    }
};

std::string DefaultOf(const OptionRow& row) {
    return row.defaultText.empty() ? std::visit(DefaultText{}, row.target) : std::string(row.defaultText);
}

std::string RangeOf(const OptionRow& row) {
    return std::visit(RangeText{}, row.target);
}

// The word as it is written in a command: one with a blank in it needs double quotes.
std::string WordOf(const OptionRow& row) {
    const std::string word(row.word);
    return word.find(' ') == std::string::npos ? word : '"' + word + '"';
}

// Calls add for each topic and then for the topic's rows.
template <typename AddHeading, typename AddRow>
void ForEachRow(AddHeading addHeading, AddRow addRow) {
    for (size_t topic = 0; topic < Headings.size(); ++topic) {
        addHeading(Headings[topic]);
        for (const OptionRow& row : OptionTable())
            if (row.topic == static_cast<OptionTopic>(topic)) addRow(row);
    }
}

// Text for the page formatter, to which "-" is a hyphen.
std::string Escaped(std::string_view text) {
    std::string escaped;
    for (const char c : text) escaped += c == '-' ? std::string("\\-") : std::string(1, c);
    return escaped;
}

}  // namespace

std::string OptionsAsMarkdown() {
    std::string page;
    ForEachRow(
        [&](const char* heading) {
            page += std::string("\n## ") + heading + "\n\n| Option | Default | Range | Effect |\n|---|---|---|---|\n";
        },
        [&](const OptionRow& row) {
            page += "| `" + WordOf(row);
            if (!row.arguments.empty()) page.append(" ").append(row.arguments);
            page += "` | " + DefaultOf(row) + " | " + RangeOf(row) + " | ";
            page.append(row.help).append(" |\n");
        });
    return page;
}

std::string OptionsAsManPage() {
    std::string page;
    ForEachRow([&](const char* heading) { page += std::string(".SS ") + heading + '\n'; },
               [&](const OptionRow& row) {
                   page += ".TP\n.B " + Escaped(WordOf(row));
                   if (!row.arguments.empty()) page += "\\fR \\fI" + Escaped(row.arguments) + "\\fR";
                   page += '\n' + Escaped(row.help) + '\n';
                   const std::string range = RangeOf(row);
                   if (!range.empty()) page += "Range: " + range + ".\n";
                   const std::string fallback = DefaultOf(row);
                   if (!row.arguments.empty() && !fallback.empty()) page += "Default: " + fallback + ".\n";
               });
    return page;
}

}  // namespace k2k
