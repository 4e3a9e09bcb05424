// Looks into the chunks of a compiled level.
#pragma once

#include <algorithm>
#include <array>
#include <cstring>
#include <numeric>
#include <string>
#include <vector>

#include "levelcheck/level_view.h"

namespace k2k::test {

inline std::vector<uint8_t> ChunkBytes(const levelcheck::LevelView& level, int number) {
    const auto chunk = level.Chunk(number);
    return {chunk.begin(), chunk.end()};
}

// Numbers of the chunks that are not the same in both levels.
inline std::vector<int> DifferentChunks(const levelcheck::LevelView& a, const levelcheck::LevelView& b) {
    std::vector<int> different;
    for (int i = 0; i < levelcheck::ChunkCount; ++i) {
        if (ChunkBytes(a, i) != ChunkBytes(b, i)) different.push_back(i);
    }
    return different;
}

template <typename T>
T ValueIn(const std::vector<uint8_t>& bytes, size_t at) {
    T value{};
    if (at + sizeof(T) <= bytes.size()) std::memcpy(&value, bytes.data() + at, sizeof(T));
    return value;
}

// An entity record of the level, from its type number to the chunk's end; empty when there are not so many.
inline std::vector<uint8_t> EntityRecord(const levelcheck::LevelView& level, size_t number) {
    const std::vector<uint8_t> chunk = ChunkBytes(level, levelcheck::ChunkEntities);
    if (number >= ValueIn<uint32_t>(chunk, 0)) return {};
    const auto offset = static_cast<std::ptrdiff_t>(ValueIn<uint32_t>(chunk, 4 + 4 * number));
    return {chunk.begin() + offset, chunk.end()};
}

// The record that stands first and carries the level's settings.
struct SunRecord {
    static constexpr uint32_t HasPages = 1, NoNodes = 4, Preview = 16, Always = 32;

    explicit SunRecord(const levelcheck::LevelView& level) : bytes(EntityRecord(level, 0)) {}

    uint32_t flags() const { return ValueIn<uint32_t>(bytes, 24); }
    uint8_t firstGammaValue() const { return ValueIn<uint8_t>(bytes, 32); }
    // Four bytes: blue, green, red, 0.
    std::array<int, 4> Colour(size_t at) const {
        return {bytes.at(at), bytes.at(at + 1), bytes.at(at + 2), bytes.at(at + 3)};
    }
    std::array<int, 4> sunColour() const { return Colour(36); }
    std::array<int, 4> ambientColour() const { return Colour(40); }
    std::array<int, 4> fogColour(size_t i) const { return Colour(44 + 4 * i); }

    std::vector<uint8_t> bytes;
};

// The texels of a page, three bytes each: blue, green, red.
inline std::vector<uint8_t> PageBytes(const levelcheck::LevelView& level, size_t page) {
    const size_t size = size_t{3} * level.pageSize * level.pageSize;
    const auto pages = level.Chunk(levelcheck::ChunkPages).subspan(page * size, size);
    return {pages.begin(), pages.end()};
}

using Texel = std::array<int, 3>;  // red, green, blue

// The first texel of a surface's lightmap. The surface must have one.
inline Texel FirstTexel(const levelcheck::LevelView& level, const levelcheck::Surface& surface) {
    const std::vector<uint8_t> page = PageBytes(level, surface.lightPage);
    const size_t at = (size_t{surface.lightY} * level.pageSize + surface.lightX) * 3;
    return {page[at + 2], page[at + 1], page[at]};
}

inline bool IsLit(const levelcheck::Surface& surface) {
    return surface.lightShift != 255;
}

inline size_t CountLit(const std::vector<levelcheck::Surface>& surfaces) {
    return static_cast<size_t>(std::count_if(surfaces.begin(), surfaces.end(), IsLit));
}
inline size_t CountLit(const levelcheck::LevelView& level) {
    return CountLit(level.surfaces);
}

// The sum of all bytes of all pages.
inline uint64_t Brightness(const levelcheck::LevelView& level) {
    const auto pages = level.Chunk(levelcheck::ChunkPages);
    return std::accumulate(pages.begin(), pages.end(), uint64_t{0});
}

}  // namespace k2k::test
