// Writes a scene as glTF 2.0, in its binary form.
#pragma once

#include <cstdint>
#include <vector>

#include "klvtool/scene.h"

namespace klvtool {

// One file that holds all. A node at the root turns z up into y up and units into metres. A lightmap is the occlusion
// texture of its material, over the second set of texture coordinates, since that is what viewers multiply with; the
// page in colour is named in the material's extras. Objects are nodes with their data in extras.
std::vector<uint8_t> MakeGlb(const Scene& scene);

}  // namespace klvtool
