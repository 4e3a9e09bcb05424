// What a front end offers to a run: the one header of operations behind which a console or a window stands.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string_view>

namespace k2k {

// All operations are called on the controlling thread except Text and Beep, which any stage thread may call.
class Display {
  public:
    virtual ~Display() = default;

    // Text of BuildLog, formatted and cut, to be shown at once.
    virtual void Text(std::string_view text) = 0;
    virtual void Beep() = 0;

    // The progress bar's range is 0 to total; its position is done.
    virtual void SetProgressRange(int32_t total) = 0;
    virtual void SetProgress(int32_t done) = 0;
    // The status caption, formatted.
    virtual void SetCaption(std::string_view caption) = 0;
    virtual void SetButton(std::string_view text) = 0;
    // The activity mark, which blinks with the tick.
    virtual void SetActivity(bool on) = 0;
    // How long the step under way will still take; none when that cannot be told. Comes before the activity mark.
    virtual void SetRemainingTime(std::optional<std::chrono::seconds>) {}
};

}  // namespace k2k
