// How long a step whose items differ in cost will still take.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace k2k {

// Begins a step that costs so much altogether, in any unit. Nothing of it is done.
void StartWork(int64_t cost, std::chrono::steady_clock::time_point now = std::chrono::steady_clock::now());
// May be called from any thread.
void AddWorkDone(int64_t cost);
void EndWork();

// The time that the rest takes at the rate of what is done. None without a step, and while too little is done to tell.
// Display values: any thread may ask.
std::optional<std::chrono::seconds> RemainingTime(
    std::chrono::steady_clock::time_point now = std::chrono::steady_clock::now());

}  // namespace k2k
