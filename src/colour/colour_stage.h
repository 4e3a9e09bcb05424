// The last stage: a 256-colour palette goes into the level file.
#pragma once

namespace k2k {

// Returns 0. After an error the stage's worker ends without a report: throws ProgramExit with status -1.
int RunColourStage();

}  // namespace k2k
