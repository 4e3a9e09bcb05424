// The run from a command string to an exit code: start-up, the four stages one after the other, the tick.
#pragma once

#include <string_view>

#include "driver/dialog.h"
#include "driver/display.h"

namespace k2k {

// What runs in each stage. The driver knows no stage; the program that links them all fills this table.
struct StageEntries {
    int (*geometry)() = nullptr;
    int (*visibility)() = nullptr;
    int (*lighting)() = nullptr;
    int (*radiosity)() = nullptr;  // the lighting stage under -litv2
    int (*colours)() = nullptr;
};

// Does everything from start-up to the end of the last stage and returns ExitCode. Never throws. The dialog that
// -dialog asks for is shown by showDialog.
int RunProgram(std::string_view commandLine, const StageEntries& stages, Display& display,
               const ShowDialog& showDialog = AcceptControls);

}  // namespace k2k
