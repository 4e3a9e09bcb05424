// What differs between two levels.
#pragma once

#include <string>
#include <vector>

#include "levelcheck/level_view.h"

namespace klvtool {

// One line a chunk (or a part of one) that differs; none for levels of the same bytes.
std::vector<std::string> CompareLevels(const levelcheck::LevelView& a, const levelcheck::LevelView& b);

}  // namespace klvtool
