#include "driver/text_view.h"

#include <utility>

namespace k2k {

namespace {

// How many lines a full view loses. They are every other one of its oldest 32.
constexpr size_t DroppedLines = 16;

bool BeginsCharacter(char c) {
    return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
}

}  // namespace

void TextView::Add(std::string_view text) {
    std::string piece;
    size_t length = 0;  // of the piece, in columns
    for (const char c : text) {
        if (c == '\n') {
            if (piece.empty())
                AddLine("");
            else
                Show(piece, 0);
            column_ = length = 0;
            piece.clear();
            continue;
        }
        if (BeginsCharacter(c) && column_ + ++length >= Columns) {
            Show(piece, 0);
            length = 1;
            piece.clear();
        }
        piece += c == '\t' ? ' ' : c;
    }
    if (!piece.empty()) Show(piece, column_ + length);
}

void TextView::AddLine(std::string line) {
    lines_.push_back(std::move(line));
    if (lines_.size() < MaxLines) return;
    // The list closes up at each step.
    for (size_t i = 0; i < DroppedLines; ++i) lines_.erase(lines_.begin() + static_cast<std::ptrdiff_t>(i));
}

void TextView::Show(std::string_view piece, size_t column) {
    if (column_ == 0)
        AddLine(std::string(piece));
    else
        lines_.back().append(piece);
    column_ = column;
}

}  // namespace k2k
