#include "console_display.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <cstdio>

namespace k2k {

namespace {

// Where the progress line stands. A piece of text without a line feed keeps its line: the progress then goes below it,
// and the cursor goes back up behind the piece.
enum class LinePlace : int { None, OnCursorLine, BelowText };

constexpr std::string_view WipeCursorLine = "\r\033[K";
constexpr std::string_view WipeBelowText = "\n\r\033[K";
constexpr const char* Up = "\033[A";

// Read by the signal handler.
std::atomic<LinePlace> linePlace{LinePlace::None};
static_assert(std::atomic<LinePlace>::is_always_lock_free);

void WriteAll(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = write(file, bytes.data(), bytes.size());
        if (written <= 0) return;
        bytes.remove_prefix(static_cast<size_t>(written));
    }
}

// Only calls that are safe in a handler.
void EndBySignal(int signal) {
    if (linePlace == LinePlace::OnCursorLine) WriteAll(STDERR_FILENO, WipeCursorLine);
    if (linePlace == LinePlace::BelowText) WriteAll(STDERR_FILENO, WipeBelowText);
    _exit(128 + signal);
}

size_t TerminalWidth() {
    winsize size{};
    if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return 80;
    return size.ws_col;
}

// Minutes and seconds.
std::string TimeText(std::chrono::seconds time) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%lld:%02lld", static_cast<long long>(time.count() / 60),
                  static_cast<long long>(time.count() % 60));
    return text.data();
}

bool ContinuesCharacter(char c) {
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

}  // namespace

ConsoleDisplay::ConsoleDisplay()
    : textIsTerminal_(isatty(STDOUT_FILENO) != 0),
      progressIsTerminal_(isatty(STDERR_FILENO) != 0),
      width_(TerminalWidth()) {
    std::signal(SIGINT, EndBySignal);
    std::signal(SIGTERM, EndBySignal);
}

ConsoleDisplay::~ConsoleDisplay() {
    const std::lock_guard lock(lock_);
    Wipe();
}

void ConsoleDisplay::Text(std::string_view text) {
    const std::lock_guard lock(lock_);
    if (textIsTerminal_) Wipe();
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
    if (textIsTerminal_) FollowText(text);
}

void ConsoleDisplay::Beep() {
    if (!textIsTerminal_) return;
    const std::lock_guard lock(lock_);
    std::fputc('\a', stdout);
    std::fflush(stdout);
}

void ConsoleDisplay::SetProgressRange(int32_t total) {
    const std::lock_guard lock(lock_);
    total_ = total;
    Draw();
}

void ConsoleDisplay::SetProgress(int32_t done) {
    const std::lock_guard lock(lock_);
    done_ = done;
    Draw();
}

void ConsoleDisplay::SetCaption(std::string_view caption) {
    const std::lock_guard lock(lock_);
    caption_ = caption;
    Draw();
}

void ConsoleDisplay::SetActivity(bool on) {
    const std::lock_guard lock(lock_);
    active_ = on;
    Draw();
}

// Drawn with the activity mark, which changes at every tick.
void ConsoleDisplay::SetRemainingTime(std::optional<std::chrono::seconds> remaining) {
    const std::lock_guard lock(lock_);
    remaining_ = remaining;
}

void ConsoleDisplay::FollowText(std::string_view text) {
    constexpr size_t TabStop = 8;
    for (const char c : text) {
        if (c == '\n')
            column_ = 0;
        else if (c == '\t')
            column_ = std::min(column_ / TabStop * TabStop + TabStop, width_ - 1);
        else if (!ContinuesCharacter(c))
            column_ = column_ % width_ + 1;
    }
}

void ConsoleDisplay::Draw() {
    if (!progressIsTerminal_) return;
    if (column_ == 0) {
        linePlace = LinePlace::OnCursorLine;
        WriteAll(STDERR_FILENO, std::string("\r").append(ProgressLine()).append("\033[K"));
    } else {
        linePlace = LinePlace::BelowText;
        WriteAll(STDERR_FILENO, std::string("\n\r").append(ProgressLine()).append("\033[K").append(ToText()));
    }
}

void ConsoleDisplay::Wipe() {
    const LinePlace place = linePlace.exchange(LinePlace::None);
    if (place == LinePlace::OnCursorLine) WriteAll(STDERR_FILENO, WipeCursorLine);
    if (place == LinePlace::BelowText) WriteAll(STDERR_FILENO, std::string(WipeBelowText) + ToText());
}

std::string ConsoleDisplay::ToText() const {
    return Up + ("\033[" + std::to_string(column_ + 1)) + "G";
}

std::string ConsoleDisplay::ProgressLine() const {
    constexpr size_t BarLength = 30;
    const int64_t done = std::clamp(done_, 0, std::max(total_, 0));
    const size_t filled = total_ > 0 ? static_cast<size_t>(done * static_cast<int64_t>(BarLength) / total_) : 0;
    std::string line = active_ ? "* [" : "  [";
    line.append(filled, '#').append(BarLength - filled, ' ').append("] ").append(caption_);
    if (remaining_) line.append(" about ").append(TimeText(*remaining_)).append(" left");
    line.resize(std::min(line.size(), width_ - 1));
    return line;
}

}  // namespace k2k
