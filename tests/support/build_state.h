// The state that every test starts from: options as before any parse, an empty log that collects its text.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "driver/build_log.h"
#include "driver/build_options.h"

namespace k2k::test {

// Registers one more reset that every BuildState test runs first; for process-wide data of other folders, as a
// namespace-scope object in a test file: const ResetBeforeTests resetPlanes([] { Planes().Clear(); });
class ResetBeforeTests {
  public:
    explicit ResetBeforeTests(std::function<void()> reset);
};

// Base class of tests that touch process-wide data.
class BuildState : public ::testing::Test {
  protected:
    BuildState() { Reset(); }
    ~BuildState() override { Reset(); }

    static void Reset();
};

// The message of the fatal error that action ends with; a test failure and "" when it ends otherwise.
std::string FatalText(const std::function<void()>& action);

// Expects a fatal error with exactly this message.
void ExpectFatal(const std::function<void()>& action, const std::string& text);

// The text logged since the last call, or since the test's start.
inline std::string Logged() {
    return TakeLoggedText();
}

// Expects the program's end with this status.
void ExpectProgramExit(const std::function<void()>& action, int status);

}  // namespace k2k::test
