// Portal graphs from the text of a portal file.
#pragma once

#include <string>

#include "support/files.h"
#include "vis/portal_file.h"

namespace k2k::test {

inline VisGraph ReadGraph(int32_t regionCount, const std::string& text) {
    const TempDir folder;
    const std::string path = folder.File("level.$$p");
    WriteFile(path, text);
    return ReadPortalFile(path, regionCount);
}

}  // namespace k2k::test
