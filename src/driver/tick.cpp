#include "driver/tick.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

#include "driver/build_log.h"
#include "driver/remaining_time.h"

namespace k2k {

void Tick::Handle() {
    activity_ = !activity_;
    display_.SetRemainingTime(RemainingTime());
    display_.SetActivity(activity_);

    const int32_t total = ProgressTotal;
    const int32_t done = ProgressDone;
    if (total == shownTotal_ && done == shownDone_) return;

    if (std::exchange(shownTotal_, total) != total) display_.SetProgressRange(total);
    const bool moved = std::exchange(shownDone_, done) != done;
    if (std::exchange(shownCaption_, caption_) != caption_ || moved) ShowCaption();
    if (moved) display_.SetProgress(done);
}

void Tick::ShowCaption() {
    const int32_t remaining = std::max(shownTotal_ - shownDone_, 0);
    std::array<char, 128> text{};
    std::snprintf(text.data(), text.size(), caption_, remaining);
    display_.SetCaption(text.data());
}

}  // namespace k2k
