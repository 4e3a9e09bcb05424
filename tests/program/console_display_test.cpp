// What the console draws on a terminal: standard error is a pseudo-terminal here.
#include "k2k/console_display.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <string>

namespace k2k::test {
namespace {

using std::chrono::seconds;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

class ConsoleLineTest : public testing::Test {
  protected:
    ConsoleLineTest() {
        int terminal = -1;
        winsize size{};
        size.ws_col = 100;
        EXPECT_EQ(openpty(&reader_, &terminal, nullptr, nullptr, &size), 0);
        stderr_ = dup(STDERR_FILENO);
        dup2(terminal, STDERR_FILENO);
        close(terminal);
    }
    ~ConsoleLineTest() override {
        dup2(stderr_, STDERR_FILENO);
        close(stderr_);
        close(reader_);
    }

    // What was drawn since the last call, which is something.
    std::string Drawn() {
        std::array<char, 4096> bytes{};
        const ssize_t count = read(reader_, bytes.data(), bytes.size());
        return {bytes.data(), static_cast<size_t>(std::max<ssize_t>(count, 0))};
    }

  private:
    int reader_ = -1, stderr_ = -1;
};

TEST_F(ConsoleLineTest, ShowsHowLongAStepStillTakesBehindTheCaption) {
    ConsoleDisplay display;
    display.SetCaption("portals (12)");
    EXPECT_THAT(Drawn(), Not(HasSubstr("left")));
    display.SetRemainingTime(seconds(754));
    display.SetActivity(true);
    EXPECT_THAT(Drawn(), EndsWith("] portals (12) about 12:34 left\033[K"));
    display.SetRemainingTime(seconds(5));
    display.SetActivity(false);
    EXPECT_THAT(Drawn(), EndsWith("] portals (12) about 0:05 left\033[K"));
    display.SetRemainingTime({});
    display.SetActivity(true);
    EXPECT_THAT(Drawn(), EndsWith("] portals (12)\033[K"));
}

TEST_F(ConsoleLineTest, FillsTheBarAsTheProgressGoesOn) {
    ConsoleDisplay display;
    display.SetProgressRange(60);
    EXPECT_THAT(Drawn(), HasSubstr("[" + std::string(30, ' ') + "]"));
    display.SetProgress(20);
    EXPECT_THAT(Drawn(), HasSubstr("[" + std::string(10, '#') + std::string(20, ' ') + "]"));
}

}  // namespace
}  // namespace k2k::test
