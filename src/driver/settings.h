// The settings file of the options dialog: one command string in a private profile.
#pragma once

#include <string>
#include <string_view>

namespace k2k {

// What a fresh installation builds with.
extern const std::string_view DefaultSettings;

// The command string kept in "K2K.ini" in the working directory, cut at 511 characters; the default string when the
// file holds none.
std::string LoadSettings();

// Keeps a command string there. Everything else in the file stays; a file that cannot be written is no error.
void SaveSettings(std::string_view text);

}  // namespace k2k
