// What a run shows, on its way from the run's threads to the window's thread.
#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "driver/display.h"
#include "driver/text_view.h"

namespace k2k {

struct RunPicture {
    std::vector<std::string> lines;
    int32_t total = 0;
    int32_t done = 0;
    std::string caption;
    std::string button = "Cancel";
    bool active = false;
    int beeps = 0;  // since the picture before
};

class SharedDisplay : public Display {
  public:
    // changed is called on the run's threads when there is something new, and not again before that was taken.
    explicit SharedDisplay(std::function<void()> changed) : changed_(std::move(changed)) {}

    // How it looks now.
    RunPicture Take();

    // Whether the run came to its end; neither a run that failed nor one that goes on did.
    bool RunFinished() const;

    void Text(std::string_view text) override;
    void Beep() override;
    void SetProgressRange(int32_t total) override;
    void SetProgress(int32_t done) override;
    void SetCaption(std::string_view caption) override;
    void SetButton(std::string_view text) override;
    void SetActivity(bool on) override;

  private:
    // Changes the state under the lock, and tells of it.
    void Change(const std::function<void()>& change);

    const std::function<void()> changed_;
    mutable std::mutex lock_;
    bool told_ = false;
    TextView text_;
    RunPicture picture_;  // its lines stand in text_
};

}  // namespace k2k
