#include "driver/remaining_time.h"

#include <algorithm>
#include <atomic>

namespace k2k {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int64_t TellingPart = 20;  // of all work: what a twentieth took tells what the rest takes

struct Work {
    std::atomic<int64_t> total{0}, done{0};
    std::atomic<Clock::time_point> start{};
};

Work& TheWork() {
    static Work work;
    return work;
}

}  // namespace

void StartWork(int64_t cost, Clock::time_point now) {
    EndWork();
    TheWork().start = now;
    TheWork().total = cost;
}

void AddWorkDone(int64_t cost) {
    TheWork().done += cost;
}

void EndWork() {
    TheWork().total = 0;
    TheWork().done = 0;
}

std::optional<std::chrono::seconds> RemainingTime(Clock::time_point now) {
    const int64_t total = TheWork().total;
    const int64_t done = std::min<int64_t>(TheWork().done, total);
    if (total <= 0 || done < total / TellingPart || done <= 0) return {};
    const std::chrono::duration<double> elapsed = now - TheWork().start.load();
    return std::chrono::round<std::chrono::seconds>(elapsed * static_cast<double>(total - done) /
                                                    static_cast<double>(done));
}

}  // namespace k2k
