// Runs the compiler and looks at what it made.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "levelcheck/level_view.h"
#include "program/small_map.h"
#include "support/files.h"
#include "support/process.h"

namespace k2k::test {

// The command line of the program under test.
std::vector<std::string> K2kCommand(std::vector<std::string> arguments);

inline ProcessResult RunK2k(std::vector<std::string> arguments) {
    return RunProcess(K2kCommand(std::move(arguments)));
}

levelcheck::LevelView LoadLevel(const std::string& path);

// The folder of the example levels, one folder a dialect in it.
std::filesystem::path ExampleFolder();

// Copies NAME.$$M of a dialect ("50", "51" or "71"; "" for the room), its textures and palettes to the working
// directory.
void TakeExample(const std::string& dialect, const std::string& name);

// What a run printed, and its level. A run that fails, does not finish, or leaves no level is a test failure.
struct Compiled {
    std::string text;
    levelcheck::LevelView level;
};
Compiled CompileLevel(const std::string& name, std::vector<std::string> options = {});

// The bytes of the files that a build only reads: all in the working directory but those that it makes.
std::map<std::string, std::string> UserFiles();

// A texture file with an image for each name that small maps use.
std::vector<uint8_t> SmallTextures();

// A folder with a texture file and a palette, where small maps are compiled as "level".
class SmallMapTest : public ::testing::Test {
  protected:
    SmallMapTest();

    static void Write(const SmallMap& map) { WriteFile("level.$$M", map.Text()); }
    static Compiled Compile(std::vector<std::string> options = {}) { return CompileLevel("level", std::move(options)); }
    static Compiled Compile(const SmallMap& map, std::vector<std::string> options = {}) {
        Write(map);
        return Compile(std::move(options));
    }
    // A run that stops: what it printed behind "CRITICAL ERROR".
    static std::string FailureOf(std::vector<std::string> options);

    InTempDir folder_;
};

}  // namespace k2k::test
