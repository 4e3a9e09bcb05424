#include "driver/text.h"

#include <gtest/gtest.h>

namespace k2k {
namespace {

std::string WithExtension(std::string path, std::string_view extension) {
    AddExtension(path, extension);
    return path;
}

std::string WithoutExtension(std::string path) {
    StripExtension(path);
    return path;
}

TEST(Numbers, TextThatIsNoNumberGivesZero) {
    EXPECT_EQ(ToInt("x7"), 0);
    EXPECT_EQ(ToFloat("wide"), 0.0F);
    EXPECT_EQ(ToInt(""), 0);
}

TEST(Numbers, StopAtTheFirstCharacterThatIsNoNumber) {
    EXPECT_EQ(ToInt("-12px"), -12);
    EXPECT_EQ(ToFloat("2.5e1)"), 25.0F);
}

TEST(Numbers, ReadOnlyTheirOwnPartOfALongerText) {
    EXPECT_EQ(ToInt(std::string_view("1234", 2)), 12);
}

TEST(Numbers, AreNarrowedTo32Bits) {
    EXPECT_EQ(ToFloat("0.1"), 0.1F);
}

TEST(BinaryNumerals, BeginAtTheRightEnd) {
    EXPECT_EQ(ParseBinary("00000110"), 6U);
    EXPECT_EQ(ParseBinary(""), 0U);
}

TEST(BinaryNumerals, StopAtAnyOtherCharacter) {
    EXPECT_EQ(ParseBinary("12"), 0U);
    EXPECT_EQ(ParseBinary("x01"), 1U);
}

TEST(BinaryNumerals, RunOffTheTopBehind32Characters) {
    EXPECT_EQ(ParseBinary("1" + std::string(31, '0') + "1"), 1U);
}

TEST(BinaryNumerals, AreWrittenIn8Or16Or32Digits) {
    EXPECT_EQ(ToBinary(5), "00000101");
    EXPECT_EQ(ToBinary(0xFF), "11111111");
    EXPECT_EQ(ToBinary(0x100), "0000000100000000");
    EXPECT_EQ(ToBinary(0xFFFF), std::string(16, '1'));
    EXPECT_EQ(ToBinary(0x10000), std::string(15, '0') + "1" + std::string(16, '0'));
}

TEST(AddingAnExtension, LeavesANameThatHasOne) {
    EXPECT_EQ(WithExtension("a.map", ".x"), "a.map");
}

TEST(AddingAnExtension, StopsItsSearchAtASlash) {
    EXPECT_EQ(WithExtension("v1.2/a", ".x"), "v1.2/a.x");
}

TEST(AddingAnExtension, DoesNotStopAtABackslash) {
    EXPECT_EQ(WithExtension("v1.2\\a", ".x"), "v1.2\\a");
}

TEST(AddingAnExtension, DoesNotLookAtTheFirstCharacter) {
    EXPECT_EQ(WithExtension(".a", ".x"), ".a.x");
    EXPECT_EQ(WithExtension("", ".x"), ".x");
}

TEST(StrippingAnExtension, CutsAtTheLastDot) {
    EXPECT_EQ(WithoutExtension("a.b.c"), "a.b");
    EXPECT_EQ(WithoutExtension("dir/a.klv"), "dir/a");
}

TEST(StrippingAnExtension, StopsAtASlash) {
    EXPECT_EQ(WithoutExtension("v1.2/a"), "v1.2/a");
    EXPECT_EQ(WithoutExtension("plain"), "plain");
}

TEST(Case, IsAsciiOnly) {
    EXPECT_TRUE(EqualNoCase("-Pal", "-pAL"));
    EXPECT_FALSE(EqualNoCase("-pal", "-pa"));
    EXPECT_FALSE(EqualNoCase("\xE4", "\xC4"));
    EXPECT_EQ(ToUpper("a\xE4z"), "A\xE4Z");
}

}  // namespace
}  // namespace k2k
