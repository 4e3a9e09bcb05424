// The desktop program: from its arguments to its exit status.
#pragma once

#include <span>

#include "driver/run_program.h"

namespace k2k {

// Asks for files where the arguments name none, runs the build in a window, and returns the program's status once the
// window is closed. A build that goes on ends with the process. Needs a QApplication.
int RunDesktop(std::span<const char* const> arguments, const StageEntries& stages);

// Numbers and messages are those of the console, whatever the user's language. To be called behind the making of the
// QApplication, which sets the locale.
void UsePlainLocale();

}  // namespace k2k
