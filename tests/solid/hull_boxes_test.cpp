#include "solid_support.h"

namespace k2k {
namespace {

class HullBoxesTest : public test::SolidTest {};

TEST_F(HullBoxesTest, ComeFromWidthHeightAndOffset) {
    ComputeHullBoxes();
    EXPECT_EQ(HullBoxes()[0].mins, (Vec3{0, 0, 0}));
    EXPECT_EQ(HullBoxes()[0].maxs, (Vec3{0, 0, 0}));
    EXPECT_EQ(HullBoxes()[1].mins, (Vec3{-16, -16, -16}));
    EXPECT_EQ(HullBoxes()[1].maxs, (Vec3{16, 16, 16}));
    EXPECT_EQ(HullBoxes()[2].mins, (Vec3{-32, -32, -32}));
    EXPECT_EQ(HullBoxes()[2].maxs, (Vec3{32, 32, 16}));
}

TEST_F(HullBoxesTest, WithNhTheNarrowBoxIsTheZeroBox) {
    Options().nh = true;
    ComputeHullBoxes();
    EXPECT_EQ(Options().narrow, (std::array<float, 3>{}));
    EXPECT_EQ(HullBoxes()[1].mins, (Vec3{0, 0, 0}));
    EXPECT_EQ(HullBoxes()[1].maxs, (Vec3{0, 0, 0}));
}

TEST_F(HullBoxesTest, RowsTakeTheKindThatSethullsNames) {
    Options().sethulls = {2, 7, 1};
    ComputeHullBoxes();
    EXPECT_EQ(HullBoxes()[0].maxs, (Vec3{32, 32, 16}));
    EXPECT_EQ(HullBoxes()[1].maxs, (Vec3{0, 0, 0})) << "another value leaves the row as it was";
    EXPECT_EQ(HullBoxes()[2].maxs, (Vec3{16, 16, 16}));
    Options().sethulls = {0, 1, -5};
    ComputeHullBoxes();
    EXPECT_EQ(HullBoxes()[2].maxs, (Vec3{16, 16, 16}));
}

TEST_F(HullBoxesTest, HaveNoBoxForOtherHullArguments) {
    ComputeHullBoxes();
    EXPECT_EQ(HullBoxOf(2).maxs, (Vec3{32, 32, 16}));
    EXPECT_EQ(HullBoxOf(3).maxs, (Vec3{0, 0, 0}));
    EXPECT_EQ(HullBoxOf(-1).mins, (Vec3{0, 0, 0}));
}

}  // namespace
}  // namespace k2k
