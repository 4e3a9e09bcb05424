// What the fuzz targets share: each input meets a fresh build in an empty folder, and ends as a build may end.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace k2k::fuzz {

// A folder that is the working directory until the object goes; it lies in memory where the system has such a place.
class ScratchFolder {
  public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

  private:
    std::filesystem::path before_, path_;
};

void PutFile(const std::string& name, std::string_view bytes);

// All process-wide data as at program start.
void ResetBuild();

// Runs step in a fresh build, with a stage's stack, to its end, to a fatal error or to the program's end.
void RunStep(const std::function<void()>& step);

// Names the files of a build: level.$$M, level.klv and palette.raw, with the options' text behind.
void TakeOptions(const std::string& options = "");

// One stage in a fresh build, on the level file that the input is.
void RunStageOnLevel(std::string_view level, const std::string& options, int (*stage)());

// The files that a build needs beside the input: a texture file without images, and a palette.
void PutTexturesAndPalette();

// The body of LLVMFuzzerTestOneInput. Larger inputs are passed over: they only take time.
template <typename Body>
int RunInput(const uint8_t* data, size_t size, size_t largest, Body body) {
    if (size > largest) return -1;
    const ScratchFolder folder;
    body(std::string_view(reinterpret_cast<const char*>(data), size));
    return 0;
}

}  // namespace k2k::fuzz
