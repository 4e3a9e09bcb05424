// Everything that a build tells its user: text, fatal errors, deferred errors and progress.
#pragma once

#include <atomic>
#include <cstdint>
#include <exception>
#include <string>
#include <string_view>

namespace k2k {

class Display;

#define K2K_PRINTF(fmt, args) __attribute__((format(printf, fmt, args)))

// Formats (cut at 512 bytes), hands the text to the log file and to the text view. Knows nothing of -quiet: callers
// test it. Returns 1, or -1 when there is no view. Meant for a stage's main thread: texts of several threads stay
// whole, but come in any order.
int BuildLog(const char* format, ...) K2K_PRINTF(1, 2);

// With -writelog, appends text to buildlog.txt in the working directory; a file that cannot be opened loses the text.
// The text counts as a printf format without arguments, so "%%" stands for one "%".
void LogFile(std::string_view text);

// The text view that BuildLog and the beep of FatalError reach; null for none. Not owned.
void SetLogView(Display* view);

// Thrown by FatalError when the message is out; ends the stage. Whoever starts a thread carries it to the thread that
// waits; nobody else catches it.
class FatalStop : public std::exception {
  public:
    explicit FatalStop(std::string text) : text_(std::move(text)) {}
    const char* what() const noexcept override { return text_.c_str(); }

  private:
    std::string text_;
};

// Thrown where the program ends at once with a status (errors in option values).
class ProgramExit : public std::exception {
  public:
    explicit ProgramExit(int exitStatus) : status(exitStatus) {}
    const char* what() const noexcept override { return "program exit"; }
    const int status;
};

// Reports a condition that the build cannot go on from: logs the banner and the message (cut at 128 bytes), beeps, and
// throws FatalStop with the message. Safe to call from any worker thread; the first caller's message is shown.
[[noreturn]] void FatalError(const char* format, ...) K2K_PRINTF(1, 2);

// The next fatal error is the first of a new run.
void ForgetFatalError();

// An error of the colour stage, shown at the stage's end: text, " :  ", name.
void RecordError(std::string_view text, std::string_view name);
bool HasPendingError();
void ShowPendingError();

// Progress, written by stage threads and read by the tick. Display values: a lost update does no harm.
extern std::atomic<int32_t> ProgressTotal;
extern std::atomic<int32_t> ProgressDone;

// Announces work: the total, and nothing done yet.
void StartProgress(int32_t total);

// Whether the tick may show progress: off from a fatal error or the end of a run on.
extern std::atomic<bool> TickOn;

// Number of block warnings of the last read of the map; -autozoom minimises it.
extern std::atomic<int32_t> WarnCount;

// Families of warnings that come in numbers. The first of a family prints, later ones only with -verbose, none with
// -quiet. One flag a family, kept for the whole run.
// clang-format off
enum class WarnFamily {
    // map reading
    W071, W072For50, W072For51, W072For71, W073, W074, W075,
    // blocks: one flag a kind and hull argument
    W010Hull0, W010Hull1, W010Hull2, W011Hull0, W011Hull1, W011Hull2,
    W012Hull0, W012Hull1, W012Hull2, W013Hull0, W013Hull1, W013Hull2,
    // tree, flood, portals
    W064, W090, W091, W177Hull0, W177Hull1, W177Hull2,
    // junctions: W201 and W202 together
    W201,
    // visibility
    W030, W110,
    // files and lighting
    W023, W081, W149,
    Count
};
// clang-format on

// The once rule: whether this occurrence is to be printed. Sets the family's flag in every case.
bool WarnOnce(WarnFamily family);

// For tests: all of this header's state as at program start, with text collected instead of shown.
void ResetLogForTest();

// For tests: the text that BuildLog formatted since ResetLogForTest().
std::string TakeLoggedText();

}  // namespace k2k
