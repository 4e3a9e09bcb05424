// The map and the palette that the last build was asked for.
#pragma once

#include <QString>

namespace k2k {

struct BuildFiles {
    QString map, palette;
};

// Both are empty where none are kept yet.
BuildFiles LoadLastFiles();

// Keeps them in a settings file of the user's own. What else stands in it stays; a file that cannot be written is no
// error.
void SaveLastFiles(const BuildFiles& files);

}  // namespace k2k
