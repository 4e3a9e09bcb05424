// The options dialog's place in a run.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "driver/dialog_controls.h"

namespace k2k {

enum class DialogAnswer { Ok, Cancel, DefaultBuild };

// Shows the dialog, lets the user change the controls, and returns the button that closed it.
using ShowDialog = std::function<DialogAnswer(DialogControls& controls)>;

// For a program without a window: OK at once.
DialogAnswer AcceptControls(DialogControls& controls);

// Sets the options by the settings file and the dialog. Returns the command string that takes the old one's place, or
// nothing on Cancel. The map and the palette named on the command line stay.
std::optional<std::string> RunDialog(std::string_view oldCommand, const ShowDialog& show);

}  // namespace k2k
