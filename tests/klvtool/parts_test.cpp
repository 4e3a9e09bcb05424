// Small parts of klvtool: JSON text, text in UTF-8, drawing.
#include <limits>

#include "klvtool/canvas.h"
#include "klvtool/entities.h"
#include "klvtool/json.h"
#include "klvtool/tool.h"

namespace k2k::test {
namespace {

using klvtool::Canvas;
using klvtool::Image;
using klvtool::Json;
using klvtool::Rgb;
using klvtool::Spot;

TEST(AJsonText, SeparatesValuesByCommas) {
    Json json;
    json.BeginObject()
        .Key("a")
        .Int(-1)
        .Key("b")
        .BeginArray()
        .BeginObject()
        .EndObject()
        .Bool(true)
        .EndArray()
        .EndObject();
    EXPECT_EQ(json.Take(), "{\"a\":-1,\"b\":[{},true]}");
}

TEST(AJsonText, EscapesQuotesAndControls) {
    EXPECT_EQ(Json().Text("a\"b\\c\n\x1F").Take(), "\"a\\\"b\\\\c\\u000a\\u001f\"");
}

TEST(AJsonText, HasNoWordForEndlessNumbers) {
    EXPECT_EQ(Json().BeginArray().Number(0.1F).Number(std::numeric_limits<double>::infinity()).EndArray().Take(),
              "[0.1,0]");
}

constexpr Rgb Black{0, 0, 0}, White{255, 255, 255};

TEST(ACanvas, FillsThePixelsInsideAPolygon) {
    Canvas canvas(4, 4, Black);
    canvas.Fill(std::array{Spot{1, 1}, Spot{3, 1}, Spot{3, 3}, Spot{1, 3}}, White);
    const Image image = canvas.Finished();
    for (uint32_t y = 0; y < 4; y++) {
        for (uint32_t x = 0; x < 4; x++) {
            const bool inside = x >= 1 && x < 3 && y >= 1 && y < 3;
            EXPECT_EQ(image.At(x, y), inside ? White : Black) << x << ' ' << y;
        }
    }
}

TEST(ACanvas, SmoothsEdges) {
    Canvas canvas(2, 1, Black);
    canvas.Fill(std::array{Spot{0, 0}, Spot{1.5, 0}, Spot{1.5, 1}, Spot{0, 1}}, White);
    EXPECT_EQ(canvas.Finished().At(1, 0), (Rgb{127, 127, 127}));
}

TEST(ACanvas, CutsOffWhatLiesOutside) {
    Canvas canvas(3, 3, Black);
    canvas.Fill(std::array{Spot{-1e9, -1e9}, Spot{1e9, -1e9}, Spot{1e9, 1e9}, Spot{-1e9, 1e9}}, White);
    canvas.Line({-50, 1}, {50, 1}, 1e9, White);
    canvas.Disc({-900, 4}, 2, White);
    EXPECT_EQ(canvas.Finished().At(2, 2), White);
}

TEST(ACanvas, DrawsNothingWherePlacesAreNoNumbers) {
    constexpr double Endless = std::numeric_limits<double>::infinity();
    Canvas canvas(3, 3, Black);
    canvas.Fill(std::array{Spot{-Endless, 3}, Spot{-Endless, 0}, Spot{3, 0}, Spot{3, 3}}, White);
    EXPECT_EQ(canvas.Finished().At(1, 1), Black);
}

TEST(ToUtf8, WritesTheAnsiCodePageInTwoBytes) {
    EXPECT_EQ(klvtool::ToUtf8("a\xE4z"), "a\xC3\xA4z");
}

}  // namespace
}  // namespace k2k::test
