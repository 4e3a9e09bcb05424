#include "klvtool/canvas.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace klvtool {
namespace {

constexpr uint32_t Smoothing = 2;  // fine pixels along a side of a pixel

// Glyphs of 3 x 5 dots, one row after the other from the top, the left dot highest.
struct Glyph {
    char sign;
    std::array<uint8_t, 5> rows;
};
constexpr int GlyphColumns = 3;
constexpr Glyph Glyphs[] = {
    {'0', {7, 5, 5, 5, 7}}, {'1', {2, 6, 2, 2, 7}}, {'2', {7, 1, 7, 4, 7}}, {'3', {7, 1, 7, 1, 7}},
    {'4', {5, 5, 7, 1, 1}}, {'5', {7, 4, 7, 1, 7}}, {'6', {7, 4, 7, 5, 7}}, {'7', {7, 1, 1, 2, 2}},
    {'8', {7, 5, 7, 5, 7}}, {'9', {7, 5, 7, 1, 7}}, {'A', {2, 5, 7, 5, 5}}, {'B', {6, 5, 6, 5, 6}},
    {'C', {3, 4, 4, 4, 3}}, {'D', {6, 5, 5, 5, 6}}, {'E', {7, 4, 6, 4, 7}}, {'F', {7, 4, 6, 4, 4}},
    {'G', {3, 4, 5, 5, 3}}, {'H', {5, 5, 7, 5, 5}}, {'I', {7, 2, 2, 2, 7}}, {'J', {1, 1, 1, 5, 2}},
    {'K', {5, 5, 6, 5, 5}}, {'L', {4, 4, 4, 4, 7}}, {'M', {5, 7, 7, 5, 5}}, {'N', {6, 5, 5, 5, 5}},
    {'O', {2, 5, 5, 5, 2}}, {'P', {6, 5, 6, 4, 4}}, {'Q', {2, 5, 5, 6, 3}}, {'R', {6, 5, 6, 5, 5}},
    {'S', {3, 4, 2, 1, 6}}, {'T', {7, 2, 2, 2, 2}}, {'U', {5, 5, 5, 5, 7}}, {'V', {5, 5, 5, 5, 2}},
    {'W', {5, 5, 7, 7, 5}}, {'X', {5, 5, 2, 5, 5}}, {'Y', {5, 5, 2, 2, 2}}, {'Z', {7, 1, 2, 4, 7}},
    {'-', {0, 0, 7, 0, 0}}, {'.', {0, 0, 0, 0, 2}}, {',', {0, 0, 0, 2, 4}}, {':', {0, 2, 0, 2, 0}},
};

uint8_t Mixed(uint8_t below, uint8_t above, double opacity) {
    return static_cast<uint8_t>(std::lround(below + (static_cast<double>(above) - below) * opacity));
}

// Where the polygon's sides cross the middle of a row, ascending.
std::vector<double> Crossings(std::span<const Spot> polygon, double y) {
    std::vector<double> crossings;
    for (size_t i = 0; i < polygon.size(); i++) {
        const Spot &a = polygon[i], &b = polygon[(i + 1) % polygon.size()];
        if ((a.y <= y) == (b.y <= y)) continue;
        crossings.push_back(a.x + (y - a.y) / (b.y - a.y) * (b.x - a.x));
    }
    std::sort(crossings.begin(), crossings.end());
    return crossings;
}

// The fine pixels whose middles lie between two coordinates; none when one of them is no number.
std::array<uint32_t, 2> Range(double low, double high, uint32_t limit) {
    if (std::isnan(low) || std::isnan(high)) return {0, 0};
    const auto at = [&](double v) {
        return static_cast<uint32_t>(std::clamp(std::ceil(v * Smoothing - 0.5), 0.0, static_cast<double>(limit)));
    };
    return {at(low), at(high)};
}

}  // namespace

Canvas::Canvas(uint32_t width, uint32_t height, Rgb background)
    : width_(width), height_(height), fine_(width * Smoothing, height * Smoothing, background) {}

void Canvas::Blend(uint32_t x, uint32_t y, Rgb colour, double opacity) {
    Rgb& pixel = fine_.At(x, y);
    pixel = {Mixed(pixel.r, colour.r, opacity), Mixed(pixel.g, colour.g, opacity), Mixed(pixel.b, colour.b, opacity)};
}

void Canvas::Fill(std::span<const Spot> polygon, Rgb colour, double opacity) {
    const auto [low, high] =
        std::minmax_element(polygon.begin(), polygon.end(), [](const Spot& a, const Spot& b) { return a.y < b.y; });
    if (low == polygon.end()) return;
    const auto [firstRow, endRow] = Range(low->y, high->y, fine_.height);
    for (uint32_t y = firstRow; y < endRow; y++) {
        const std::vector<double> crossings = Crossings(polygon, (y + 0.5) / Smoothing);
        for (size_t i = 0; i + 1 < crossings.size(); i += 2) {
            const auto [first, end] = Range(crossings[i], crossings[i + 1], fine_.width);
            for (uint32_t x = first; x < end; x++) Blend(x, y, colour, opacity);
        }
    }
}

void Canvas::Line(Spot from, Spot to, double width, Rgb colour, double opacity) {
    const double dx = to.x - from.x, dy = to.y - from.y, length = std::hypot(dx, dy);
    if (!(length > 0)) return;
    const double ox = -dy / length * width / 2, oy = dx / length * width / 2;
    const std::array outline{Spot{from.x + ox, from.y + oy}, Spot{to.x + ox, to.y + oy}, Spot{to.x - ox, to.y - oy},
                             Spot{from.x - ox, from.y - oy}};
    Fill(outline, colour, opacity);
}

void Canvas::Disc(Spot centre, double radius, Rgb colour) {
    constexpr int Corners = 24;
    std::array<Spot, Corners> outline;
    for (int i = 0; i < Corners; i++) {
        const double angle = 2 * std::numbers::pi * i / Corners;
        outline[static_cast<size_t>(i)] = {centre.x + radius * std::cos(angle), centre.y + radius * std::sin(angle)};
    }
    Fill(outline, colour);
}

void Canvas::Text(Spot place, std::string_view text, Rgb colour, double size) {
    for (const char sign : text) {
        const auto* glyph =
            std::find_if(std::begin(Glyphs), std::end(Glyphs), [&](const Glyph& g) { return g.sign == sign; });
        for (size_t row = 0; glyph != std::end(Glyphs) && row < glyph->rows.size(); row++) {
            for (int column = 0; column < GlyphColumns; column++) {
                if ((glyph->rows[row] >> (GlyphColumns - 1 - column) & 1) == 0) continue;
                const double x = place.x + column * size, y = place.y + static_cast<double>(row) * size;
                Fill(std::array{Spot{x, y}, Spot{x + size, y}, Spot{x + size, y + size}, Spot{x, y + size}}, colour);
            }
        }
        place.x += (GlyphColumns + 1) * size;
    }
}

double Canvas::TextWidth(std::string_view text, double size) {
    return static_cast<double>(text.size()) * (GlyphColumns + 1) * size;
}

Image Canvas::Finished() const {
    Image image(width_, height_);
    for (uint32_t y = 0; y < height_; y++) {
        for (uint32_t x = 0; x < width_; x++) {
            std::array<uint32_t, 3> sum{};
            for (uint32_t i = 0; i < Smoothing * Smoothing; i++) {
                const Rgb& fine = fine_.At(x * Smoothing + i % Smoothing, y * Smoothing + i / Smoothing);
                sum[0] += fine.r;
                sum[1] += fine.g;
                sum[2] += fine.b;
            }
            const auto mean = [&](size_t i) { return static_cast<uint8_t>(sum[i] / (Smoothing * Smoothing)); };
            image.At(x, y) = {mean(0), mean(1), mean(2)};
        }
    }
    return image;
}

}  // namespace klvtool
