// Stages that only note that they ran.
#pragma once

#include <string>

#include "driver/run_program.h"

namespace k2k::test {

// The letters of the stages that ran, in their order.
inline std::string ran;

template <char Letter>
int Note() {
    ran += Letter;
    return 0;
}

constexpr StageEntries NotedStages{.geometry = Note<'g'>,
                                   .visibility = Note<'v'>,
                                   .lighting = Note<'l'>,
                                   .radiosity = Note<'r'>,
                                   .colours = Note<'c'>};

}  // namespace k2k::test
