#include "desktop/mnemonics.h"

#include <gtest/gtest.h>

namespace k2k {
namespace {

TEST(TheMnemonics, TakeTheFirstFreeLetter) {
    Mnemonics mnemonics;
    EXPECT_EQ(mnemonics.Mark("Solid sky"), "&Solid sky");
    EXPECT_EQ(mnemonics.Mark("sold"), "s&old");
}

TEST(TheMnemonics, PassOverSignsAndTakeDigits) {
    Mnemonics mnemonics;
    EXPECT_EQ(mnemonics.Mark(">>> 2"), ">>> &2");
}

TEST(TheMnemonics, LeaveALabelWithoutAFreeLetter) {
    Mnemonics mnemonics;
    mnemonics.Reserve('M');
    EXPECT_EQ(mnemonics.Mark("Mm :"), "Mm :");
}

}  // namespace
}  // namespace k2k
