// A front end that shows nothing: for runs that nobody watches, and the base of those that show a part.
#pragma once

#include "driver/display.h"

namespace k2k {

class SilentDisplay : public Display {
  public:
    void Text(std::string_view) override {}
    void Beep() override {}
    void SetProgressRange(int32_t) override {}
    void SetProgress(int32_t) override {}
    void SetCaption(std::string_view) override {}
    void SetButton(std::string_view) override {}
    void SetActivity(bool) override {}
};

}  // namespace k2k
