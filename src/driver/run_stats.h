// What a run cost: seconds and peak memory per stage, and counters that the stages leave. For measuring; nothing of it
// reaches a level file.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace k2k {

// Adds to a named counter ("portals", "rays" ...). Cheap, but locked: stages add their sums at their end.
void AddStat(std::string_view name, int64_t count);

// Marks the start and the end of a stage on its own thread.
void BeginStageStats(int stage);
void EndStageStats(int stage);

// Writes all of it as JSON to the file that the environment variable K2K_STATS names; nothing when it is not set.
void WriteRunStats();

// All of it as JSON: {"stages": [{"stage", "wall", "cpu", "peak_kib"} ...], "counts": {...}}.
std::string RunStatsJson();

void ResetRunStats();

}  // namespace k2k
