#include "support/process.h"

#include <fcntl.h>
#include <pty.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <system_error>
#include <thread>
#include <utility>

namespace k2k::test {

namespace {

// argv of exec functions; points into command.
std::vector<char*> Arguments(const std::vector<std::string>& command) {
    std::vector<char*> arguments;
    for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    return arguments;
}

int WaitForStatus(pid_t id) {
    int status = 0;
    waitpid(id, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace

Process::Process(const std::vector<std::string>& command) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    constexpr int Fresh = O_WRONLY | O_CREAT | O_TRUNC | O_APPEND;
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output_.File("out").c_str(), Fresh, 0600);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, output_.File("err").c_str(), Fresh, 0600);
    const int error = posix_spawn(&id_, command[0].c_str(), &actions, nullptr, Arguments(command).data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) throw std::system_error(error, std::generic_category(), command[0]);
}

Process::~Process() {
    if (id_ < 0) return;
    Signal(SIGKILL);
    WaitForStatus(id_);
}

bool Process::WaitForOutput(const std::string& text) const {
    constexpr std::chrono::milliseconds Step{10};
    constexpr int MaxSteps = 3000;
    for (int i = 0; i < MaxSteps; ++i) {
        if (ReadFile(output_.File("out")).find(text) != std::string::npos) return true;
        std::this_thread::sleep_for(Step);
    }
    return false;
}

void Process::Signal(int signal) const {
    kill(id_, signal);
}

ProcessResult Process::Wait() {
    const int status = WaitForStatus(std::exchange(id_, -1));
    return {status, ReadFile(output_.File("out")), ReadFile(output_.File("err"))};
}

ProcessResult RunOnTerminal(const std::vector<std::string>& command) {
    const std::vector<char*> arguments = Arguments(command);
    const winsize size{.ws_row = 25, .ws_col = 80, .ws_xpixel = 0, .ws_ypixel = 0};
    int terminal = -1;
    const pid_t id = forkpty(&terminal, nullptr, nullptr, &size);
    if (id < 0) throw std::system_error(errno, std::generic_category(), "forkpty");
    if (id == 0) {
        execv(arguments[0], arguments.data());
        _exit(127);
    }
    ProcessResult result;
    std::array<char, 4096> piece{};
    for (ssize_t got; (got = read(terminal, piece.data(), piece.size())) > 0;)
        result.out.append(piece.data(), static_cast<size_t>(got));
    close(terminal);
    result.status = WaitForStatus(id);
    return result;
}

}  // namespace k2k::test
