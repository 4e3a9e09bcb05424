// From the arguments of a console program to the one command string that the parser reads.
#pragma once

#include <span>
#include <string>

namespace k2k {

// The arguments joined by single blanks; one that a blank would break up, or that is empty, is put in double quotes.
std::string CommandString(std::span<const char* const> arguments);

}  // namespace k2k
