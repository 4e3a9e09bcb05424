#include "desktop/desktop_program.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>

#include "desktop/build_thread.h"
#include "desktop/files_dialog.h"
#include "desktop/last_files.h"
#include "desktop/run_window.h"
#include "desktop/start_command.h"
#include "driver/command_string.h"

namespace k2k {

namespace {

// The files by names that hold in any folder.
BuildFiles Absolute(const BuildFiles& files) {
    return {QFileInfo(files.map).absoluteFilePath(), QFileInfo(files.palette).absoluteFilePath()};
}

// The command string of the files that the user chose; nothing on Cancel.
std::optional<std::string> AskForFiles(std::span<const char* const> arguments) {
    BuildFiles files = LoadLastFiles();
    if (!arguments.empty()) files.map = QFile::decodeName(arguments[0]);
    FilesDialog dialog(files);
    if (dialog.exec() != QDialog::Accepted) return std::nullopt;
    files = Absolute(dialog.Files());
    SaveLastFiles(files);
    return CommandOfFiles(files);
}

}  // namespace

int RunDesktop(std::span<const char* const> arguments, const StageEntries& stages) {
    const auto command = LeavesFilesOpen(arguments) ? AskForFiles(arguments) : CommandString(arguments);
    if (!command) return 0;
    RunWindow window([](int status) { QCoreApplication::exit(status); });
    const BuildThread build(*command, stages, window);
    const int status = QCoreApplication::exec();
    if (!build.Ended() && !window.RunDisplay().RunFinished()) {
        std::fflush(nullptr);
        std::_Exit(status);
    }
    return status;
}

void UsePlainLocale() {
    std::setlocale(LC_NUMERIC, "C");
    std::setlocale(LC_MESSAGES, "C");
}

}  // namespace k2k
