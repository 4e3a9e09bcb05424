// Soundness checks over a level file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "levelcheck/level_view.h"

namespace levelcheck {

// One kind of fault, how often it was found, and its first example.
struct Fault {
    std::string kind;
    size_t count = 0;
    std::string first;
    bool tolerated = false;  // the compiler's own tolerances can cause it; counted, no fault of the file
};

struct CheckOptions {
    float litres = 1.0F;                    // -litres of the build: a mesh level's file does not hold it
    bool junctions = true;                  // look for vertices on other surfaces' edges
    uint64_t junctionBudget = 200'000'000;  // cells and vertices that the search looks at: some seconds
};

// All faults found, in a fixed order; a sound level gives none, or only tolerated ones.
std::vector<Fault> Check(const LevelView& level, const CheckOptions& options = {});

// Whether nothing but tolerated faults was found.
bool IsSound(const std::vector<Fault>& faults);

// One line per fault.
std::string Describe(const std::vector<Fault>& faults);

}  // namespace levelcheck
