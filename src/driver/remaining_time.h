// How long a step whose items differ in cost will still take.
#pragma once

#include <chrono>
#include <optional>

namespace k2k {

// Begins a step. Nothing of it is done, and what is left is not known.
void StartWork(std::chrono::steady_clock::time_point now = std::chrono::steady_clock::now());

// Whether somebody has asked for the remaining time since the work was told last: only then is it worth reckoning.
bool IsWorkAsked();

// What of the step is done and what is left, in any unit. May be called from any thread.
void TellWork(double done, double left, std::chrono::steady_clock::time_point now = std::chrono::steady_clock::now());

void EndWork();

// The time that what is left takes at the rate of what is done. While no more is told it runs down, ever slower, and
// never out. None without a step, and while too little is done to tell. Display values: any thread may ask.
std::optional<std::chrono::seconds> RemainingTime(
    std::chrono::steady_clock::time_point now = std::chrono::steady_clock::now());

}  // namespace k2k
