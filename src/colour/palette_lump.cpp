#include "colour/palette_lump.h"

#include <algorithm>

#include "levelfile/file_klv.h"
#include "levelfile/texture_data.h"

namespace k2k {

namespace {

// Four offsets, unused, ahead of the palette.
constexpr size_t HeadSize = 16;

}  // namespace

bool WritePaletteLump(const std::string& levelPath, const PaletteColours& palette) {
    RequireLevel(levelPath);  // it is not to come back as a palette alone
    CFileKLV file(levelPath);
    if (!file.Open(false) || !file.Load()) return false;

    std::vector<uint8_t>& lump = Textures().paletteLump;
    lump.resize(HeadSize + palette.size());
    std::fill_n(lump.begin(), HeadSize, uint8_t{0});
    std::copy(palette.begin(), palette.end(), lump.begin() + HeadSize);
    return file.Save() && file.Close();
}

}  // namespace k2k
