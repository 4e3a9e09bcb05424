// A small map through all stages. Letters behind a "//" at its beginning turn options on.
#include <algorithm>
#include <cctype>
#include <string>
#include <utility>

#include "driver/run_program.h"
#include "driver/silent_display.h"
#include "fuzzing.h"
#include "k2k/stages.h"

namespace k2k::fuzz {
namespace {

constexpr std::pair<char, const char*> OptionLetters[] = {
    {'m', "-mesh"},           {'b', "-nobsp"},       {'s', "-solidsky"},  {'o', "-litmapsonly"},
    {'a', "-mergeacross"},    {'r', "-litv2"},       {'p', "-preview"},   {'d', "-nodetail"},
    {'f', "-forcedetail"},    {'z', "-zoomlevel 3"}, {'w', "-autozoom"},  {'i', "-invisibletonone"},
    {'j', "-notjunc"},        {'l', "-nofill"},      {'n', "-nh"},        {'k', "-nod3dlmaps"},
    {'v', "-verbose"},        {'q', "-quiet"},       {'u', "-noportals"}, {'c', "-sizeflat 64"},
    {'h', "-sethulls 2 0 1"}, {'e', "-eps 0.5"},     {'g', "-litres 2"},  {'t', "-threads 3"}};

std::string OptionsOf(std::string_view map) {
    std::string options;
    if (!map.starts_with("//")) return options;
    const std::string_view letters = map.substr(0, map.find('\n'));
    for (const auto& [letter, words] : OptionLetters)
        if (letters.find(letter) != std::string_view::npos) options.append(" ").append(words);
    return options;
}

bool IsDigit(char c) {
    return std::isdigit(static_cast<unsigned char>(c)) != 0;
}

// A number beyond 99 makes no other road through the program, only more faces and texels. Flags are no numbers; they
// follow a brace or a colon.
bool HasLargeNumbers(std::string_view map) {
    constexpr size_t MostDigits = 2;
    char before = ' ';  // the last mark in front of the number
    for (size_t at = map.find('{'); at < map.size(); ++at) {
        if (!IsDigit(map[at])) {
            if (map[at] != ' ') before = map[at];
            continue;
        }
        while (at + 1 < map.size() && map[at] == '0' && IsDigit(map[at + 1])) ++at;
        const size_t first = at;
        while (at < map.size() && IsDigit(map[at])) ++at;
        const bool exponent = at < map.size() && (map[at] == 'e' || map[at] == 'E');
        if (exponent || (at - first > MostDigits && before != '{' && before != ':')) return true;
        before = ' ';
        --at;
    }
    return false;
}

void Build(std::string_view map) {
    if (HasLargeNumbers(map)) return;
    PutFile("level.$$M", map);
    PutTexturesAndPalette();
    ResetBuild();
    SilentDisplay display;
    RunProgram("level -pal palette.raw -threads 1 -radbounce 2 -narrow 8 8 0 -fat 12 12 2" + OptionsOf(map), AllStages,
               display);
    ResetBuild();
}

}  // namespace
}  // namespace k2k::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    return k2k::fuzz::RunInput(data, size, 8192, k2k::fuzz::Build);
}
