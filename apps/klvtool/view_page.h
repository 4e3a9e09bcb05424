// The page that shows a scene in a browser.
#pragma once

#include <string>
#include <string_view>

#include "klvtool/scene.h"

namespace klvtool {

// The page as it was built in apps/viewer, with a mark where a level goes.
std::string_view ViewerPage();

// One HTML file that holds all, and needs neither a server nor the net.
std::string MakeViewPage(const Scene& scene);

}  // namespace klvtool
