// Palettes in files: 256 colours as a raw palette or out of a PCX, BMP or LBM image.
#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace k2k {

// 256 entries of red, green, blue.
using PaletteColours = std::array<uint8_t, 768>;

// Each reads the palette of a file; or records an error with the path (see RecordError), leaves out as it is, and
// returns false. A raw palette without a path is fatal.
bool ReadRawPalette(const std::string& path, PaletteColours& out);
bool ReadPcxPalette(const std::string& path, PaletteColours& out);
bool ReadBmpPalette(const std::string& path, PaletteColours& out);
bool ReadLbmPalette(const std::string& path, PaletteColours& out);

// Writes a raw palette; or records an error and returns false.
bool WriteRawPalette(const std::string& path, const PaletteColours& palette);

}  // namespace k2k
