// Files that a map names, which may have been written on a system with other file names.
#pragma once

#include <string>

namespace k2k {

// Looks for a file as it is named, then with "\" taken as "/", then beside the map under the name's last component;
// each of these also without regard to ASCII case. The empty string when there is none.
std::string FindMapFile(const std::string& name, const std::string& mapPath);

}  // namespace k2k
