// What the controlling thread does every half second: progress bar, status caption, activity mark.
#pragma once

#include <chrono>
#include <cstdint>

#include "driver/display.h"

namespace k2k {

class Tick {
  public:
    static constexpr std::chrono::milliseconds Interval{500};

    explicit Tick(Display& display) : display_(display) {}

    // A printf format with at most one %d, for the steps still to do. Shown at the next change of the progress.
    void SetCaption(const char* format) { caption_ = format; }

    // Shows what changed since the last call.
    void Handle();

  private:
    void ShowCaption();

    Display& display_;
    bool activity_ = false;
    const char* caption_ = "";
    const char* shownCaption_ = "";
    int32_t shownTotal_ = 0;
    int32_t shownDone_ = 0;
};

}  // namespace k2k
