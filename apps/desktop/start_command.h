// The command string of a run that was started without one.
#pragma once

#include <span>
#include <string>

#include "desktop/last_files.h"

namespace k2k {

// Whether the arguments leave it to the user to choose files: there are none, or only a map, as a file manager names
// it.
bool LeavesFilesOpen(std::span<const char* const> arguments);

// The command string that builds these files with the options dialog. Makes the map's folder the working directory, as
// the settings and the log belong beside the map.
std::string CommandOfFiles(const BuildFiles& files);

}  // namespace k2k
