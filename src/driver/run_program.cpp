// Start-up: options, settings, banner; then the stages.
#include "driver/run_program.h"

#include <ctime>
#include <string>

#include "driver/build_log.h"
#include "driver/build_options.h"
#include "driver/out_of_memory.h"
#include "driver/process_setup.h"
#include "driver/settings.h"
#include "driver/stage_controller.h"

namespace k2k {

namespace {

constexpr int FatalStatus = 1;

// The text view is there for as long as the run.
class LogViewScope {
  public:
    explicit LogViewScope(Display& display) { SetLogView(&display); }
    ~LogViewScope() { SetLogView(nullptr); }
    LogViewScope(const LogViewScope&) = delete;
    LogViewScope& operator=(const LogViewScope&) = delete;
};

void PrintBanner() {
    const BuildOptions& o = Options();
    BuildLog("KMS to KLV Compiler V");
    BuildLog("7.01");
    BuildLog("%s", o.mesh ? " (KLV7" : " (KLV6");
    BuildLog("%s", o.nobsp ? ") " : " BSP) ");
    BuildLog("[CPUs: %d]\n ", o.threads);
    BuildLog("Report mode: ");
    BuildLog("%s", o.verbose ? "VERBOSE\n" : o.quiet ? "QUIET\n" : "DEFAULT\n");
}

// At most 250 characters, with a line feed at every position that 60 divides; both counts include the line feeds.
void PrintCommand(const std::string& command) {
    constexpr size_t MaxShown = 250;
    constexpr size_t LineLength = 60;
    std::string shown;
    for (size_t next = 0; next < command.size() && shown.size() < MaxShown;) {
        const bool lineIsFull = !shown.empty() && shown.size() % LineLength == 0;
        shown += lineIsFull ? '\n' : command[next++];
    }
    BuildLog("%s", shown.c_str());
}

int Run(std::string command, const StageEntries& stages, Display& display, const ShowDialog& showDialog) {
    ForgetFatalError();
    Options().threads = GetWorkerCount();
    ResetOptions();
    ParseOptions(command);
    if (command.find("-dialog") != std::string::npos) {
        const auto composed = RunDialog(command, showDialog);
        if (!composed) return 0;
        command = *composed;
    }
    LogFile(command);
    LogFile("\n");
    SaveSettings(command);
    const std::time_t startTime = std::time(nullptr);
    PrintBanner();
    if (Options().verbose) PrintCommand(command);
    return StageController(stages, display, startTime).Run();
}

}  // namespace

int RunProgram(std::string_view commandLine, const StageEntries& stages, Display& display,
               const ShowDialog& showDialog) {
    SetUpProcess();
    const LogViewScope view(display);
    int exitCode = FatalStatus;
    try {
        ReportFailures([&] { exitCode = Run(std::string(commandLine), stages, display, showDialog); });
    } catch (const FatalStop&) {
        exitCode = FatalStatus;
    } catch (const ProgramExit& exit) {
        exitCode = exit.status;
    }
    return exitCode;
}

}  // namespace k2k
