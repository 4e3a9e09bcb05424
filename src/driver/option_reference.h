// The option table as text for its reference pages.
#pragma once

#include <string>

namespace k2k {

// One Markdown table for each topic.
std::string OptionsAsMarkdown();

// One man page subsection for each topic.
std::string OptionsAsManPage();

}  // namespace k2k
