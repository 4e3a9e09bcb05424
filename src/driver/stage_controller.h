// The controlling thread's loop: starts one stage after the other and keeps the display alive meanwhile.
#pragma once

#include <ctime>
#include <memory>

#include "driver/display.h"
#include "driver/message_queue.h"
#include "driver/run_program.h"
#include "driver/stack_thread.h"
#include "driver/stage.h"
#include "driver/tick.h"

namespace k2k {

class StageController {
  public:
    StageController(const StageEntries& stages, Display& display, std::time_t startTime)
        : stages_(stages), display_(display), tick_(display), startTime_(startTime) {}

    // Runs the stages to the end of the last one, or to the first that fails; returns the exit code.
    int Run();

  private:
    void Handle(PostedMessage posted);
    void ShowUsage();
    void StartNextStage();
    void StartStage(size_t stage);
    void Finish();
    void Leave();
    void Stop();
    void ShowOk();

    const StageEntries& stages_;
    Display& display_;
    Tick tick_;
    std::time_t startTime_;
    MessageQueue queue_;
    StageState words_ = NewStageState;
    bool running_ = true;
    int exitCode_ = 0;
    std::unique_ptr<StackThread> worker_;  // after all that a worker reaches
};

}  // namespace k2k
