#include "klvtool/image.h"

#include <png.h>

#include <stdexcept>

#include "klvtool/command.h"

namespace klvtool {

static_assert(sizeof(Rgb) == 3, "rows of pixels go to libpng as they are");

std::vector<uint8_t> EncodePng(const Image& image) {
    png_image out{};
    out.version = PNG_IMAGE_VERSION;
    out.width = image.width;
    out.height = image.height;
    out.format = PNG_FORMAT_RGB;
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(out);
    std::vector<uint8_t> bytes(size);
    if (png_image_write_to_memory(&out, bytes.data(), &size, 0, image.pixels.data(), 0, nullptr) == 0) {
        throw std::runtime_error(std::string("can't make a PNG image: ") + out.message);
    }
    bytes.resize(size);
    return bytes;
}

void WritePng(const std::string& path, const Image& image) {
    SaveFile(path, EncodePng(image));
}

}  // namespace klvtool
