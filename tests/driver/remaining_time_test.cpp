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
    StartWork(1000, start);
    AddWorkDone(150);
    AddWorkDone(100);
    EXPECT_EQ(RemainingTime(start + seconds(20)), seconds(60));
    AddWorkDone(500);
    EXPECT_EQ(RemainingTime(start + seconds(60)), seconds(20));
}

TEST_F(RemainingTimeTest, IsRoundedToTheNearestSecond) {
    StartWork(2, start);
    AddWorkDone(1);
    EXPECT_EQ(RemainingTime(start + milliseconds(1400)), seconds(1));
    EXPECT_EQ(RemainingTime(start + milliseconds(1600)), seconds(2));
}

TEST_F(RemainingTimeTest, IsNotToldBeforeATwentiethIsDone) {
    StartWork(1000, start);
    EXPECT_EQ(RemainingTime(start + seconds(1)), std::nullopt);
    AddWorkDone(49);
    EXPECT_EQ(RemainingTime(start + seconds(1)), std::nullopt);
    AddWorkDone(1);
    EXPECT_EQ(RemainingTime(start + seconds(1)), seconds(19));
}

TEST_F(RemainingTimeTest, IsNotToldWithoutWork) {
    EXPECT_EQ(RemainingTime(), std::nullopt);
    StartWork(10, start);
    AddWorkDone(5);
    EndWork();
    EXPECT_EQ(RemainingTime(start + seconds(1)), std::nullopt);
    AddWorkDone(5);
    EXPECT_EQ(RemainingTime(start + seconds(1)), std::nullopt);
}

TEST_F(RemainingTimeTest, NothingIsLeftWhenAllIsDone) {
    StartWork(10, start);
    AddWorkDone(11);
    EXPECT_EQ(RemainingTime(start + seconds(7)), seconds(0));
}

TEST_F(RemainingTimeTest, NewWorkBeginsWithNothingDone) {
    StartWork(10, start);
    AddWorkDone(10);
    StartWork(10, start);
    EXPECT_EQ(RemainingTime(start + seconds(7)), std::nullopt);
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
    StartWork(4, std::chrono::steady_clock::now() - seconds(3000));
    AddWorkDone(3);
    tick.Handle();
    ASSERT_TRUE(display.atMark.has_value()) << "drawn with the activity mark";
    EXPECT_NEAR(static_cast<double>(display.atMark->count()), 1000, 10);
    EndWork();
    tick.Handle();
    EXPECT_EQ(display.remaining, std::nullopt);
}

}  // namespace
}  // namespace k2k::test
