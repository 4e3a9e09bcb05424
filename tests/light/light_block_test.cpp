// The list of blocks that wait for their pages.
#include "light/light_block.h"

#include "test_level.h"

namespace k2k::test {
namespace {

class KeptBlocks : public LightTest {};

TEST_F(KeptBlocks, LevelsWithoutLightmapsKeepNoFinishedBlock) {
    // Their pages are not written, so no surface may have a place on one.
    LightBlock bright = MakeLightBlock(1, 1, 1, 1);
    bright.texels[0] = {9, 9, 9};
    Options().nod3dlmaps = true;
    AddFinishedBlock(bright);
    EXPECT_TRUE(LightBlocks().empty());
    Options().nod3dlmaps = false;
    AddFinishedBlock(bright);
    EXPECT_EQ(LightBlocks().size(), 1U);
}

}  // namespace
}  // namespace k2k::test
