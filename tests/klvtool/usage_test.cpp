// What klvtool makes of its command line.
#include <filesystem>

#include "klvtool/tool.h"

namespace k2k::test {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;

class Usage : public KlvtoolTest {
  protected:
    static void ExpectUsageError(const std::vector<std::string>& arguments, const std::string& message) {
        const ProcessResult run = Klvtool(arguments);
        EXPECT_EQ(run.status, 2);
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(run.err, "klvtool: " + message + "\n");
    }
};

TEST_F(Usage, ListsEveryCommandForHelp) {
    const ProcessResult run = Klvtool({"--help"});
    EXPECT_EQ(run.status, 0);
    for (const klvtool::Command& command : klvtool::Commands()) {
        EXPECT_THAT(run.out, HasSubstr(std::string("klvtool ") + command.name + " " + command.usage + "\n"));
        EXPECT_THAT(run.out, HasSubstr(command.summary));
    }
}

TEST_F(Usage, IsAnErrorWithoutACommand) {
    const ProcessResult run = Klvtool({});
    EXPECT_EQ(run.status, 2);
    EXPECT_THAT(run.err, HasSubstr("klvtool info LEVEL"));
}

TEST_F(Usage, NamesAnUnknownCommand) {
    ExpectUsageError({"look", "x"}, "no command \"look\"; klvtool --help lists them");
}

TEST_F(Usage, NamesAnUnknownOption) {
    ExpectUsageError({"info", "x.klv", "--jso"}, "unknown option --jso");
}

TEST_F(Usage, WantsAllNames) {
    ExpectUsageError({"plan", "x.klv"}, "wanted: plan LEVEL OUT.png [--from X,Y,Z] [--cut Z] [--size PIXELS]");
    ExpectUsageError({"info", "x.klv", "y.klv"}, "wanted: info LEVEL [--json]");
}

TEST_F(Usage, WantsTheValueOfAnOption) {
    ExpectUsageError({"plan", "x.klv", "y.png", "--cut"}, "--cut wants a value");
    ExpectUsageError({"plan", "x.klv", "y.png", "--cut", "high"}, "--cut wants a number, not \"high\"");
    ExpectUsageError({"plan", "x.klv", "y.png", "--size", "9"}, "--size is 64 to 8192 pixels");
}

TEST_F(Usage, TellsWhichFileCannotBeOpened) {
    const ProcessResult run = Klvtool({"info", "none.klv"});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err, "klvtool: can't open none.klv - No such file or directory\n");
}

TEST_F(Usage, TellsThatAFileIsNoLevel) {
    WriteFile("text.klv", "KLV7 but not much more");
    const ProcessResult run = Klvtool({"info", "text.klv"});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err, "klvtool: text.klv: header: no level file\n");
}

TEST_F(Usage, TellsThatALevelOfVersionZeroIsNone) {
    Compile(OneRoom());
    std::vector<uint8_t> bytes = ReadBytes("level.klv");
    bytes[3] = 0;
    WriteFile("level.klv", bytes);
    for (const char* command : {"info", "check"}) {
        const ProcessResult run = Klvtool({command, "level.klv"});
        EXPECT_EQ(run.status, 2);
        EXPECT_EQ(run.err, "klvtool: level.klv: header: no level file\n");
    }
}

TEST_F(Usage, TellsWhenTheOutputCannotBeWritten) {
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no full device here";
    Compile(OneRoom());
    const ProcessResult run = RunProcess({"/bin/sh", "-c", "\"$0\" info level.klv > /dev/full", KLVTOOL_BINARY});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err, "klvtool: can't write the output\n");
}

TEST(ParsePoint, TakesThreeNumbersAndNothingElse) {
    EXPECT_THAT(klvtool::ParsePoint("--from", "1,-2.5,3e2"), ::testing::ElementsAre(1, -2.5, 300));
    for (const char* text : {"", "1,2", "1,2,3,4", "1,,3", "1,2,3 ", "a,b,c", "1,2,inf", "1;2;3"}) {
        EXPECT_THROW(klvtool::ParsePoint("--from", text), klvtool::UsageError) << text;
    }
}

}  // namespace
}  // namespace k2k::test
