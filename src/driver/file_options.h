// Options whose values are checked while they are parsed: file names and colour ranges.
#pragma once

#include <string_view>

namespace k2k {

// Each stores a file name with an extension in Options(); a second name, or one that is too long, prints a message and
// throws ProgramExit with status -1. The palette's extension also settles palkind.
void SetPalettePath(std::string_view text);
void SetColormapPath(std::string_view text);
void SetMixtabPath(std::string_view text);

// Keeps the first name given; only its length is checked.
void SetPaletteOutput(std::string_view text);

// Adds a colour range given as "start,length". A range outside the 256 colours, or one too many, prints a message and
// throws ProgramExit with status -1.
void AddRange(std::string_view text);

}  // namespace k2k
