// A settings file, read by the options dialog and written again.
#include "driver/dialog.h"
#include "driver/settings.h"
#include "fuzzing.h"

namespace k2k::fuzz {
namespace {

void UseSettings(std::string_view file) {
    PutFile("K2K.ini", file);
    RunStep([] { RunDialog("level -pal palette.raw -dialog", AcceptControls); });
    RunStep([] { SaveSettings(LoadSettings()); });
}

}  // namespace
}  // namespace k2k::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    return k2k::fuzz::RunInput(data, size, 4096, k2k::fuzz::UseSettings);
}
