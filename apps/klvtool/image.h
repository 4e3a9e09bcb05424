// Pictures of 24 bits, and PNG files of them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace klvtool {

struct Rgb {
    uint8_t r = 0, g = 0, b = 0;
    bool operator==(const Rgb&) const = default;
};

struct Image {
    Image() = default;
    Image(uint32_t columns, uint32_t rows, Rgb fill = {})
        : width(columns), height(rows), pixels(size_t{columns} * rows, fill) {}

    uint32_t width = 0, height = 0;
    std::vector<Rgb> pixels;  // row by row, from the top

    Rgb& At(uint32_t x, uint32_t y) { return pixels[size_t{y} * width + x]; }
    const Rgb& At(uint32_t x, uint32_t y) const { return pixels[size_t{y} * width + x]; }
};

// The image as a whole PNG file. Neither side may be zero.
std::vector<uint8_t> EncodePng(const Image& image);
void WritePng(const std::string& path, const Image& image);

}  // namespace klvtool
