// Reader of the interim portal file.
#pragma once

#include <string>

#include "vis/vis_graph.h"

namespace k2k {

// Reads the portals of a level with regionCount regions; the path "-" is standard input. Everything in the file is
// checked, and what is wrong in it is fatal.
VisGraph ReadPortalFile(const std::string& path, int32_t regionCount);

}  // namespace k2k
