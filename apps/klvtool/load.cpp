#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "klvtool/command.h"

namespace klvtool {
namespace {

std::vector<uint8_t> ReadWhole(const std::string& path) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), &std::fclose);
    if (!file) throw std::runtime_error("can't open " + path + " - " + std::strerror(errno));
    std::vector<uint8_t> bytes;
    std::vector<uint8_t> part(size_t{1} << 16U);
    while (const size_t got = std::fread(part.data(), 1, part.size(), file.get())) {
        bytes.insert(bytes.end(), part.begin(), part.begin() + static_cast<std::ptrdiff_t>(got));
    }
    if (std::ferror(file.get()) != 0) throw std::runtime_error("can't read " + path + " - " + std::strerror(errno));
    return bytes;
}

}  // namespace

levelcheck::LevelView LoadLevel(const std::string& path) {
    levelcheck::LevelView level = levelcheck::ReadLevel(ReadWhole(path));
    if (level.version == 0) throw std::runtime_error(path + ": " + level.broken.front());
    return level;
}

}  // namespace klvtool
