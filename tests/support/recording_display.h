// A display that keeps what a run shows.
#pragma once

#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "driver/display.h"

namespace k2k::test {

class RecordingDisplay : public Display {
  public:
    void Text(std::string_view shown) override {
        const std::lock_guard lock(lock_);
        text += shown;
    }
    void Beep() override {
        const std::lock_guard lock(lock_);
        ++beeps;
    }
    void SetProgressRange(int32_t total) override { Record("range " + std::to_string(total)); }
    void SetProgress(int32_t done) override { Record("done " + std::to_string(done)); }
    void SetCaption(std::string_view caption) override { Record("caption " + std::string(caption)); }
    void SetButton(std::string_view label) override { Record("button " + std::string(label)); }
    void SetActivity(bool on) override { activity.push_back(on); }

    std::string text;
    int beeps = 0;
    std::vector<std::string> events;  // range, position, caption and button, as they came
    std::vector<bool> activity;

  private:
    void Record(std::string event) { events.push_back(std::move(event)); }

    std::mutex lock_;
};

}  // namespace k2k::test
