#include "klvtool/textures.h"

#include <algorithm>
#include <cstring>
#include <set>

#include "klvtool/entities.h"

namespace klvtool {
namespace {

constexpr int PaletteChunk = 0, TextureChunk = 2;
constexpr size_t PaletteHead = 16, PaletteBytes = 768;
// An image: a name, width and height, four offsets of the image in falling sizes, counted from its start.
constexpr size_t NameBytes = 16, WidthAt = 16, HeightAt = 20, PixelsAt = 24, ImageHead = 40;
constexpr uint32_t NoImage = 0xFFFFFFFFU;

uint32_t U32(std::span<const uint8_t> data, size_t at) {
    uint32_t value = 0;
    std::memcpy(&value, data.data() + at, sizeof(value));
    return value;
}

// Where the 768 bytes of colours begin: behind a head of zeros, or where the head of an older file says.
std::optional<size_t> PaletteStart(std::span<const uint8_t> chunk) {
    if (chunk.size() < PaletteHead + PaletteBytes) return std::nullopt;
    const size_t given = U32(chunk, 0);
    const size_t start = given == 0 ? PaletteHead : given;
    if (start > chunk.size() - PaletteBytes) return std::nullopt;
    return start;
}

Texture ReadTexture(std::span<const uint8_t> image) {
    Texture texture;
    if (image.size() < PixelsAt) return texture;
    const auto name = image.first(NameBytes);
    const auto length = static_cast<size_t>(std::find(name.begin(), name.end(), 0) - name.begin());
    texture.name = ToUtf8({reinterpret_cast<const char*>(name.data()), length});
    texture.width = U32(image, WidthAt);
    texture.height = U32(image, HeightAt);
    if (image.size() < ImageHead) return texture;
    const uint64_t start = U32(image, PixelsAt);
    const uint64_t size = uint64_t{texture.width} * texture.height;
    if (start < ImageHead || start > image.size() || size > image.size() - start) return texture;
    texture.pixels = image.subspan(start, size);
    return texture;
}

Image Checkered() {
    constexpr uint32_t Side = 16, Field = 8;
    constexpr Rgb Light{200, 0, 200}, Dark{60, 0, 60};
    Image image(Side, Side, Dark);
    for (uint32_t y = 0; y < Side; y++) {
        for (uint32_t x = 0; x < Side; x++) {
            if ((x / Field + y / Field) % 2 == 0) image.At(x, y) = Light;
        }
    }
    return image;
}

}  // namespace

bool HasPalette(const levelcheck::LevelView& level) {
    return PaletteStart(level.Chunk(PaletteChunk)).has_value();
}

Palette ReadPalette(const levelcheck::LevelView& level) {
    const auto chunk = level.Chunk(PaletteChunk);
    const auto start = PaletteStart(chunk);
    Palette palette;
    for (size_t i = 0; i < palette.size(); i++) {
        const auto grey = static_cast<uint8_t>(i);
        palette[i] = {grey, grey, grey};
        if (start) palette[i] = {chunk[*start + 3 * i], chunk[*start + 3 * i + 1], chunk[*start + 3 * i + 2]};
    }
    return palette;
}

std::vector<Texture> ReadTextures(const levelcheck::LevelView& level) {
    const auto chunk = level.Chunk(TextureChunk);
    std::vector<Texture> textures;
    if (chunk.size() < 4) return textures;
    const size_t count = std::min<size_t>(U32(chunk, 0), chunk.size() / 4 - 1);
    std::set<size_t> ends{chunk.size()};  // an image goes on to the start of the next one
    for (size_t i = 0; i < count; i++) ends.insert(U32(chunk, 4 + 4 * i));
    for (size_t i = 0; i < count; i++) {
        const uint32_t offset = U32(chunk, 4 + 4 * i);
        if (offset == NoImage || offset >= chunk.size()) {
            textures.emplace_back();
        } else {
            textures.push_back(ReadTexture(chunk.subspan(offset, *ends.upper_bound(offset) - offset)));
        }
    }
    return textures;
}

Image TextureImage(const Texture& texture, const Palette& palette) {
    if (texture.pixels.empty()) return Checkered();
    Image image(texture.width, texture.height);
    std::transform(texture.pixels.begin(), texture.pixels.end(), image.pixels.begin(),
                   [&](uint8_t index) { return palette[index]; });
    return image;
}

Rgb TextureColour(const Texture& texture, const Palette& palette) {
    if (texture.pixels.empty()) return {160, 160, 160};
    std::array<uint64_t, 3> sum{};
    for (const uint8_t index : texture.pixels) {
        sum[0] += palette[index].r;
        sum[1] += palette[index].g;
        sum[2] += palette[index].b;
    }
    const auto mean = [&](size_t i) { return static_cast<uint8_t>(sum[i] / texture.pixels.size()); };
    return {mean(0), mean(1), mean(2)};
}

}  // namespace klvtool
