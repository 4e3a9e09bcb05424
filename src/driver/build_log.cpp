// The log: text view and log file, fatal errors, deferred errors, progress counters and once flags.
#include "driver/build_log.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <utility>

#include "driver/build_options.h"
#include "driver/remaining_time.h"
#include "driver/silent_display.h"

namespace k2k {

std::atomic<int32_t> ProgressTotal{0};
std::atomic<int32_t> ProgressDone{0};
std::atomic<bool> TickOn{false};
std::atomic<int32_t> WarnCount{0};

namespace {

constexpr size_t MaxLogText = 512;
constexpr size_t MaxFatalText = 128;
constexpr size_t MaxPendingText = 1023;

// Stands for the text view in tests.
class TextCollector : public SilentDisplay {
  public:
    void Text(std::string_view text) override { collected += text; }

    std::string collected;
};

struct LogState {
    std::mutex viewLock;  // one text at a time
    Display* view = nullptr;
    std::mutex fatalLock;  // one fatal message as a whole
    bool fatalShown = false;
    std::string pendingError;
    bool hasPendingError = false;
    std::array<std::atomic<bool>, static_cast<size_t>(WarnFamily::Count)> warned{};
    TextCollector collector;
};

LogState& State() {
    static LogState state;
    return state;
}

K2K_PRINTF(2, 0)
std::string FormatCut(size_t limit, const char* format, va_list args) {
    std::string text(limit + 1, '\0');
    const int length = std::vsnprintf(text.data(), text.size(), format, args);
    text.resize(length < 0 ? 0 : std::min(static_cast<size_t>(length), limit));
    return text;
}

// What printf makes of text without arguments; a conversion that would need one stays as it stands.
std::string Reformat(std::string_view text) {
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        out += text[i];
        if (text[i] == '%' && i + 1 < text.size() && text[i + 1] == '%') ++i;
    }
    return out;
}

void ShowFatal(const std::string& message) {
    BuildLog("\n------ CRITICAL ERROR ------\n");
    TickOn = false;
    BuildLog("%s", message.c_str());
    BuildLog("\nPress any key... \n");
    const std::lock_guard lock(State().viewLock);
    if (State().view != nullptr) State().view->Beep();
}

}  // namespace

int BuildLog(const char* format, ...) {
    va_list args;
    va_start(args, format);
    const std::string text = FormatCut(MaxLogText, format, args);
    va_end(args);

    const std::lock_guard lock(State().viewLock);
    LogFile(text);
    if (State().view == nullptr) return -1;
    State().view->Text(text);
    return 1;
}

void LogFile(std::string_view text) {
    if (!Options().writelog) return;
    // Opened and closed for every text, so that it survives a crash.
    std::FILE* file = std::fopen("buildlog.txt", "ab");
    if (file == nullptr) return;
    const std::string formatted = Reformat(text);
    std::fwrite(formatted.data(), 1, formatted.size(), file);
    std::fclose(file);
}

void SetLogView(Display* view) {
    const std::lock_guard lock(State().viewLock);
    State().view = view;
}

void FatalError(const char* format, ...) {
    va_list args;
    va_start(args, format);
    const std::string message = FormatCut(MaxFatalText, format, args);
    va_end(args);
    {
        const std::lock_guard lock(State().fatalLock);
        if (!std::exchange(State().fatalShown, true)) ShowFatal(message);
    }
    throw FatalStop(message);
}

void ForgetFatalError() {
    const std::lock_guard lock(State().fatalLock);
    State().fatalShown = false;
}

void RecordError(std::string_view text, std::string_view name) {
    std::string& pending = State().pendingError;
    pending.assign(text).append(" :  ").append(name);
    if (pending.size() > MaxPendingText) pending.resize(MaxPendingText);
    State().hasPendingError = true;
}

bool HasPendingError() {
    return State().hasPendingError;
}

void ShowPendingError() {
    BuildLog("\n\nFatal error ->  ");
    BuildLog("%s", State().pendingError.c_str());
    BuildLog("\n");
}

void StartProgress(int32_t total) {
    ProgressTotal = total;
    ProgressDone = 0;
}

bool WarnOnce(WarnFamily family) {
    const bool repeated = State().warned[static_cast<size_t>(family)].exchange(true);
    return !Options().quiet && (!repeated || Options().verbose);
}

void ResetLogForTest() {
    LogState& state = State();
    ForgetFatalError();
    state.pendingError.clear();
    state.hasPendingError = false;
    for (std::atomic<bool>& flag : state.warned) flag = false;
    ProgressTotal = ProgressDone = WarnCount = 0;
    TickOn = false;
    EndWork();
    state.collector.collected.clear();
    SetLogView(&state.collector);
}

std::string TakeLoggedText() {
    const std::lock_guard lock(State().viewLock);
    return std::exchange(State().collector.collected, {});
}

}  // namespace k2k
