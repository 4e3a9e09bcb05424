// Runs klvtool, and reads the pictures that it made.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <png.h>

#include <cstring>
#include <string>
#include <vector>

#include "klvtool/command.h"
#include "klvtool/image.h"
#include "program/compile.h"

namespace k2k::test {

inline ProcessResult Klvtool(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), KLVTOOL_BINARY);
    return RunProcess(arguments);
}

// An image of no size when the file is no PNG.
inline klvtool::Image ReadPng(const std::string& path) {
    png_image in{};
    in.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&in, path.c_str()) == 0) return {};
    in.format = PNG_FORMAT_RGB;
    klvtool::Image image(in.width, in.height);
    if (png_image_finish_read(&in, nullptr, image.pixels.data(), 0, nullptr) == 0) return {};
    return image;
}

// Overwrites a number at a place in a chunk of a level file.
template <typename T>
void Damage(const std::string& path, int chunk, size_t at, T value) {
    std::vector<uint8_t> bytes = ReadBytes(path);
    const size_t place = levelcheck::ReadLevel(bytes).chunks[static_cast<size_t>(chunk)].offset + at;
    ASSERT_LE(place + sizeof(T), bytes.size());
    std::memcpy(bytes.data() + place, &value, sizeof(T));
    WriteFile(path, bytes);
}

class KlvtoolTest : public SmallMapTest {};

}  // namespace k2k::test
