// The palette in the level file.
#pragma once

#include <string>

#include "colour/palette_files.h"

namespace k2k {

// Reads the level, replaces its palette lump, and saves it. False when the level cannot be read or saved.
bool WritePaletteLump(const std::string& levelPath, const PaletteColours& palette);

}  // namespace k2k
