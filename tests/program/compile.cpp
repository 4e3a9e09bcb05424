#include "program/compile.h"

#include <filesystem>

#include "texture/wad_bytes.h"

namespace k2k::test {

namespace fs = std::filesystem;

std::vector<uint8_t> SmallTextures() {
    Wad wad;
    for (const char* name : {"wall", "floor", "ceiling", "pillar", "sky1", "*water", "lamp_out"})
        wad.Add(name, 68, Image(name, 64, 64));
    return wad.Bytes();
}

namespace {

std::string SmallPalette() {
    std::string colours;
    for (int i = 0; i < 768; ++i) colours += static_cast<char>(i % 251);
    return colours;
}

}  // namespace

std::vector<std::string> K2kCommand(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), K2K_BINARY);
    return arguments;
}

levelcheck::LevelView LoadLevel(const std::string& path) {
    return levelcheck::ReadLevel(ReadBytes(path));
}

fs::path ExampleFolder() {
    return K2K_EXAMPLES;
}

void TakeExample(const std::string& dialect, const std::string& name) {
    const fs::path examples = ExampleFolder();
    fs::copy_file(examples / dialect / (name + ".$$M"), name + ".$$M");
    for (const char* file :
         {"textures.$$w", "textures7.$$w", "palette.raw", "palette.lmp", "palette.pcx", "palette.bmp", "palette.lbm"})
        fs::copy_file(examples / file, file, fs::copy_options::skip_existing);
}

std::map<std::string, std::string> UserFiles() {
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::directory_iterator(".")) {
        const std::string name = entry.path().filename();
        if (entry.is_regular_file() && name != "level.klv" && name != "level.$$p" && !name.starts_with("K2K.ini"))
            files[name] = ReadFile(name);
    }
    return files;
}

Compiled CompileLevel(const std::string& name, std::vector<std::string> options) {
    options.insert(options.begin(), {name, "-pal", "palette.raw"});
    const ProcessResult run = RunK2k(std::move(options));
    EXPECT_EQ(run.status, 0) << run.out;
    // The usage text ends with status 0 too, and would leave the level of the run before.
    EXPECT_NE(run.out.find(" \nTime: "), std::string::npos) << run.out;
    return {run.out, LoadLevel(name + ".klv")};
}

SmallMapTest::SmallMapTest() {
    WriteFile("textures.$$w", SmallTextures());
    WriteFile("palette.raw", SmallPalette());
}

std::string SmallMapTest::FailureOf(std::vector<std::string> options) {
    options.insert(options.begin(), {"level", "-pal", "palette.raw"});
    const ProcessResult run = RunK2k(std::move(options));
    EXPECT_EQ(run.status, 1) << run.out;
    constexpr std::string_view Head = "\n------ CRITICAL ERROR ------\n", Tail = "\nPress any key... \n";
    const size_t at = run.out.find(Head);
    if (at == std::string::npos || !run.out.ends_with(Tail)) {
        ADD_FAILURE() << "no fatal error: " << run.out;
        return "";
    }
    return run.out.substr(at + Head.size(), run.out.size() - at - Head.size() - Tail.size());
}

}  // namespace k2k::test
