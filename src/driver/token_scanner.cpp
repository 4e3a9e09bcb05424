// The scanner's walk through a text: skipping to a token, and taking it.
#include "driver/token_scanner.h"

#include "driver/build_log.h"

namespace k2k {

namespace {

// Characters are unsigned bytes: everything below the first printing one is white space.
constexpr int FirstNonBlank = 33;
constexpr int Blank = 32;

int Code(char c) {
    return static_cast<unsigned char>(c);
}

}  // namespace

void TokenScanner::Start(const char* text, size_t size) {
    unread_ = false;
    line_ = 1;
    cursor_ = text;
    end_ = text + size;
}

bool TokenScanner::NextToken(bool crossLines, bool wholeLine) {
    if (unread_) {
        unread_ = false;
        return true;
    }
    if (SkipToToken(crossLines) && ReadToken(wholeLine)) return true;
    if (!crossLines) FailOnLine();
    return false;
}

bool TokenScanner::SkipToToken(bool crossLines) {
    while (cursor_ != end_ && *cursor_ != '\0') {
        if (*cursor_ == '\n') {
            if (!crossLines) FailOnLine();
            ++line_;
            ++cursor_;
        } else if (Code(*cursor_) < FirstNonBlank) {
            ++cursor_;
        } else if (!SkipComment(crossLines)) {
            return true;
        }
    }
    return false;
}

// Leaves the line feed behind the comment, so that it is counted.
bool TokenScanner::SkipComment(bool crossLines) {
    if (end_ - cursor_ < 2 || cursor_[0] != '/' || cursor_[1] != '/') return false;
    if (!crossLines) FailOnLine();
    while (cursor_ != end_ && *cursor_ != '\n' && *cursor_ != '\0') ++cursor_;
    return true;
}

bool TokenScanner::ReadToken(bool wholeLine) {
    if (*cursor_ == '"') return ReadQuoted();
    return ReadPlain(wholeLine ? Blank : FirstNonBlank);
}

bool TokenScanner::ReadQuoted() {
    size_t length = 0;
    for (++cursor_; cursor_ != end_ && *cursor_ != '"';) {
        if (*cursor_ == '\0') FatalError(" \nE711");
        Take(length);
    }
    if (cursor_ == end_ || ++cursor_ == end_) return false;
    token_[length] = '\0';
    return true;
}

bool TokenScanner::ReadPlain(int firstNonBlank) {
    size_t length = 0;
    while (cursor_ != end_ && Code(*cursor_) >= firstNonBlank) Take(length);
    if (cursor_ == end_) return false;
    token_[length] = '\0';
    return true;
}

void TokenScanner::Take(size_t& length) {
    if (length == MaxTokenLength) FatalError(" \nE712");
    token_[length++] = *cursor_++;
}

void TokenScanner::FailOnLine() const {
    FatalError(" \nInvalid line %i", line_);
}

void TokenScanner::ReadFloats(float* out, int count) {
    for (int i = 0; i < count; ++i) {
        if (!NextToken(false)) FatalError("Syntax error reading vector, line %d", line_);
        out[i] = ToFloat(view());
    }
}

void TokenScanner::ReadInts(std::vector<int32_t>& list, int count) {
    for (int i = 0; i < count; ++i) {
        if (!NextToken(false)) FatalError("Syntax error reading vector, line %d", line_);
        list.push_back(ToInt(view()));
    }
}

std::string TokenScanner::ReadJoined(int count) {
    std::string joined;
    for (int i = 0; i < count; ++i) {
        const bool first = i == 0;
        if (!NextToken(first)) FatalError("Syntax error parsing line %d", line_);
        if (!first) joined += ' ';
        joined += view();
    }
    return joined;
}

}  // namespace k2k
