#include "driver/stage_controller.h"

#include <algorithm>
#include <chrono>

#include "driver/build_log.h"
#include "driver/build_options.h"

namespace k2k {

namespace {

constexpr const char* Usage =
    "Usage: MAPFILE -pal PALFILE [OPTIONS]\n\n"
    "MAPFILE: filename.$$M\n"
    "PALFILE: filename.<PCX, RAW, BMP, LBM, or LMP>\n"
    "OPTIONS:\n"
    "-dialog: displays a dialog window for configuring options\n";

// The format takes the number of steps still to do.
constexpr std::array<const char*, StageCount> StageCaptions{"nexus (%d)", "portals (%d)", "shadows (%d)", "colors"};

// The status of a worker that failed.
constexpr int WorkerFailed = 1;

// Trees of degenerate maps are deep, and a stage walks them recursively on its own thread.
constexpr size_t StageStack = size_t{64} << 20;

}  // namespace

int StageController::Run() {
    TickOn = true;
    queue_.Post({Message::StartNextStage});
    auto nextTick = std::chrono::steady_clock::now() + Tick::Interval;
    while (running_) {
        if (const auto posted = queue_.WaitUntil(nextTick)) {
            Handle(*posted);
        } else {
            if (TickOn) tick_.Handle();
            nextTick += Tick::Interval;
        }
    }
    return exitCode_;
}

void StageController::Handle(PostedMessage posted) {
    if (posted.message == Message::WorkerEnded)
        Leave();
    else if ((posted.word & StageBits::Failed) != 0)
        Stop();
    else if (!OptionsValid)
        ShowUsage();
    else
        StartNextStage();
}

void StageController::ShowUsage() {
    BuildLog("\n ");
    BuildLog("%s", Usage);
    ShowOk();
}

void StageController::StartNextStage() {
    const auto next =
        std::find_if(words_.begin(), words_.end(), [](uint32_t word) { return (word & StageBits::Begun) == 0; });
    if (next == words_.end())
        Finish();
    else
        StartStage(static_cast<size_t>(next - words_.begin()));
}

void StageController::StartStage(size_t stage) {
    tick_.SetCaption(StageCaptions[stage]);
    worker_.reset();  // it has handed control back
    worker_ = std::make_unique<StackThread>([this, stage] { StageThread(words_[stage], stages_, queue_); }, StageStack);
}

void StageController::Finish() {
    BuildLog(" \nTime: %5.1f sec\n", std::difftime(std::time(nullptr), startTime_));
    TickOn = false;
    tick_.Handle();
    ShowOk();
}

void StageController::ShowOk() {
    running_ = false;
    display_.Beep();
    BuildLog("\n ");
    display_.SetButton("Ok");
    display_.SetCaption("Ok");
}

// The run never finishes; the display keeps the state that it has come to.
void StageController::Leave() {
    running_ = false;
    tick_.Handle();
}

void StageController::Stop() {
    running_ = false;
    display_.SetProgress(ProgressTotal);
    display_.SetCaption("Error");
    exitCode_ |= WorkerFailed;
}

}  // namespace k2k
