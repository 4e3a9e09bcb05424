// Other programs, run as a user would run them.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "support/files.h"

namespace k2k::test {

struct ProcessResult {
    int status = -1;  // as a shell gives it: 128 and the signal's number for a program that a signal ended
    std::string out, err;
};

// A program in the working directory, without input, with its output kept. Killed when it goes out of scope running.
class Process {
  public:
    explicit Process(const std::vector<std::string>& command);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    // Waits until the program has printed text; false when that takes too long.
    bool WaitForOutput(const std::string& text) const;
    void Signal(int signal) const;
    ProcessResult Wait();

  private:
    TempDir output_;
    pid_t id_ = -1;
};

inline ProcessResult RunProcess(const std::vector<std::string>& command) {
    return Process(command).Wait();
}

// The same with a terminal of 80 columns for output and errors; all that it shows is in out.
ProcessResult RunOnTerminal(const std::vector<std::string>& command);

}  // namespace k2k::test
