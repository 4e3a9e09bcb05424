#include "support/build_state.h"

#include <vector>

namespace k2k::test {

namespace {

std::vector<std::function<void()>>& Resets() {
    static std::vector<std::function<void()>> resets;
    return resets;
}

}  // namespace

ResetBeforeTests::ResetBeforeTests(std::function<void()> reset) {
    Resets().push_back(std::move(reset));
}

void BuildState::Reset() {
    ResetAllOptionsForTest();
    ResetLogForTest();
    for (const auto& reset : Resets()) reset();
}

std::string FatalText(const std::function<void()>& action) {
    ForgetFatalError();
    try {
        action();
    } catch (const FatalStop& stop) {
        return stop.what();
    }
    ADD_FAILURE() << "no fatal error";
    return {};
}

void ExpectFatal(const std::function<void()>& action, const std::string& text) {
    EXPECT_EQ(FatalText(action), text);
}

void ExpectProgramExit(const std::function<void()>& action, int status) {
    try {
        action();
    } catch (const ProgramExit& exit) {
        EXPECT_EQ(exit.status, status);
        return;
    }
    ADD_FAILURE() << "the program goes on";
}

}  // namespace k2k::test
