#include "driver/remaining_time.h"

#include <mutex>

namespace k2k {

namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

constexpr double TellingPart = 0.05;  // of all work: what a twentieth took tells what the rest takes

struct Work {
    std::mutex lock;
    bool isOn = false, isAsked = false;
    Clock::time_point start, told;
    double done = 0, left = 0;
};

Work& TheWork() {
    static Work work;
    return work;
}

}  // namespace

void StartWork(Clock::time_point now) {
    Work& work = TheWork();
    const std::lock_guard guard(work.lock);
    work.isOn = true;
    work.isAsked = false;
    work.start = work.told = now;
    work.done = work.left = 0;
}

bool IsWorkAsked() {
    Work& work = TheWork();
    const std::lock_guard guard(work.lock);
    return work.isAsked;
}

void TellWork(double done, double left, Clock::time_point now) {
    Work& work = TheWork();
    const std::lock_guard guard(work.lock);
    work.isAsked = false;
    work.told = now;
    work.done = done;
    work.left = left;
}

void EndWork() {
    Work& work = TheWork();
    const std::lock_guard guard(work.lock);
    work.isOn = work.isAsked = false;
}

std::optional<std::chrono::seconds> RemainingTime(Clock::time_point now) {
    Work& work = TheWork();
    const std::lock_guard guard(work.lock);
    work.isAsked = work.isOn;
    if (!work.isOn || work.done <= 0 || work.done < TellingPart * (work.done + work.left)) return {};
    const Seconds whenTold = Seconds(work.told - work.start) * (work.left / work.done);
    if (whenTold <= Seconds::zero()) return std::chrono::seconds(0);
    const Seconds since = now - work.told;
    return std::chrono::round<std::chrono::seconds>(whenTold * (whenTold / (whenTold + since)));
}

}  // namespace k2k
