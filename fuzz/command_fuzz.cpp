// A command string, taken through a run whose stages have nothing to do.
#include "driver/run_program.h"
#include "driver/silent_display.h"
#include "fuzzing.h"

namespace k2k::fuzz {
namespace {

int Nothing() {
    return 0;
}

constexpr StageEntries NoStages{Nothing, Nothing, Nothing, Nothing, Nothing};

void RunCommand(std::string_view command) {
    ResetBuild();
    SilentDisplay display;
    RunProgram(command, NoStages, display);
    ResetBuild();
}

}  // namespace
}  // namespace k2k::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    return k2k::fuzz::RunInput(data, size, 4096, k2k::fuzz::RunCommand);
}
