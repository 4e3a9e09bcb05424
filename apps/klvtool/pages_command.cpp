#include <algorithm>
#include <filesystem>

#include "klvtool/command.h"
#include "klvtool/lightmaps.h"
#include "klvtool/textures.h"

namespace klvtool {
namespace {

namespace fs = std::filesystem;

// A number of three digits and, for textures, a name that any file system takes.
std::string FileName(const char* kind, size_t number, const std::string& name = "") {
    std::string digits = std::to_string(number);
    digits.insert(0, digits.size() < 3 ? 3 - digits.size() : 0, '0');
    std::string safe = name;
    const auto isPlain = [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
    };
    std::replace_if(
        safe.begin(), safe.end(), [&](char c) { return !isPlain(c); }, '-');
    return std::string(kind) + "-" + digits + (safe.empty() ? "" : "-" + safe) + ".png";
}

// 16 x 16 colours, as squares.
Image PaletteImage(const Palette& palette) {
    constexpr uint32_t Side = 16, Square = 16;
    Image image(Side * Square, Side * Square);
    for (uint32_t y = 0; y < image.height; y++) {
        for (uint32_t x = 0; x < image.width; x++) image.At(x, y) = palette[y / Square * Side + x / Square];
    }
    return image;
}

}  // namespace

int RunPages(Arguments arguments) {
    const ParsedArguments parsed = ParseArguments(arguments, 2, "pages LEVEL DIR");
    const levelcheck::LevelView level = LoadLevel(parsed.names[0]);
    const fs::path folder = parsed.names[1];
    std::error_code error;
    fs::create_directories(folder, error);
    if (!fs::is_directory(folder)) throw std::runtime_error("can't make the folder " + folder.string());

    for (size_t i = 0; i < level.pageCount; i++) WritePng((folder / FileName("page", i)).string(), PageImage(level, i));
    const Palette palette = ReadPalette(level);
    if (HasPalette(level)) WritePng((folder / "palette.png").string(), PaletteImage(palette));
    const std::vector<Texture> textures = ReadTextures(level);
    for (size_t i = 0; i < textures.size(); i++) {
        if (textures[i].pixels.empty()) continue;
        WritePng((folder / FileName("texture", i, textures[i].name)).string(), TextureImage(textures[i], palette));
    }
    return 0;
}

}  // namespace klvtool
