// A run on a console: text on standard output, one line of progress on standard error where that is a terminal.
#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "driver/display.h"

namespace k2k {

// One object a process: it also ends the process at SIGINT and SIGTERM, with the terminal line wiped and the status
// that a shell gives such an end.
class ConsoleDisplay : public Display {
  public:
    ConsoleDisplay();
    ~ConsoleDisplay() override;
    ConsoleDisplay(const ConsoleDisplay&) = delete;
    ConsoleDisplay& operator=(const ConsoleDisplay&) = delete;

    void Text(std::string_view text) override;
    void Beep() override;
    void SetProgressRange(int32_t total) override;
    void SetProgress(int32_t done) override;
    void SetCaption(std::string_view caption) override;
    void SetButton(std::string_view) override {}
    void SetActivity(bool on) override;
    void SetRemainingTime(std::optional<std::chrono::seconds> remaining) override;

  private:
    // The rest is called with the lock held.
    void FollowText(std::string_view text);
    void Draw();
    void Wipe();
    std::string ProgressLine() const;
    std::string ToText() const;

    std::mutex lock_;
    const bool textIsTerminal_;
    const bool progressIsTerminal_;
    size_t width_;       // of the terminal
    size_t column_ = 0;  // of the terminal's cursor behind the text
    int32_t total_ = 0;
    int32_t done_ = 0;
    std::string caption_;
    bool active_ = false;
    std::optional<std::chrono::seconds> remaining_;
};

}  // namespace k2k
