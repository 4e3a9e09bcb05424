// visprobe: shoots random segments through a level and counts the regions that should see each other and do not.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include "levelcheck/check.h"
#include "levelcheck/visibility_probe.h"

namespace {

std::vector<uint8_t> ReadWhole(const char* path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

uint64_t NumberOr(uint64_t fallback, const char* text) {
    return text == nullptr ? fallback : std::strtoull(text, nullptr, 10);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2 || argc > 4) {
        std::fputs("visprobe LEVEL [SEGMENTS [SEED]]\n    status 1: misses; 2: not a sound level\n", stderr);
        return 2;
    }
    const levelcheck::LevelView level = levelcheck::ReadLevel(ReadWhole(argv[1]));
    const auto faults = levelcheck::Check(level, {.junctions = false});
    if (!levelcheck::IsSound(faults)) {
        std::fputs(levelcheck::Describe(faults).c_str(), stderr);
        return 2;
    }
    const uint64_t segments = NumberOr(100000, argv[2]), seed = NumberOr(1, argc > 3 ? argv[3] : nullptr);
    const levelcheck::ProbeResult result = levelcheck::ProbeVisibility(level, segments, seed);
    std::printf("%llu segments clear of %llu, %llu misses\n", static_cast<unsigned long long>(result.clear),
                static_cast<unsigned long long>(result.tried), static_cast<unsigned long long>(result.misses));
    if (result.misses != 0) std::printf("first: %s\n", result.firstMiss.c_str());
    return result.misses == 0 ? 0 : 1;
}
