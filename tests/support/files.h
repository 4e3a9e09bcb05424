// Files of tests: a folder of a test's own, whole files in and out.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace k2k::test {

// A fresh folder that is removed with the object.
class TempDir {
  public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::filesystem::path& path() const { return path_; }
    // The full name of a file in the folder.
    std::string File(std::string_view name) const { return (path_ / name).string(); }

  private:
    std::filesystem::path path_;
};

// Works in a fresh folder until it goes out of scope.
class InTempDir : public TempDir {
  public:
    InTempDir();
    ~InTempDir();

  private:
    std::filesystem::path before_;
};

void WriteFile(const std::string& path, std::string_view bytes);
void WriteFile(const std::string& path, const std::vector<uint8_t>& bytes);

// The whole file; a missing one is a test failure and "".
std::string ReadFile(const std::string& path);
std::vector<uint8_t> ReadBytes(const std::string& path);

}  // namespace k2k::test
