// The thread that a build runs on, beside the thread of its window.
#pragma once

#include <atomic>
#include <string>
#include <thread>

#include "desktop/run_window.h"
#include "driver/run_program.h"

namespace k2k {

// Runs from its making on. The options dialog is shown on the window's thread.
class BuildThread {
  public:
    BuildThread(std::string command, const StageEntries& stages, RunWindow& window);
    // Waits for the build's end.
    ~BuildThread() { thread_.join(); }
    BuildThread(const BuildThread&) = delete;
    BuildThread& operator=(const BuildThread&) = delete;

    bool Ended() const { return ended_; }

  private:
    void Run(const std::string& command, const StageEntries& stages, RunWindow& window);

    std::atomic<bool> ended_ = false;
    std::thread thread_;
};

}  // namespace k2k
