#include "desktop/shared_display.h"

#include <utility>

namespace k2k {

RunPicture SharedDisplay::Take() {
    const std::lock_guard lock(lock_);
    told_ = false;
    RunPicture picture = picture_;
    picture.lines = text_.Lines();
    picture_.beeps = 0;
    return picture;
}

bool SharedDisplay::RunFinished() const {
    const std::lock_guard lock(lock_);
    return picture_.button == "Ok";
}

void SharedDisplay::Text(std::string_view text) {
    Change([&] { text_.Add(text); });
}

void SharedDisplay::Beep() {
    Change([&] { ++picture_.beeps; });
}

void SharedDisplay::SetProgressRange(int32_t total) {
    Change([&] { picture_.total = total; });
}

void SharedDisplay::SetProgress(int32_t done) {
    Change([&] { picture_.done = done; });
}

void SharedDisplay::SetCaption(std::string_view caption) {
    Change([&] { picture_.caption = caption; });
}

void SharedDisplay::SetButton(std::string_view text) {
    Change([&] { picture_.button = text; });
}

void SharedDisplay::SetActivity(bool on) {
    Change([&] { picture_.active = on; });
}

void SharedDisplay::Change(const std::function<void()>& change) {
    {
        const std::lock_guard lock(lock_);
        change();
        if (std::exchange(told_, true)) return;
    }
    changed_();
}

}  // namespace k2k
