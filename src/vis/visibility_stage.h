// The second stage: which regions each region can see.
#pragma once

namespace k2k {

// Reads the level and the interim portal file, fills the visibility rows, undoes the zoom, saves. Returns 0, or -1
// without a level path.
int VisibilityStage();

}  // namespace k2k
