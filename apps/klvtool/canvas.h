// A picture to draw on: polygons, lines, discs and small text, smoothed at the end.
#pragma once

#include <span>
#include <string_view>

#include "klvtool/image.h"

namespace klvtool {

struct Spot {
    double x = 0, y = 0;
};

class Canvas {
  public:
    Canvas(uint32_t width, uint32_t height, Rgb background);

    // Coordinates are pixels of the finished picture, y down; what lies outside is cut off. Opacity is 0 to 1.
    void Fill(std::span<const Spot> polygon, Rgb colour, double opacity = 1);
    void Line(Spot from, Spot to, double width, Rgb colour, double opacity = 1);
    void Disc(Spot centre, double radius, Rgb colour);
    // Capital letters, digits and a few signs; anything else is a blank. The place is the upper left corner.
    void Text(Spot place, std::string_view text, Rgb colour, double size = 2);
    static double TextWidth(std::string_view text, double size = 2);

    Image Finished() const;

  private:
    void Blend(uint32_t x, uint32_t y, Rgb colour, double opacity);

    uint32_t width_, height_;
    Image fine_;
};

}  // namespace klvtool
