// The scrolling text of a window: lines of at most 80 columns that grow while pieces of them arrive.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace k2k {

class TextView {
  public:
    static constexpr size_t Columns = 80;
    // A view that reaches this many lines loses some of its oldest.
    static constexpr size_t MaxLines = 129;

    // Adds a piece of text. A character of several UTF-8 bytes takes one column.
    void Add(std::string_view text);

    // All lines, the oldest first; the last one may still grow.
    const std::vector<std::string>& Lines() const { return lines_; }

  private:
    void AddLine(std::string line);
    // Puts the piece behind the current line, which goes on at column.
    void Show(std::string_view piece, size_t column);

    std::vector<std::string> lines_;
    size_t column_ = 0;  // of the line that grows; 0: the next piece begins a line
};

}  // namespace k2k
