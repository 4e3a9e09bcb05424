// Images from a WAD file into the level.
#pragma once

#include <string>
#include <string_view>

#include "levelfile/texture_data.h"

namespace k2k {

// Upper case, also of the ANSI code page's umlauts, over at most 16 bytes.
TextureName NormaliseLumpName(std::string_view source);

// Fills the texture blob: every name of the level and every lump of the WAD. wadKey is the level entity's "wad" value,
// mapPath the map that named it (a relative file is also looked for beside it).
void LoadTextures(const std::string& wadKey, const std::string& mapPath);

}  // namespace k2k
