#include "driver/run_stats.h"

#include <sys/resource.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <mutex>

namespace k2k {
namespace {

constexpr int StageCount = 4;

struct StageStats {
    bool begun = false;
    double wallStart = 0, cpuStart = 0;
    double wall = 0, cpu = 0;
    long peakKib = 0;
};

struct RunStats {
    std::mutex lock;
    std::array<StageStats, StageCount> stages;
    std::map<std::string, int64_t, std::less<>> counts;
};

RunStats& Stats() {
    static RunStats stats;
    return stats;
}

double WallSeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

double Seconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

rusage ProcessUsage() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage;
}

double CpuSeconds(const rusage& usage) {
    return Seconds(usage.ru_utime) + Seconds(usage.ru_stime);
}

}  // namespace

void AddStat(std::string_view name, int64_t count) {
    const std::lock_guard guard(Stats().lock);
    Stats().counts[std::string(name)] += count;
}

void BeginStageStats(int stage) {
    const std::lock_guard guard(Stats().lock);
    StageStats& stats = Stats().stages.at(static_cast<size_t>(stage - 1));
    stats.begun = true;
    stats.wallStart = WallSeconds();
    stats.cpuStart = CpuSeconds(ProcessUsage());
}

void EndStageStats(int stage) {
    const std::lock_guard guard(Stats().lock);
    StageStats& stats = Stats().stages.at(static_cast<size_t>(stage - 1));
    const rusage usage = ProcessUsage();
    stats.wall = WallSeconds() - stats.wallStart;
    stats.cpu = CpuSeconds(usage) - stats.cpuStart;
    stats.peakKib = usage.ru_maxrss;
}

std::string RunStatsJson() {
    const std::lock_guard guard(Stats().lock);
    std::string text = "{\"stages\": [";
    const char* separator = "";
    for (int i = 0; i < StageCount; i++) {
        const StageStats& stats = Stats().stages[static_cast<size_t>(i)];
        if (!stats.begun) continue;
        std::array<char, 160> line{};
        std::snprintf(line.data(), line.size(), "%s{\"stage\": %d, \"wall\": %.4f, \"cpu\": %.4f, \"peak_kib\": %ld}",
                      separator, i + 1, stats.wall, stats.cpu, stats.peakKib);
        text += line.data();
        separator = ", ";
    }
    text += "], \"counts\": {";
    separator = "";
    for (const auto& [name, count] : Stats().counts) {
        text += separator + ("\"" + name + "\": ") + std::to_string(count);
        separator = ", ";
    }
    return text + "}}\n";
}

void WriteRunStats() {
    const char* path = std::getenv("K2K_STATS");
    if (path == nullptr || *path == 0) return;
    std::ofstream(path, std::ios::binary) << RunStatsJson();
}

void ResetRunStats() {
    const std::lock_guard guard(Stats().lock);
    Stats().stages = {};
    Stats().counts.clear();
}

}  // namespace k2k
