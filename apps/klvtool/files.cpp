// Whole files, in and out.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "klvtool/command.h"

namespace klvtool {
namespace {

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

[[noreturn]] void Fail(const char* what, const std::string& path) {
    throw std::runtime_error(std::string("can't ") + what + " " + path + " - " + std::strerror(errno));
}

std::vector<uint8_t> ReadWhole(const std::string& path) {
    const File file(std::fopen(path.c_str(), "rb"), &std::fclose);
    if (!file) Fail("open", path);
    std::vector<uint8_t> bytes;
    std::vector<uint8_t> part(size_t{1} << 16U);
    while (const size_t got = std::fread(part.data(), 1, part.size(), file.get())) {
        bytes.insert(bytes.end(), part.begin(), part.begin() + static_cast<std::ptrdiff_t>(got));
    }
    if (std::ferror(file.get()) != 0) Fail("read", path);
    return bytes;
}

}  // namespace

levelcheck::LevelView LoadLevel(const std::string& path) {
    levelcheck::LevelView level = levelcheck::ReadLevel(ReadWhole(path));
    if (level.version == 0) throw std::runtime_error(path + ": " + level.broken.front());
    return level;
}

void SaveFile(const std::string& path, std::span<const uint8_t> bytes) {
    File file(std::fopen(path.c_str(), "wb"), &std::fclose);
    if (!file) Fail("write", path);
    if (std::fwrite(bytes.data(), 1, bytes.size(), file.get()) != bytes.size()) Fail("write", path);
    if (std::fclose(file.release()) != 0) Fail("write", path);
}

void SaveFile(const std::string& path, std::string_view text) {
    SaveFile(path, std::span(reinterpret_cast<const uint8_t*>(text.data()), text.size()));
}

}  // namespace klvtool
