// The texture images and the palette of a level.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "klvtool/image.h"
#include "levelcheck/level_view.h"

namespace klvtool {

using Palette = std::array<Rgb, 256>;

// Without one in the level, a ramp of greys.
Palette ReadPalette(const levelcheck::LevelView& level);
bool HasPalette(const levelcheck::LevelView& level);

struct Texture {
    std::string name;  // "" where the level has no image
    uint32_t width = 0, height = 0;
    std::span<const uint8_t> pixels;  // palette indices, row by row; empty when the image is not of this kind
};

// One for each number that a texinfo can name.
std::vector<Texture> ReadTextures(const levelcheck::LevelView& level);

// The texture in colour; a small checkered one for a texture without pixels.
Image TextureImage(const Texture& texture, const Palette& palette);
// The mean colour.
Rgb TextureColour(const Texture& texture, const Palette& palette);

}  // namespace klvtool
