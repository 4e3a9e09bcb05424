// The console program.
#include <algorithm>
#include <span>

#include "console_display.h"
#include "driver/command_string.h"
#include "driver/run_program.h"
#include "driver/run_stats.h"
#include "stages.h"

int main(int argc, char** argv) {
    k2k::ConsoleDisplay display;
    const std::span<const char* const> arguments(argv + std::min(argc, 1), argv + argc);
    const int status = k2k::RunProgram(k2k::CommandString(arguments), k2k::AllStages, display);
    k2k::WriteRunStats();
    return status;
}
