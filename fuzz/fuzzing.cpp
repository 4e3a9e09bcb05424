#include "fuzzing.h"

#include <cstdlib>
#include <fstream>
#include <system_error>

#include "bsp/clip_hull.h"
#include "bsp/pipeline.h"
#include "driver/build_log.h"
#include "driver/build_options.h"
#include "driver/out_of_memory.h"
#include "driver/stack_thread.h"
#include "levelfile/file_klv.h"
#include "light/light_block.h"
#include "light/lighting_state.h"
#include "mapread/entity.h"
#include "mapread/read_map.h"
#include "solid/block.h"
#include "solid/plane.h"
#include "surface/surface_tables.h"

namespace k2k::fuzz {

namespace fs = std::filesystem;

namespace {

constexpr size_t StageStack = size_t{64} << 20;

fs::path ScratchRoot() {
    if (const char* chosen = std::getenv("TMPDIR")) return chosen;
    std::error_code ignored;
    return fs::is_directory("/dev/shm", ignored) ? fs::path("/dev/shm") : fs::temp_directory_path();
}

}  // namespace

ScratchFolder::ScratchFolder() : before_(fs::current_path()) {
    std::string name = (ScratchRoot() / "k2k-fuzz-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::system_error(errno, std::generic_category(), name);
    path_ = name;
    fs::current_path(path_);
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    fs::current_path(before_, ignored);
    fs::remove_all(path_, ignored);
}

void PutFile(const std::string& name, std::string_view bytes) {
    std::ofstream(name, std::ios::binary | std::ios::trunc)
        .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

void ResetBuild() {
    ResetAllOptionsForTest();
    ResetLogForTest();
    ForgetFatalError();
    ResetDataSetsForTest();
    ResetPlaneTableForTest();
    ResetBlocksForTest();
    ClearEntities();
    DetailCount = 0;
    ResetHullCaptures();
    ReleaseSurfaceTables();
    ResetLighting();
    LightBlocks().clear();
}

void RunStep(const std::function<void()>& step) {
    ResetBuild();
    StackThread(
        [&step] {
            try {
                ReportFailures(step);
            } catch (const FatalStop&) {
            } catch (const ProgramExit&) {
            }
        },
        StageStack)
        .Join();
    ResetBuild();
}

void PutTexturesAndPalette() {
    PutFile("textures.$$w", std::string_view("WAD2\0\0\0\0\x0c\0\0\0", 12));
    PutFile("palette.raw", std::string(768, '\x40'));
}

void TakeOptions(const std::string& options) {
    ParseOptions("level -pal palette.raw -threads 1 " + options);
}

void RunStageOnLevel(std::string_view level, const std::string& options, int (*stage)()) {
    PutFile("level.klv", level);
    RunStep([&] {
        TakeOptions(options);
        stage();
    });
}

}  // namespace k2k::fuzz
