#include "driver/dialog.h"

#include "driver/build_log.h"
#include "driver/settings.h"

namespace k2k {

namespace {

// Settings that cannot be parsed (damaged, or cut in the middle of a word) are reported, and the default ones count.
void ParseSettings() {
    ResetOptions();
    try {
        ParseOptions(LoadSettings());
    } catch (const FatalStop&) {
        ForgetFatalError();
        ResetOptions();
        ParseOptions(std::string(DefaultSettings));
    }
}

// The settings hold a whole command string of an earlier run; the map that was named for this one stands.
void ParseSettingsForNamedMap() {
    const BuildPaths named = Paths();
    ParseSettings();
    if (!named.MapPath.empty()) Paths() = named;
}

}  // namespace

DialogAnswer AcceptControls(DialogControls&) {
    return DialogAnswer::Ok;
}

std::optional<std::string> RunDialog(std::string_view oldCommand, const ShowDialog& show) {
    ParseSettingsForNamedMap();
    DialogControls controls = FillControls(Options());
    const DialogAnswer answer = show(controls);
    if (answer == DialogAnswer::Cancel) return std::nullopt;

    const std::string command = answer == DialogAnswer::Ok ? ComposeCommand(controls) : std::string(DefaultSettings);
    ResetOptions();
    ParseOptions(command);
    LogFile("\n");
    LogFile(oldCommand);
    return command;
}

}  // namespace k2k
