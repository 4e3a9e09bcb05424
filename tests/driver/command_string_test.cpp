#include "driver/command_string.h"

#include <gtest/gtest.h>

#include <vector>

#include "driver/build_options.h"
#include "support/build_state.h"

namespace k2k {
namespace {

std::string Join(const std::vector<const char*>& arguments) {
    return CommandString(arguments);
}

TEST(ACommandString, JoinsArgumentsWithSingleBlanks) {
    EXPECT_EQ(Join({"map", "-pal", "x"}), "map -pal x");
}

TEST(ACommandString, IsEmptyWithoutArguments) {
    EXPECT_EQ(Join({}), "");
}

TEST(ACommandString, QuotesWhatABlankWouldBreakUp) {
    EXPECT_EQ(Join({"my map", "a\tb"}), "\"my map\" \"a\tb\"");
}

TEST(ACommandString, QuotesAnEmptyArgument) {
    EXPECT_EQ(Join({""}), "\"\"");
    EXPECT_EQ(Join({"", ""}), "\"\" \"\"");
}

TEST(ACommandString, LeavesAnArgumentWithQuotesAlone) {
    EXPECT_EQ(Join({"\"my map\" -quiet"}), "\"my map\" -quiet");
}

class AParsedCommandString : public test::BuildState {};

TEST_F(AParsedCommandString, KeepsArgumentsWithBlanksWhole) {
    EXPECT_TRUE(ParseOptions(Join({"my map", "-pal", "game.pcx", "-light hsl"})));
    EXPECT_EQ(Paths().MapPath, "my map.$$M");
    EXPECT_EQ(Options().lightspace, ColourSpace::Hsl);
}

}  // namespace
}  // namespace k2k
