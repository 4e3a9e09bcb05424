#include "support/files.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <system_error>

namespace k2k::test {

namespace fs = std::filesystem;

TempDir::TempDir() {
    std::string name = (fs::temp_directory_path() / "k2k-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::system_error(errno, std::generic_category(), name);
    path_ = name;
}

TempDir::~TempDir() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

InTempDir::InTempDir() : before_(fs::current_path()) {
    fs::current_path(path());
}

InTempDir::~InTempDir() {
    fs::current_path(before_);
}

void WriteFile(const std::string& path, std::string_view bytes) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    EXPECT_TRUE(file.good()) << path;
}

void WriteFile(const std::string& path, const std::vector<uint8_t>& bytes) {
    WriteFile(path, std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
}

std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file.is_open()) << path;
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::vector<uint8_t> ReadBytes(const std::string& path) {
    const std::string text = ReadFile(path);
    return {text.begin(), text.end()};
}

}  // namespace k2k::test
