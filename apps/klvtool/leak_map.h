// A map on its way through the compiler's own libraries, up to the first tree of the visible hull with its portals.
#pragma once

#include <memory>
#include <string>

#include "bsp/portals.h"
#include "solid/block.h"
#include "solid/tree.h"

namespace klvtool {

struct LeakMap {
    k2k::CBlockSet blocks;  // that can close the level: no detail
    std::unique_ptr<k2k::CBspNode> root;
    k2k::TreePortals portals;
};

// The objects are in the compiler's entity table afterwards.
std::unique_ptr<LeakMap> LoadLeakMap(const std::string& mapPath, const std::string& options);

}  // namespace klvtool
