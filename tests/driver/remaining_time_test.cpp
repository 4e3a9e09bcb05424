#include "driver/remaining_time.h"

#include <gtest/gtest.h>

#include "driver/tick.h"
#include "support/build_state.h"
#include "support/recording_display.h"

namespace k2k::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

class RemainingTimeTest : public BuildState {
  protected:
    const std::chrono::steady_clock::time_point start{std::chrono::hours(5)};
};

TEST_F(RemainingTimeTest, GoesOnAtTheRateOfWhatIsDone) {
    StartWork(start);
    TellWork(250, 750, start + seconds(20));
    EXPECT_EQ(RemainingTime(start + seconds(20)), seconds(60));
    TellWork(750, 300, start + seconds(60));
    EXPECT_EQ(RemainingTime(start + seconds(60)), seconds(24));
}

TEST_F(RemainingTimeTest, RunsDownEverSlowerWhileNoMoreIsTold) {
    StartWork(start);
    TellWork(1, 10, start + seconds(10));
    EXPECT_EQ(RemainingTime(start + seconds(12)), seconds(98));
    EXPECT_EQ(RemainingTime(start + seconds(110)), seconds(50));
    EXPECT_EQ(RemainingTime(start + seconds(910)), seconds(10));
}

TEST_F(RemainingTimeTest, IsRoundedToTheNearestSecond) {
    StartWork(start);
    TellWork(1, 1, start + milliseconds(1400));
    EXPECT_EQ(RemainingTime(start + milliseconds(1400)), seconds(1));
    TellWork(1, 1, start + milliseconds(1600));
    EXPECT_EQ(RemainingTime(start + milliseconds(1600)), seconds(2));
}

TEST_F(RemainingTimeTest, IsNotToldBeforeATwentiethIsDone) {
    StartWork(start);
    EXPECT_EQ(RemainingTime(start + seconds(1)), std::nullopt);
    TellWork(49, 951, start + seconds(1));
    EXPECT_EQ(RemainingTime(start + seconds(1)), std::nullopt);
    TellWork(50, 950, start + seconds(1));
    EXPECT_EQ(RemainingTime(start + seconds(1)), seconds(19));
}

TEST_F(RemainingTimeTest, IsNotToldWithoutWork) {
    EXPECT_EQ(RemainingTime(), std::nullopt);
    StartWork(start);
    TellWork(5, 5, start + seconds(1));
    EndWork();
    EXPECT_EQ(RemainingTime(start + seconds(1)), std::nullopt);
    TellWork(5, 5, start + seconds(1));
    EXPECT_EQ(RemainingTime(start + seconds(1)), std::nullopt);
}

TEST_F(RemainingTimeTest, NothingIsLeftWhenAllIsDone) {
    StartWork(start);
    TellWork(10, 0, start + seconds(6));
    EXPECT_EQ(RemainingTime(start + seconds(7)), seconds(0));
}

TEST_F(RemainingTimeTest, NewWorkBeginsWithNothingDone) {
    StartWork(start);
    TellWork(10, 0, start + seconds(6));
    StartWork(start);
    EXPECT_EQ(RemainingTime(start + seconds(7)), std::nullopt);
}

TEST_F(RemainingTimeTest, WorkIsAskedForUntilItIsTold) {
    EXPECT_EQ(RemainingTime(start), std::nullopt);
    EXPECT_FALSE(IsWorkAsked()) << "there is none";
    StartWork(start);
    EXPECT_FALSE(IsWorkAsked());
    RemainingTime(start);
    EXPECT_TRUE(IsWorkAsked());
    EXPECT_TRUE(IsWorkAsked());
    TellWork(1, 1, start);
    EXPECT_FALSE(IsWorkAsked());
    RemainingTime(start);
    EndWork();
    EXPECT_FALSE(IsWorkAsked());
}

// Keeps what the tick told of the time last.
class TimeDisplay : public RecordingDisplay {
  public:
    void SetRemainingTime(std::optional<seconds> time) override { remaining = time; }
    void SetActivity(bool) override { atMark = remaining; }

    std::optional<seconds> remaining, atMark;
};

TEST_F(RemainingTimeTest, TheTickShowsItAlsoWhileTheProgressStands) {
    TimeDisplay display;
    Tick tick(display);
    const auto now = std::chrono::steady_clock::now();
    StartWork(now - seconds(3000));
    TellWork(3, 1, now);
    tick.Handle();
    ASSERT_TRUE(display.atMark.has_value()) << "drawn with the activity mark";
    EXPECT_NEAR(static_cast<double>(display.atMark->count()), 1000, 10);
    EndWork();
    tick.Handle();
    EXPECT_EQ(display.remaining, std::nullopt);
}

}  // namespace
}  // namespace k2k::test
