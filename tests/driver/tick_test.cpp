#include "driver/tick.h"

#include <gtest/gtest.h>

#include "driver/build_log.h"
#include "support/build_state.h"
#include "support/recording_display.h"

namespace k2k {
namespace {

using Events = std::vector<std::string>;

class TheTick : public test::BuildState {
  protected:
    // What one tick shows.
    Events Handle() {
        display_.events.clear();
        tick_.Handle();
        return display_.events;
    }

    test::RecordingDisplay display_;
    Tick tick_{display_};
};

TEST_F(TheTick, BlinksTheActivityMark) {
    for (int i = 0; i < 3; ++i) Handle();
    EXPECT_EQ(display_.activity, (std::vector<bool>{true, false, true}));
}

TEST_F(TheTick, ShowsTotalCaptionAndPosition) {
    tick_.SetCaption("nexus (%d)");
    ProgressTotal = 10;
    ProgressDone = 3;
    EXPECT_EQ(Handle(), (Events{"range 10", "caption nexus (7)", "done 3"}));
}

TEST_F(TheTick, ShowsNothingWhileTheProgressStands) {
    tick_.SetCaption("nexus (%d)");
    ProgressDone = 3;
    Handle();
    EXPECT_EQ(Handle(), Events{});
    tick_.SetCaption("portals (%d)");
    EXPECT_EQ(Handle(), Events{}) << "the caption alone does not refresh the display";
}

TEST_F(TheTick, ShowsANewCaptionWithANewTotal) {
    tick_.SetCaption("portals (%d)");
    ProgressTotal = 10;
    EXPECT_EQ(Handle(), (Events{"range 10", "caption portals (10)"}));
    ProgressTotal = 20;
    EXPECT_EQ(Handle(), (Events{"range 20"})) << "neither the count nor the caption changed";
}

TEST_F(TheTick, CountsDownInTheCaption) {
    tick_.SetCaption("nexus (%d)");
    ProgressTotal = 10;
    Handle();
    ProgressDone = 4;
    EXPECT_EQ(Handle(), (Events{"caption nexus (6)", "done 4"}));
}

TEST_F(TheTick, CountsNothingLeftWithATotalOfZero) {
    tick_.SetCaption("shadows (%d)");
    ProgressDone = 5;
    EXPECT_EQ(Handle(), (Events{"caption shadows (0)", "done 5"}));
}

TEST_F(TheTick, ACaptionMayGoWithoutTheCount) {
    tick_.SetCaption("colors");
    ProgressDone = 5;
    EXPECT_EQ(Handle(), (Events{"caption colors", "done 5"}));
}

}  // namespace
}  // namespace k2k
