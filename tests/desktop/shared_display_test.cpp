#include "desktop/shared_display.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace k2k {
namespace {

using ::testing::ElementsAre;

class ASharedDisplay : public ::testing::Test {
  protected:
    std::atomic<int> told_ = 0;
    SharedDisplay display_{[this] { ++told_; }};
};

TEST_F(ASharedDisplay, GivesWhatTheRunShows) {
    display_.Text("one\n");
    display_.Text("two");
    display_.SetProgressRange(9);
    display_.SetProgress(4);
    display_.SetCaption("nexus (5)");
    display_.SetActivity(true);
    const RunPicture picture = display_.Take();
    EXPECT_THAT(picture.lines, ElementsAre("one", "two"));
    EXPECT_EQ(picture.total, 9);
    EXPECT_EQ(picture.done, 4);
    EXPECT_EQ(picture.caption, "nexus (5)");
    EXPECT_EQ(picture.button, "Cancel");
    EXPECT_TRUE(picture.active);
}

TEST_F(ASharedDisplay, TellsOfNewsOnceUntilTheyAreTaken) {
    display_.Text("one");
    display_.SetCaption("two");
    EXPECT_EQ(told_, 1);
    display_.Take();
    display_.Beep();
    EXPECT_EQ(told_, 2);
}

TEST_F(ASharedDisplay, GivesEveryBeepOnce) {
    display_.Beep();
    display_.Beep();
    EXPECT_EQ(display_.Take().beeps, 2);
    EXPECT_EQ(display_.Take().beeps, 0);
}

TEST_F(ASharedDisplay, KnowsTheEndOfARunByItsButton) {
    display_.SetCaption("Ok");
    EXPECT_FALSE(display_.RunFinished());
    display_.SetButton("Ok");
    EXPECT_TRUE(display_.RunFinished());
}

TEST_F(ASharedDisplay, LosesNothingOfSeveralThreads) {
    constexpr int Beeps = 2000;
    const auto beep = [this] {
        for (int i = 0; i < Beeps; ++i) display_.Beep();
    };
    int taken = 0;
    {
        const std::jthread first(beep), second(beep);
        for (int i = 0; i < Beeps; ++i) taken += display_.Take().beeps;
    }
    EXPECT_EQ(taken + display_.Take().beeps, 2 * Beeps);
}

}  // namespace
}  // namespace k2k
