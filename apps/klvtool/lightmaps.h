// The lightmap pages of a level.
#pragma once

#include "klvtool/faces.h"
#include "klvtool/image.h"
#include "levelcheck/level_view.h"

namespace klvtool {

// One page in colour; a number below the level's pageCount.
Image PageImage(const levelcheck::LevelView& level, size_t page);

struct PageUse {
    size_t surfaces = 0;  // with their lightmap on the page
    double fill = 0;      // share of the page's texels that lightmaps with their borders cover, 0 to 1
};
// One for each page. Page 0 is blank, and serves what is not lit.
std::vector<PageUse> CountPageUse(const levelcheck::LevelView& level, const std::vector<Face>& faces);

}  // namespace klvtool
