// The four stages: their state words, and the body of the worker thread that runs one.
#pragma once

#include <array>
#include <cstdint>

#include "driver/message_queue.h"
#include "driver/run_program.h"

namespace k2k {

// A stage's word: its number in the low 4 bits, which never change, and its state above them.
namespace StageBits {
constexpr uint32_t Number = 0xF;
constexpr uint32_t Running = 16;
constexpr uint32_t HandedBack = 32;  // the worker has returned control
constexpr uint32_t Failed = 128;
constexpr uint32_t Begun = 0xFF0;   // zero: not yet begun
constexpr uint32_t State = 0xFFF0;  // cleared before a new state is set
}  // namespace StageBits

constexpr int StageCount = 4;
using StageState = std::array<uint32_t, StageCount>;
constexpr StageState NewStageState{1, 2, 3, 4};

// A worker's body: runs the stage of the word and posts how it ended. The value that the stage returns does not matter;
// only a fatal error makes it fail. Returns 1, or 0 when there was nothing to run.
int StageThread(uint32_t& word, const StageEntries& stages, MessageQueue& queue);

}  // namespace k2k
