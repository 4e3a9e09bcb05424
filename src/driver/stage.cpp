#include "driver/stage.h"

#include "driver/build_log.h"
#include "driver/build_options.h"
#include "driver/out_of_memory.h"
#include "driver/run_stats.h"

namespace k2k {

namespace {

using StageEntry = int (*)();

StageEntry EntryOf(uint32_t word, const StageEntries& stages) {
    switch (word & StageBits::Number) {
        case 1:
            return stages.geometry;
        case 2:
            return stages.visibility;
        case 3:
            return Options().litv2 ? stages.radiosity : stages.lighting;
        case 4:
            return stages.colours;
        default:
            return nullptr;
    }
}

void SetState(uint32_t& word, uint32_t state) {
    word = (word & ~StageBits::State) | state;
}

// The message that tells how the stage ended.
Message RunStage(uint32_t& word, StageEntry entry) {
    try {
        ReportFailures([entry] { entry(); });
        word |= StageBits::HandedBack;
    } catch (const FatalStop&) {
        SetState(word, StageBits::Failed | StageBits::HandedBack);
    } catch (const ProgramExit&) {
        return Message::WorkerEnded;
    }
    return Message::StageFinished;
}

}  // namespace

int StageThread(uint32_t& word, const StageEntries& stages, MessageQueue& queue) {
    if ((word & StageBits::Running) != 0) return 0;
    const StageEntry entry = EntryOf(word, stages);
    if (entry == nullptr) return 0;

    SetState(word, StageBits::Running);
    const int number = static_cast<int>(word & StageBits::Number);
    BeginStageStats(number);
    const Message ending = RunStage(word, entry);
    EndStageStats(number);
    queue.Post({ending, word});
    return 1;
}

}  // namespace k2k
