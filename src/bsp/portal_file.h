// The interim portal file: the openings between the regions of the final tree, for the visibility stage.
#pragma once

#include "solid/tree.h"

namespace k2k {

// Numbers the leaves of the tree, which has its portals, and writes the file at PortalPath.
void WritePortalFile(CBspNode& root);

}  // namespace k2k
